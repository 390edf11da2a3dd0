#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A reader of packages and of scenefile's documents that was written from Documentation/formats.md alone.

usage: formatsTest.py SCENEFILE MAKEPACKAGE FORMATS.md

Checks the worked examples of that page against what the library writes, takes entries out of packages, exports
documents by itself and compares the models with those that scenefile exports, and turns binary documents into the
other byte order, which scenefile must read as the same.
"""
import collections
import itertools
import os
import pathlib
import random
import re
import struct
import subprocess
import sys
import tempfile

# --- The two formats: values, chunks and sub-packets -----------------------------------------------


# The tags of debug files: of a value, and of an array, by the code of the struct module. R is a
# reference.
VALUE_TAGS = {'?': b'b', 'B': b'C', 'i': b'i', 'I': b'I', 'q': b'l', 'd': b'd', 'R': b'r', 's': b's'}
ARRAY_TAGS = {'i': b'5', 'd': b'0'}


class Values:
    """The values of a packet, one behind the other."""

    def __init__(self, data, debug):
        self.data, self.debug, self.at = data, debug, 0
        self.chunks = [None]  # of each open packet: the end of its open chunk, or None

    def take(self, code):
        self.tag(VALUE_TAGS[code])
        return self.take('I') if code == 'R' else self.raw(code)

    def many(self, count, code):
        return [self.take(code) for _ in range(count)]

    def references(self):
        return self.many(self.take('i'), 'R')

    def fields(self, **codes):
        """A further chunk, which begins with values of these names."""
        assert self.chunk()
        return {name: self.take(code) for name, code in codes.items()}

    def end_chunk(self):
        if self.chunks[-1] is not None:
            assert self.is_at(self.chunks[-1]), 'something is left in a chunk'
            self.chunks[-1] = None


class BinaryValues(Values):
    """The body of a binary packet. `swapped` collects its bytes in the other order."""

    def __init__(self, data, order, debug):
        super().__init__(data, debug)
        self.order, self.swapped, self.ends = order, bytearray(), [len(data)]

    def tag(self, tag):
        assert not self.debug or self.raw('c') == tag

    def array(self, count, code):
        self.tag(ARRAY_TAGS[code])
        return [self.raw(code) for _ in range(count)]

    def raw(self, code):
        size = struct.calcsize('<' + code)
        value, = struct.unpack(self.order + code, self.data[self.at:self.at + size])
        self.at += size
        self.swapped += struct.pack(('>' if self.order == '<' else '<') + code, value)
        return value

    def begin(self, mark):
        assert self.raw('c') == mark
        start = self.at
        return start + self.take('i')

    def string(self):
        self.tag(VALUE_TAGS['s'])
        return bytes(iter(lambda: self.raw('B'), 0)).decode()

    def chunk(self):
        """Whether there is a further chunk with anything in it."""
        self.end_chunk()
        if self.at == self.ends[-1]:
            return False
        self.chunks[-1] = self.begin(b',')
        return self.at < self.chunks[-1]

    def is_at(self, end):
        return self.at == end

    def start(self):
        self.ends.append(self.begin(b'.'))
        self.chunks.append(None)

    def end(self):
        self.end_chunk()
        self.chunks.pop()
        assert self.at == self.ends.pop(), 'something is left in a packet'


class TextValues(Values):
    """The text of a packet behind "{ ", its id and its reference mark."""

    def is_at(self, text):
        """Skips it, too."""
        found = self.data.startswith(text, self.at)
        self.at += len(text) if found else 0
        return found

    def tag(self, tag):
        assert not self.debug or self.is_at(tag)

    def array(self, count, code):
        self.tag(ARRAY_TAGS[code])
        return self.many(count, code)

    def raw(self, code):
        end = self.data.index(b' ', self.at)
        word, self.at = self.data[self.at:end], end + 1
        return float(word) if code == 'd' else int(word)

    def string(self):
        self.tag(VALUE_TAGS['s'])
        match = re.compile(rb'"((?:\\.|[^"\\])*)" ', re.S).match(self.data, self.at)
        self.at = match.end()
        return re.sub(rb'\\(.)', rb'\1', match[1], flags=re.S).decode()

    def chunk(self):
        self.end_chunk()
        if not self.is_at(b'\n  [ '):
            return False
        self.chunks[-1] = b'] '
        return not self.data.startswith(b']', self.at)

    def start(self):
        assert self.is_at(b'\n  < ')
        self.chunks.append(None)

    def end(self):
        self.end_chunk()
        self.chunks.pop()
        assert self.is_at(b'> ') if self.chunks else self.at == len(self.data)


# --- Files ----------------------------------------------------------------------------------------

Packet = collections.namedtuple('Packet', 'type reference values')


class File:
    def __init__(self, data, whole=True):
        lines = data.split(b'\n')
        assert lines[0] == b'^@' and lines[4] == b'@'
        little, method, _ = map(int, lines[2].split())
        self.order, self.method = '<' if little else '>', method
        self.text, self.debug = method in (0, 2), method in (2, 3)
        end = lines.index(b'@', 5)
        self.types = [line.split()[1].decode() for line in lines[5:end]]
        self.start = at = len(b'\n'.join(lines[:end + 1])) + 1
        self.packets, read = [], self.text_packet if self.text else self.binary_packet
        while not self.packets or self.packets[-1].type != 'packetFile_EOF':
            type_id, has_reference, values, at = read(data, at)
            reference = values.take('R') if has_reference else 0
            self.packets.append(Packet(self.types[type_id], reference, values))
        assert not whole or at == len(data)

    def binary_packet(self, data, at):
        type_id, has_reference, length = struct.unpack(self.order + '3i', data[at:at + 12])
        end = at + 12 + length
        return type_id, has_reference, BinaryValues(data[at + 12:end], self.order, self.debug), end

    def text_packet(self, data, at):
        match = re.compile(rb'\{ (\d+) ([01]) ((?:\\.|[^\\}])*)\}\n', re.S).match(data, at)
        return int(match[1]), int(match[2]), TextValues(match[3], self.debug), match.end()


# --- Filters --------------------------------------------------------------------------------------


def unguard(data):
    """What is in the frames of a checksum."""
    result, at, total = b'', 0, 0
    while at < len(data):
        size, complement = struct.unpack('>II', data[at:at + 8])
        frame = data[at + 10:at + 10 + size]
        assert size ^ complement == 0xFFFFFFFF and len(frame) == size > 0
        total += sum(word for word, in struct.iter_unpack('<H', frame + b'\0' * (size % 2)))
        while total > 0xFFFF:
            total = (total & 0xFFFF) + (total >> 16)
        assert total == int.from_bytes(data[at + 8:at + 10], 'little')
        result += frame
        at += 10 + size
    return result


def codes(data):
    """The codes of a compressed section, behind its magic. They grow with their number since the
    start, or since 256, which clears."""
    at, width, number = 3, 9, 0
    while True:
        group = int.from_bytes(data[at:at + width], 'little')
        at += width
        for i in range(8):
            code = group >> i * width & (1 << width) - 1
            yield code
            number = 0 if code == 256 else number + 1
            grows = width < 16 and 257 + number >= 1 << width
            if code == 256 or grows:
                break
        width = 9 if code == 256 else width + grows


def expand(data):
    assert data[:3] == b'\x1F\x9D\x90'
    empty = [bytes([byte]) for byte in range(256)] + [b'clear', b'end']
    result, strings, before = bytearray(), list(empty), b''
    for code in codes(data):
        if code == 257:
            return bytes(result)
        if code == 256:
            strings, before = list(empty), b''
            continue
        if before and len(strings) < 65536:
            strings.append(before + (strings[code] if code < len(strings) else before)[:1])
        before = strings[code]
        result += before


def rotate(word, by):
    return (word << by % 32 | word >> -by % 32) & 0xFFFFFFFF


class Cipher:
    def __init__(self, key):
        self.s = [(0x6A09E667 + i * 0xBB67AE85) & 0xFFFFFFFF for i in range(44)]
        words, a, b = list(struct.unpack('<8I', key)), 0, 0
        for i in range(3 * 44):
            a = self.s[i % 44] = rotate(self.s[i % 44] + a + b & 0xFFFFFFFF, 3)
            b = words[i % 8] = rotate(words[i % 8] + a + b & 0xFFFFFFFF, a + b)

    def decipher(self, block):
        a, b, c, d = struct.unpack('<4I', block)
        c, a = c - self.s[43], a - self.s[42]
        for i in range(20, 0, -1):
            a, b, c, d = d, a, b, c
            u, t = (rotate(x * (2 * x + 1) & 0xFFFFFFFF, 5) for x in (d, b))
            c = rotate(c - self.s[2 * i + 1] & 0xFFFFFFFF, -t) ^ u
            a = rotate(a - self.s[2 * i] & 0xFFFFFFFF, -u) ^ t
        words = a, b - self.s[0], c, d - self.s[1]
        return struct.pack('<4I', *(word & 0xFFFFFFFF for word in words))

    def undo(self, data):
        """What is in the frames of an encryption."""
        result, at = b'', 1
        assert data[:1] == b'\1'
        while at < len(data):
            frame = data[at + 1:at + 1 + data[at]]
            assert 0 < len(frame) == data[at] <= 240
            whole = len(frame) // 16 * 16
            for i in range(0, whole, 16):
                result += self.decipher(frame[i:i + 16])
            result += frame[whole:]
            at += 1 + len(frame)
        return result


# --- Packages -------------------------------------------------------------------------------------


def read_package(data):
    """The entries by their names: what each holds, and when its source was changed."""
    assert data[0] in (0x8F, 0x2E)
    assert data[1:59] == b'ZephirumPortablePackageFile\neliFegakcaPelbatroPmurihpeZ\n1\n'
    pointer = data.index(b'@', 59) + 2
    place, end = int(data[pointer:pointer + 24]), pointer + 24
    directory = File(data[place:], whole=False)
    assert not directory.text and not directory.debug
    packets = [packet.values for packet in directory.packets if packet.type == 'package.entry']
    *elements, last = [(values.string(), *map(values.take, 'qqq?')) for values in packets]
    entries = {}
    for name, offset, size, date, compressed in elements:
        assert offset == end and size >= 0
        end += size
        content = data[offset:end]
        if name not in ('', '.'):
            entries[name] = (unguard(expand(content)) if compressed else content, date)
    assert last[:2] == ('', place) and end == place
    return entries


# --- Documents ------------------------------------------------------------------------------------


def tuples(numbers, size):
    return [tuple(numbers[i:i + size]) for i in range(0, len(numbers), size)]


IDENTITY = [1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0]


def read_scene(values):
    return {**values.fields(root='R', vertices='R'), **values.fields(), 'libraries': values.references(),
            **values.fields(), 'counts': values.many(5, 'i') + values.many(2, 'q')}


def read_node(values):
    return {**values.fields(name='R', parent='R', mesh='R'),
            'children': values.references() if values.chunk() else [],
            'transform': values.array(12, 'd') if values.chunk() else IDENTITY}


def read_mesh(values):
    count = values.fields(vertices='R', runs='i')['runs']
    return {'runs': [read_run(values) for _ in range(count)]}


def read_run(values):
    values.start()
    run = {**values.fields(kind='B', texture='?', normals='?', elements='i', corners='i', size='i'),
           **values.fields(material='R', group='R', smoothing='i'), **values.fields()}
    size, elements = run['size'], run['elements']
    run['sizes'] = [size] * elements if size else values.array(elements, 'i')
    assert sum(run['sizes']) == run['corners']
    run['indices'] = [values.array(run['corners'] * has, 'i')
                      for has in (True, run['texture'], run['normals'])]
    values.end()
    return run


def read_vertices(values):
    count = values.fields(count='i')['count']
    vertices = {'v': tuples(values.array(3 * count, 'd'), 3), 'vt': [], 'vn': []}
    if values.chunk():
        texture, size = values.take('i'), values.take('B')
        vertices['vt'] = tuples(values.array(texture * size, 'd'), size)
    if values.chunk():
        vertices['vn'] = tuples(values.array(3 * values.take('i'), 'd'), 3)
    for size in 1, 3:  # weights, colours
        if values.chunk():
            more = tuples(values.array(size * count, 'd'), size)
            vertices['v'] = [v + m for v, m in zip(vertices['v'], more)]
    return vertices


READERS = {
    'scenefile_scene': read_scene, 'scenefile_node': read_node, 'scenefile_mesh': read_mesh,
    'scenefile_vertices': read_vertices,
    'scenefile_group': lambda values: {**values.fields(), 'names': values.references()},
    'scenefile_material': lambda values: values.fields(name='R'),
    'packetFile_string': lambda values: values.string(), 'packetFile_EOF': lambda values: None,
}


def read_document(file):
    """The scene, and all objects by their references."""
    objects, scene = {}, None
    for packet in file.packets:
        content = READERS[packet.type](packet.values)
        packet.values.end()
        if packet.type == 'scenefile_scene':
            scene = content
        elif packet.reference:
            assert packet.reference not in objects
            objects[packet.reference] = content
    return scene, objects


# --- The model in a document without transforms ---------------------------------------------------


def check_counts(scene, objects):
    """What the scene states about itself, except for materials and groups."""
    found = [item for item in objects.values() if isinstance(item, dict)]
    runs = [run for item in found for run in item.get('runs', [])]
    nodes, meshes = (sum(key in item for item in found) for key in ('children', 'runs'))
    elements, corners = (sum(run[key] for run in runs) for key in ('elements', 'corners'))
    assert [nodes, meshes, len(runs), elements, corners] == scene['counts'][:2] + scene['counts'][4:]


def model_lines(file):
    scene, objects = read_document(file)
    check_counts(scene, objects)
    for library in scene['libraries']:
        yield 'mtllib ' + objects[library]
    for keyword, items in objects[scene['vertices']].items():
        for item in items:
            yield ' '.join([keyword, *map(repr, item)])
    state = ['g ', 'usemtl ', 's 0']
    for at, child in enumerate(objects[scene['root']]['children']):
        node = objects[child]
        assert node['transform'] == IDENTITY
        if node['name'] or at > 0 or not node['mesh']:
            yield 'o ' + (objects[node['name']] if node['name'] else '')
        for run in objects[node['mesh']]['runs'] if node['mesh'] else []:
            lines = list(state_lines(run, objects))
            yield from (line for line, before in zip(lines, state) if line != before)
            yield from element_lines(run)
            state = lines


def state_lines(run, objects):
    group = objects[run['group']]['names'] if run['group'] else []
    yield 'g ' + ' '.join(objects[name] for name in group)
    yield 'usemtl ' + (objects[objects[run['material']]['name']] if run['material'] else '')
    yield f"s {run['smoothing']}"


def element_lines(run):
    corners = itertools.zip_longest(*run['indices'], fillvalue=-1)  # index -1 is none
    for size in run['sizes']:
        words = ('/'.join(str(index + 1 or '') for index in corner).rstrip('/')
                 for corner in itertools.islice(corners, size))
        yield ' '.join(['plf'[run['kind'] - 1], *words])


def tokens(lines):
    """Words, and numbers as such: there is more than one way to print them."""
    def token(word):
        return float(word) if re.fullmatch(r'[-+.0-9eE]*[0-9.]', word) else word
    return [[token(word) for word in line.split()] for line in lines if not line.startswith('#')]


def swap(data):
    """The same binary document as a machine of the other byte order writes it."""
    file = File(data)
    read_document(file)
    order = '>' if file.order == '<' else '<'
    start = data[:file.start].split(b'\n')
    start[2] = b'%d %d 1' % (file.order == '>', file.method)
    result = b'\n'.join(start)
    for packet in file.packets:
        result += struct.pack(order + '3i', file.types.index(packet.type), packet.reference != 0,
                              len(packet.values.swapped)) + packet.values.swapped
    return result


# --- The test -------------------------------------------------------------------------------------

MODEL = r'''mtllib some.mtl
v 0 0 0 1 0.5 0
v 1 0.1 -1e-20 1 0.5 0
v 0 1 123456789.125 0 0 1
vt 0
vt 0.25 1
vn 0 0 1
p 1 2
o first "{[<\>]}"
usemtl m 1
g a b
s 2
f 1/1/1 2/2/1 3/1/1
f 3/1/1 2/2/1 1/1/1 1/2/1
f 1 2 3
o none
o last
l 1 2 3 1
l 1 2
'''


def bytes_of(dump):
    """The bytes of lines of hexadecimal numbers; a semicolon begins a comment."""
    return bytes.fromhex(re.sub(r';.*', '', dump))


def check_packages(make_package, example, folder, equal):
    def make(changes):
        """Each change is a sign and a name, and what the entry is to hold."""
        arguments = []
        for at, (change, content) in enumerate(changes):
            arguments.append(change)
            if content is not None:
                source = folder / f'source{at}'
                source.write_bytes(content)
                os.utime(source, (10 ** 9, 10 ** 9))
                arguments.append(source)
        subprocess.run([make_package, folder / 'package', *arguments], check=True,
                       env={**os.environ, 'LC_ALL': 'C.UTF-8'})
        return (folder / 'package').read_bytes()

    made = make([('=a/plain', b'hello'), ('=gone', b'12345678'), ('+packed', b'x' * 40), ('-gone', None)])
    equal(made, bytes_of(example), 'the example of a package')
    equal(read_package(made), {'a/plain': (b'hello', 10 ** 9), 'packed': (b'x' * 40, 10 ** 9)},
          'what is in the example of a package')
    numbers = random.Random(5)
    model = {name: content for name, (content, _) in read_package(made).items()}
    for _ in range(20):
        changes = []
        for _ in range(10):
            name = f'ä/{numbers.randrange(30)}'
            if name in model and numbers.random() < 0.4:
                del model[name]
                changes.append(('-' + name, None))
            else:
                model[name] = numbers.randbytes(numbers.randrange(99)) * numbers.randrange(1, 99)
                changes.append((numbers.choice('+=') + name, model[name]))
        found = {name: content for name, (content, _) in read_package(make(changes)).items()}
        equal(found, model, 'what is in a package')


def main():
    scenefile, make_package, page = sys.argv[1:]
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)

        def run(command, file, *arguments):
            subprocess.run([scenefile, command, folder / file, *arguments], check=True, stdout=subprocess.DEVNULL)

        def make(model, method, *options):
            (folder / 'in.obj').write_text(model)
            run('import', 'in.obj', folder / method, '--method', method, *options)
            return (folder / method).read_bytes()

        def equal(found, expected, what):
            if found != expected:
                sys.exit(f'{what} differs:\nfound:    {found!r}\nexpected: {expected!r}')

        example = dict(re.findall(r'<!-- example: (\w+) -->\n```\n(.*?)```\n', pathlib.Path(page).read_text(), re.S))
        start = example['start'].encode()
        equal(make(example['model'], 'binary'), start + bytes_of(example['binary']),
              'the binary example')
        equal(make(example['model'], 'text'),
              start.replace(b'1 1 1', b'1 0 1') + example['text'].encode(), 'the text example')

        undo = {'compress': expand, 'checksum': unguard, 'encrypt': Cipher(bytes_of(example['key'])).undo}
        for name, by, plain in (('compressed', 'compress', b'tick tick tick tick'), ('guarded', 'checksum', b'abc'),
                                ('enciphered', 'encrypt', b'sixteen bytes or more')):
            equal(undo[by](bytes_of(example[name])), plain, f'the {name} example')

        check_packages(make_package, example['package'], folder, equal)

        def filtered(model, method, filters=('checksum', 'compress')):
            data = make(model, method, *(f'--{name}' for name in filters))
            start = data.index(b'scenefile_filters\n@\n') + 20
            names = ' '.join(filters).encode()
            packet = re.compile(rb'.{12}s?%b\0|\{ 8 0 s?"%b" \}\n' % (names, names), re.S)
            packets = data[packet.match(data, start).end():]
            for name in filters:
                packets = undo[name](packets)
            plain = data[:start].replace(b'   8 scenefile_filters\n', b'') + packets
            equal(plain, make(model, method), f'a {method} document through its filters')
            return data

        methods = 'binary', 'text', 'binary-debug', 'text-debug'
        for method in methods:
            filtered(MODEL * 500, method)
        filtered(MODEL * 500, method)
        filtered(MODEL * 50, 'binary', ('checksum', 'encrypt', 'compress'))
        data, part = filtered(example['model'], 'binary'), bytes_of(example['filtered'])
        equal(data[225:225 + len(part)], part, 'the example with filters')

        def exported(document):
            run('export', document, folder / 'out.obj')
            return tokens((folder / 'out.obj').read_text().splitlines())

        for method in methods:
            for model in MODEL, example['model']:
                data = make(model, method)
                equal(tokens(model_lines(File(data))), exported(method),
                      f'the model in a {method} document')
                run('transform', method, '--rotate', '90,z', '--translate', '5,0,0')
                scene, objects = read_document(File((folder / method).read_bytes()))
                equal(objects[scene['root']]['transform'], [0, 1, 0, -1, 0, 0, 0, 0, 1, 5, 0, 0],
                      f'the transform in a {method} document')
        for method, encode in (('binary', bytes_of), ('text', str.encode)):
            root, scene = encode(example[method + '_root']), encode(example[method + '_debug'])
            equal((folder / method).read_bytes().count(root), 1, f'the {method} root example')
            data = make(example['model'], method + '-debug')
            place = len(start.replace(b'1 1 1', b'1 %d 1' % File(data).method))
            equal(data[place:place + len(scene)], scene, f'the {method} example with tags')

        for method in 'binary', 'binary-debug':
            make(MODEL, method)
            run('transform', method, '--scale', '3,-2,0.5')
            data = (folder / method).read_bytes()
            (folder / 'swapped').write_bytes(swap(data))
            equal(swap(swap(data)), data, 'a document that was swapped twice')
            equal(read_document(File(swap(data))), read_document(File(data)),
                  'what is in a swapped document')
            equal(exported('swapped'), exported(method), 'the model in a swapped document')


main()
