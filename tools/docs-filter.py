#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What Doxygen reads instead of a file; no line of it changes its number.

usage: docs-filter.py FILE

- Each class of a header leads to the contract and the example, which open the header.
- Headings lose their backquotes, which Doxygen would show as tags.
- A page links only what has a page: a folder stands for its README.md, and of a link to a source only
  the text remains.
"""
import os
import pathlib
import re
import sys

from declared import ROOT, Header, public_headers

HEADERS = set(public_headers())


def header(path, text):
    for kind, name in Header(path).types:
        command = kind.split()[0]
        text += f'/** @{command} {name}\n@par Contract and example\n{path.name} */\n'
    return text


def page(path, text):
    def link(match):
        label, target = match.groups()
        if re.match(r'\w+:|#', target):
            return match[0]
        file, _, place = target.partition('#')
        found = (path.parent / file).resolve()
        if found.is_dir() and (found / 'README.md').is_file():
            found /= 'README.md'
        name = found.relative_to(ROOT).as_posix()
        if not found.is_file():
            return label
        if name.endswith('.md'):
            return f'[{label}]({name}{place and "#" + place})'
        return f'@ref {found.name} "{label}"' if found in HEADERS else label

    text = re.sub(r'^#.*', lambda heading: heading[0].replace('`', ''), text, flags=re.M)
    return re.sub(r'(?<!!)\[([^\]\n]*)\]\(([^)\s]+)\)', link, text)


def main():
    path = pathlib.Path(sys.argv[1]).resolve()
    text = path.read_text(encoding='utf-8')
    sys.stdout.write(header(path, text) if path.suffix == '.h' else page(path, text))


main()
