#!/usr/bin/env python3
"""Compiles and runs every whole program in the pages: docs_test.py COMPILER SOURCE_DIR LIBRARY...

A whole program is a block of C++ with a main function. It has to end with 0.
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

compiler, source = sys.argv[1], pathlib.Path(sys.argv[2])
libraries = sys.argv[3:]
flags = os.environ.get('VX_TEST_FLAGS', '').split()
programs = 0
with tempfile.TemporaryDirectory() as scratch:
    # What the first program of the README looks for.
    os.makedirs(f'{scratch}/textures/stone')
    shutil.copy(source / 'tests/data/samples/netpbm_text_61x44x1_2B_rle.sgi',
                f'{scratch}/textures/stone/slate.sgi')
    os.environ['ZOR_TEXTURE_PATH'] = f'{scratch}/textures'
    for page in [source / 'README.md', *sorted((source / 'docs').glob('*.md'))]:
        for block in re.findall(r'```cpp\n(.*?)```', page.read_text(), re.S):
            if 'int main' not in block:
                continue
            programs += 1
            print(page.name, flush=True)
            pathlib.Path(scratch, 'program.cpp').write_text(block)
            subprocess.run([compiler, '-std=c++20', '-Wall', '-Wextra', '-Werror', *flags,
                            f'-I{source}/include', 'program.cpp', '-o', 'program', *libraries,
                            *(f'-Wl,-rpath,{os.path.dirname(library)}' for library in libraries)],
                           cwd=scratch, check=True)
            subprocess.run(['./program'], cwd=scratch, check=True)
sys.exit(0 if programs >= 9 else f'only {programs} programs found')
