"""What the library is held to: every row that scripts/bench measures.

A figure compares one benchmark of the library with benchmarks of peers. Names are those of Google
Benchmark in the program of the row's family; a list of names stands for the sum of their times.
"""
from dataclasses import dataclass, field

TIME = 'time'    # ratio of times, at most the bar
SPEED = 'speed'  # ratio of speeds, at least the bar
LIMIT = 'limit'  # the longest of several times in microseconds, at most the bar
COUNT = 'count'  # a number of calls, at most the bar


@dataclass
class Figure:
    name: str     # of the figure within its row, '' where there is one only
    ours: object  # benchmark; several for LIMIT; counter or count for COUNT
    bar: float
    peers: dict   # the bar holds for the fastest of them: what it is called -> benchmark or sum
    also: dict = field(default_factory=dict)  # shown, but not held to
    remark: str = ''  # what keeps it from being met, should it miss
    less: str = ''  # a benchmark of the library whose time is no part of this figure


@dataclass
class Row:
    family: str
    title: str
    kind: str
    figures: list
    wall: bool = False  # elapsed time: where the work waits, or has threads. Otherwise processor time
    remark: str = ''


def figures(bars, ours, peers):
    """One figure for each number in `bars`, which stands for {} in the names of its benchmarks."""
    return [Figure(f'{name:,}', ours.format(name), bar,
                   {peer: at.format(name) for peer, at in peers.items()})
            for name, bar in bars.items()]


def patterns():
    cases = {'suffix_hit': '`*.sgi`, hit', 'suffix_miss': '`*.sgi`, miss',
             'words_hit': '`*wood*plank*diffuse*`, hit', 'words_miss': '`*wood*plank*diffuse*`, miss',
             'list_hit': '`[a-z]*[0-9].sgi`, hit', 'list_miss': '`[a-z]*[0-9].sgi`, miss'}
    for case, name in cases.items():
        also = {} if case.startswith('list') else {'GLib': case + '/glib'}
        yield Figure(name, case + '/vxutil', 1.0,
                     {'fnmatch': case + '/fnmatch', 'RE2': case + '/re2'}, also,
                     'All ways through a pattern are taken at once, with a pass over the subject '
                     'for each of its elements. `fnmatch` tries one way after the other, and the '
                     'first is the right one here.' if case == 'words_hit' else '')


def run_lengths(width, noise, flat, small_type):
    bars = {'noise': noise, 'flat': flat, 'type': small_type}
    return [Figure('small type' if name == 'type' else name, f'run_length_in/{width}/{name}/vxutil', bar,
                   {'OpenImageIO': f'run_length_in/{width}/{name}/openimageio'},
                   remark='A row takes one call of the system, and a flat one little else.'
                   if name == 'flat' else '')
            for name, bar in bars.items()]


STRETCHES = ('The order is that of signed bytes. `memcmp` does not tell where two texts differ, so they are '
             'compared in stretches of 512 bytes, and one that differs again by halves.')

