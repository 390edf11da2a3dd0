#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Doxygen's input filter: tells it what our headers mean by a blank line.

usage: doxygen-groups.py FILE      (writes the filtered file to standard output)

In a header here, a `///` comment speaks for every declaration that follows it without a blank line or
another comment between. Doxygen takes it for the first only, unless the declarations form a group:
this puts the marks of a group around them. No line is added, so that warnings name the right ones.
"""
import re
import sys

COMMENT = re.compile(r'\s*///(?!<)')
TEMPLATE = re.compile(r'\s*template\s*<.*>')
NO_GROUP = re.compile(r'\s*(#|(class|struct|enum|namespace|union|public|protected|private)\b)')


def end_of_run(lines, first):
    """(index after the last line, number of declarations) of the run that begins at lines[first]."""
    depth = declarations = 0
    index = first
    while index < len(lines):
        code = re.sub(r'//.*|"(\\.|[^"\\])*"|\'(\\.|[^\'\\])*\'', '', lines[index])
        if depth == 0 and (not lines[index].strip() or COMMENT.match(lines[index]) or
                           NO_GROUP.match(TEMPLATE.sub('', code))):
            break
        for position, character in enumerate(code):
            depth += {'{': 1, '}': -1, '(': 1, ')': -1}.get(character, 0)
            body_ends = character == '}' and not code[position + 1:].lstrip().startswith(';')
            if depth == 0 and (character == ';' or body_ends):
                declarations += 1
        if depth < 0:
            break
        index += 1
    return index, declarations


def main():
    lines = open(sys.argv[1], encoding='utf-8').read().split('\n')
    index = 0
    while index < len(lines):
        comment = index
        while index < len(lines) and COMMENT.match(lines[index]):
            index += 1
        if index == comment:
            index += 1
            continue
        end, declarations = end_of_run(lines, index)
        if declarations > 1:
            lines[comment] = '/**@{*/ ' + lines[comment].lstrip()
            code, mark, remark = lines[end - 1].partition(' //')
            lines[end - 1] = code + ' /**@}*/' + mark + remark
        index = max(index, end)
    print('\n'.join(lines), end='')


main()
