#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Checks what CONTRIBUTING.md asks of each file and no other tool knows.

- A public header has exactly one line of contract that begins with `/// Threads:`, in the comment that
  opens it or in that of its class.
- The TESTs of a test file stand outside of its unnamed namespace, which holds helpers and fixtures.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
TEST = re.compile(r'(TYPED_)?TEST(_F|_P)?\(')


def header_faults(text):
    lines = re.findall(r'^/// Threads: ', text, re.M)
    if len(lines) != 1:
        yield f'{len(lines)} lines begin with "/// Threads: "; one says which thread may call'


def test_faults(text):
    """Our format puts the braces of a namespace, and all that stands directly in it, at the left margin."""
    inside = False
    for number, line in enumerate(text.splitlines(), 1):
        if line == 'namespace {':
            inside = True
        elif re.match(r'}\s*// namespace$', line):
            inside = False
        elif inside and TEST.match(line):
            yield f'line {number}: a test inside an unnamed namespace'


def main():
    checks = [(header_faults, [path for path in (ROOT / 'Components' / 'Base').rglob('*.h')
                               if not path.name.endswith('Impl.h')]),
              (test_faults, list((ROOT / 'Tests').rglob('*.cpp')))]
    faults = [f'{path.relative_to(ROOT)}: {fault}'
              for check, paths in checks for path in sorted(paths)
              for fault in check(path.read_text(encoding='utf-8'))]
    print('\n'.join(faults) or f'{sum(len(paths) for _, paths in checks)} files keep to the conventions.')
    return 1 if faults else 0


sys.exit(main())
