#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""usage: prettyPrintersTest.py PROGRAM LIBRARY_FOLDER

Runs gdb, which finds the printers beside the library, and compares what it prints. Ends with 77, after a
word why, where gdb is missing or may not run a program.
"""
import os
import shutil
import subprocess
import sys

EXPECTED = {
    'bytes': r'"bytes \t with \"quotes\""',
    'moved': '""',
    'taken': '"x"',
    'text': r'L"long enough to lie elsewhere \x20ac"',
    'empty': '""',
    'path': 'L"/models/scene.zd"',
    'success': 'success',
    'failure': 'error 2: cannot open scene.zd',
    'bare': 'error -1',
    'mesh': 'ze::Reference<Mesh> (count 2) = {get() = 0xPLACE}',
    'null': 'ze::Reference<const Mesh> (null)',
    'map': 'ze::RBTreeMap of 5 = {["five"] = 4, ["four"] = 4, ["one"] = 3, ["three"] = 5, ["two"] = 3}',
    'none': 'ze::RBTreeMap of 0',
    'set': 'ze::RBTreeSet of 9 = {0, 1, 2, 3, 4, 5, 6, 7, 8}',
    'point': 'Point(1,2.5,-3)',
    'vector': 'VectorFlt(0.5,0,1)',
    'pointRef': 'Point(1,2.5,-3)',
    'emptyRef': 'ze::RBTreeMap of 0',
    'keys': 'ze::RBTreeMap of 1 = {[1] = {<No data fields>}}',
    'unmade': 'ze::RBTreeSet of 0',
}


def skip(why):
    print(f'skipped: {why}')
    sys.exit(77)


def gdb(*arguments):
    environment = dict(os.environ, LC_ALL='C', DEBUGINFOD_URLS='', TERM='dumb',
                       ASAN_OPTIONS='detect_leaks=0') # which cannot work below a debugger
    return subprocess.run(['gdb', '-nx', '-batch', *arguments], env=environment, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, errors='replace', check=False)


def main():
    program, library = sys.argv[1:]
    if not shutil.which('gdb'):
        skip('there is no gdb')
    if gdb('-ex', 'python print("can")').stdout != 'can\n':
        skip('this gdb has no Python')
    commands = ['set startup-with-shell off', 'set breakpoint pending on', 'set print static-members off',
                'set width 0', 'break look', 'run', 'up']
    for name in EXPECTED:
        commands += [f'printf "{name}: "', f'output {name}', 'printf "\\n"']
    arguments = ['-iex', f'add-auto-load-safe-path {os.path.realpath(library)}']
    for command in commands:
        arguments += ['-ex', command]
    result = gdb(*arguments, program)
    if 'Breakpoint 1, look' not in result.stdout:
        skip('gdb may not run a program here: ' + result.stderr.strip())
    printed = dict(line.split(': ', 1) for line in result.stdout.splitlines() if ': ' in line)
    wrong = 0
    for name, expected in EXPECTED.items():
        shown = ' '.join('0xPLACE' + word[-1] if word.startswith('0x') else word
                         for word in printed.get(name, 'nothing').split(' '))
        if shown != expected:
            wrong += 1
            print(f'{name}: printed {shown}\n{" " * len(name)}  but expected {expected}')
    if wrong:
        print(result.stdout, result.stderr)
    return 1 if wrong else 0


sys.exit(main())
