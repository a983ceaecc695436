# SPDX-License-Identifier: Apache-2.0
"""The mutants that nobody could notice, as docs/mutants.md lists them."""
import fnmatch
import re


class Explained:
    """Rows of a table: file and function, kind, code before, code after, reason; `*` stands for any text, | is written \\|."""

    def __init__(self, path):
        self.rows = []
        for line in path.read_text().splitlines() if path.exists() else []:
            cells = [cell.strip().strip("`").replace(r"\|", "|") for cell in re.split(r"(?<!\\)\|", line)[1:-1]]
            if len(cells) == 5 and cells[0] != "Where" and not set(cells[0]) <= set("-: "):
                self.rows.append(cells)

    def reason(self, mutant):
        found = (f"{mutant.file} {mutant.function}", mutant.kind, mutant.before, mutant.after)
        for *patterns, reason in self.rows:
            if all(fnmatch.fnmatchcase(text, _literal(pattern)) for text, pattern in zip(found, patterns)):
                return reason
        return None


def _literal(pattern):
    """Only `*` is special; code is full of brackets and question marks."""
    return re.sub(r"[\[?]", lambda sign: f"[{sign.group()}]", pattern)
