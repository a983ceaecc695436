# SPDX-License-Identifier: Apache-2.0
"""Derives mutants of one source mechanically: what a slip of the hand could have left there."""
import re
from dataclasses import dataclass

from mutation.source import tokens_of

COLOURS = {"LOG_RED": "LOG_BLUE", "LOG_BLUE": "LOG_YELLOW", "LOG_YELLOW": "LOG_RED"}
MARKERS = {"LOG_ENTER": "LOG_LEAVE", "LOG_LEAVE": "LOG_ENTER"}
LOGS = {*COLOURS, *MARKERS, "LOG_PLAIN", "PICTURE_LOG", "PICTURE_LOG_COLOURED"}
OPERATORS = {"==": "!=", "!=": "==", "<": ">=", ">": "<=", "<=": ">", ">=": "<", "&&": "||", "||": "&&"}
FLAGS = {"true": "false", "false": "true"}
# A statement that begins so declares something: without it the rest would not compile.
DECLARATIONS = {"auto", "bool", "char", "const", "constexpr", "float", "int", "unsigned", "using", "static_assert"}
# Comparison signs also bracket template arguments; these names stand before such a bracket.
TEMPLATES = {"static_cast", "reinterpret_cast", "const_cast", "template", "array", "vector", "lock_guard",
             "unique_ptr", "shared_ptr", "is_pointer_v", "numeric_limits", "atomic", "lerp"}


@dataclass(frozen=True)
class Mutant:
    file: str
    function: str
    line: int
    kind: str
    before: str  # the lines that change, as one
    after: str
    start: int
    end: int
    replacement: str

    def apply(self, text):
        return text[:self.start] + self.replacement + text[self.end:]


def one_line(code):
    return re.sub(r"\s+", " ", code).strip()


def derive(source):
    mutants = [*_of_statements(source), *_of_tests(source), *_of_tokens(source), *_of_directives(source)]
    return sorted(mutants, key=lambda mutant: (mutant.start, mutant.end, mutant.kind))


def _mutant(source, kind, start, end, replacement):
    """`before` and `after` show whole lines, so that a small change is seen in its place."""
    first = source.text.rfind("\n", 0, start) + 1
    last = source.text.find("\n", end)
    before = source.text[first:last]
    after = source.text[first:start] + replacement + source.text[end:last]
    where = (source.name, source.function_at(start), source.line_of(start))
    return Mutant(*where, kind, one_line(before), one_line(after), start, end, replacement)


def _head(source, statement):
    return source.tokens[statement.first].text


def _of_statements(source):
    following = {statement.first: statement for statement in source.statements}
    for statement in source.statements:
        head = _head(source, statement)
        start, end = source.tokens[statement.first].start, source.tokens[statement.last].end
        if head in LOGS:
            yield _mutant(source, "log dropped", start, end, ";")
            yield from _of_log(source, statement)
        elif head == "TRACED_LOCK":
            yield _mutant(source, "lock and its traces dropped", start, end, ";")
        elif head == "return":
            # At a function's end the value would be left to chance.
            if not statement.ends_function:
                yield _mutant(source, "statement dropped", start, end, ";")
        elif head not in {*DECLARATIONS, "continue", ";"} or _is_lock(source, statement):
            yield _mutant(source, "statement dropped", start, end, ";")
        neighbour = following.get(statement.last + 1)
        if neighbour and (head in LOGS and _shows(source, neighbour) or
                          _head(source, neighbour) in LOGS and _shows(source, statement) and head != "return"):
            yield _exchanged(source, statement, neighbour)


def _is_lock(source, statement):
    return any("Lock" in token.text for token in source.tokens[statement.first:statement.last])


def _shows(source, statement):
    """False for what leaves no trace of when it ran: plain assignments, declarations of data, silent locks."""
    tokens = source.tokens[statement.first:statement.last]
    calls = any(token.text == "(" for token in tokens)
    return tokens[0].text in {*LOGS, "return", "TRACED_LOCK"} or calls and not _is_lock(source, statement)


def _exchanged(source, statement, neighbour):
    start, middle = source.tokens[statement.first].start, source.tokens[statement.last].end
    second, end = source.tokens[neighbour.first].start, source.tokens[neighbour.last].end
    text = source.text
    return _mutant(source, "exchanged with its neighbour", start, end,
                   text[second:end] + text[middle:second] + text[start:middle])


