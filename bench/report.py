"""Tables in Markdown of what was measured."""
import re
from itertools import groupby

import table

RESULTS = ('met', 'near', 'missed')


def number(value):
    return f'{value:.2f}' if value < 10 else f'{value:.0f}'


def scaled(value, units):
    for limit, unit in units:
        if value >= limit:
            return f'{value / limit:.3g} {unit}'
    return f'{value / limit:.2g} {unit}'


def duration(value):
    return scaled(value, ((1, 's'), (1e-3, 'ms'), (1e-6, 'us'), (1e-9, 'ns')))


def speed(value, counts_bytes):
    return scaled(value, ((1e9, 'GB/s'), (1e6, 'MB/s')) if counts_bytes else
                  ((1e9, 'G/s'), (1e6, 'M/s')))


def measured(line, value):
    """The time of a unit of work as the row compares it."""
    return duration(value) if line['kind'] == table.TIME else speed(1 / value, line['bytes'])


def ratio(line):
    return number(line['ratio']) if 'ratio' in line else f"{line['count']:.3g}"


def bar(line):
    sign = '≥' if line['kind'] == table.SPEED else '≤'
    return f"{sign} {line['bar']:.3g}"


def remark(line):
    return '' if line['result'] == 'met' else line['remark']


def rows_of(cells):
    return ['| ' + ' | '.join(line) + ' |' for line in cells]


def titled(columns, cells):
    return '\n'.join(rows_of([columns, ['---'] * len(columns), *cells]))


def full_cells(lines):
    for line in lines:
        compared = 'ratio' in line
        yield [line['operation'] + (': ' + line['figure'] if line['figure'] else ''),
               measured(line, line['library']) if compared else ratio(line),
               ', '.join(f'{peer} {measured(line, value)}'
                         for peer, value in line['peers'].items()) if compared else '',
               ratio(line) if compared else '',
               '–'.join(map(number, line['quartiles'])) if compared else '',
               bar(line), line['result'] + ('. ' + remark(line) if remark(line) else '')]


def full_table(lines):
    return titled(['Operation', 'Library', 'Beside', 'Ratio', 'Middle half', 'Held to', 'Result'],
                  full_cells(lines))


def joined(values):
    values = list(values)
    return values[0] if len(set(values)) == 1 else ' / '.join(values)


def short_cells(lines):
    for operation, group in groupby(lines, lambda line: line['operation']):
        group = list(group)
        names = joined(line['figure'] for line in group)
        peers = dict.fromkeys(line['peer'] for line in group if 'peer' in line)
        worst = max((line['result'] for line in group), key=RESULTS.index)
        yield [operation + (': ' + names if names else ''), '; '.join(peers),
               joined(ratio(line) for line in group), joined(bar(line) for line in group), worst]


def short_table(lines):
    return titled(['Operation', 'Beside', 'Ratio', 'Held to', 'Result'], short_cells(lines))


def remarks(lines):
    lines = [line for line in lines if remark(line)]
    return '\n'.join(f"- {line['operation']}{': ' * bool(line['figure'])}{line['figure']}, "
                     f"{ratio(line)}: {remark(line)}" for line in lines)


def multiples(line):
    return number(line['ratio']) + (f" ({number(line['net'])})" if line['net'] else '')


def short_jobs(lines):
    def cells():
        for job, programs in groupby(lines, lambda line: line['job']):
            library, *others = programs
            yield [job, duration(library['seconds']),
                   ', '.join(f"{line['program']} {multiples(line)}" for line in others)]
    return titled(['Whole process', 'Time', 'Others, as multiples of it (without what a start takes)'],
                  cells())


def jobs_table(lines):
    def cells():
        for line in lines:
            yield [line['job'], line['program'], duration(line['seconds']),
                   '–'.join(map(duration, line['quartiles'])), duration(line['processor']),
                   duration(line['start']) if line['start'] else '', number(line['ratio']),
                   number(line['net']) if line['net'] else '']
    return titled(['Job', 'Program', 'Time', 'Middle half', 'Processor', 'Of a picture of 16 x 16',
                   'Ratio', 'Ratio without it'], cells())


def summary(results):
    lines = results['figures']
    counts = ', '.join(f"{sum(line['result'] == result for line in lines)} {result}"
                       for result in RESULTS)
    machine = results['machine']
    return (f"{len(lines)} figures: {counts}. {machine['date']}, {machine['processor']}, "
            f"{machine['processors']} processors, {machine['system']}, {machine['compiler']}, "
            f"{results['rounds']} rounds; load of the machine at the start "
            f"{machine['load']:.1f}.")


def share(results):
    return ''.join(f"\n\nOf the work of the renderer {100 * line['share']:.0f} % is done in the "
                   f"library's own code, counted in instructions over a picture of "
                   f"{line['profiled'][0]} x {line['profiled'][1]}."
                   for line in results['jobs'] if 'share' in line)


def whole(results):
    parts = [summary(results)]
    if results['figures']:
        parts.append(full_table(results['figures']))
    if results['jobs']:
        parts.append(jobs_table(results['jobs']) + share(results))
    return '\n\n'.join(parts) + '\n'


def short(results):
    parts = [summary(results), short_table(results['figures']), remarks(results['figures']),
             short_jobs(results['jobs'])]
    return '\n\n'.join(filter(None, parts)) + '\n'


def unexplained(results):
    """The figures that are not met without a word why."""
    return [f"{line['operation']}: {line['figure']}" for line in results['figures']
            if line['result'] != 'met' and not line['remark']]


def put(path, text):
    """Replaces what stands between the two marks in a page."""
    with open(path, encoding='utf-8') as file:
        page = file.read()
    page, found = re.subn(r'(<!-- figures -->\n).*?(<!-- end of figures -->)',
                          lambda marks: f'{marks[1]}\n{text}\n{marks[2]}', page, flags=re.S)
    if found != 1:
        raise SystemExit(f'{path} has no place for figures')
    with open(path, 'w', encoding='utf-8') as file:
        file.write(page)
