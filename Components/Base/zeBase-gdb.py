# SPDX-License-Identifier: MIT
"""Lets gdb print the values of zeBase as text.

gdb loads this file by itself where it is installed; elsewhere: `source zeBase-gdb.py`. It needs the debug
information of the program, not that of the library: what only the library knows is read by its place, which
never changes (cmake/abi-layout.txt), so that core files and stripped libraries do.
"""
import struct

import gdb
import gdb.printing

LONGEST = 200  # characters of a message; strings themselves follow `set print elements`
WIDE = 16  # where an IString's implementation has address and length of its text; a CString's begins with them
DEEPEST = 64  # levels of a tree, which has no more: a damaged one may go in a circle


def read(address, layout):
    """The numbers at an address, as struct.unpack gives them."""
    memory = gdb.selected_inferior().read_memory(address, struct.calcsize(layout))
    return struct.unpack(layout, memory)


def field(value, name, offset, layout='<Q'):
    """A number in a value, by its place, or by its name where the value lies in no memory."""
    if value.address is None:
        return int(value[name])
    return read(int(value.address) + offset, layout)[0]


def text_at(impl, offset):
    """Address and length of the standard string in a string's implementation."""
    return read(impl + offset, '<QQ') if impl else (0, 0)


def known(value):
    """The value, or what its printer says where the program has no more than the name of its class."""
    type = value.type.strip_typedefs()
    if type.code != gdb.TYPE_CODE_STRUCT or type.fields():
        return value
    printer = gdb.default_visualizer(value)
    return printer.to_string() if printer else value


class CStringPrinter:
    character = 'char'
    offset = 0

    def __init__(self, value):
        self.impl = field(value, 'impl_', 8)

    def to_string(self):
        address, length = text_at(self.impl, self.offset)
        if not length:
            return ''
        pointer = gdb.Value(address).cast(gdb.lookup_type(self.character).pointer())
        return pointer.lazy_string(length=length)

    def display_hint(self):
        return 'string'


class IStringPrinter(CStringPrinter):
    character = 'wchar_t'
    offset = WIDE


class FilenamePrinter(IStringPrinter):
    def __init__(self, value):
        self.impl = read(int(value.address) + 24, '<Q')[0]  # that of the IString at 16


class ErrorPrinter:
    def __init__(self, value):
        self.code = field(value, 'code_', 8, '<i')
        self.message = field(value, 'message_', 16)

    def to_string(self):
        if not self.message:
            return f'error {self.code}' if self.code else 'success'
        address, length = text_at(read(self.message + 8, '<Q')[0], WIDE)
        shown = min(length, LONGEST)
        memory = gdb.selected_inferior().read_memory(address, 4 * shown) if shown else b''
        text = bytes(memory).decode('utf-32-le', 'backslashreplace')
        return f'error {self.code}: {text}' + ('...' if shown < length else '')


class ReferencePrinter:
    def __init__(self, value):
        self.object = value['object_']

    def to_string(self):
        of = f'ze::Reference<{self.object.type.target()}>'
        if not self.object:
            return f'{of} (null)'
        try:
            return f'{of} (count {int(self.object.dereference()["count_"])})'
        except gdb.error:  # another kind of count, or unknown to the program
            return of

    def children(self):
        if self.object:
            yield 'get()', self.object


class TreePrinter:
    """A map, or a set where it has no values. A node begins with its children, left and right, and its parent;
    the tree begins with its end, whose left child is the first node, followed by the count and the table."""

    def __init__(self, value):
        self.tree = int(value.address)
        self.count, self.table = read(self.tree + 32, '<i4xQ')
        self.type = value.type.strip_typedefs()
        self.map = self.type.name.startswith('ze::RBTreeMap<')

    def to_string(self):
        return f'{self.type.name.split("<")[0]} of {self.count}'

    def display_hint(self):
        return 'map' if self.map else 'array'

    def nodes(self):
        node = read(self.tree, '<Q')[0]
        for _ in range(self.count):
            yield node
            _, right, parent = read(node, '<QQQ')
            if right:  # the next is the first of those
                for _ in range(DEEPEST):
                    if not right:
                        break
                    node, right = right, read(right, '<Q')[0]
            else:  # up, past all links to the right
                for _ in range(DEEPEST):
                    if node != read(parent + 8, '<Q')[0]:
                        break
                    node, parent = parent, read(parent + 16, '<Q')[0]
                node = parent

    def children(self):
        if self.count <= 0:
            return
        offsets = read(self.table, '<ii')
        for place, node in enumerate(self.nodes()):
            for part in range(2 if self.map else 1):
                pointer = gdb.Value(node + offsets[part]).cast(self.type.template_argument(part).pointer())
                yield f'[{place}.{part}]', known(pointer.dereference())


class TuplePrinter:
    """Points, vectors and normals, as their `<<` writes them."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        type = self.value.type.strip_typedefs()
        parts = [f'{float(self.value[field]):g}' for field in type.fields()
                 if hasattr(field, 'bitpos') and field.type.strip_typedefs().code == gdb.TYPE_CODE_FLT]
        return f'{type.name.split("::")[-1]}({",".join(parts)})'


class Printers(gdb.printing.RegexpCollectionPrettyPrinter):
    def __call__(self, value):
        if value.type.strip_typedefs().code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
            value = value.referenced_value()
        return super().__call__(value)


def printers():
    of = Printers('zeBase')
    of.add_printer('CString', '^zeString::CString$', CStringPrinter)
    of.add_printer('IString', '^zeString::IString$', IStringPrinter)
    of.add_printer('Filename', '^zeOS::Filename$', FilenamePrinter)
    of.add_printer('Error', '^zeUtil::Error$', ErrorPrinter)
    of.add_printer('Reference', '^ze::Reference<.*>$', ReferencePrinter)
    of.add_printer('RBTree', '^ze::RBTree(Map|Set)<.*>$', TreePrinter)
    of.add_printer('Tuple', '^zeLinear::(Point|Vector)2?(Flt)?$|^zeLinear::(Normal|Tuple[234])$', TuplePrinter)
    return of


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
