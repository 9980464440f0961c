#!/usr/bin/env python3
"""The program vxutil as its users run it: tool_test.py PROGRAM SAMPLES [unittest arguments]"""
import contextlib
import ctypes
import fcntl
import json
import math
import os
import pty
import re
import resource
import shlex
import shutil
import signal
import statistics
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest
import xml.etree.ElementTree as xml
import zlib
from pathlib import Path

PROGRAM, SAMPLES = map(Path.resolve, map(Path, sys.argv[1:3]))
NOISE = SAMPLES / 'netpbm_noise_33x29x3_1B_rle.sgi'
HEAD = 512  # bytes of an image file before its rows or tables


def png(path, width, rows, planes, bits, interlaced=0, height=None):
    """Writes a PNG file of lines given as bytes. Its head may promise another height."""
    def chunk(kind, data):
        return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))
    head = struct.pack('>IIBBBBB', width, height or len(rows), bits, (0, 4, 2, 6)[planes - 1], 0, 0, interlaced)
    data = zlib.compress(b''.join(b'\0' + row for row in rows))
    path.write_bytes(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', head) + chunk(b'IDAT', data) + chunk(b'IEND', b''))


def image_head(width, height, planes, kind=1, dimension=3):
    return struct.pack('>6H', 474, kind, dimension, width, height, planes).ljust(HEAD, b'\0')


def sparse_image(path, width, height):
    """A verbatim image of zeros that takes no room on the disk."""
    path.write_bytes(image_head(width, height, 1))
    os.truncate(path, HEAD + width * height)


# Programs inherit which signals are ignored or blocked: a job in the background may ignore SIGINT. Python
# itself ignores two, and restores these in its children.
signal.pthread_sigmask(signal.SIG_SETMASK, ())
for number in signal.valid_signals() - {signal.SIGPIPE, signal.SIGXFSZ, signal.SIGKILL, signal.SIGSTOP}:
    signal.signal(number, signal.SIG_DFL)


def as_a_plain_user():
    """What a child does before it runs: permissions count, for root too."""
    for capability in (1, 2):  # CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH
        ctypes.CDLL(None).prctl(24, capability)  # PR_CAPBSET_DROP


def on_a_full_disk(size):
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


def read_terminal(terminal):
    try:
        return os.read(terminal, 4096)
    except OSError:  # how the end of a terminal reads
        return b''


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory())).resolve()
        self.registry = self.folder / 'registry'
        self.environment = dict(os.environ, VX_REGISTRY_DIR=str(self.registry), ZOR_TEXTURE_PATH='',
                                ZOR_IES_PATH='', LC_ALL='C.UTF-8')

    def start(self, command, **options):
        return subprocess.Popen([PROGRAM, *shlex.split(command)], cwd=self.folder, env=self.environment, **options)

    def run_tool(self, command, *files, code=0, error='', env=(), **options):
        """Checks exit code and errors, which are single lines; returns standard output with ~ for the folder."""
        done = subprocess.run([PROGRAM, *shlex.split(command), *files], cwd=self.folder, text=True, check=False,
                              env={**self.environment, **dict(env)},
                              **{'stdout': subprocess.PIPE, 'stderr': subprocess.PIPE, 'errors': 'surrogateescape',
                                 **options})
        self.assertEqual((done.returncode, done.stderr == ''), (code, error == ''), done)
        self.errors = done.stderr.splitlines()
        self.assertTrue(all(line.startswith('vxutil: ') for line in self.errors), done.stderr)
        for part in error.split('...'):
            self.assertIn(part, done.stderr)
        return (done.stdout or '').replace(str(self.folder), '~')

    def refuses(self, code, command, errors, **more):
        """Runs a command with each of some arguments, which leaves the files that it was to write as they were."""
        kept = [self.folder / 'kept', self.folder / 'kept.png']
        for arguments, error in errors.items():
            for file in kept:
                file.write_text('kept')
            self.assertEqual(self.run_tool(f'{command} {arguments}', code=code, error=error, **more), '')
            self.assertEqual([file.read_text() for file in kept] + self.leftovers(), ['kept', 'kept'], arguments)

    def paths(self, options='', **more):
        """The directories and their levels."""
        lists = json.loads(self.run_tool('paths --json ' + options, **more))
        return [(entry['path'], entry['level']) for one in lists for entry in one['directories']]

    def on_terminal(self, command, *files, **environment):
        """What a terminal shows of a command, with ~ for the folder."""
        ours, theirs = pty.openpty()
        with subprocess.Popen([PROGRAM, *shlex.split(command), *files], cwd=self.folder, stdout=theirs, stderr=theirs,
                              env={**self.environment, **environment}):
            os.close(theirs)
            shown = b''.join(iter(lambda: read_terminal(ours), b''))
        os.close(ours)
        return shown.decode(errors='surrogateescape').replace('\r', '').replace(str(self.folder), '~')

    def leftovers(self):
        return list(self.folder.rglob('.vxutil-*'))

    def test_command_line(self):
        for words in ('', 'paths', 'paths add', 'paths remove', 'paths move', 'find', 'image', 'image info',
                      'image check', 'image stats', 'image compare', 'image convert', 'match', 'samples'):
            self.assertRegex(self.run_tool(words + ' --help'), r'(?s)\A(?!.*(:\{|INT in)).*\nExamples?:\n  vxutil ')
        self.assertRegex(self.run_tool('--version'), r'^vxutil \d+\.\d+\.\d+$')
        for command in ('', 'find', 'image', 'image convert a', 'paths --level moon', 'paths move a b', 'paths confirm',
                        'paths export --json', 'samples --pattern disk --grid 65 -o a', "paths add ''",
                        "paths remove ''", "find a ''", "image info ''", "image check ''", "image convert '' a",
                        "image convert a ''", "samples --pattern disk --grid 2 -o ''"):
            self.run_tool(command, code=2, error='an empty name...--help' if "''" in command else '--help')
        for command, error in (('fly', 'which fly is not'), ('paths move a 1 [c d', 'unexpected: [c d'),
                               ('find -dash.sgi', 'unknown option -dash.sgi; a file of this name is ./-dash.sgi')):
            self.run_tool(command, code=2, error=error + '...--help')
        with open('/dev/full', 'w', encoding='ascii') as full:
            self.run_tool('paths', code=1, error='vxutil: standard output: could not be written', stdout=full)

    def test_colour(self):
        self.environment['ZOR_TEXTURE_PATH'] = f'{self.folder};/none'
        (self.folder / 'oak').touch()
        for command, red, green in (('find oak elm', 'not found', '~/oak'), ('find --list', '', '~/oak'),
                                    ('find --explain oak', '', '~/oak: a file of 0 bytes, found first'),
                                    ('paths --category texture', 'no such directory', ''),
                                    ('paths check --category texture', 'no such directory (texture, merged, position 1)', '')):
            colours = [(code, text) for code, text in (('32', green), ('31', red)) if text]
            for options, environment, coloured in (('', {}, True), ('', {'NO_COLOR': '1'}, False),
                                                   ('', {'TERM': 'dumb'}, False), ('--color never', {}, False),
                                                   ('--color always', {'NO_COLOR': '1', 'TERM': 'dumb'}, True)):
                shown = self.on_terminal(f'{options} {command}', **{'TERM': 'xterm', 'NO_COLOR': '', **environment})
                self.assertEqual(re.findall('\x1b\\[(3.)m(.*?)\x1b\\[0m', shown), colours if coloured else [])
        self.assertEqual(self.run_tool('find oak', env={'TERM': 'xterm'}), '~/oak\n')
        self.assertEqual(self.run_tool('find oak --color always'), '\x1b[32m~/oak\x1b[0m\n')

    def test_paths_are_kept(self):
        for name in 'abc':
            (self.folder / name).mkdir()
        for edit, error in (('add ./b/. c// --at 0', ''), ('add a', ''), ('add /d --at 1', '/d: warning: no such dir'),
                            ('move c 0', ''), ('move 2 1', ''), ('remove b', '')):
            self.run_tool('paths ' + edit, error=error)
        self.assertEqual(self.paths('--level user'), [('~/c', 'user'), ('/d', 'user'), ('~/a', 'user')])
        self.assertIn(f'"0"="{self.folder}/c"', (self.registry / 'user.reg').read_text())
        self.run_tool('paths add --level machine /d', error='warning')
        self.run_tool('paths --category web add', '/lamps/%"\xe4"', error='warning')
        self.assertEqual(self.paths('--category texture', env={'ZOR_TEXTURE_PATH': '/e;/d'}),
                         [('/e', 'environment'), ('/d', 'environment'), ('~/c', 'user'), ('~/a', 'user')])
        self.assertEqual(self.run_tool('paths --category web', env={'ZOR_IES_PATH': self.folder}),
                         'web, merged\n   0  ~  (environment)\n   1  /lamps/%"\xe4"  (user)  no such directory\n')
        entries = ({'path': '/\ufffd\n', 'path_hex': '2fff0a'}, {'path': '/\ufffd', 'path_hex': '2fe282'},
                   {'path': '/\ufffd\xe4'}, {'path': '/', 'exists': True})
        gone = {'level': 'environment', 'exists': False, 'fault': 'no such directory'}
        directories = [{**gone, **entry} for entry in entries]
        del directories[3]['fault']
        self.assertEqual(json.loads(self.run_tool('paths --json --level environment --category web', env={
            'ZOR_IES_PATH': '/\udcff\n;/\udce2\udc82;/\ufffd\xe4;/'})),
            [{'category': 'web', 'level': 'environment', 'directories': directories}])

    def test_whole_lists(self):
        for name in ('a', 'b\n\xe4', 'c', 'shut'):
            (self.folder / name).mkdir()
        (self.folder / 'file').touch()
        self.run_tool('paths add a c shut --at 0')
        self.assertEqual(self.run_tool('paths check --category texture'), 'texture, merged: 3 good, 0 bad\n')
        (self.folder / 'list').write_text(self.run_tool('paths export').replace('~', str(self.folder)))
        self.run_tool('paths remove 0 c c 1', 'shut')
        self.assertEqual(self.paths(), [])
        self.run_tool('paths add', 'b\n\xe4', 'file', 'gone', error='file: warning: not a dir...gone: warning: no such')
        self.run_tool('paths export', code=1, error='line break in its name: use -0')
        listed = self.run_tool('paths export -0')
        self.assertEqual(listed, '~/b\n\xe4\0~/file\0~/gone\0')
        self.run_tool('paths --category web import list')
        (self.folder / 'shut').chmod(0)
        self.refuses(1, 'paths', {'import none': 'none: No such', 'add c c': 'already', 'remove 0 7': '7: is not in'})
        self.run_tool('paths import - -0', input=listed.replace('~', str(self.folder)), error='warning')
        self.assertEqual(self.run_tool('paths check', code=1, preexec_fn=as_a_plain_user, error=''.join((
            'file: not a directory (texture, merged, position 1)...gone: no such directory (texture, merged, position 2)',
            '...shut: closed (Permission denied) (web, merged, position 2)'))),
            'texture, merged: 1 good, 2 bad\nweb, merged: 2 good, 1 bad\n')

    def test_edit_waits_ten_seconds(self):
        self.registry.mkdir()
        folder = os.open(self.registry, os.O_RDONLY)
        fcntl.flock(folder, fcntl.LOCK_EX)
        with self.start('paths add .', stderr=subprocess.PIPE, text=True) as late:
            self.assertIn('registry: waiting for another edit to end', late.stderr.readline())
            self.assertIn('registry: locked by another edit for ten seconds', late.stderr.readline())
        self.assertEqual((late.returncode, self.paths()), (1, []))
        with self.start('paths add .', stderr=subprocess.PIPE, text=True) as patient:
            self.assertIn('waiting', patient.stderr.readline())
            os.close(folder)
        self.assertEqual((patient.returncode, self.paths()), (0, [('~', 'user')]))

    def test_paths_that_cannot_be_kept(self):
        self.run_tool('paths add /a', error='warning')
        self.refuses(1, 'paths', {
            'add /a/.': 'already', "add '/a;b'": 'semicolon', 'add /..': 'root', 'add /' + 'x' * 259: '259 bytes',
            'remove /b': 'not in the list', 'remove 7': '7: is not in', f'remove {10 ** 20}': '0: is not in',
            'add /b --at 2': 'list of 1', 'move /a 1': 'list of 1', 'add /50%/%HOME%': '%NAME%'})
        self.refuses(2, 'paths', {'add /b --level environment': '--level', 'remove /a --json': '--json'})
        self.refuses(1, 'paths', {'add /b': 'HOME: is not set'},
                     env={'VX_REGISTRY_DIR': '', 'XDG_CONFIG_HOME': '', 'HOME': ''})
        (self.folder / 'odd/user.reg').mkdir(parents=True)
        for name, mode in (('closed', 0o500), ('linked', 0o700), ('locked', 0o700), ('shut', 0o700)):
            (self.folder / name).mkdir(mode)
        (self.folder / 'locked/user.reg.lock').symlink_to('no/where')
        (self.folder / 'linked/user.reg').symlink_to('../closed/user.reg')
        (self.folder / 'shut/user.reg').touch(0)
        (self.folder / 'shut/machine.reg').touch(0o400)
        for folder, error, commands, first in (
                ('registry/user.reg/x', f'{self.registry}/user.reg: is no directory', ['paths add /b'], None),
                ('odd', 'user.reg: is no regular', ['paths add /b', 'paths', 'find oak'], None),
                ('locked', 'user.reg: does not hold', ['paths add /b'], None),
                ('registry', 'user.reg: does not hold', ['paths add /b', 'paths remove /a'], on_a_full_disk(100)),
                ('linked', 'user.reg: does not hold', ['paths add /b'], as_a_plain_user),
                ('closed', 'denied', ['paths add /b'], as_a_plain_user),
                ('shut', 'machine.reg: Permission denied', ['paths add /b --level machine'], as_a_plain_user),
                ('shut', 'user.reg: Permission denied', ['paths', 'find oak'], as_a_plain_user)):
            for command in commands:
                self.run_tool(command, code=1, error=error, preexec_fn=first,
                              env={'VX_REGISTRY_DIR': self.folder / folder})
        self.run_tool('paths add /b', env={'VX_REGISTRY_DIR': 'new/registry'}, error='warning')
        self.assertEqual((self.paths(), list(self.folder.glob('*/*.new'))), ([('/a', 'user')], []))
        file = self.registry / 'user.reg'
        file.write_text(file.read_text().replace('"0"="/a"\n', ''.join(f'"{i}"="/{i}"\n' for i in range(127))))
        self.run_tool('paths add /' + 'x' * 258, error='File name too long')
        self.run_tool('paths add /one-more', code=1, error='128')

    def test_damaged_registry_files_are_named(self):
        self.registry.mkdir()
        for level in ('user', 'machine'):
            (self.registry / f'{level}.reg').write_text('REGEDIT4\n\nbroken line here\n')
        for command, code, error in (
                ('paths remove /n', 1, 'not in the list'), ('find a', 1, 'machine.reg: is damaged'),
                ('paths --level user', 1, 'user.reg: is damaged'),
                ('paths', 1, 'user.reg: is damaged...machine.reg: is damaged'),
                ('paths add /o', 0, 'user.reg.damaged...machine.reg.damaged'),
                ('paths add /n', 0, 'warning'),
                ('paths', 1, 'user.reg: was damaged and is kept as...machine.reg: was')):
            self.run_tool(command, code=code, error=error)
        for damaged in list(self.registry.glob('*.damaged')):
            self.assertIn('broken', damaged.read_text())
            damaged.unlink()
        self.assertEqual(self.paths(), [('/o', 'user'), ('/n', 'user')])

    def test_edits_at_the_same_time_are_all_kept(self):
        edits = [(f'/{i}', ('user', 'machine')[i % 2]) for i in range(12)]
        quiet = {'stdout': subprocess.DEVNULL, 'stderr': subprocess.DEVNULL}
        started = [self.start(command, **quiet) for directory, level in edits
                   for command in (f'paths add {directory} --level {level}', 'paths')]
        self.assertEqual([process.wait() for process in started], [0] * len(started))
        self.assertEqual(sorted(self.paths()), sorted(edits))

    def test_find(self):
        for place in ('a/oak', 'c', 'd', 'e', 'shut'):
            (self.folder / place).mkdir(parents=True)
        (self.folder / 'c/oak').symlink_to('oak')
        for place in ('b', 'd/oak', 'e/oak', 'd/[x,y]', 'd/{}', 'e/shut'):
            (self.folder / place).write_text('12345')
        for place in ('shut', 'e/shut'):
            (self.folder / place).chmod(0)
        self.environment['ZOR_TEXTURE_PATH'] = ';'.join(f'{self.folder}/{name}' for name in 'abcde')
        self.assertEqual(self.run_tool('find oak [x,y] {}', self.folder / 'e/oak'),
                         'oak\t~/d/oak\n[x,y]\t~/d/[x,y]\n{}\t~/d/{}\n~/e/oak\t~/e/oak\n')
        explained = ('oak\n    ~/a/oak: a directory, passed over\n'
                     '    ~/b/oak: directory ~/b: not a directory, passed over\n'
                     '    ~/c/oak: not readable (Too many levels of symbolic links), passed over\n'
                     '  * ~/d/oak: a file of 5 bytes, found first\n')
        self.assertEqual(self.run_tool('find --explain oak'), explained)
        self.assertEqual(self.run_tool('find --all --explain oak'),
                         explained + '    ~/e/oak: a file of 5 bytes, after the one that wins\n')
        self.run_tool('find oak elm --category web', code=1, error='search path is empty')
        odd = '\udce4\xe4\udce2\udc82'
        self.run_tool('find', '\n\x1b' + odd, code=1, error=f'vxutil: ??{odd}: not found')
        self.assertEqual(self.on_terminal('find', '\n\x1b' + odd, TERM='dumb'), 'vxutil: ???\xe4??: not found\n')
        self.environment['ZOR_TEXTURE_PATH'] = f'{self.folder}/shut;{self.folder}/e'
        denied = 'not readable (Permission denied)'
        self.assertEqual(self.run_tool('find --explain shut', code=1, preexec_fn=as_a_plain_user,
                                       error=f'{self.folder}/e/shut: found, but not readable: Perm'),
                         f'shut\n    ~/shut/shut: directory ~/shut: closed (Permission denied), passed over\n'
                         f'  * ~/e/shut: {denied}, found first, so the search ends here\n')
        os.mkfifo(self.folder / 'e/elm')
        self.assertEqual(self.run_tool('find --all --explain elm none/../oak', code=1, error='elm: not found'),
                         'elm: not found\n    ~/shut/elm: missing, passed over\n'
                         '    ~/e/elm: not a regular file, passed over\n'
                         'none/../oak: not found\n    ~/shut/oak: missing, passed over\n'
                         '    ~/e/oak: a file of 5 bytes, passed over: missing as it is written\n')
        self.assertEqual(self.run_tool(f'find {self.folder.relative_to("/")}/e/oak', env={'ZOR_TEXTURE_PATH': '/'}),
                         '~/e/oak\n')

    def test_find_many(self):
        for name in ('a/Oak.sgi', 'a/elm.png', 'a/fir.1001.sgi', 'b/fir.1001.sgi', 'b/fir.1012.sgi', 'b/fir.x.sgi',
                     'b/floor/ash #2\n\xe4.sgi', 'b/.hidden.sgi', 'b/s007'):
            (self.folder / name).parent.mkdir(parents=True, exist_ok=True)
            (self.folder / name).write_text('')
        self.environment['ZOR_TEXTURE_PATH'] = f'{self.folder}/a;{self.folder}/b;{self.folder}/c:{self.folder}/d'
        tiles = 'fir.1001.sgi\t~/a/fir.1001.sgi\nfir.1012.sgi\t~/b/fir.1012.sgi\n'
        self.assertEqual(self.run_tool("find 'fir.<UDIM>.sgi'"), tiles)
        self.assertEqual(self.run_tool('find *.sgi floor/*2* s###', self.folder / '?/s*'),
                         'Oak.sgi\t~/a/Oak.sgi\n' + tiles + 'fir.x.sgi\t~/b/fir.x.sgi\nfloor/ash #2\n\xe4.sgi\t'
                         '~/b/floor/ash #2\n\xe4.sgi\ns007\t~/b/s007\n~/b/s007\t~/b/s007\n')
        self.assertEqual(self.run_tool('find --files-from - -0', input='s007\0floor/ash #2\n\xe4.sgi'),
                         's007\t~/b/s007\nfloor/ash #2\n\xe4.sgi\t~/b/floor/ash #2\n\xe4.sgi\n')
        self.run_tool('find --files-from none', code=1, error='none: No such file')
        log = self.start('find s007 z.* --files-from -', text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT).communicate('\ns007\0x\ns007\n')[0]
        found = f's007\t{self.folder}/b/s007\n'
        self.assertEqual(log, found + 'vxutil: z.*: not found\nvxutil: s007?x: not found: no file has a NUL byte in its '
                         'name\n' + found)
        (self.folder / 'b/floor/loop').symlink_to('..')
        (self.folder / 'a/s007').touch()
        listed = self.run_tool('find --list')
        self.assertEqual(re.findall('^(?:.hid|elm|floor|s).*', listed, re.M), [
            '.hidden.sgi\t~/b/.hidden.sgi', 'elm.png\t~/a/elm.png', 'floor/ash #2', 's007\t~/a/s007',
            's007\t~/b/s007\thidden by ~/a/s007'])
        self.assertEqual({one['name']: one['hides'] for one in map(json.loads, self.run_tool(
            'find --list --json').splitlines()) if one['hides']},
            {'s007': [{'path': '~/b/s007'}], 'fir.1001.sgi': [{'path': '~/b/fir.1001.sgi'}]})
        self.run_tool('find --list oak', code=2, error='--list excludes name')
        (self.folder / 'b/floor').chmod(0)
        self.run_tool('find --list', code=1, error='b/floor: Permission denied', preexec_fn=as_a_plain_user)
        (self.folder / 'b/floor').chmod(0o700)
        for name, hints in (('oak.sgi', ['missing, but Oak.sgi is there (case differs)', 'missing']),
                            ('elm.sgi', ['missing, but elm.png is there', 'missing']),
                            ('Floor/x', ['directory ~/a/Floor: no such directory',
                                         'directory ~/b/Floor: no such directory, but floor is there (case differs)'])):
            answer = json.loads(self.run_tool('find --explain --json', name, code=1, error='not found'))
            self.assertEqual([one['text'] for one in answer['candidates']], hints + [
                'directory ~/c:~/d: no such directory (directories are separated by ; and not :)'])
            self.assertEqual([one['state'][:9] for one in answer['candidates']],
                             ['missing d' if 'dir' in hint else 'missing f' for hint in hints] + ['missing d'])

    def test_samples_of_other_programs_are_good(self):
        for line in re.findall(r'^\w.*', (SAMPLES.parent / 'samples.txt').read_text(), re.M):
            name, width, height, planes, size, storage, *_ = line.split()
            self.assertRegex(self.run_tool('image info --long', SAMPLES / name),
                             f'size +{width} x {height}, {planes} plane(.|\n)*elements +{size} byte'
                             f'(.|\n)*storage +{storage}\n.*big-endian')
            self.assertIn(': good, ', self.run_tool('image check', SAMPLES / name))

    def test_damage_is_named(self):
        good = NOISE.read_bytes()
        bad = bytearray(good)
        for row, size in ((2, 3), (34, 3), (35, 3), (37, 3), (80, -1)):  # 3: a packet less than was stored
            struct.pack_into('>i', bad, HEAD + 4 * (29 * 3 + row), size)
        (self.folder / 'bad').write_bytes(bad)
        what = 'reading an image: a row is damaged or incomplete'
        self.assertIn(': good, 87 rows read\n', self.run_tool('image check bad', NOISE, code=1, error='bad'))
        self.assertEqual(self.errors, [
            f'vxutil: bad: plane 0, row 2: {what}', f'vxutil: bad: plane 1, rows 5 to 6: {what}',
            f'vxutil: bad: plane 1, row 8: {what}', 'vxutil: bad: plane 2, row 22: was never written'])
        for error, data in {
                'header is incomplete': b'', 'not an SGI image': b'x' * 600, 'row starts': good[:700],
                'elements of 3 bytes': image_head(1, 1, 1, kind=3), 'neither': image_head(1, 1, 1, kind=0x201),
                'dimension 4': image_head(1, 1, 1, dimension=4), 'no elements': image_head(1, 1, 0),
                'cannot be reached': image_head(2, 2, 2, dimension=2) + b'12345678',
                'only 16383': image_head(16384, 1, 1, kind=2),
                'plane 0, row 2: the file ends before it, 4294836223 of 4294836225 rows':
                image_head(9999, 65535, 65535) + bytes(2 * 9999)}.items():
            (self.folder / 'file').write_bytes(data)
            self.run_tool('image check file', code=1, error=error)
        os.mkfifo(self.folder / 'pipe')
        for name, error in (('none', 'none: No such file'), ('.', 'a directory'), ('pipe', 'pipe: is not a regular')):
            self.refuses(1, 'image', {f'info {name}': error, f'check {name}': error, f'convert {name} kept': error})

    def test_other_programs_read_what_is_converted(self):
        readers = ('sgitopnm', 'ffmpeg', 'oiiotool')
        if not all(map(shutil.which, readers)) and 'VX_REQUIRE_READERS' not in os.environ:
            self.skipTest(f'needs {readers}')

        def output(command):
            return subprocess.run(command.split(), cwd=self.folder, capture_output=True, check=True).stdout
        width, height, noise = 300, 5, NOISE.read_bytes()[-2000:]
        for number, pixels in enumerate('gray gray16be ya8 ya16be rgb24 rgb48be rgba rgba64be'.split()):
            planes, size = number // 2 + 1, number % 2 + 1
            row_bytes = width * planes * size
            # Noise and a run; from 0 to the most that there is, between which some readers stretch.
            rows = [(bytes(8) + noise[y:y + row_bytes // 2]).ljust(row_bytes, b'\xff') for y in range(height)]
            picture = b''.join(rows)
            png(self.folder / 'in.png', width, rows, planes, 8 * size)
            for storage in ('--rle', '--verbatim'):
                self.run_tool('image convert in.png out.sgi ' + storage)
                self.run_tool('image convert out.sgi back.png')
                for z in range(planes):
                    plane = b''.join(picture[x:x + size] for x in range(z * size, len(picture), planes * size))
                    self.assertEqual(output(f'sgitopnm -channel {z} out.sgi'),
                                     b'P5\n%d %d\n%d\n' % (width, height, 256 ** size - 1) + plane)
                self.run_tool('image convert out.sgi out.tif')
                for name in ('out.sgi',) if planes % 2 == 0 else ('out.sgi', 'out.tif'):  # alpha is multiplied in
                    listed = b' '.join(re.findall(rb'Pixel .*: (.*) \(', output('oiiotool --dumpdata ' + name)))
                    self.assertEqual(b''.join(int(element).to_bytes(size, 'big') for element in listed.split()), picture)
                for name in ('back.png',) if planes == 2 else ('back.png', 'out.sgi'):  # ffmpeg takes no 2 planes
                    self.assertEqual(output(f'ffmpeg -v error -i {name} -f rawvideo -pix_fmt {pixels} -'), picture,
                                     (planes, size, name))

    def test_statistics(self):
        wide = [256 * 7, 256 * 7 + 1, 65535, 256 * 9]
        png(self.folder / 'wide.png', 2, [struct.pack('>2H', *wide[:2]), struct.pack('>2H', *wide[2:])], 1, 16)
        png(self.folder / 'two.png', 3, [bytes((5, 255, 5, 255, 8, 255))], 2, 8)
        self.run_tool('image convert wide.png wide --verbatim')
        listed = self.run_tool('image stats --json wide wide.png two.png')
        planes = [json.loads(line)['planes'] for line in listed.splitlines()]
        for name, plane, values in (('wide', planes[0], wide), ('wide.png', planes[1], wide),
                                    ('two.png', planes[2][:1], [5, 5, 8]), ('two.png', planes[2][1:], [255] * 3)):
            bins = [value // 256 if name[0] == 'w' else value for value in values]
            self.assertEqual(plane, [{
                'min': min(values), 'max': max(values), 'mean': statistics.fmean(values),
                'deviation': statistics.pstdev(values), 'histogram': [bins.count(bin) for bin in range(256)]}], name)
        self.assertEqual(self.run_tool('image stats two.png --svg two.svg'), 'two.png: 3 x 1; plane 0: 5 to 8, mean 6.00, '
                         'deviation 1.41; plane 1: 255 to 255, mean 255.00, deviation 0.00\n')
        bars = [group.find('{*}path[@fill]').get('d') for group in xml.parse(self.folder / 'two.svg').findall('{*}g')]
        self.assertEqual(bars, ['M10 0v-120.00h2V0zM16 0v-60.00h2V0z', 'M510 0v-120.00h2V0z'])
        self.refuses(2, 'image', {'stats two.png wide --svg kept': 'kept: is a drawing of one'})

    def test_comparison(self):
        png(self.folder / 'a.png', 2, [bytes((9, 255, 50, 255)), bytes((0, 255, 7, 255))], 2, 8)
        png(self.folder / 'b.png', 2, [struct.pack('>4H', 9 * 257, 65535, 50 * 257, 65535 - 13107),
                                       struct.pack('>4H', 257, 65535, 7 * 257, 65535)], 2, 16)
        for command in ('convert a.png a.sgi', 'convert b.png b.sgi', 'compare a.sgi a.png'):
            self.run_tool('image ' + command)
        found = json.loads(self.run_tool('image compare a.sgi b.png --json --picture out.png', code=1))
        self.assertAlmostEqual(found.pop('root_mean_square'), math.sqrt((.04 + 255 ** -2) / 8))
        self.assertEqual(found, {
            'file': 'a.sgi', 'good': True, 'with': 'b.png', 'differ': True, 'elements': 8, 'different': 2, 'failing': 2,
            'largest': .2, 'plane': 1, 'row': 1, 'column': 1, 'mean': (.2 + 1 / 255) / 8})
        picture = json.loads(self.run_tool('image stats --json out.png'))
        self.assertEqual([(plane['max'], plane['histogram'][0]) for plane in picture['planes']], [(1285, 3), (65535, 3)])
        for options, code in (('--fail .1 --failpercent 12.5', 0), ('--fail .1 --failpercent 12.4', 1), ('--fail .2', 0),
                              ('--failpercent 50 --hardfail .19', 1)):
            self.assertIn(('within limits', 'differ')[code] +
                          ': 2 of 8 elements differ, at most by 0.2 in plane 1, row 1, column 1;',
                          self.run_tool('image compare b.sgi a.png ' + options, code=code), options)
        self.refuses(1, 'image', {'compare a.sgi none': 'none: No such'})
        self.run_tool('image compare a.sgi', NOISE, code=1, error='is 33 x 29 in 3 planes, and a.sgi is 2 x 2 in 2')

    def test_settings_of_converted_images(self):
        shutil.copy(SAMPLES / 'imagemagick_text_61x44x3_1B_rle.sgi', self.folder / 'in')
        for words in ('in a --verbatim --host-order --name [x]', 'a b', 'in in.PNG', 'b b.PNG'):
            self.run_tool('image convert ' + words)
        self.assertRegex(self.run_tool('image info --long a b'),
                         rf'\Aa\n +name +\[x\]\n(.|\n)*verbatim\n.*{sys.byteorder}-endian(.|\n)*'
                         r'\nb\n +name +\[x\]\n(.|\n)*run-length\n.*big-endian')
        self.assertEqual((self.folder / 'b.PNG').read_bytes(), (self.folder / 'in.PNG').read_bytes())

    def test_foreign_formats(self):
        for sample in sorted(SAMPLES.glob('*.sgi')):
            self.run_tool('image convert', sample, 'out.tiff')
            self.run_tool('image convert out.tiff back')
            self.run_tool('image compare back', sample)
        smooth = [bytes(value for x in range(64) for value in (3 * x, 4 * y, x + y)) for y in range(48)]
        png(self.folder / 'smooth.png', 64, smooth, 3, 8)
        for command in ('convert smooth.png smooth', 'convert smooth out.jpg', 'convert out.jpg back',
                        'compare out.jpg back', 'compare out.jpg smooth --fail .02'):
            self.run_tool('image ' + command)
        for name in ('out.jpg', 'out.tiff'):
            data = (self.folder / name).read_bytes()
            (self.folder / ('cut.' + name)).write_bytes(data[:len(data) * 2 // 3])
        self.refuses(1, 'image convert', {'cut.out.jpg kept': 'cut.out.jpg: ', 'cut.out.tiff kept': 'cut.out.tiff: '})
        png(self.folder / 'alpha.png', 2, [b'1234'], 2, 8)
        self.run_tool('image convert alpha.png alpha')
        self.run_tool('image convert alpha alpha.jpg', code=1, error='alpha.jpg: JPEG takes 1 or 3 planes')
        for name in ('a.tif', 'a.jpg'):
            self.run_tool('image convert smooth', name, code=1, error=name, preexec_fn=on_a_full_disk(500))
            self.assertEqual(list(self.folder.glob('a.*')) + self.leftovers(), [])
        for name in ('tree/one', 'tree/two'):
            shutil.copytree(SAMPLES, self.folder / name)
        self.run_tool('image convert -q -r tree -o jpegs --to jpg --depth 8 --planes 0')
        self.assertEqual(len(list(self.folder.rglob('jpegs/*/*.jpg'))), 2 * len(list(SAMPLES.glob('*.sgi'))))

    def test_conversion_of_trees(self):
        names = ('a b.sgi', 'deep/\xe4\n.rgb', 'deep/oak.1001')
        for name in names:
            (self.folder / 'tree' / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(NOISE, self.folder / 'tree' / name)
        (self.folder / 'tree/deep/cut.bw').write_bytes(image_head(2, 3, 1) + b'1234')
        (self.folder / 'tree/deep/cut.sgi').touch()
        self.assertEqual(self.run_tool('image convert -r tree -o out -j 2', code=1, error='cut.bw: ...cut.png, as tree/'),
                         'out/a b.png: written\nout/deep/\xe4?.png: written\n2 good, 2 bad\n')
        self.assertEqual(sorted(path.name for path in self.folder.rglob('out/**/*')), ['a b.png', 'deep', '\xe4\n.png'])
        os.utime(self.folder / 'out/a b.png', (1, 1))
        (self.folder / 'list').write_text('\0'.join('tree/' + name for name in names))
        for options, written in (('-o out/tree', [True] * 3), ('-o out/tree', [False] * 3), ('-o out/tree --always', [True] * 3)):
            listed = self.run_tool('image convert --files-from list -0 --json ' + options)
            self.assertEqual([json.loads(line)['written'] for line in listed.splitlines()], written)
        self.assertTrue((self.folder / 'out/tree/tree/deep/oak.1001.png').exists())
        self.assertIn('out/a b.png: written\nout/deep', self.run_tool('image convert -r tree -o out', code=1, error='cut'))
        self.run_tool('image convert -q -r out -o back --to sgi')
        self.run_tool('image compare', self.folder / 'back/a b.sgi', NOISE)
        (self.folder / 'shut').mkdir(0o500)
        self.run_tool('image convert -q -r tree/deep -o shut/new', code=1, error='shut/new: Perm', preexec_fn=as_a_plain_user)
        self.refuses(2, 'image convert', {f"'tree/a b.sgi' kept.{end}": f'kept.{end}: ....png, ....sgi, .rgb'
                                          for end in ('gif', 'bmp', 'exr')})
        self.refuses(2, 'image convert', {'-r tree': 'without -o', 'a b c': 'without -o', '-o out': 'file is required'})

    def test_pixels_of_edited_pictures(self):
        def elements(name, kind):
            return [value for value, in struct.iter_unpack(kind, (self.folder / name).read_bytes()[HEAD:])]
        png(self.folder / 'in.png', 3, [bytes(range(1, 7)), bytes(range(7, 13))], 2, 8)
        self.run_tool('image convert in.png out.sgi --verbatim --flip --planes 1,0,1 --depth 16')
        planes = [2, 4, 6, 8, 10, 12], [1, 3, 5, 7, 9, 11], [2, 4, 6, 8, 10, 12]
        self.assertEqual(elements('out.sgi', '>H'), [257 * value for plane in planes for value in plane])
        self.run_tool('image convert out.sgi back.png --flip --depth 8 --planes 1')
        self.run_tool('image convert back.png back.sgi --verbatim')
        self.assertEqual(elements('back.sgi', 'B'), [7, 9, 11, 1, 3, 5])
        (self.folder / 'deep').write_bytes(image_head(5, 1, 1, kind=2) + struct.pack('>5H', 0, 128, 129, 65406, 65535))
        self.run_tool('image convert deep flat --verbatim --depth 8')
        self.assertEqual(elements('flat', 'B'), [0, 0, 1, 254, 255])
        png(self.folder / 'passes.png', 2, [b'1', b'2', b'34'], 1, 8, interlaced=1, height=2)
        self.run_tool('image convert passes.png passes --verbatim')
        self.assertEqual(elements('passes', 'c'), [b'3', b'4', b'1', b'2'])
        self.refuses(1, 'image convert', {'in.png kept --planes 2': 'in.png: has no plane 2, only 0 to 1'})
        self.refuses(2, 'image convert', {'in.png kept --depth 9': '--depth', 'in.png kept --planes 1,x': '--planes'})
        sparse_image(self.folder / 'plain', 100, 100)
        for source, storage in ((NOISE, 'verbatim'), (self.folder / 'plain', 'run-length')):
            self.run_tool('image convert', source, 'small')
            self.assertIn(f'1 byte, {storage}', self.run_tool('image info small'))
            self.run_tool('image compare small', source)

    def test_failed_conversion_leaves_the_output_alone(self):
        png(self.folder / 'good.png', 2, [b'12', b'34'], 1, 8)
        png(self.folder / 'interlaced.png', 40000, [], 1, 8, interlaced=1, height=40000)
        png(self.folder / 'wide.png', 65536, [bytes(65536)], 1, 8)
        png(self.folder / 'long.png', 40000, [bytes(range(200)) * 200], 1, 8)
        png(self.folder / 'large.png', 32768, [], 4, 8, height=32768)
        png(self.folder / 'larger.png', 24064, [], 3, 8, height=59494)  # its last row starts after 4 GiB
        for name, data in {
                'cut.png': (self.folder / 'good.png').read_bytes()[:-14], 'cut': image_head(4, 4, 1) + bytes(15),
                'five': image_head(1, 1, 5) + bytes(5), 'flat': image_head(1, 1, 3, dimension=2) + bytes(3),
                'mapped': image_head(1, 1, 1)[:104] + struct.pack('>i', 3) + bytes(HEAD - 108 + 9)}.items():
            (self.folder / name).write_bytes(data)
        os.mkfifo(self.folder / 'pipe')
        (self.folder / 'folder').mkdir()
        self.refuses(1, 'image convert', {
            'interlaced.png kept': 'interlaced', 'wide.png kept': '65535', 'long.png kept': '--verbatim',
            'long.png kept --verbatim': '--rle', 'larger.png kept --verbatim': '4 GiB', 'cut.png kept': 'cut.png: ',
            'large.png kept --verbatim': 'large.png: Not enough', 'cut kept.png': 'cut: plane 0, row 3: ',
            'five kept': '5 planes', 'flat kept': 'dimension 2', 'mapped kept.png': 'colormap 3',
            'good.png folder': 'folder: is no regular', 'good.png pipe': 'pipe: is no',
            'good.png no/kept': 'no/kept: No such'})
        self.refuses(2, 'image convert', {
            'good.png kept --name ' + 80 * 'x': '79 bytes', 'good.png kept.png': 'kept.png: both',
            'cut kept.png --rle': 'kept.png: ', 'good.png kept --rle --verbatim': 'excludes'})
        self.assertIn('colormap    3', self.run_tool('image info -l mapped'))
        self.run_tool('image check mapped')

    def test_full_disk_leaves_the_output_alone(self):
        self.run_tool('image convert', NOISE, 'noise.png')
        for command, output in (
                (f'image convert {shlex.quote(str(NOISE))}', 'kept.png'), ('image convert noise.png', 'kept'),
                ('image convert --verbatim noise.png', 'kept'), ('samples --pattern disk --grid 2 -o', 'kept')):
            for size in (100, 300, 1000, 2500):
                self.refuses(1, command, {output: f'{output}: ...File too large'}, preexec_fn=on_a_full_disk(size))

    def test_output_keeps_links_permissions_and_owner(self):
        png(self.folder / 'good.png', 2, [b'12', b'34'], 1, 8)
        kept = self.folder / 'sub/kept'
        kept.parent.mkdir()
        for link, target in (('link', kept.parent / 'link'), ('sub/link', '../sub/kept')):
            (self.folder / link).symlink_to(target)
        self.run_tool('image convert good.png link', umask=0o26)
        self.assertEqual(kept.stat().st_mode & 0o7777, 0o640)
        owner = (4711, 4712) if os.getuid() == 0 else (os.getuid(), os.getgid())
        os.chown(kept, *owner)
        kept.chmod(0o6640)  # of which a replaced file shows no set-id bits
        self.run_tool('image convert good.png link')
        self.assertIn('good', self.run_tool('image check', kept))
        status = kept.stat()
        self.assertEqual((status.st_mode & 0o7777, status.st_uid, status.st_gid), (0o640, *owner))

    def test_killed_conversion_leaves_no_half_file(self):
        for name in ('big', 'more'):
            sparse_image(self.folder / name, 32768, 65535)
        for name in 'HUP INT QUIT ABRT USR1 USR2 PIPE ALRM TERM XCPU VTALRM PROF POLL SYS PWR RTMIN RTMAX KILL'.split():
            end = getattr(signal, 'SIG' + name)
            with self.start('image convert big more -o out -j 2') as process:
                while sum(file.stat().st_size > 0 for file in self.leftovers()) < 2:
                    self.assertIsNone(process.poll())
                    time.sleep(0.01)
                process.send_signal(end)
            self.assertEqual(process.returncode, -end)
            self.assertEqual(list(self.folder.glob('out/*.png')) + self.leftovers() * (name != 'KILL'), [], name)

    def test_memory_does_not_grow_with_the_picture(self):
        peaks = []
        for height in (10, 60000):
            sparse_image(self.folder / 'in', 1500, height)
            for names in ('in out.png', 'out.png back'):
                process = self.start('image convert ' + names)
                _, process.returncode, usage = os.wait4(process.pid, 0)
                self.assertEqual(process.returncode, 0)
                peaks.append(usage.ru_maxrss)
        self.assertLess(max(peaks) - min(peaks), 16 << 10)  # KiB; the larger picture has 90 MB

    def test_bar_on_a_terminal_only(self):
        sparse_image(self.folder / ('\xe4' * 90), 16383, 65535)
        for terminal, columns in (('xterm', 50), ('xterm', 80), ('dumb', 0)):
            self.environment['TERM'] = terminal
            ours, theirs = pty.openpty()
            fcntl.ioctl(theirs, termios.TIOCSWINSZ, struct.pack('4H', 24, columns, 0, 0))
            shown = b''
            with self.start('image check ' + '\xe4' * 90, stderr=theirs, stdout=subprocess.DEVNULL) as process:
                os.close(theirs)
                with contextlib.suppress(OSError):  # how the end of a terminal reads
                    while not shown.endswith(b'%'):
                        shown += os.read(ours, 1)
                process.kill()
            os.close(ours)
            # The end of a name is shown, without half a character.
            self.assertRegex(shown.decode(), r'\A\r\.\.\.\xe4+ \[[#.]+\] +\d+%\Z' if columns else r'\A\Z')
            self.assertEqual(len(shown.decode()), columns)

    def test_trees_and_lists(self):
        names = ['tree/' + name for name in ('a b.sgi', 'deep/cut.sgi', 'deep/er/\xe4\xf6.rgb', 'empty.bw', 'x\ny.sgi')]
        bad = (names[1], names[3])
        (self.folder / 'tree/deep/er').mkdir(parents=True)
        for name in names:
            shutil.copy(NOISE, self.folder / name)
        for name in (*bad, 'tree/notes.txt'):
            (self.folder / name).write_bytes(image_head(2, 3, 1) + b'1234')
        (self.folder / 'tree/deep/loop').symlink_to('..')
        for jobs in (1, 3):
            listed = self.run_tool(f'image check -r tree --json -j {jobs}', code=1, error='cut.sgi...empty.bw')
            objects = [json.loads(line) for line in listed.splitlines()]
            self.assertEqual([(one['file'], one['good']) for one in objects], [(n, n not in bad) for n in names])
            self.assertEqual((objects[0]['rows'], objects[1]['faults'][0][:14]), (87, 'plane 0, row 2'))
        (self.folder / 'list').write_text('\0'.join([*names, 'none']))
        with open(self.folder / 'list', encoding='utf-8') as listing:
            self.assertRegex(self.run_tool('image info --null --files-from -', stdin=listing, code=1, error='none: No'),
                             r'\Atree/a b.sgi: 33 x 29, 3 planes of 1 byte, run(.*\n){5}5 good, 1 bad\n\Z')
        (self.folder / 'list').write_text('\n'.join(names[:4]))
        command = ' '.join(map(shlex.quote, (str(PROGRAM), 'image', 'check', '--files-from', 'list')))
        log = subprocess.run(command + ' 2>&1', shell=True, cwd=self.folder, text=True, capture_output=True, check=False)
        self.assertRegex(log.stdout, r'\A.*good.*\n.*deep/cut.sgi: plane.*\n.*good.*\n.*empty.*\n2 good, 2 bad\n\Z')
        self.assertEqual(self.run_tool('image check -q -r tree', code=1, error='cut.sgi'), '')
        self.run_tool('image check --files-from none', code=1, error='none: No such')
        self.refuses(2, 'image', {'info': 'file is required', 'info -j 0 a': '--jobs'})

    def test_samples(self):
        for pattern, inside in (('disk', lambda x, y: x * x + y * y <= 1.001), ('square', lambda x, y: max(x, y) <= 1)):
            self.run_tool(f'samples --pattern {pattern} --grid 3 -o out.svg')
            drawing = xml.parse(self.folder / 'out.svg').getroot()
            groups = drawing.findall('{*}g')
            xs, ys = zip(*(map(int, re.findall(r'\d+', one.get('transform'))[:2]) for one in groups))
            self.assertEqual(drawing.get('viewBox'), f'0 0 {min(xs) + max(xs)} {min(ys) + max(ys)}')  # same margins
            sets = [{(float(dot.get('cx')), float(dot.get('cy'))) for dot in one if dot.get('cx')} for one in groups]
            self.assertEqual([len(dots) for dots in sets], [9] * 67)
            self.assertTrue(all(inside(abs(x), abs(y)) for dots in sets for x, y in dots), pattern)

    def test_match(self):
        self.assertEqual(self.run_tool('match [a-c]*.sgi b.sgi d.sgi [x]'), 'b.sgi\n')
        self.assertEqual(self.run_tool('match *.sgi', input='b.sgi\nb.png\nd.sgi\0x\nc.sgi'), 'b.sgi\nc.sgi\n')
        self.assertEqual(self.run_tool('match [~a] a', code=1), '')
        self.run_tool('match [a a', code=2, error='[a: ')
        self.run_tool("match '' a", code=2, error='an empty')
        self.run_tool('match *', preexec_fn=lambda: os.close(0), code=1, error='standard input: Bad file descriptor')


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
