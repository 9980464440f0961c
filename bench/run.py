"""Measures the library beside its peers: see scripts/bench, which builds everything first."""
import argparse
import datetime
import json
import os
import platform
import shutil
import subprocess
import sys
import tempfile

import measure
import report
import table
import whole_jobs

BUILD = 'build/bench'
PROGRAMS = f'{BUILD}/bench'
FAMILIES = list(dict.fromkeys([row.family for row in table.ROWS])) + ['jobs']


def arguments():
    parser = argparse.ArgumentParser(prog='scripts/bench')
    parser.add_argument('--quick', action='store_true', help='one short repetition, to try it out')
    parser.add_argument('--check', action='store_true',
                        help='only see whether every benchmark of the table is there')
    parser.add_argument('--readme', action='store_true',
                        help='only put the last results into README.md and docs/benchmarks.md')
    parser.add_argument('families', nargs='*', metavar='FAMILY', help=', '.join(FAMILIES))
    args = parser.parse_args()
    strangers = set(args.families) - set(FAMILIES)
    if strangers:
        parser.error('no such family: ' + ', '.join(sorted(strangers)))
    return args


def machine():
    with open('/proc/cpuinfo', encoding='utf-8') as file:
        names = [line.split(': ')[1].strip() for line in file if line.startswith('model name')]
    with open(f'{BUILD}/CMakeCache.txt', encoding='utf-8') as file:
        compiler = next(line.split('=', 1)[1].strip() for line in file
                        if line.startswith('CMAKE_CXX_COMPILER:'))
    version = subprocess.run([compiler, '--version'], stdout=subprocess.PIPE, text=True, check=True)
    return {'date': datetime.date.today().isoformat(), 'processor': names[0],
            'processors': len(names), 'system': f'{platform.system()} {platform.release().split("-")[0]}',
            'compiler': version.stdout.split('\n')[0], 'load': os.getloadavg()[0]}


def make_locales(folder):
    """Two locales that benchmarks ask for, where the machine may not have them."""
    for name, source, charmap in (('ja_JP.SJIS', 'ja_JP', 'SHIFT_JIS'),
                                  ('de_DE.UTF-8', 'de_DE', 'UTF-8')):
        if not os.path.exists(f'{folder}/{name}/LC_CTYPE'):
            os.makedirs(folder, exist_ok=True)
            # Warnings make it fail, but not its work.
            subprocess.run(['localedef', '-c', '-i', source, '-f', charmap, '--no-archive',
                            f'{folder}/{name}'], stderr=subprocess.DEVNULL, check=False)
    os.environ['LOCPATH'] = os.path.abspath(folder)


def measured(args, families, rows, scratch):
    rounds, repetitions, min_time, job_rounds = (1, 1, 0.01, 1) if args.quick else (7, 2, 0.07, 9)
    results = {'machine': machine(), 'rounds': rounds, 'jobs': []}
    samples, calls, problems = {}, {}, []
    for family in families:
        print(family, flush=True)
        try:
            if family == 'jobs':
                results['jobs'] = whole_jobs.jobs(os.path.abspath(PROGRAMS), scratch, job_rounds)
            elif family == 'calls':
                calls = whole_jobs.calls(os.path.abspath(PROGRAMS), scratch)
            else:
                measure.run_family(PROGRAMS, family, scratch, rounds, repetitions, min_time,
                                   samples)
        except (measure.Incomplete, subprocess.CalledProcessError) as problem:
            problems.append(f'{family}: {problem}')
    results['figures'] = measure.evaluate(rows, samples, calls, problems)
    results['complete'] = not args.quick and not args.families and not problems
    return results, problems


def write(results):
    with open(f'{BUILD}/results.json', 'w', encoding='utf-8') as file:
        json.dump(results, file, indent=1)
    with open(f'{BUILD}/results.md', 'w', encoding='utf-8') as file:
        file.write(report.whole(results))
    print(report.whole(results))


def explain(results):
    """Takes the remarks of the table as it is now: a cause may be found after a long run."""
    named = [(row.title, figure.name) for row in table.ROWS for figure in row.figures]
    if named != [(line['operation'], line['figure']) for line in results['figures']]:
        sys.exit('The last results are not those of the table.')
    remarks = [figure.remark or row.remark for row in table.ROWS for figure in row.figures]
    for line, remark in zip(results['figures'], remarks):
        line['remark'] = remark
    unexplained = report.unexplained(results)
    if unexplained:
        sys.exit('Not met, and the table has no remark:\n' + '\n'.join(unexplained))


def put_into_pages():
    with open(f'{BUILD}/results.json', encoding='utf-8') as file:
        results = json.load(file)
    if not results['complete']:
        sys.exit('The last results are not those of a whole run.')
    explain(results)
    report.put('README.md', report.short(results))
    report.put('docs/benchmarks.md', report.whole(results))


def main():
    args = arguments()
    if args.readme:
        put_into_pages()
        return
    families = args.families or FAMILIES
    rows = [row for row in table.ROWS if row.family in families]
    scratch = tempfile.mkdtemp(prefix='vxbench')
    try:
        # Nothing of the user's settings is used or changed, not even by a list of benchmarks.
        os.makedirs(f'{scratch}/registry')
        os.environ.update(VX_REGISTRY_DIR=f'{scratch}/registry', HOME=scratch, ZOR_TEXTURE_PATH='',
                          ZOR_IES_PATH='')
        absent = measure.missing(PROGRAMS, rows)
        if absent:
            sys.exit('These benchmarks of the table do not exist:\n' + '\n'.join(absent))
        if args.check:
            return
        make_locales(f'{BUILD}/locales')
        results, problems = measured(args, families, rows, scratch)
    finally:
        shutil.rmtree(scratch)
    write(results)
    if not args.quick:
        for line in report.unexplained(results):
            print('Not met, and the table has no remark:', line)
    if problems:
        sys.exit('Not measured:\n' + '\n'.join(problems))


if __name__ == '__main__':
    main()
