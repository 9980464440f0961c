"""Whole jobs, as processes beside those of other programs, and the system calls that they make."""
import os
import random
import re
import statistics
import subprocess
import time

from measure import Incomplete, quartiles

SIDE = 4096
DIRECTORIES, NAMES = 50, 10000
PROFILED = 120, 80  # of the renderer: the profiler takes some fifty times as long
PICTURES = {'noise': 'noise', 'typical': 'gradients and flat parts'}


def output(command, **options):
    return subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                          check=True, **options).stdout


def timed(command):
    """Elapsed and processor time of a process in seconds."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    elapsed = time.perf_counter() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise Incomplete('failed: ' + ' '.join(command))
    return elapsed, usage.ru_utime + usage.ru_stime


def interleaved(commands, rounds):
    """Runs each of the named commands once a round, in an order that changes."""
    runs = {name: [] for name in commands}
    for command in commands.values():
        timed(command)  # reads files into memory
    order = list(commands)
    for _ in range(rounds):
        random.shuffle(order)
        for name in order:
            runs[name].append(timed(commands[name]))
    return runs


def readers(folder, file):
    """The library's program first."""
    return {
        'VXUTIL': [f'{folder}/picture', 'read', file],
        'OpenImageIO': [f'{folder}/picture_openimageio', file],
        'oiiotool': ['oiiotool', '--native', '-i:now=1', file],
        'ImageMagick': ['convert-im6.q16', file, 'null:'],
        'ffmpeg': ['ffmpeg', '-v', 'error', '-i', file, '-f', 'null', '-'],
        'netpbm': ['sgitopnm', '-quiet', file],
    }


def lines_of(job, runs, starts=None):
    library = next(iter(runs))

    def elapsed(program, of):
        return [one for one, _ in of[program]]

    def whole(program):
        return statistics.median(elapsed(program, runs))

    def net(program):
        return statistics.median(one - start for one, start in
                                 zip(elapsed(program, runs), elapsed(program, starts)))
    for program, times in runs.items():
        yield {'job': job, 'program': program, 'seconds': whole(program),
               'quartiles': quartiles(elapsed(program, runs)),
               'processor': statistics.median(processor for _, processor in times),
               'start': starts and statistics.median(elapsed(program, starts)),
               'ratio': whole(program) / whole(library),
               'net': starts and net(program) / net(library)}


def read_pictures(folder, scratch, rounds):
    small = f'{scratch}/small.sgi'
    output([f'{folder}/picture', 'make', 'noise', '16', small])
    for picture, words in PICTURES.items():
        file = f'{scratch}/{picture}.sgi'
        output([f'{folder}/picture', 'make', picture, str(SIDE), file])
        commands = readers(folder, file)
        if output(commands['VXUTIL']) != output(commands['OpenImageIO']):
            raise Incomplete(f'the sums of {file} differ')
        starts = {('start', name): command for name, command in readers(folder, small).items()}
        runs = interleaved(commands | starts, rounds)
        yield from lines_of(f'read a picture of {SIDE} x {SIDE} x 3: {words}',
                            {name: runs[name] for name in commands},
                            {name: runs['start', name] for name in commands})
        os.remove(file)


def make_names(scratch):
    names = f'{scratch}/names'
    for directory in range(DIRECTORIES):
        os.makedirs(f'{names}/{directory}')
    for name in range(NAMES):
        with open(f'{names}/{name % DIRECTORIES}/{name}', 'w', encoding='utf-8'):
            pass
    return names


def find_names(folder, scratch, rounds):
    names = make_names(scratch)
    commands = {name: [f'{folder}/{program}', names, str(DIRECTORIES), str(NAMES)]
                for name, program in (('VXUTIL', 'find_names'), ('loop of stat', 'stat_names'))}
    for command in commands.values():
        if int(output(command)) != NAMES:
            raise Incomplete('names were not found')
    yield from lines_of(f'find {NAMES} names along {DIRECTORIES} directories',
                        interleaved(commands, rounds))


