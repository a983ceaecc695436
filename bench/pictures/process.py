# SPDX-License-Identifier: Apache-2.0
"""What a running process costs, read from /proc and its clock: nothing here wakes it up."""
import os
import threading
import time
from pathlib import Path

KIBIBYTE = 1024
# The library takes all pages of such memory at once, so that what is mapped is there.
SHARED_MEMORY = ("/memfd:", "/SYSV", "/dev/shm/")
CPU_CLOCK_OF_PROCESS = 2  # the kernel's CPUCLOCK_SCHED


def _children(pid):
    try:
        return list(Path(f"/proc/{pid}/task").glob("*/children"))
    except OSError:
        return []  # the process is gone


def family(pid):
    """The process and its descendants, as far as they are still there."""
    found = [pid]
    for parent in found:
        for children in _children(parent):
            try:
                found += map(int, children.read_text().split())
            except OSError:
                continue
    return found


def _lines(pid, name):
    try:
        return Path(f"/proc/{pid}/{name}").read_text().splitlines()
    except OSError:
        return []  # the process is gone


def own_bytes(pid):
    """What the process and its descendants own: private memory, and shared memory, each piece once however many map it.
    Pages of files, which the system can take back, do not count."""
    private, shared = 0, {}
    for member in family(pid):
        private += sum(int(line.split()[1]) for line in _lines(member, "status") if line.startswith("RssAnon:")) * KIBIBYTE
        mapped = {}
        for line in _lines(member, "maps"):
            if any(kind in line for kind in SHARED_MEMORY):
                addresses, _, _, *identity = line.split(maxsplit=5)[:5]
                begin, end = (int(address, 16) for address in addresses.split("-"))
                mapped[tuple(identity)] = mapped.get(tuple(identity), 0) + end - begin
        for identity, size in mapped.items():
            shared[identity] = max(shared.get(identity, 0), size)
    return private + sum(shared.values())


def cpu_milliseconds(pid):
    """User and system time of the process and its descendants: of those that are there to the nanosecond, of those that
    have ended in steps of the kernel's clock."""
    taken = 0
    for member in family(pid):
        try:
            taken += time.clock_gettime((~member << 3) | CPU_CLOCK_OF_PROCESS) * 1e3
        except OSError:
            continue  # it is gone
        # Behind the name, which may hold anything.
        numbers = " ".join(_lines(member, "stat")).rpartition(")")[2].split()
        taken += sum(map(int, numbers[13:15])) * 1e3 / os.sysconf("SC_CLK_TCK")
    return taken


def wake_ups(pid):
    """How often any thread of the process and its descendants gave its core away or lost it."""
    statuses = [status for member in family(pid) for status in Path(f"/proc/{member}/task").glob("*/status")]
    return sum(int(line.split()[1]) for status in statuses for line in status.read_text().splitlines()
               if "_ctxt_switches:" in line)


def libraries(pid):
    """The names of the files that are mapped to be run, sorted."""
    lines = Path(f"/proc/{pid}/maps").read_text().splitlines()
    return sorted({os.path.basename(line.split()[-1]) for line in lines if ".so" in line})


class Peak:
    """Samples what a process and its descendants own, every millisecond while the block runs."""

    def __init__(self, pid):
        self.pid, self.bytes = pid, 0
        self._over = threading.Event()
        self._thread = threading.Thread(target=self._sample)

    def __enter__(self):
        self._thread.start()
        return self

    def __exit__(self, *_):
        self._over.set()
        self._thread.join()

    def _sample(self):
        while not self._over.wait(0.001):
            self.bytes = max(self.bytes, own_bytes(self.pid))
