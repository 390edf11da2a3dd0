#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Finds links of HTML pages that lead nowhere: a missing file, or a missing place within one.

usage: check-links.py FOLDER
"""
import html.parser
import pathlib
import sys
import urllib.parse

# Doxygen links this place on pages of classes whose nested classes are all private, and does not make it.
NEVER_MADE = {'nested-classes'}


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.places = set(), {''}
        self.feed(path.read_text(encoding='utf-8'))

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        self.places.update(attributes[name] for name in ('id', 'name') if name in attributes)
        self.links.update(attributes[name] for name in ('href', 'src') if attributes.get(name))


def main():
    folder = pathlib.Path(sys.argv[1])
    pages = {path.resolve(): Page(path) for path in sorted(folder.rglob('*.html'))}
    faults, count = [], 0
    for path, page in pages.items():
        for link in sorted(page.links):
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            count += 1
            target = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
            place = urllib.parse.unquote(parts.fragment)
            if not target.is_file():
                faults.append(f'{path.name}: {link} is no page')
            elif target in pages and place not in pages[target].places | NEVER_MADE:
                faults.append(f'{path.name}: {link} is no place on its page')
    print('\n'.join(faults) or f'{count} links of {len(pages)} pages lead somewhere.')
    return 1 if faults else 0


sys.exit(main())
