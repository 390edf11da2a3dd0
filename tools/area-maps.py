#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes the map of each area into its README: from classes and functions to header, source and test.

usage: area-maps.py [--update]

The map stands between two markers. Without --update, a README whose map is not up to date is a fault.
A header's sources are that of its name and those that define members of its classes. Its tests are those
of its name or of a source's, or else those that include it, or else the one that names its classes most.
"""
import difflib
import os
import re
import sys

from declared import BASE, ROOT, Header, is_private, public_headers

TESTS = ROOT / 'Tests'
BEGIN = '<!-- The map: written by tools/area-maps.py --update -->'
END = '<!-- End of the map -->'
MOST_NAMES = 8


class Area:
    def __init__(self, folder):
        self.folder = folder
        self.headers = public_headers(folder)
        self.sources = {path: path.read_text(encoding='utf-8') for path in sorted(folder.rglob('*.cpp'))}
        self.tests = {path: path.read_text(encoding='utf-8')
                      for path in sorted((TESTS / folder.name).rglob('*Test.cpp'))}
        self.owner = {}  # test -> the stem that its name begins with, the longest that there is
        stems = {path.stem.removesuffix('Impl') for path in [*self.headers, *self.sources]}
        for test in self.tests:
            self.owner[test] = max((stem for stem in stems if test.stem.startswith(stem)), key=len, default=None)

    def link(self, path):
        return f'[{path.name}]({os.path.relpath(path, self.folder)})'

    def links(self, paths):
        return ', '.join(map(self.link, paths)) or '–'

    def sources_of(self, header, names):
        member = re.compile(rf'^(?![ }}/#]).*\b(?:{"|".join(names)})::~?\w+\(', re.M) if names else None
        return [path for path, text in self.sources.items()
                if path.stem == header.stem or member and member.search(text)]

    def tests_of(self, header, sources, names):
        stems = {header.stem, *(source.stem.removesuffix('Impl') for source in sources)}
        include = f'#include "Base/{self.folder.name}/{header.name}"'
        uses = {test: sum(len(re.findall(rf'\b{name}\b', text)) for name in names) for test, text in self.tests.items()}
        return ([test for test, stem in self.owner.items() if stem in stems]
                or [test for test, text in self.tests.items() if include in text]
                or [test for test in sorted(uses, key=uses.get)[-1:] if uses[test]])

    def rows(self):
        known = set()
        for header in self.headers:
            declared = Header(header)
            names = [name for _, name in declared.types] + [name + '()' for name in declared.functions]
            classes = [name.split('::')[-1] for kind, name in declared.types if not kind.startswith('enum')]
            shown = ', '.join(f'`{name}`' for name in names[:MOST_NAMES]) + (', …' if names[MOST_NAMES:] else '')
            sources = self.sources_of(header, classes)
            tests = self.tests_of(header, sources, classes or declared.functions)
            known.update(sources, tests)
            yield f'| {self.link(header)} | {shown or "–"} | {self.links(sources)} | {self.links(tests)} |'
        private = sorted(path for path in self.folder.rglob('*.h') if is_private(path))
        for header in private:
            sources = [path for path in self.sources if path.stem == header.stem]
            tests = [test for test, stem in self.owner.items() if stem == header.stem.removesuffix('Impl') and test not in known]
            known.update(sources, tests)
            yield f'| {self.link(header)} | *private* | {self.links(sources)} | {self.links(tests)} |'
        for source in self.sources:
            if source not in known:
                yield f'| – | *private* | {self.link(source)} | – |'
        if rest := [test for test in self.tests if test not in known]:
            yield f'| – | *the whole area* | – | {self.links(rest)} |'

    def map(self):
        return '\n'.join([BEGIN, '', '| Header | Declares | Sources | Tests |', '|---|---|---|---|', *self.rows(), '', END])


def main():
    update = sys.argv[1:] == ['--update']
    faults = []
    for folder in sorted(path for path in BASE.iterdir() if path.is_dir()):
        readme = folder / 'README.md'
        old = readme.read_text(encoding='utf-8')
        new, count = re.subn(rf'{re.escape(BEGIN)}.*{re.escape(END)}', lambda _: Area(folder).map(), old, flags=re.S)
        name = readme.relative_to(ROOT)
        if count != 1:
            faults.append(f'{name}: needs the markers {BEGIN} and {END} once')
        elif update:
            readme.write_text(new, encoding='utf-8')
        elif new != old:
            faults += difflib.unified_diff(old.splitlines(), new.splitlines(), str(name), str(name), lineterm='', n=0)
    print('\n'.join(faults) or 'The map of each area is up to date.')
    return 1 if faults else 0


sys.exit(main())
