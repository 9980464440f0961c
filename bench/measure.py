"""Runs the programs of Google Benchmark, and holds what they measured against the table."""
import json
import os
import statistics
import subprocess

import table

NOISE = 1.3  # two figures that differ by less count as equal


class Incomplete(Exception):
    pass


def listed(folder, program):
    """The names of a program's benchmarks."""
    run = subprocess.run([f'{folder}/{program}_bench', '--benchmark_list_tests=true'],
                         stdout=subprocess.PIPE, text=True, check=True)
    return set(run.stdout.split('\n'))


def missing(folder, rows):
    """What the table names and no program has: a list of names."""
    absent = []
    for family in dict.fromkeys(row.family for row in rows if row.family != 'calls'):
        there = listed(folder, family)
        # The number of iterations, where a benchmark fixes it, is part of its name in lists.
        there |= {name.split('/iterations:')[0] for name in there}
        for row in rows:
            if row.family == family:
                absent += [f'{family}: {name}' for figure in row.figures
                           for name in table.benchmarks(figure) if name not in there]
    return absent


def run_family(folder, family, scratch, rounds, repetitions, min_time, samples):
    """Leaves in samples[family, name] a list of rounds for each benchmark, each of repetitions."""
    out = os.path.join(scratch, 'benchmark.json')
    for done in range(rounds):
        # A new process each round: where memory lies, too, differs from run to run.
        subprocess.run([f'{folder}/{family}_bench', f'--benchmark_repetitions={repetitions}',
                        '--benchmark_enable_random_interleaving=true',
                        f'--benchmark_min_time={min_time}', f'--benchmark_out={out}'],
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
        with open(out, encoding='utf-8') as file:
            entries = json.load(file)['benchmarks']
        for entry in entries:
            if entry['run_type'] != 'iteration':
                continue
            name = entry['name'].split('/iterations:')[0]
            if entry.get('error_occurred'):
                raise Incomplete(f"{name}: {entry['error_message']}")
            each = samples.setdefault((family, name), [])
            if len(each) == done:
                each.append([])
            each[done].append(entry)


def seconds(entry, clock):
    return entry[clock] * {'ns': 1e-9, 'us': 1e-6, 'ms': 1e-3, 's': 1}[entry['time_unit']]


def work(entry):
    """Items or bytes of an iteration; one iteration where none are counted."""
    for counter in ('items_per_second', 'bytes_per_second'):
        if counter in entry:
            return entry[counter] * seconds(entry, 'cpu_time')
    return 1


def found(samples, family, name):
    if (family, name) not in samples:
        raise Incomplete(f'{family}: {name} did not run')
    return samples[family, name]


class Times:
    """The time of a unit of work in each round, of a benchmark or of a sum of several."""

    def __init__(self, samples, family, names, wall):
        clock = 'real_time' if wall else 'cpu_time'
        columns = []
        for name in names if isinstance(names, list) else [names]:
            each = found(samples, family, name)
            columns.append([statistics.median(seconds(entry, clock) / work(entry)
                                              for entry in entries) for entries in each])
        self.each = [sum(values) for values in zip(*columns)]
        self.median = statistics.median(self.each)
        self.counts_bytes = 'bytes_per_second' in each[0][0]

    def take_off(self, other):
        self.each = [one - less for one, less in zip(self.each, other.each)]
        self.median = statistics.median(self.each)


def quartiles(values):
    if len(values) < 2:
        return [values[0], values[0]]
    low, _, high = statistics.quantiles(values, n=4, method='inclusive')
    return [low, high]


def verdict(ratio, bar, middle, at_least):
    """A miss is near when it is small, and half of the rounds leave open whether it is one."""
    miss, least = (bar / ratio, bar / middle[1]) if at_least else (ratio / bar, middle[0] / bar)
    if miss <= 1:
        return 'met'
    return 'near' if miss < NOISE and least <= 1 else 'missed'


def compared(row, figure, samples):
    ours = Times(samples, row.family, figure.ours, row.wall)
    if figure.less:
        ours.take_off(Times(samples, row.family, figure.less, row.wall))
    peers = {peer: Times(samples, row.family, at, row.wall)
             for peer, at in (figure.peers | figure.also).items()}
    fastest = min(figure.peers, key=lambda peer: peers[peer].median)
    beside = peers[fastest]

    # A round is one process: what drifts from one to the next is in both times of a pair.
    ratios = [one / other if row.kind == table.TIME else other / one
              for one, other in zip(ours.each, beside.each)]
    ratio, middle = statistics.median(ratios), quartiles(ratios)
    return {
        'library': ours.median, 'bytes': ours.counts_bytes, 'peer': fastest,
        'peers': {peer: times.median for peer, times in peers.items()},
        'ratio': ratio, 'quartiles': middle,
        'result': verdict(ratio, figure.bar, middle, row.kind == table.SPEED),
    }


def counted(row, figure, samples, calls):
    if row.family == 'calls':
        if figure.ours not in calls:
            raise Incomplete(f'calls: {figure.ours} was not counted')
        value = calls[figure.ours]
    else:
        value = max(entry['count'] for entries in found(samples, row.family, figure.ours)
                    for entry in entries)
    return {'count': value, 'result': 'met' if value <= figure.bar else 'missed'}


def longest(row, figure, samples, _calls):
    value = max(Times(samples, row.family, name, row.wall).median for name in figure.ours) * 1e6
    return {'count': value, 'result': 'met' if value <= figure.bar else 'missed'}


def evaluate(rows, samples, calls, problems):
    """The results of all figures. Those that cannot be had are named in `problems`."""
    judge = {table.COUNT: counted, table.LIMIT: longest}
    results = []
    for row in rows:
        for figure in row.figures:
            try:
                result = (judge[row.kind](row, figure, samples, calls) if row.kind in judge else
                          compared(row, figure, samples))
            except Incomplete as problem:
                problems.append(str(problem))
                continue
            results.append({'family': row.family, 'operation': row.title, 'figure': figure.name,
                            'kind': row.kind, 'bar': figure.bar, 'wall': row.wall,
                            'remark': figure.remark or row.remark} | result)
    return results
