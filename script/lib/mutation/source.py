# SPDX-License-Identifier: Apache-2.0
"""Reads C++ as far as mutation needs it: tokens, and the statements inside function bodies."""
import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"""(?P<space>\s+|//[^\n]*|/\*.*?\*/)
      |(?P<directive>\#(?:[^\n\\]|\\.)*)
      |(?P<text>"(?:\\.|[^"\\])*")
      |(?P<char>'(?:\\.|[^'\\])*')
      |(?P<number>\d[\w.]*)
      |(?P<name>[A-Za-z_]\w*)
      |(?P<sign>::|->|\+\+|--|&&|\|\||==|!=|<=|>=|<<|>>|[-+*/%&|^]=|.)""",
    re.VERBOSE | re.DOTALL,
)
CONTROL = {"if", "else", "for", "while", "do", "switch", "try", "catch"}
OPENING, CLOSING = {"(", "["}, {")", "]"}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int  # offset of the first character

    @property
    def end(self):
        return self.start + len(self.text)


@dataclass(frozen=True)
class Statement:
    """Tokens first..last, the closing semicolon among them."""

    first: int
    last: int
    ends_function: bool  # the last statement of a function's own block


def tokens_of(text, offset=0):
    found = (Token(match.lastgroup, match.group(), match.start() + offset) for match in TOKEN.finditer(text))
    return [token for token in found if token.kind != "space"]


class Source:
    """One file: `tokens` without directives, `directives` apart, `statements` in the order of the text."""

    def __init__(self, name, text):
        self.name = name
        self.text = text
        everything = tokens_of(text)
        self.tokens = [token for token in everything if token.kind != "directive"]
        self.directives = [token for token in everything if token.kind == "directive"]
        self.statements = []
        self._read_declarations(0)
        self.statements.sort(key=lambda statement: statement.first)

    def line_of(self, offset):
        return self.text.count("\n", 0, offset) + 1

    def function_at(self, offset):
        """Name of the function that the offset lies in; empty outside of functions and inside of classes."""
        heads = re.findall(r"^(?!namespace|using|struct|class|enum)[A-Za-z][^;={}\n]*?([~\w]+)\(", self.text[:offset], re.MULTILINE)
        return heads[-1] if heads else ""

    def text_of(self, first, last):
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def matching(self, opening):
        """Index of the bracket that closes the one at `opening`."""
        depth = 0
        for index in range(opening, len(self.tokens)):
            sign = self.tokens[index].text
            if self.tokens[index].kind == "sign":
                depth += sign in "([{"
                depth -= sign in ")]}"
                if depth == 0:
                    return index
        raise ValueError(f"{self.name}: bracket at {self.tokens[opening].start} is not closed")

    def _sign(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) and self.tokens[index].kind == "sign" else ""

    def _read_declarations(self, index):
        """Outside functions: skips to function bodies. Returns behind the closing brace, or at the end."""
        while index < len(self.tokens):
            if self._sign(index) == "}":
                return index + 1
            if self._sign(index) == "{":
                before = self.tokens[index - 1].text
                if before in (")", "const", "override", "noexcept") or self._ends_initialisers(index):
                    index = self._read_block(index + 1, owner_is_code=False)
                elif before == "=" or before in ("]", "}"):
                    index = self.matching(index) + 1
                else:
                    index = self._read_declarations(index + 1)
            else:
                index += 1
        return index

    def _ends_initialisers(self, index):
        """True for the body's brace behind member initialisers that end in braces."""
        return self._sign(index - 1) == "}" and ")" in (self._sign(i) for i in range(max(0, index - 12), index))

    def _read_block(self, index, owner_is_code):
        """Inside a function, behind the opening brace. Returns behind the closing one."""
        start, depth, statements = index, 0, []
        while True:
            sign = self._sign(index)
            if sign == "}" and depth == 0:
                break
            depth += (sign in OPENING) - (sign in CLOSING)
            if sign == "{":
                is_block, compound = self._kind_of_brace(index, start, depth)
                index = self._read_block(index + 1, True) if is_block else self.matching(index) + 1
                if compound:
                    start = index
                continue
            if sign == ";" and depth == 0:
                statements.append((start, index))
                start = index + 1
            elif sign == ":" and depth == 0 and self.tokens[start].text in ("case", "default"):
                start = index + 1
            index += 1
        for first, last in statements:
            self.statements.append(Statement(first, last, not owner_is_code and last == index - 1))
        return index + 1

    def _kind_of_brace(self, index, start, depth):
        """(whether statements stand in it, whether it ends the statement that began at `start`)"""
        if index == start:
            return True, True
        if depth == 0 and self.tokens[start].text in CONTROL:
            return True, True
        is_lambda = self._sign(index - 1) == "]" or self._sign(index - 1) == ")" and self._lambda_before(index - 1)
        return is_lambda, False

    def _lambda_before(self, closing):
        depth = 0
        for index in range(closing, -1, -1):
            depth += (self._sign(index) == ")") - (self._sign(index) == "(")
            if depth == 0:
                return self._sign(index - 1) == "]"
        return False