def _of_log(source, statement):
    """Another colour (and with it another level), another level, another text."""
    name = source.tokens[statement.first]
    other = COLOURS.get(name.text) or MARKERS.get(name.text)
    if other:
        kind = "log with another colour" if name.text in COLOURS else "marker turned round"
        yield _mutant(source, kind, name.start, name.end, other)
    literals = [token for token in source.tokens[statement.first:statement.last] if token.kind == "text"]
    if literals and name.text in {*COLOURS, "LOG_PLAIN", "PICTURE_LOG_COLOURED"}:
        yield from _changed_text(source, literals[-1 if name.text == "PICTURE_LOG_COLOURED" else 0], "log with another text")


def _changed_text(source, literal, kind):
    """The first letter in the other case, and the last character gone."""
    content = literal.text[1:-1]
    letter = re.search(r"(?<![\\%])[A-Za-z]", content)
    if letter:
        changed = content[:letter.start()] + letter.group().swapcase() + content[letter.end():]
        yield _mutant(source, kind, literal.start, literal.end, f'"{changed}"')
    if content:
        shortened = re.sub(r"(\\.|%.|.)$", "", content, flags=re.DOTALL)
        yield _mutant(source, kind, literal.start, literal.end, f'"{shortened}"')


def _of_tests(source):
    """Conditions of if, while and ?: turned round."""
    for index, token in enumerate(source.tokens[:-1]):
        if token.text in ("if", "while") and token.kind == "name":
            opening = index + 1 + (source.tokens[index + 1].text == "constexpr")
            first, last = source.tokens[opening], source.tokens[source.matching(opening)]
            condition = source.text[first.end:last.start]
            yield _mutant(source, "test turned round", first.end, last.start, f"!({condition})")
        elif token.text == "?" and token.kind == "sign":
            yield _swapped_branches(source, index)


def _swapped_branches(source, question):
    """The two values of a?b:c exchanged."""
    depth, colon, end = 0, None, None
    for index in range(question + 1, len(source.tokens)):
        sign = source.tokens[index].text if source.tokens[index].kind == "sign" else ""
        if depth == 0 and sign == ":" and colon is None:
            colon = index
        elif depth == 0 and (sign in {")", ";", ",", "]", "}"}) and colon is not None:
            end = index - 1
            break
        depth += (sign in {"(", "[", "{", "?"}) - (sign in {")", "]", "}"})
    one, other = source.text_of(question + 1, colon - 1), source.text_of(colon + 1, end)
    return _mutant(source, "test turned round", source.tokens[question].start, source.tokens[end].end, f"? {other} : {one}")


def _of_tokens(source):
    logs = {index for statement in source.statements if _head(source, statement) in LOGS
            for index in range(statement.first, statement.last)}
    for index, token in enumerate(source.tokens):
        if token.kind == "number":
            yield _number(source, token)
        elif token.kind == "name" and token.text in FLAGS:
            yield _mutant(source, "constant changed", token.start, token.end, FLAGS[token.text])
        elif token.kind == "text" and index not in logs and source.tokens[index - 1].text != "extern":
            yield from _changed_text(source, token, "constant changed")
        elif token.kind == "sign" and token.text in OPERATORS and not _is_template(source, index):
            yield _mutant(source, "test changed", token.start, token.end, OPERATORS[token.text])


def _number(source, token):
    if re.fullmatch(r"0x[0-9A-Fa-f]+|\d+[uUlL]*", token.text):
        digits = re.match(r"0x[0-9A-Fa-f]+|\d+", token.text).group()
        changed = str(int(digits, 0) + 1) + token.text[len(digits):]
    else:
        changed = "1" + token.text
    return _mutant(source, "constant changed", token.start, token.end, changed)


def _is_template(source, index):
    if source.tokens[index].text not in ("<", ">"):
        return source.tokens[index].text == "&&" and source.tokens[index - 1].text in ("auto", "const", "&")
    line_start = source.text.rfind("\n", 0, source.tokens[index].start) + 1
    line_end = source.text.find("\n", line_start)
    return bool(set(re.findall(r"\w+", source.text[line_start:line_end])) & TEMPLATES)


def _of_directives(source):
    """The numbers and colours in the bodies of the log macros."""
    for directive in source.directives:
        head = re.match(r"#\s*define\s+\w+(\([^)]*\))?", directive.text)
        if not head or head.end() == len(directive.text):
            continue
        for token in tokens_of(directive.text[head.end():].replace("\\\n", " \n"), directive.start + head.end()):
            if token.kind == "number":
                yield _number(source, token)
            elif token.kind == "text":
                yield from _changed_text(source, token, "log with another text")
