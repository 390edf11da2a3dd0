#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the binary layout of the public classes and enumerations of a library: what a plug-in is
compiled against, beside the symbols.

usage: abi-layout.py LIBRARY

The library is built with debug information, which `abidw` (abigail-tools) reads. For each class whose
header is public: its size in bytes; its bases and fields with their offsets, in bytes and, of a bit
field, bits; its virtual operations in the order of its virtual table. A field added or moved, and
virtual operations added or exchanged, change the text.
"""
import subprocess
import sys
import xml.etree.ElementTree as xml

PROJECT = '/Base/' # in the path of each of our headers


def run(*command, text=None):
    return subprocess.run(command, input=text, check=True, capture_output=True, text=True).stdout


class Library:
    def __init__(self, path):
        root = xml.fromstring(run('abidw', '--no-corpus-path', '--no-comp-dir-path', path))
        self.by_id = {}
        self.scope = {}
        self.mangled = {}
        self._index(root, '')
        names = sorted({f.get('mangled-name') for f in root.iter('function-decl') if f.get('mangled-name')})
        self.mangled = dict(zip(names, run('c++filt', text='\n'.join(names)).splitlines()))

    def _index(self, element, scope):
        for child in element:
            inner = scope
            if child.tag in ('namespace-decl', 'class-decl', 'union-decl', 'enum-decl', 'typedef-decl'):
                inner = scope + child.get('name') + '::'
            if child.get('id'):
                self.by_id.setdefault(child.get('id'), child)
                self.scope[child] = scope
            self._index(child, inner)

    def type_name(self, type_id):
        element = self.by_id.get(type_id)
        if element is None:
            return '?'
        inner = lambda: self.type_name(element.get('type-id'))
        match element.tag:
            case 'pointer-type-def':
                return inner() + '*'
            case 'reference-type-def':
                return inner() + ('&' if element.get('kind') == 'lvalue' else '&&')
            case 'qualified-type-def':
                marks = [mark for mark in ('const', 'volatile') if element.get(mark) == 'yes']
                return ' '.join([inner(), *marks])
            case 'array-type-def':
                return inner() + ''.join(f'[{part.get("length")}]' for part in element.iter('subrange'))
            case 'function-type':
                return 'function'
            case _:
                return self.scope[element] + element.get('name')

    def public_types(self):
        """Qualified name -> element of each class and enumeration that a public header defines."""
        found = {}
        for element, scope in self.scope.items():
            path = element.get('filepath', '')
            name = scope + element.get('name', '')
            if element.tag in ('class-decl', 'enum-decl') and not element.get('is-declaration-only') \
                    and path.endswith('.h') and not path.endswith('Impl.h') and PROJECT in path and '__anonymous' not in name:
                found[name] = element
        return dict(sorted(found.items()))

    def describe(self, name, element):
        if element.tag == 'enum-decl':
            underlying = self.by_id[element.find('underlying-type').get('type-id')]
            yield f'enum {name}: {int(underlying.get("size-in-bits")) // 8} bytes'
            for value in element.iter('enumerator'):
                yield f'  {value.get("name")} = {value.get("value")}'
            return
        yield f'class {name}: {int(element.get("size-in-bits")) // 8} bytes'
        for base in element.iter('base-class'):
            virtual = 'virtual ' if base.get('is-virtual') == 'yes' else ''
            yield f'  {position(base)} {virtual}base {self.type_name(base.get("type-id"))}'
        for field in element.iter('data-member'):
            if field.get('layout-offset-in-bits') is not None:
                variable = field.find('var-decl')
                yield f'  {position(field)} {variable.get("name")}: {self.type_name(variable.get("type-id"))}'
        virtuals = {}
        for member in element.findall('member-function'):
            if member.get('vtable-offset') is not None:
                function = member.find('function-decl')
                mangled = function.get('mangled-name')
                virtuals.setdefault(int(member.get('vtable-offset')), self.mangled.get(mangled, function.get('name')))
        for offset, function in sorted(virtuals.items()):
            yield f'  virtual {offset}: {function}'


def position(element):
    byte, bit = divmod(int(element.get('layout-offset-in-bits')), 8)
    return f'{byte}.{bit}' if bit else f'{byte}'


def main():
    library = Library(sys.argv[1])
    for name, element in library.public_types().items():
        print(*library.describe(name, element), sep='\n')


main()
