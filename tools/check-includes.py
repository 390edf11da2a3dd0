#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Proves from the `#include` lines of Components/Base what Documentation/architecture.md says.

The table of areas there is read, not repeated here: its first column names an area, or a group of
files of one (`Strings/zeStringTable*`), its last column what that may include beside its own area:
areas, or single headers. Proved are: the table, that no circle of includes exists, that a source
includes its own header first, that public headers lie on the shelf of their area and sources of an area
with rooms in these, that an area without rooms has no more than 40 files, and that no file reaches for
the private headers of another room, nor a public header for any.
"""
import fnmatch
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
BASE = ROOT / 'Components' / 'Base'
TABLE = ROOT / 'Documentation' / 'architecture.md'
INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]+(["<])([^">]+)[">]', re.M)
MOST_FILES_WITHOUT_ROOMS = 40
faults = []


def allowed_includes():
    """Reads the table: pattern of files -> patterns of the files that they may include."""
    def patterns(cell):
        return [name if '.' in name or '*' in name else name + '/*' for name in re.findall(r'`([^`]+)`', cell)]

    rows = {}
    for line in TABLE.read_text(encoding='utf-8').splitlines():
        cells = [cell.strip() for cell in line.strip('|').split('|')]
        if line.startswith('| `') and len(cells) >= 3:
            for pattern in patterns(cells[0]):
                rows[pattern] = patterns(cells[-1])
    return rows


def is_private(name):
    return name.endswith('Impl.h')


def check_line(name, included, rows):
    """One include of one file: both are paths below Base."""
    area, target = name.split('/')[0], included.split('/')[0]
    if not (BASE / included).is_file():
        faults.append(f'{name}: there is no Base/{included}')
    if is_private(included):
        room = pathlib.PurePath(included).parent
        if pathlib.PurePath(name).parent != room:
            faults.append(f'{name}: {included} is private to {room}')
        if name.endswith('.h') and not is_private(name):
            faults.append(f'{name}: a public header includes the private {included}')
    may = [pattern for files, patterns in rows.items() if fnmatch.fnmatch(name, files) for pattern in patterns]
    if area != target and '/' in included and not any(fnmatch.fnmatch(included, pattern) for pattern in may):
        faults.append(f'{name}: may not include {included}')


def check_rooms(names):
    """Public headers on the shelf, the rest in rooms where the area has any."""
    areas = {}
    for name in names:
        if '/' in name:
            areas.setdefault(name.split('/')[0], []).append(name)
    for area, files in areas.items():
        rooms = {path.name for path in (BASE / area).iterdir() if path.is_dir()}
        if not rooms and len(files) > MOST_FILES_WITHOUT_ROOMS:
            faults.append(f'{area}: {len(files)} files want rooms')
        for name in files:
            public = name.endswith('.h') and not is_private(name)
            depth = 2 if public or not rooms else 3
            if len(name.split('/')) != depth:
                faults.append(f'{name}: belongs {"on the shelf of its area" if depth == 2 else "in a room"}')


def own_header(path):
    """The header that a source implements: beside it, or on the shelf of its area; None if it has none."""
    shelf = BASE / path.relative_to(BASE).parts[0]
    return next((header for header in (path.with_suffix('.h'), shelf / f'{path.stem}.h') if header.exists()), None)


def find_circle(graph):
    """Depth-first: the first circle as a list of files, or None."""
    done, path = set(), []

    def visit(name):
        if name in path:
            return path[path.index(name):] + [name]
        if name in done:
            return None
        path.append(name)
        circle = next(filter(None, map(visit, graph.get(name, []))), None)
        path.pop()
        done.add(name)
        return circle

    return next(filter(None, map(visit, graph)), None)


def main():
    rows = allowed_includes()
    graph = {}
    for path in sorted(BASE.rglob('*.h')) + sorted(BASE.rglob('*.cpp')):
        name = path.relative_to(BASE).as_posix()
        if '/' in name and name.split('/')[0] + '/*' not in rows:
            faults.append(f'{name}: the table of areas does not know its area')
        includes = INCLUDE.findall(path.read_text(encoding='utf-8'))
        ours = []
        for mark, included in includes:
            if included.startswith('Base/'):
                ours.append(included.removeprefix('Base/'))
            if (mark == '"') != included.startswith('Base/'):
                faults.append(f'{name}: write "Base/…" for our own headers and <…> for all others: {included}')
        for included in ours:
            check_line(name, included, rows)
        own = own_header(path) if path.suffix == '.cpp' else None
        if own and includes[0][1] != 'Base/' + own.relative_to(BASE).as_posix():
            faults.append(f'{name}: its own header comes first')
        graph[name] = ours
    check_rooms(graph)
    if circle := find_circle(graph):
        faults.append('a circle of includes: ' + ' -> '.join(circle))
    print('\n'.join(faults) or f'{len(graph)} files keep to the table of areas, without a circle.')
    return 1 if faults else 0


sys.exit(main())