def render(folder, scratch, rounds):
    """The demo's picture, and how much of the work is the library's."""
    example = f'{folder}/../examples/render'
    for room in ('wall', 'floor'):
        os.makedirs(f'{scratch}/{room}')
    output([f'{example}/make_textures', scratch])
    os.environ['ZOR_TEXTURE_PATH'] = scratch
    os.environ['ZOR_IES_PATH'] = 'examples/render/webs'
    os.makedirs(f'{scratch}/pictures')
    job = [f'{example}/render', '480', '320', f'{scratch}/pictures']
    line = next(lines_of('render the demo\'s picture, 480 x 320, plain and antialiased',
                         interleaved({'VXUTIL': job}, rounds)))
    profile = f'{scratch}/profile'
    output(['valgrind', '--tool=callgrind', f'--callgrind-out-file={profile}',
            job[0], *map(str, PROFILED), job[3]])
    listing = output(['callgrind_annotate', '--threshold=100', profile])
    shares = [(int(count.replace(',', '')), 'libvxutil.so' in place) for count, place in
              re.findall(r'^ *([\d,]+) \([ \d.]+%\)  (\S+:.*)$', listing, re.M)]
    line['share'] = sum(n for n, ours in shares if ours) / sum(n for n, _ in shares)
    line['profiled'] = PROFILED
    yield line


def jobs(folder, scratch, rounds):
    return [*read_pictures(folder, scratch, rounds), *find_names(folder, scratch, rounds),
            *render(folder, scratch, rounds)]


# ---- System calls

def traced(scratch, command):
    """The system calls of a command, a line each, with the path behind each descriptor."""
    trace = f'{scratch}/trace'
    output(['strace', '-y', '-s', '1', '-o', trace, *command])
    with open(trace, encoding='utf-8') as file:
        return file.read().split('\n')


def calls_of_reading(folder, scratch):
    side, head_reads = 64, 2  # the header, and its tables
    file = f'{scratch}/traced.sgi'
    output([f'{folder}/picture', 'make', 'noise', str(side), file])
    calls = [line.split('(')[0] for line in traced(scratch, [f'{folder}/picture', 'read', file])
             if f'{file}>' in line]
    reads = [i for i, call in enumerate(calls) if call.startswith(('read', 'pread'))]
    rows = 3 * side
    first_row = reads[head_reads]
    return {'reads beyond rows': len(reads) - head_reads - rows,
            'seeks between rows': sum('seek' in call for call in calls[first_row:]),
            'other calls on the file': len(calls) - rows}


def calls_of_finding(folder, scratch):
    directories, names = 10, 20
    calls = traced(scratch, [f'{folder}/find_names', '/nowhere', str(directories), str(names)])
    return {'stats a directory': sum('"/nowhere/' in line for line in calls) / directories / names}


def calls_of_keeping(folder, scratch):
    """Of a process that loads settings and leaves them as they are."""
    registry = f'{scratch}/registry'
    for file, root in (('user', 'HKEY_CURRENT_USER'), ('machine', 'HKEY_LOCAL_MACHINE')):
        with open(f'{registry}/{file}.reg', 'w', encoding='utf-8') as settings:
            settings.write(f'REGEDIT4\n\n[{root}\\Software\\Meridane\\Vandermire\\Texture Paths]\n'
                           '"0"="/maps/a"\n')
    life = [f'{folder}/find_names', '/nowhere', '1', '1']
    output(life)  # makes what is missing
    calls = [line for line in traced(scratch, life) if registry in line]
    if not any(line.startswith('read(') for line in calls):
        raise Incomplete('the settings were not read')
    writing = re.compile('(p?write|rename|f?truncate|fsync|fdatasync|unlink)')
    return {'writes unchanged': sum(writing.match(line) is not None for line in calls)}


def calls(folder, scratch):
    return (calls_of_reading(folder, scratch) | calls_of_finding(folder, scratch) |
            calls_of_keeping(folder, scratch))
