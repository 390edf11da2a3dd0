#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the `@code` blocks of a public header into one test source.

usage: extract-examples.py HEADER INCLUDE_NAME OUTPUT

The source includes the header first, so that it also proves that the header compiles alone, and
twice, so that its guard works. Each block of C++ becomes the body of a function, which is registered as
a test (Tests/Headers/examples.h); `#include` lines that open a block are hoisted. `assert` is on in every build. A block in another language, or marked
`@code{.unparsed}`, is left alone.
"""
import pathlib
import re
import sys

BLOCK = re.compile(r'^[ \t]*///[^\n]*[@\\]code(?:\{\.(\w+)\})?[ \t]*\n(.*?)^[ \t]*///[^\n]*[@\\]endcode',
                   re.M | re.S)


def examples(text):
    """Yields (line of the first line of code, includes, body) for each block of C++."""
    for block in BLOCK.finditer(text):
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
    found = list(examples(header.read_text(encoding='utf-8')))
    out = [f'#include "{name}"', f'#include "{name}"  // once more: the guard']
    out += [line for _, includes, _ in found for line in includes]
    if found:
        out += ['', '#undef NDEBUG', '#include <cassert>', '#include "Headers/examples.h"', '', 'namespace {']
    for number, (line, _, body) in enumerate(found, 1):
        out += ['', f'void example{number}() {{', f'#line {line} "{name}"', *body, '}',
                f'const bool registered{number} = registerExample("{header.stem}", {number}, example{number});']
    if found:
        out += ['', '} // namespace']
    output.write_text('\n'.join(out) + '\n', encoding='utf-8')


main()
