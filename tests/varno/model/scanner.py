"""Tokens of the input language, found by longest match, earlier rules first."""

import re
from collections import namedtuple

# kind is "NAME", "INTEGER", "REAL", "DERIV", "PI", "TIME", "FUNCTION", "END", or the character
# itself for everything else. value: the name, the digits, the order, the function's name.
Token = namedtuple("Token", "kind text value")

_FUNCTION_SPELLINGS = {
    "sin": "sin",
    "cos": "cos",
    "tan": "tg tan",
    "cotan": "cotg cotan",
    "asin": "arcsin asin",
    "acos": "arccos acos",
    "atan": "arctg arctan atg atan",
    "acotan": "arccotg arccotan acotg acotan",
    "sinh": "sinh",
    "cosh": "cosh",
    "tanh": "tgh tanh",
    "cotanh": "cotgh cotanh",
    "asinh": "argsinh asinh",
    "acosh": "argcosh acosh",
    "atanh": "argtgh argtanh atgh atanh",
    "acotanh": "argcotgh argcotanh",
    "exp": "exp",
    "ln": "ln",
    "sqrt": "sqrt",
    "trunc": "trunc",
}
_KEYWORDS = {
    spelling.encode(): ("FUNCTION", name)
    for name, spellings in _FUNCTION_SPELLINGS.items() for spelling in spellings.split()
} | {b"pi": ("PI", None), b"t": ("TIME", None)}

_BLANKS = re.compile(rb"[ \t\v\f\r]+")
_RULES = [
    ("INTEGER", re.compile(rb"[0-9]+")),
    ("REAL", re.compile(
        rb"(?:[0-9]+\.[0-9]*|\.[0-9]+)(?:[Ee][+-]?[0-9]+)?|[0-9]+[Ee][+-]?[0-9]+")),
    ("NAME", re.compile(rb"[A-Za-z_][A-Za-z0-9_]*")),
    ("NUMBERED", re.compile(rb"'[0-9]+")),
    ("MARKS", re.compile(rb"'+")),
]


class Scanner:
    def __init__(self, text):
        self.text = text
        self.position = 0
        self.line = 1

    def next(self):
        self._skip_blanks_and_comments()
        if self.position >= len(self.text):
            return Token("END", b"", None)
        kind, length = None, 1
        for name, pattern in _RULES:
            match = pattern.match(self.text, self.position)
            if match and (kind is None or len(match.group()) > length):
                kind, length = name, len(match.group())
        text = self.text[self.position:self.position + length]
        self.position += length
        return self._token(kind, text)

    def _token(self, kind, text):
        if kind == "NAME":
            kind, value = _KEYWORDS.get(text, ("NAME", text))
            return Token(kind, text, value)
        if kind == "NUMBERED":
            return Token("DERIV", text, int(text[1:]))
        if kind == "MARKS":
            return Token("DERIV", text, len(text))
        if kind is None:
            return Token(text, text, None)
        return Token(kind, text, text)

    def _skip_blanks_and_comments(self):
        text = self.text
        while self.position < len(text):
            blanks = _BLANKS.match(text, self.position)
            if blanks:
                self.position = blanks.end()
            elif text[self.position] == 10:
                self.position += 1
                self.line += 1
            elif text.startswith(b"//", self.position):
                end = text.find(b"\n", self.position)
                self.position = len(text) if end < 0 else end + 1
                self.line += 1
            elif text.startswith(b"/*", self.position):
                end = text.find(b"*/", self.position + 2)
                stop = len(text) if end < 0 else end + 2
                self.line += text.count(b"\n", self.position, stop)
                self.position = stop
            else:
                return
