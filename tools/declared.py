# SPDX-License-Identifier: MIT
"""What the headers of the library declare: read from their text, whose layout clang-format fixes."""
import pathlib
import re

ROOT = pathlib.Path(__file__).resolve().parent.parent
BASE = ROOT / 'Components' / 'Base'

_NAMESPACE = re.compile(r'^(?:inline )?namespace ([\w:]+) \{', re.M)
_TYPE = re.compile(r'^(?:template ?<[^{;]*>\s*)?(?P<kind>class|struct|union|enum(?: class)?)'
                   r'(?:\s+ZEBASE_\w+|\s+\[\[\w+\]\]|\s+alignas\([^)]*\))*\s+(?P<name>\w+)(?:\s+final)?'
                   r'\s*(?::(?!:)[^;{]*)?\{', re.M)
_FUNCTION = re.compile(r'^(?!public|protected|private|using|return|typedef|friend|static_assert|namespace|class|struct|enum)'
                       r'[\w\[][^;{}()=#]*?(?<!::)\b(?!operator|__attribute__|requires\b)(\w+)\((?!\()', re.M)


class Header:
    """A public header: `types`, as pairs of kind and qualified name, and `functions`, by their names; both
    without what a namespace `detail` holds."""

    def __init__(self, path):
        text = re.sub(r'//[^\n]*', '', path.read_text(encoding='utf-8'))
        self._text = re.sub(r'^#.*(?:\\\n.*)*', '', text, flags=re.M)
        self._spans = [(match.start(), self._end(match.end()), match[1]) for match in _NAMESPACE.finditer(self._text)]
        self.types = [(match['kind'], '::'.join([*scope, match['name']])) for match, scope in self._found(_TYPE)]
        own = {name.split('::')[-1] for _, name in self.types}
        self.functions = [name for name in dict.fromkeys(match[1] for match, _ in self._found(_FUNCTION))
                          if name not in own]

    def _end(self, position):
        """Behind the brace that closes the one before the position."""
        depth = 1
        while depth and position < len(self._text):
            depth += {'{': 1, '}': -1}.get(self._text[position], 0)
            position += 1
        return position

    def _found(self, pattern):
        for match in pattern.finditer(self._text):
            scope = [name for begin, end, name in self._spans if begin < match.start() < end]
            if 'detail' not in scope:
                yield match, scope


def is_private(path):
    return path.name.endswith('Impl.h')


def public_headers(folder=BASE):
    return sorted(path for path in folder.rglob('*.h') if not is_private(path))