ROWS = [
    Row('containers', 'append a pointer', TIME, [
        Figure('1,000', 'append_vx/1000', 0.75, {'GLib': 'append_glib/1000'},
               {'std::vector': 'append_std/1000'}),
        Figure('100,000', 'append_vx/100000', 1.3,
               {'GLib': 'append_glib/100000', 'std::vector': 'append_std/100000'})]),
    Row('containers', 'insert and remove in the middle', TIME,
        figures({1000: 1.15, 100000: 1.15}, 'middle_vx/{}', {'memmove': 'middle_memmove/{}'})),
    Row('containers', 'walk, an element', TIME, [
        Figure('list', 'walk_list_vx', 1.5, {'std::vector': 'walk_list_std'}),
        Figure('table', 'walk_table_vx', 1.0, {'std::unordered_set': 'walk_table_std'},
               remark='A walk looks into all 1009 buckets, and into a list of its own for each in use: '
                      'the elements of the peer are one chain.')]),
    Row('containers', 'pointer set, 1000 elements in 1009 buckets', TIME, [
        Figure(name.replace('_', ' and '), f'set_{name}<VxSet>', bar,
               {'std::unordered_set': f'set_{name}<StdSet>'},
               {'absl::flat_hash_set': f'set_{name}<AbslSet>', 'GLib': f'set_{name}<GlibSet>'},
               'More than half of the time takes and frees memory, a block for each bucket in use.'
               if name == 'fill' else '')
        for name, bar in {'find': 1.3, 'fill': 1.0, 'remove_insert': 0.5}.items()]),
    Row('containers', 'find owned texts of 36 bytes', TIME,
        [Figure('', 'owned_find_vx', 1.0, {'std::unordered_set': 'owned_find_std'})],
        remark='A bucket keeps elements and hashes in two lists, each hash in a cell of its own: more '
               'places of memory to visit than the one node of the peer.'),
    Row('containers', 'hashes taken in a call with owned texts', COUNT,
        [Figure('', 'owned_hashes', 1, {})]),

    Row('strings', 'copy and drop a string', TIME, [
        Figure('64 bytes', 'copy_vx/64', 0.33, {'std::string': 'copy_std/64'}),
        Figure('4096 bytes', 'copy_vx/4096', 1.0, {'that of 64 bytes': 'copy_vx/64'},
               {'std::string': 'copy_std/4096'},
               remark='The same code runs at any length, so that only noise tells the two apart.')]),
    Row('strings', 'append with a hint, bytes', TIME,
        figures({1: 3.0, 8: 3.0}, 'append_vx/{}', {'std::string': 'append_std/{}'})),
    Row('strings', 'find a text in 4 KiB', SPEED, [
        Figure('as it is', 'find_vx', 0.8, {'memmem': 'find_memmem'}),
        *(Figure(name, f'find_folded_vx/{length}', bar,
                 {'strcasestr': f'find_folded_strcasestr/{length}'})
          for length, bar, name in ((6, 2.0, 'ignoring case'),
                                    (513, 0.8, 'ignoring case, 513 bytes but the last match'),
                                    (2000, 0.8, 'ignoring case, 2,000 bytes but the last match')))]),
    Row('strings', 'find by a set in 4 KiB', SPEED, [
        Figure('in it', 'span_vx', 4.0, {'find_first_not_of': 'span_std'}),
        Figure('not in it', 'span_not_vx', 4.0, {'find_first_not_of': 'span_std'})]),
    Row('strings', 'compare 4 KiB', SPEED, [
        Figure('equality, equal', 'equal_vx/0', 0.8, {'memcmp': 'order_memcmp/0'}),
        Figure('equality, last byte differs', 'equal_vx/1', 0.8, {'memcmp': 'order_memcmp/1'}),
        Figure('order, equal', 'order_vx/0', 0.8, {'memcmp': 'order_memcmp/0'}, remark=STRETCHES),
        Figure('order, last byte differs', 'order_vx/1', 0.8, {'memcmp': 'order_memcmp/1'},
               remark=STRETCHES),
        Figure('ignoring case, equal', 'order_folded_vx/0', 0.1,
               {'strcasecmp': 'order_folded_strcasecmp/0'}),
        Figure('ignoring case, last byte differs', 'order_folded_vx/1', 0.1,
               {'strcasecmp': 'order_folded_strcasecmp/1'})]),

    Row('searchpath', 'find a file, directories', TIME,
        figures({10: 1.05, 100: 1.05}, 'find/vxutil/{}', {'bare stat': 'find/stat/{}'})),
    Row('calls', 'calls to test a directory', COUNT, [Figure('', 'stats a directory', 1, {})]),

    Row('load', 'save a changed list of settings', TIME, [
        Figure('', 'settings/life_with_one_list_changed', 1.7,
               {'write, sync, rename': 'settings/write_sync_rename'}, less='load_unload/vxutil',
               remark='Links to the file are followed, a file that a killed process left behind '
               'is removed, and the new file gets the owner and the rights of the old one.')],
        wall=True),
    Row('calls', 'writes for an unchanged list', COUNT, [Figure('', 'writes unchanged', 0, {})]),
    Row('load', 'load and unload with short lists', TIME, [
        Figure('', 'load_unload/vxutil', 1.3,
               {'empty library, file calls needed': 'load_unload/empty_library_and_needed_calls'})],
        remark='Four lists are parsed, sorted and normalised, and six are made and freed.'),
    Row('load', 'load and unload, 8,000 values under a key', TIME, [
        Figure('', 'load_unload/values/8000', 12, {'800 values': 'load_unload/values/800'})],
        wall=True),

    Row('pattern', 'match', TIME, list(patterns())),
    Row('pattern', 'match `*a*a*a*bc`, bytes', TIME,
        figures({32: 10.0, 402: 10.0}, 'aaa_{}/vxutil', {'RE2': 'aaa_{}/re2'})),
    Row('pattern', 'the worst form and subject, us', LIMIT, [
        Figure('', [f'worst/{element}/{locale}' for element in ('*a', '*[~b-z]')
                    for locale in ('C', 'ja_JP.SJIS')], 300, {})]),

    Row('image', 'verbatim rows in', SPEED, [
        Figure('1 byte', 'verbatim_in/1/published/vxutil', 0.85,
               {'pread, widen': 'verbatim_in/1/published/plain'},
               {'OpenImageIO': 'verbatim_in/1/openimageio'}),
        Figure('2 bytes, host order', 'verbatim_in/2/host/vxutil', 0.85,
               {'pread': 'verbatim_in/2/host/plain'}),
        Figure('2 bytes, published order', 'verbatim_in/2/published/vxutil', 0.85,
               {'pread, swap': 'verbatim_in/2/published/plain'},
               {'OpenImageIO': 'verbatim_in/2/openimageio'})],
        remark='`read` keeps the place in the file up to date, as `pread` does not have to, and rows '
               'go through a buffer, so that the caller\'s stays as it was when a read falls short.'),
    Row('image', 'run-length rows in, 1 byte', SPEED, run_lengths(1, 3.0, 2.0, 1.5), wall=True,
        remark='Elements arrive as 16 bits, twice the memory that the peer writes.'),
    Row('image', 'run-length rows in, 2 bytes', SPEED, run_lengths(2, 3.5, 2.7, 1.7), wall=True,
        remark='Beside the call of the system that a row takes, noise is swapped once and copied once.'),
    Row('image', 'verbatim rows out', SPEED, [
        Figure('1 byte', 'verbatim_out/1/published/vxutil', 0.8, {'pwrite': 'verbatim_out/1/plain'}),
        Figure('2 bytes, host order', 'verbatim_out/2/host/vxutil', 0.8,
               {'pwrite': 'verbatim_out/2/plain'}),
        Figure('2 bytes, published order', 'verbatim_out/2/published/vxutil', 0.8,
               {'pwrite': 'verbatim_out/2/plain'})],
        remark='The least and greatest element of each row are noted for the header, and `write` '
               'keeps the place in the file up to date, as `pwrite` does not have to.'),
    Row('image', 'encode a row of 2048', SPEED, [
        Figure(f'{name}, {width} byte' + 's' * (width - 1), f'encode/{width}/{name}/vxutil', bar,
               {'plain scan': 'encode/plain_scan'})
        for name, bar in {'noise': 0.25, 'flat': 0.35}.items() for width in (1, 2)]),
    Row('calls', 'calls to read R rows in file order', COUNT, [
        Figure('reads beyond R', 'reads beyond rows', 0, {}),
        Figure('seeks between rows', 'seeks between rows', 0, {}),
        Figure('others, open to close', 'other calls on the file', 8, {})]),

    Row('byteorder', 'swap words, 4 KiB', SPEED, [
        Figure(f'{bits} bits, offset {offset}', f'words<{words}>/4096/{offset}', 3.0,
               {'swab': f'words<bySwab>/4096/{offset}'})
        for bits, words in ((16, 'shorts'), (32, 'longs')) for offset in (0, 1)]),
    Row('byteorder', 'swap words, 64 MiB', SPEED, [
        Figure(f'{bits} bits', f'words<{words}>/67108864/0', 0.6,
               {'memcpy': 'words<byMemcpy>/67108864/0'})
        for bits, words in ((16, 'shorts'), (32, 'longs'))]),
    Row('byteorder', 'convert a record', TIME, [
        Figure(number, f'records<vxSwapRecord{number}, {size}>', 1.3,
               {'by hand': f'records<hand{number}, {size}>'})
        for number, size in (('229', 66), ('241', 152), ('249', 12), ('252', 30))]),

    Row('pool', 'fill and drop, 100,000 of 48 bytes', TIME, [
        Figure('', 'fillAndDrop<Vx>', 1.0,
               {'boost::pool and a call': ['fillAndDrop<Boost>', 'emptyCall']},
               {'std::pmr': 'fillAndDrop<Pmr>'}),
        Figure('', 'fillAndDrop<Vx>', 1 / 3, {'malloc': 'fillAndDrop<Malloc>'})]),
    Row('pool', 'free one at random and take one', TIME, [
        Figure('', 'freeAndTake<Vx>', 0.5, {'malloc': 'freeAndTake<Malloc>'},
               {'boost::pool': 'freeAndTake<Boost>', 'std::pmr': 'freeAndTake<Pmr>'})]),
    Row('pool', 'a pool of 1,000,000 started anew', TIME,
        [Figure('', 'startAnew<Vx>', 0.1, {'boost::pool': 'startAnew<Boost>'})]),

    Row('sampling', 'fill a sample table', TIME, [
        Figure(f'{pattern}, n = {n}', f'{pattern}/{n}', 1.15,
               {'bare calls': f'{pattern}BareCalls/{n}'},
               {'with memory': f'{pattern}BareCallsAndMemory/{n}'})
        for pattern in ('square', 'disk') for n in (4, 8)],
        remark='The bare calls leave out the memory of the table, which is beside them, and the '
               'arithmetic between the calls.'),
    Row('sampling', 'a pixel of 16 samples', TIME,
        [Figure('', 'pixel', 2.0, {'the same sums in line': 'pixelInLine'})],
        remark='Each sample takes calls into the shared library.'),

    Row('text', 'open and close a pinned stream', TIME, [
        Figure('in "C"', 'stream/vxutil', 1.15, {'fopen, fclose': 'stream/fopen'}),
        Figure('under a decimal comma', 'stream/vxutil_decimal_comma', 1.15,
               {'fopen, fclose': 'stream/fopen'},
               remark='Two changes of the locale of the process, in the C library.')]),
    Row('text', 'lines', SPEED, [
        Figure('read', 'line/vxutil', 0.9, {'fgets': 'line/fgets'},
               remark='`fgets` does not tell how much it has read, so the end is looked for again.'),
        Figure('read and trim', 'trimmed/vxutil', 0.8, {'fgets, GLib': 'trimmed/fgets_and_glib'})]),
]


def benchmarks(figure):
    """All benchmarks that a figure needs."""
    for ours in figure.ours if isinstance(figure.ours, list) else [figure.ours]:
        yield ours
    if figure.less:
        yield figure.less
    for at in (*figure.peers.values(), *figure.also.values()):
        yield from at if isinstance(at, list) else [at]
