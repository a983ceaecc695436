# SPDX-License-Identifier: Apache-2.0
"""Builds one mutant beside a finished build folder, and runs the tests on it.

Nothing in the tree or in the build folder is touched: the changed source is compiled to an object of its own, with the
command that the build would use, and put in the original's place in a copy of the link command.
"""
import json
import os
import re
import shlex
import shutil
import signal
import subprocess
from dataclasses import dataclass, field
from pathlib import Path

QUICK = ["-O0", "-g0", "-w", "-Wno-error"]
# Without what only a debugger reads, and by the faster linker where there is one: a third of the time.
QUICK_LINK = ["-Wl,-s", *(["-fuse-ld=gold"] if shutil.which("ld.gold") else [])]


@dataclass
class Outcome:
    state: str  # "noticed", "survived", "does not compile"
    tests: list = field(default_factory=list)  # who noticed


class Build:
    """A finished build folder of the engine's tests."""

    def __init__(self, root, folder, target="engine_tests"):
        self.root, self.folder = Path(root), Path(folder).resolve()
        commands = json.loads((self.folder / "compile_commands.json").read_text())
        self.compile = {os.path.relpath(entry["file"], self.root): entry for entry in commands}
        steps = subprocess.run(["ninja", "-C", self.folder, "-t", "commands", target],
                               check=True, capture_output=True, text=True).stdout.splitlines()
        self.link = next(shlex.split(_linker_part(step)) for step in reversed(steps) if re.search(rf" -o \S*\b{target} ", step))
        self.program = self.link[self.link.index("-o") + 1]

    def compiled_with(self, changed, engine_sources):
        """The sources to compile anew when `changed` has changed. Tests keep what they know of a header."""
        if changed.endswith(".h"):
            return [source for source in engine_sources if source.endswith(".cpp") and self._includes(source, changed)]
        directly = f'#include "{changed}"'
        tests = [source for source in self.compile
                 if source.startswith("tests/engine/") and directly in (self.root / source).read_text()]
        return [changed, *tests]

    def _includes(self, source, header):
        """In one step or more."""
        entry = self.compile[source]
        command = _without_output(shlex.split(entry["command"])) + ["-MM"]
        listed = subprocess.run(command, cwd=entry["directory"], capture_output=True, text=True).stdout
        return str(self.root / header) in listed

    def compile_anew(self, source, text_folder, work):
        """Compiles `source` with `text_folder` first on the include path. Returns the object's path or None."""
        entry = self.compile[source]
        command = _without_output(shlex.split(entry["command"]))
        original = entry["file"]
        changed = str(text_folder / source) if (text_folder / source).exists() else original
        command = [changed if part == original else part for part in command]
        target = work / (source.replace("/", "_") + ".o")
        command[1:1] = ["-iquote", str(text_folder), "-I", str(text_folder)]
        command += [*QUICK, "-o", str(target)]
        done = subprocess.run(command, cwd=entry["directory"], capture_output=True)
        return target if done.returncode == 0 else None

    def object_of(self, source):
        parts = shlex.split(self.compile[source]["command"])
        return parts[parts.index("-o") + 1]

    def link_with(self, objects, work):
        """`objects`: source -> changed object. Returns the program's path or None."""
        command, archives = list(self.link), {}
        for source, changed in objects.items():
            original = self.object_of(source)
            if original in command:
                command[command.index(original)] = str(changed)
                continue
            for archive in [part for part in command if part.endswith(".a") and (self.folder / part).exists()]:
                archives.setdefault(archive, []).append((Path(original).name, changed))
        for archive, members in archives.items():
            copy = _archive_with(self.folder / archive, members, work)
            if copy:
                command[command.index(archive)] = str(copy)
        command += QUICK_LINK
        program = work / "engine_tests"
        command[command.index("-o") + 1] = str(program)
        done = subprocess.run(command, cwd=self.folder, capture_output=True, text=True)
        return program if done.returncode == 0 else None


def _linker_part(step):
    """ninja wraps a link as ": && c++ ... && :"."""
    return next(part for part in step.split(" && ") if " -o " in part)


def _without_output(command):
    while command and os.path.basename(command[0]) in ("ccache", "sccache"):
        command = command[1:]
    at = command.index("-o")
    return command[:at] + command[at + 2:]


def _archive_with(archive, members, work):
    """A copy of `archive` with the changed members, or None where it holds none of them."""
    held = set(subprocess.run(["ar", "t", archive], capture_output=True, text=True).stdout.split())
    members = [(name, changed) for name, changed in members if name in held]
    if not members:
        return None
    # The members are found by their names, so that the changed ones must bear the originals'.
    copy = work / archive.name
    folder = work / "members"
    folder.mkdir(exist_ok=True)
    subprocess.run(["ar", "x", "--output", str(folder), str(archive)], check=True)
    for name, changed in members:
        changed.replace(folder / name)
    copy.unlink(missing_ok=True)
    subprocess.run(["ar", "qc", str(copy), *sorted(map(str, folder.iterdir()))], check=True)
    return copy


def run_tests(program, folder, timeout, without=()):
    """Outcome of one run of all tests but those in `without`, up to the first that fails."""
    command = [str(program), "--gtest_fail_fast", "--gtest_color=no", "--gtest_filter=-" + ":".join(without)]
    # A test that ends its process runs in a child of its own: what hangs is ended with all its children.
    tests = subprocess.Popen(command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                             stdin=subprocess.DEVNULL, start_new_session=True)
    try:
        output, _ = tests.communicate(timeout=timeout)
    except subprocess.TimeoutExpired:
        os.killpg(tests.pid, signal.SIGKILL)
        output, _ = tests.communicate()
        return Outcome("noticed", [f"{_last_started(output)} (hung)"])
    if tests.returncode == 0:
        return Outcome("survived")
    return Outcome("noticed", _failed(output)[:1] or [f"{_last_started(output)} (ended with {tests.returncode})"])


def failing_tests(program, folder):
    """Those that fail on the unchanged engine: they would notice every mutant."""
    done = subprocess.run([str(program), "--gtest_color=no"], cwd=folder, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
    return sorted(set(_failed(done.stdout)))


def _failed(output):
    return [name.decode() for name in re.findall(rb"^\[  FAILED  \] (\w[\w./]*\.[\w./]+)", output, re.MULTILINE)]


def _last_started(output):
    started = re.findall(rb"^\[ RUN      \] ([\w./]+)", output, re.MULTILINE)
    return started[-1].decode() if started else "before the first test"
