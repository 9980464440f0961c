#!/usr/bin/env python3
"""Compiles and runs every whole program in the pages: docs_test.py COMPILER SOURCE_DIR LIBRARY...

A whole program is a C++ block with a main function. It has to end with 0. The program of the README
is run by the commands after it, and has to print what is written there.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

compiler, source, libraries = sys.argv[1], pathlib.Path(sys.argv[2]), sys.argv[3:]
flags = ' '.join([f'-I{source}/include', *libraries, *(f'-Wl,-rpath,{os.path.dirname(name)}' for name in libraries)])
compile_command = f"{compiler} -Wall -Wextra -Werror {os.environ.get('VX_TEST_FLAGS', '')}"


def programs(page):
    return [block for block in re.findall(r'```cpp\n(.*?)```', page.read_text(), re.S) if 'int main' in block]


with tempfile.TemporaryDirectory() as scratch:
    def run(command, **more):
        # As for an installed library, but with the one that was just built.
        command = command.replace('$(pkg-config --cflags --libs vxutil)', flags)
        command = re.sub(r'^g\+\+', lambda _: compile_command, command)
        return subprocess.run(command, shell=True, cwd=scratch, text=True, **more)

    readme = source / 'README.md'
    [first] = programs(readme)
    [session] = re.findall(r'```console\n(.*?)```', readme.read_text(), re.S)
    pathlib.Path(scratch, 'first.cpp').write_text(first)
    pathlib.Path(scratch, 'tests').symlink_to(source / 'tests')
    steps = re.findall(r'^\$ (.*)\n((?:(?!\$ ).*\n)*)', session, re.M)
    for command, expected in steps:
        printed = run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT).stdout
        if printed != expected:
            sys.exit(f'README.md: {command}\nprints:\n{printed}and not:\n{expected}')

    pages = [(page, program) for page in sorted((source / 'docs').glob('*.md')) for program in programs(page)]
    for page, program in pages:
        print(page.name, flush=True)
        pathlib.Path(scratch, 'program.cpp').write_text(program)
        run('g++ -std=c++20 program.cpp -o program $(pkg-config --cflags --libs vxutil) && ./program', check=True)
if './first' not in [command for command, _ in steps] or len(pages) < 8:
    sys.exit(f'the program of the README is not run, or only {len(pages)} programs of the pages are')
