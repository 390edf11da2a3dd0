#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Holds what each public header costs whoever includes it: the lines that remain after preprocessing.

usage: header-cost.py [--update] LIST

LIST has a line `LINES HEADER` for each public header. A header may exceed its lines by a twentieth, so
that another standard library or a small change does not count; a header that is not listed, or listed in
vain, is a fault. --update writes the list anew.
"""
import concurrent.futures
import os
import pathlib
import subprocess
import sys

SHELF = pathlib.Path(__file__).resolve().parent.parent / 'Components'
MARGIN = 1.05


def cost(header):
    text = subprocess.run(['g++', '-std=c++20', '-E', '-P', '-x', 'c++', f'-I{SHELF}', SHELF / header],
                          check=True, capture_output=True).stdout
    return text.count(b'\n')


def main():
    update = sys.argv[1] == '--update'
    path = pathlib.Path(sys.argv[-1])
    headers = sorted(header.relative_to(SHELF).as_posix() for header in SHELF.rglob('*.h')
                     if not header.name.endswith('Impl.h'))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        costs = dict(zip(headers, pool.map(cost, headers)))
    if update:
        path.write_text(''.join(f'{costs[header]:6} {header}\n' for header in headers), encoding='utf-8')
        return 0
    budget = {header: int(lines) for lines, header in
              (line.split() for line in path.read_text(encoding='utf-8').splitlines())}
    faults = [f'{header}: {costs[header]} lines after preprocessing, and {budget.get(header, "none")} are allowed'
              for header in headers if costs[header] > budget.get(header, 0) * MARGIN]
    faults += [f'{header}: listed, but there is no such public header' for header in budget if header not in costs]
    print('\n'.join(faults) or f'{len(headers)} public headers keep to their lines.')
    return 1 if faults else 0


sys.exit(main())
