#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the `@code` blocks of a public header, or the ```cpp blocks of a page, into one test source.

usage: extract-examples.py HEADER|PAGE.md NAME OUTPUT

The source of a header includes it first, so that it also proves that the header compiles alone, and
twice, so that its guard works. Each block of C++ becomes the body of a function, which is registered as
a test (Tests/Headers/examples.h); `#include` lines that open a block are hoisted. `assert` is on in every build. A block in another language, or marked
`@code{.unparsed}`, is left alone.
"""
import pathlib
import re
import sys

BLOCK = re.compile(r'^[ \t]*///[^\n]*[@\\]code(?:\{\.(\w+)\})?[ \t]*\n(.*?)^[ \t]*///[^\n]*[@\\]endcode',
                   re.M | re.S)


PAGE_BLOCK = re.compile(r'^```(cpp)\n(.*?)^```$', re.M | re.S)


def examples(text, pattern):
    """Yields (line of the first line of code, includes, body) for each block of C++."""
    for block in pattern.finditer(text):
        if block.group(1) not in (None, 'cpp'):
            continue
        first = text.count('\n', 0, block.start(2)) + 1
        lines = [re.sub(r'^\s*/// ?', '', line) for line in block.group(2).splitlines()]
        count = 0
        while count < len(lines) and re.match(r'#include\b|\s*$', lines[count]):
            count += 1
        yield first + count, [line for line in lines[:count] if line], lines[count:]


def main():
    header, name, output = pathlib.Path(sys.argv[1]), sys.argv[2], pathlib.Path(sys.argv[3])
    page = header.suffix == '.md'
    # A test filter takes a hyphen for the begin of what it leaves out.
    suite = header.stem.title().replace("-", "") if page else header.stem
    found = list(examples(header.read_text(encoding='utf-8'), PAGE_BLOCK if page else BLOCK))
    out = [] if page else [f'#include "{name}"', f'#include "{name}"  // once more: the guard']
    out += [line for _, includes, _ in found for line in includes]
    if found:
        out += ['', '#undef NDEBUG', '#include <cassert>', '#include "Headers/examples.h"', '', 'namespace {']
    for number, (line, _, body) in enumerate(found, 1):
        out += ['', f'void example{number}() {{', f'#line {line} "{name}"', *body, '}',
                f'const bool registered{number} = registerExample("{suite}", {number}, example{number});']
    if found:
        out += ['', '} // namespace']
    output.write_text('\n'.join(out) + '\n', encoding='utf-8')


main()
