#!/usr/bin/env python3
"""The program vxutil as its users run it: tool_test.py PROGRAM SAMPLES [unittest arguments]"""
import ctypes
import json
import os
import pty
import random
import re
import resource
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import xml.etree.ElementTree as xml
import zlib
from pathlib import Path

PROGRAM, SAMPLES = map(Path.resolve, map(Path, sys.argv[1:3]))
HEAD = 512  # bytes of an image file before its rows or tables


def png(path, width, rows, planes, bits, interlaced=0):
    """Writes a PNG file of lines given as bytes."""
    def chunk(kind, data):
        return struct.pack('>I', len(data)) + kind + data + struct.pack('>I', zlib.crc32(kind + data))
    head = struct.pack('>IIBBBBB', width, len(rows), bits, (0, 4, 2, 6)[planes - 1], 0, 0, interlaced)
    data = zlib.compress(b''.join(b'\0' + row for row in rows))
    path.write_bytes(b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', head) + chunk(b'IDAT', data) + chunk(b'IEND', b''))


def image_head(width, height, planes, kind=1, dimension=3):
    return struct.pack('>6H', 474, kind, dimension, width, height, planes).ljust(HEAD, b'\0')


def sparse_image(path, width, height):
    """A verbatim image of zeros that takes no room on the disk."""
    path.write_bytes(image_head(width, height, 1))
    os.truncate(path, HEAD + width * height)


LIBC = ctypes.CDLL(None)

# Programs inherit which signals are ignored or blocked: a job in the background may ignore SIGINT. Python
# itself ignores two, and restores these in its children.
signal.pthread_sigmask(signal.SIG_SETMASK, ())
for number in signal.valid_signals() - {signal.SIGPIPE, signal.SIGXFSZ}:
    if signal.getsignal(number) == signal.SIG_IGN:
        signal.signal(number, signal.SIG_DFL)


def as_a_plain_user():
    """What a child does before it runs: permissions count, for root too."""
    for capability in (1, 2):  # CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH
        LIBC.prctl(24, capability)  # PR_CAPBSET_DROP


def on_a_full_disk(size=100):
    return lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))


class ToolTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        self.registry = self.folder / 'registry'
        self.environment = dict(os.environ, VX_REGISTRY_DIR=str(self.registry), ZOR_TEXTURE_PATH='',
                                ZOR_IES_PATH='', LC_ALL='C.UTF-8')

    def run_tool(self, *arguments, code=0, text=None, stdin=None, error='', first=None, **environment):
        """Standard output, after a look at the exit code and at the one clear line of each error, told by its parts."""
        source = {'input': text} if stdin is None else {'stdin': stdin}
        done = subprocess.run([PROGRAM, *map(str, arguments)], **source, capture_output=True, cwd=self.folder,
                              text=True, env={**self.environment, **environment}, preexec_fn=first, check=False)
        self.assertEqual(done.returncode, code, done)
        self.assertEqual(done.stderr == '', error == '', done.stderr)
        for line in done.stderr.splitlines():
            self.assertTrue(line.startswith('vxutil: '), line)
        for part in error.split('...'):
            self.assertIn(part, done.stderr)
        return done.stdout

    def paths(self, *arguments, **more):
        """The directories, shortened to what lies below the folder of the test, with their levels."""
        lists = json.loads(self.run_tool('paths', '--json', *arguments, **more))
        return [(d['path'].removeprefix(f'{self.folder}/'), d['level']) for one in lists for d in one['directories']]

    def leftovers(self):
        return list(self.folder.glob('.vxutil-*'))

    def test_command_line(self):
        for words in ('', 'paths', 'paths add', 'paths remove', 'paths move', 'find', 'image', 'image info',
                      'image check', 'image convert', 'match', 'samples'):
            self.assertRegex(self.run_tool(*words.split(), '--help'), r'(?s)\A(?!.*(:\{|INT in)).*\nExamples?:\n  vxutil ')
        self.assertRegex(self.run_tool('--version'), r'^vxutil \d+\.\d+\.\d+$')
        for arguments in ([], ['fly'], ['find'], ['image'], ['image', 'convert', 'a'], ['paths', '--level', 'moon'],
                          ['paths', 'move', 'a', 'b'], ['paths', 'add', ''], ['paths', 'remove', ''],
                          ['paths', 'confirm'], ['find', 'a', ''], ['image', 'info', ''], ['image', 'check', ''],
                          ['image', 'convert', '', 'a'], ['image', 'convert', 'a', ''],
                          ['samples', '--pattern', 'disk', '--grid', '2', '-o', ''],
                          ['paths', 'add', '/a', 'remove', '/b'], ['samples', '--pattern', 'disk', '--grid', '65', '-o', 'a']):
            self.run_tool(*arguments, code=2, error='--help')
        self.run_tool('fly', code=2, error='which fly is not')
        with open('/dev/full', 'w', encoding='ascii') as full:
            done = subprocess.run([PROGRAM, 'paths'], stdout=full, stderr=subprocess.PIPE, env=self.environment,
                                  check=False)
        self.assertEqual((done.returncode, done.stderr), (1, b'vxutil: standard output: could not be written\n'))

    def test_paths_are_kept(self):
        for directory in ('a', './b/.', 'c//'):
            self.run_tool('paths', 'add', directory)
        self.run_tool('paths', 'add', '/d', '--at', 1)
        self.run_tool('paths', 'move', 'c', 0)
        self.run_tool('paths', 'move', '1', 3)
        self.run_tool('paths', 'remove', 'b')
        self.assertEqual(self.paths('--level', 'user'), [('c', 'user'), ('/d', 'user'), ('a', 'user')])
        self.assertIn(f'"0"="{self.folder}/c"', (self.registry / 'user.reg').read_text())
        self.run_tool('paths', 'add', '--level', 'machine', '/d')
        self.run_tool('paths', '--category', 'web', 'add', '/lamps/%"\xe4"')
        self.assertEqual(self.paths('--category', 'texture', ZOR_TEXTURE_PATH='/e;/d'),
                         [('/e', 'environment'), ('/d', 'environment'), ('c', 'user'), ('a', 'user')])
        self.assertEqual(self.paths('--category', 'web'), [('/lamps/%"\xe4"', 'user')])
        self.assertEqual(self.run_tool('paths', '--category', 'web', ZOR_IES_PATH=str(self.folder)),
                         f'web, merged\n   0  {self.folder}  (environment)\n'
                         '   1  /lamps/%"\xe4"  (user)  no such directory\n')
        lists = json.loads(self.run_tool('paths', '--json', '--level', 'environment', ZOR_TEXTURE_PATH='/\udcff\n'))
        self.assertEqual(lists[0]['directories'],
                         [{'path': '/\ufffd\n', 'path_hex': '2fff0a', 'level': 'environment', 'exists': False}])

    def test_paths_that_cannot_be_kept(self):
        self.run_tool('paths', 'add', '/a')
        for code, error, arguments in (
                (1, 'already', ['add', '/a//']), (1, 'semicolon', ['add', '/a;b']), (1, 'root', ['add', '/..//']),
                (1, '259 bytes', ['add', '/' + 'x' * 259]), (1, 'not in the list', ['remove', '/b']),
                (1, '7: is not in', ['remove', '7']), (1, 'list of 1', ['add', '/b', '--at', 2]),
                (1, 'list of 1', ['move', '/a', 1]), (1, '%NAME%', ['add', '/50%/%HOME%']),
                (2, '--level', ['add', '/b', '--level', 'environment']),
                (2, '--json', ['remove', '/a', '--json'])):
            self.run_tool('paths', *arguments, code=code, error=error)
        self.assertEqual(self.paths(), [('/a', 'user')])
        (self.folder / 'file').touch()
        self.run_tool('paths', 'add', '/b', VX_REGISTRY_DIR=f'{self.folder}/file/x', code=1,
                      error=f'{self.folder}/file: is no directory')
        self.run_tool('paths', 'add', '/b', VX_REGISTRY_DIR='', XDG_CONFIG_HOME='', HOME='', code=1, error='HOME: is not set')
        (self.folder / 'odd/user.reg').mkdir(parents=True)
        for name, mode in (('closed', 0o500), ('linked', 0o700), ('locked', 0o700)):
            (self.folder / name).mkdir(mode)
        (self.folder / 'locked/user.reg.lock').symlink_to('no/where')
        (self.folder / 'linked/user.reg').symlink_to('../closed/user.reg')
        for folder, error, first in (
                ('odd', 'no regular file', None), ('locked', 'user.reg: does not hold', None),
                ('registry', 'user.reg: does not hold', on_a_full_disk()),
                ('linked', 'user.reg: does not hold', as_a_plain_user), ('closed', 'denied', as_a_plain_user)):
            for edit in (['add', '/b'],) if folder != 'registry' else (['add', '/b'], ['remove', '/a']):
                self.run_tool('paths', *edit, code=1, error=error, first=first,
                              VX_REGISTRY_DIR=f'{self.folder}/{folder}')
        self.assertEqual(self.paths(), [('/a', 'user')])
        for command in (['paths'], ['find', 'oak']):
            self.run_tool(*command, code=1, error='user.reg: is no regular', VX_REGISTRY_DIR=f'{self.folder}/odd')
        (self.registry / 'user.reg').chmod(0)
        for command in (['paths'], ['find', 'oak']):
            self.run_tool(*command, code=1, error='user.reg: Permission denied', first=as_a_plain_user)
        (self.registry / 'user.reg').chmod(0o600)
        self.assertEqual(list(self.folder.glob('*/*.new')), [])
        self.registry.joinpath('user.reg').write_text(
            'REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Meridane\\Vandermire\\Texture Paths]\n' +
            ''.join(f'"{i}"="/{i}"\n' for i in range(127)))
        self.run_tool('paths', 'add', '/' + 'x' * 258)
        self.run_tool('paths', 'add', '/one-more', code=1, error='128')
        self.assertEqual(len(self.paths()), 128)

    def test_damaged_registry_files_are_named(self):
        self.registry.mkdir()
        for name in ('user.reg', 'machine.reg'):
            (self.registry / name).write_text('REGEDIT4\n\nbroken line here\n')
        damaged = 'machine.reg: is damaged'
        for arguments, code, error in (
                (['paths', '--level', 'user'], 1, 'user.reg: is damaged'), (['find', 'a'], 1, damaged),
                (['paths', 'remove', '/n'], 1, 'not in the list'), (['paths'], 1, f'user.reg: is damaged...{damaged}'),
                (['paths', 'add', '/n'], 0, 'user.reg.damaged...machine.reg.damaged'), (['paths', 'add', '/o'], 0, ''),
                (['paths'], 1, 'user.reg: was damaged and is kept as...machine.reg: was')):
            self.run_tool(*arguments, code=code, error=error)
        for name in ('user.reg', 'machine.reg'):
            self.assertIn('broken', (self.registry / f'{name}.damaged').read_text())
            (self.registry / f'{name}.damaged').unlink()
        self.assertEqual(self.paths(), [('/n', 'user'), ('/o', 'user')])

    def test_edits_at_the_same_time_are_all_kept(self):
        edits = [['add', f'/{i}', '--level', ('user', 'machine')[i % 2]] for i in range(12)]
        started = [subprocess.Popen([PROGRAM, 'paths', *words], env=self.environment, stdout=subprocess.DEVNULL)
                   for edit in edits for words in (edit, [])]
        self.assertEqual([process.wait() for process in started], [0] * len(started))
        self.assertEqual(sorted(self.paths()), sorted((edit[1], edit[3]) for edit in edits))

    def test_find(self):
        for place in ('a/oak', 'c', 'd', 'e', 'shut'):
            (self.folder / place).mkdir(parents=True)
        (self.folder / 'b').touch()
        (self.folder / 'c/oak').symlink_to('oak')
        for place in ('d/oak', 'e/oak', 'd/[x,y]', 'd/{}', 'e/shut'):
            (self.folder / place).write_text('12345')
        for place in ('shut', 'e/shut'):
            (self.folder / place).chmod(0)
        path = ';'.join(f'{self.folder}/{name}' for name in 'abcde')
        f = self.folder
        self.assertEqual(self.run_tool('find', 'oak', '[x,y]', '{}', f'{f}/e/oak', ZOR_TEXTURE_PATH=path),
                         f'{f}/d/oak\n{f}/d/[x,y]\n{f}/d/{{}}\n{f}/e/oak\n')
        passed = [f'oak\n    {f}/a/oak: a directory, passed over', f'    {f}/b/oak: missing, passed over',
                  f'    {f}/c/oak: not readable (Too many levels of symbolic links), passed over',
                  f'  * {f}/d/oak: a file of 5 bytes, found first', '']
        explained = self.run_tool('find', '--explain', 'oak', ZOR_TEXTURE_PATH=path)
        self.assertEqual(explained.split('\n'), '\n'.join(passed).split('\n'))
        every = self.run_tool('find', '--all', '--explain', 'oak', ZOR_TEXTURE_PATH=path)
        self.assertEqual(every, explained + f'    {f}/e/oak: a file of 5 bytes, behind the one that wins\n')
        self.assertEqual(self.run_tool('find', '--all', 'elm', code=1, error='elm: not found', ZOR_TEXTURE_PATH=f'{f}/d'),
                         f'elm: not found\n    {f}/d/elm: missing\n')
        denied = 'not readable (Permission denied)'
        self.assertEqual(self.run_tool('find', '--explain', 'shut', ZOR_TEXTURE_PATH=f'{f}/shut;{f}/e;{f}/d', code=1,
                                       error=f'{f}/e/shut: found, but not readable: Perm', first=as_a_plain_user),
                         f'shut\n    {f}/shut/shut: {denied}, passed over\n'
                         f'  * {f}/e/shut: {denied}, found first, and looked for no further\n')
        self.run_tool('find', 'oak', 'elm', '--category', 'web', code=1, error='search path is empty',
                      ZOR_TEXTURE_PATH=path)

    def test_samples_of_other_programs_are_good(self):
        for line in (SAMPLES.parent / 'samples.txt').read_text().splitlines():
            if not line.startswith(('[', '#')):
                name, width, height, planes, size, storage, *_ = line.split()
                told = self.run_tool('image', 'info', SAMPLES / name)
                self.assertRegex(told, f'size +{width} x {height}, {planes} plane(.|\n)*elements +{size} byte'
                                       f'(.|\n)*storage +{storage}\n.*big-endian')
        files = sorted(SAMPLES.iterdir())
        self.assertEqual(self.run_tool('image', 'check', *files).count(': good, '), len(files))

    def test_damage_is_named(self):
        good = (SAMPLES / 'netpbm_noise_33x29x3_1B_rle.sgi').read_bytes()
        rows = 29 * 3
        sizes = HEAD + 4 * rows
        bad = bytearray(good)
        for row in (2, 29 + 5, 29 + 6):  # a packet less than was stored
            bad[sizes + 4 * row:sizes + 4 * row + 4] = struct.pack('>i', 3)
        bad[sizes + 4 * 80:sizes + 4 * 81] = b'\xff' * 4
        for name, data in (('good', good), ('bad', bytes(bad))):
            (self.folder / name).write_bytes(data)
        done = subprocess.run([PROGRAM, 'image', 'check', 'bad', 'good'], cwd=self.folder, env=self.environment,
                              capture_output=True, text=True, check=False)
        what = 'reading an image: a row is damaged or incomplete'
        self.assertEqual(done.stderr.splitlines(), [
            f'vxutil: bad: plane 0, row 2: {what}', f'vxutil: bad: plane 1, rows 5 to 6: {what}',
            'vxutil: bad: plane 2, row 22: was never written'])
        self.assertEqual((done.returncode, done.stdout), (1, 'good: good, 87 rows read\n'))

        for error, data in (
                ('header is incomplete', b''), ('not an SGI image', b'x' * 600), ('row starts', good[:700]),
                ('elements of 3 bytes', image_head(1, 1, 1, kind=3)), ('neither', image_head(1, 1, 1, kind=0x201)),
                ('dimension 4', image_head(1, 1, 1, dimension=4)), ('no elements', image_head(1, 1, 0)),
                ('cannot be reached', image_head(2, 2, 2, dimension=2) + b'12345678'),
                ('only 16383', image_head(16384, 1, 1, kind=2)),
                ('plane 0, row 2: the file ends before it, 4294836223 of 4294836225 rows',
                 image_head(9999, 65535, 65535) + bytes(2 * 9999))):
            (self.folder / 'file').write_bytes(data)
            self.run_tool('image', 'check', 'file', code=1, error=error)
        os.mkfifo(self.folder / 'pipe')
        for name, error in (('none', 'none: No such file'), ('.', 'a directory'), ('pipe', 'pipe: is not a regular')):
            for command in (['info', name], ['check', name], ['convert', name, 'out']):
                self.run_tool('image', *command, code=1, error=error)

    def test_other_programs_read_what_is_converted(self):
        if missing := [name for name in ('sgitopnm', 'pngtopnm', 'ffmpeg', 'oiiotool') if shutil.which(name) is None]:
            self.assertNotIn('VX_REQUIRE_READERS', os.environ, missing)
            self.skipTest(f'needs {missing}')

        def output(*command):
            return subprocess.run(command, cwd=self.folder, capture_output=True, check=True).stdout
        width, height = 300, 5
        for planes, formats in enumerate((('gray', 'gray16be'), ('ya8', 'ya16be'), ('rgb24', 'rgb48be'),
                                          ('rgba', 'rgba64be')), 1):
            for size, pixels in enumerate(formats, 1):
                dice = random.Random(planes * size)
                # Noise and a run; from 0 to the most that there is, between which some readers stretch.
                rows = [(bytes(8) + dice.randbytes(width * planes * size // 2)).ljust(width * planes * size, b'\xff')
                        for _ in range(height)]
                png(self.folder / 'in.png', width, rows, planes, 8 * size)
                for storage in ('--rle', '--verbatim'):
                    self.run_tool('image', 'convert', 'in.png', 'out.sgi', storage)
                    self.run_tool('image', 'convert', 'out.sgi', 'back.png')
                    for z in range(planes):
                        places = range(z * size, width * planes * size, planes * size)
                        plane = b''.join(row[x:x + size] for row in rows for x in places)
                        read = output('sgitopnm', '-channel', str(z), 'out.sgi')
                        self.assertEqual(read, b'P5\n%d %d\n%d\n' % (width, height, 256 ** size - 1) + plane)
                    pixels_listed = re.findall(rb'Pixel .*: (.*) \(', output('oiiotool', '--dumpdata', 'out.sgi'))
                    self.assertEqual(b''.join(int(element).to_bytes(size, 'big') for pixel in pixels_listed
                                              for element in pixel.split()), b''.join(rows))
                    if planes in (1, 3):
                        self.assertEqual(output('pngtopnm', 'back.png')[-len(b''.join(rows)):], b''.join(rows))
                    for name in ('out.sgi', 'back.png'):
                        if planes != 2 or name == 'back.png':  # ffmpeg takes no image files of 2 planes
                            read = output('ffmpeg', '-v', 'error', '-i', name, '-f', 'rawvideo', '-pix_fmt', pixels, '-')
                            self.assertEqual(read, b''.join(rows), (planes, size, name))

    def test_settings_of_converted_images(self):
        sample = SAMPLES / 'imagemagick_text_61x44x3_1B_rle.sgi'
        self.run_tool('image', 'convert', sample, 'a', '--verbatim', '--host-order', '--name', '[x]')
        self.run_tool('image', 'convert', 'a', 'b')
        told = [self.run_tool('image', 'info', name) for name in ('a', 'b')]
        self.assertRegex(told[0], rf'name +\[x\]\n(.|\n)*verbatim\n.*{sys.byteorder}-endian')
        self.assertRegex(told[1], r'name +\[x\]\n(.|\n)*run-length\n.*big-endian')
        for name in (sample, 'b'):
            self.run_tool('image', 'convert', name, Path(name).name + '.PNG')
        self.assertEqual((self.folder / 'b.PNG').read_bytes(), (self.folder / (sample.name + '.PNG')).read_bytes())

    def test_failed_conversion_leaves_the_output_alone(self):
        png(self.folder / 'good.png', 2, [b'12', b'34'], 1, 8)
        png(self.folder / 'interlaced.png', 2, [b'12', b'34'], 1, 8, interlaced=1)
        png(self.folder / 'wide.png', 65536, [bytes(65536)], 1, 8)
        png(self.folder / 'long.png', 40000, [bytes(range(200)) * 200], 1, 8)
        (self.folder / 'cut.png').write_bytes((self.folder / 'good.png').read_bytes()[:-14])
        (self.folder / 'cut').write_bytes(image_head(4, 4, 1) + bytes(15))
        (self.folder / 'five').write_bytes(image_head(1, 1, 5) + bytes(5))
        (self.folder / 'flat').write_bytes(image_head(1, 1, 3, dimension=2) + bytes(3))
        (self.folder / 'mapped').write_bytes(image_head(1, 1, 1)[:104] + struct.pack('>i', 3) + bytes(HEAD - 108 + 1))
        os.mkfifo(self.folder / 'pipe')
        (self.folder / 'folder').mkdir()
        for output in ('kept', 'kept.png'):
            (self.folder / output).write_text('kept')
        for code, error, arguments in (
                (1, 'interlaced', ['interlaced.png', 'kept']), (1, '65535', ['wide.png', 'kept']),
                (1, '--verbatim', ['long.png', 'kept']), (1, '--rle', ['long.png', 'kept', '--verbatim']),
                (1, 'cut.png: ', ['cut.png', 'kept']), (1, 'cut: plane 0, row 3: ', ['cut', 'kept.png']),
                (1, '5 planes', ['five', 'kept']), (1, 'dimension 2', ['flat', 'kept']), (1, 'none: No such', ['none', 'kept']),
                (1, 'folder: is no regular', ['good.png', 'folder']), (1, 'no/kept: No such', ['good.png', 'no/kept']),
                (1, 'pipe: is no', ['good.png', 'pipe']),
                (1, 'colormap 3', ['mapped', 'kept.png']), (2, '79 bytes', ['good.png', 'kept', '--name', 80 * 'x']),
                (2, 'kept.png: both', ['good.png', 'kept.png']), (2, 'kept.png: ', ['cut', 'kept.png', '--rle']),
                (2, 'excludes', ['good.png', 'kept', '--rle', '--verbatim'])):
            self.run_tool('image', 'convert', *arguments, code=code, error=error)
            for output in ('kept', 'kept.png'):
                self.assertEqual((self.folder / output).read_text(), 'kept', arguments)
        self.assertEqual(self.leftovers(), [])
        self.assertIn('colormap    3', self.run_tool('image', 'info', 'mapped'))
        self.run_tool('image', 'check', 'mapped')

    def test_full_disk_leaves_the_output_alone(self):
        noise = SAMPLES / 'netpbm_noise_33x29x3_1B_rle.sgi'
        self.run_tool('image', 'convert', noise, 'noise.png')
        for command in (['image', 'convert', noise, 'kept.png'], ['image', 'convert', 'noise.png', 'kept'],
                        ['image', 'convert', '--verbatim', 'noise.png', 'kept'],
                        ['samples', '--pattern', 'disk', '--grid', 2, '-o', 'kept']):
            for size in (100, 300, 1000, 2500):
                for output in ('kept', 'kept.png'):
                    (self.folder / output).write_text('kept')
                told = self.run_tool(*command, code=1, error=f'{command[-1]}: ...File too large',
                                     first=on_a_full_disk(size))
                self.assertEqual((told, self.leftovers()), ('', []))
                for output in ('kept', 'kept.png'):
                    self.assertEqual((self.folder / output).read_text(), 'kept', (command, size))

    def test_output_keeps_links_permissions_and_owner(self):
        png(self.folder / 'good.png', 2, [b'12', b'34'], 1, 8)
        (self.folder / 'sub').mkdir()
        for link, target in (('link', 'sub/link'), ('sub/link', '../sub/kept')):
            (self.folder / link).symlink_to(target)
        kept = self.folder / 'sub/kept'
        owner = (os.getuid(), os.getgid())
        for mode in (None, 0o6640):
            if mode is not None:
                owner = (4711, 4712) if os.getuid() == 0 else owner
                os.chown(kept, *owner)
                kept.chmod(mode)
            self.run_tool('image', 'convert', 'good.png', 'link')
            self.assertTrue((self.folder / 'link').is_symlink() and (self.folder / 'sub/link').is_symlink())
            self.assertIn('good', self.run_tool('image', 'check', kept))
        status = kept.stat()
        self.assertEqual((status.st_mode & 0o7777, status.st_uid, status.st_gid), (0o640, *owner))

    def test_killed_conversion_leaves_no_half_file(self):
        sparse_image(self.folder / 'big', 32768, 65535)
        ends = ('HUP', 'INT', 'QUIT', 'ABRT', 'USR1', 'USR2', 'PIPE', 'ALRM', 'TERM', 'XCPU', 'VTALRM', 'PROF', 'POLL',
                'SYS', 'PWR', 'RTMIN', 'RTMAX', 'KILL')
        for end in (getattr(signal, 'SIG' + name) for name in ends):
            with subprocess.Popen([PROGRAM, 'image', 'convert', 'big', 'out.png'], cwd=self.folder,
                                  env=self.environment) as process:
                while not any(file.stat().st_size for file in self.leftovers()):
                    self.assertIsNone(process.poll())
                    time.sleep(0.01)
                process.send_signal(end)
                self.assertEqual(process.wait(), -end)
            self.assertFalse((self.folder / 'out.png').exists())
            self.assertEqual(len(self.leftovers()), end == signal.SIGKILL, end)

    def test_memory_does_not_grow_with_the_picture(self):
        peaks = []
        for height in (10, 60000):
            sparse_image(self.folder / 'in', 1500, height)
            for names in (('in', 'out.png'), ('out.png', 'back')):
                process = subprocess.Popen([PROGRAM, 'image', 'convert', *names], cwd=self.folder, env=self.environment)
                _, status, usage = os.wait4(process.pid, 0)
                process.returncode = status
                self.assertEqual(status, 0)
                peaks.append(usage.ru_maxrss)
        for small, large in zip(peaks[:2], peaks[2:]):
            self.assertLess(large - small, 16 << 10)  # KiB; the picture has 90 MB

    def test_bar_on_a_terminal_only(self):
        sparse_image(self.folder / 'in', 100, 1000)
        self.assertEqual(self.run_tool('image', 'check', 'in'), 'in: good, 1000 rows read\n')
        for command in (['check', 'in'], ['convert', 'in', 'out.png']):
            ours, theirs = pty.openpty()
            with subprocess.Popen([PROGRAM, 'image', *command], cwd=self.folder, env=self.environment, stderr=theirs,
                                  stdout=subprocess.DEVNULL) as process:
                os.close(theirs)
                shown = b''
                try:
                    while data := os.read(ours, 4096):
                        shown += data
                except OSError:  # how the end of a terminal reads
                    pass
                os.close(ours)
            self.assertEqual(process.returncode, 0)
            steps = [step[-4:] for step in shown.split(b'\r')]
            self.assertIn(b' 50%', steps)
            self.assertTrue(shown.endswith(b'100%\r\x1b[K'), shown)

    def test_samples(self):
        for pattern, inside in (('disk', lambda x, y: x * x + y * y <= 1.001), ('square', lambda x, y: max(x, y) <= 1)):
            self.run_tool('samples', '--pattern', pattern, '--grid', 3, '-o', 'out.svg')
            space = '{http://www.w3.org/2000/svg}'
            sets = xml.parse(self.folder / 'out.svg').getroot().findall(f'{space}g')
            self.assertEqual(len(sets), 67)
            for one in sets:
                dots = [(abs(float(dot.get('cx'))), abs(float(dot.get('cy')))) for dot in one if dot.get('cx')]
                self.assertEqual(len(set(dots)), 9)
                self.assertTrue(all(inside(*dot) for dot in dots), dots)

    def test_match(self):
        self.assertEqual(self.run_tool('match', '[a-c]*.sgi', 'b.sgi', 'd.sgi', '[x]'), 'b.sgi\n')
        self.assertEqual(self.run_tool('match', '*.sgi', text='b.sgi\nb.png\nc.sgi'), 'b.sgi\nc.sgi\n')
        self.assertEqual(self.run_tool('match', '[~a]', 'a', code=1), '')
        self.run_tool('match', '[a', 'a', code=2, error='[a: ')
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        self.run_tool('match', '*', stdin=folder, code=1, error='standard input: Is a directory')


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
