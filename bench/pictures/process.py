# SPDX-License-Identifier: Apache-2.0
"""What a running process costs, read from /proc and its clock: nothing here wakes it up."""
import os
import threading
import time
from pathlib import Path

KIBIBYTE = 1024
CPU_CLOCK_OF_PROCESS = 2  # the kernel's CPUCLOCK_SCHED


def cpu_milliseconds(pid):
    """User and system time of all threads, those that have ended too."""
    return time.clock_gettime((~pid << 3) | CPU_CLOCK_OF_PROCESS) * 1e3


def family(pid):
    """The process and its descendants, as far as they are still there."""
    found = [pid]
    for parent in found:
        for children in Path(f"/proc/{parent}/task").glob("*/children"):
            try:
                found += map(int, children.read_text().split())
            except OSError:
                continue
    return found


def own_bytes(pid):
    """RssAnon + RssShmem; 0 when the process is gone. Pages of files, which the system can take back, do not count."""
    try:
        status = Path(f"/proc/{pid}/status").read_text()
    except OSError:
        return 0
    return sum(int(line.split()[1]) for line in status.splitlines()
               if line.startswith(("RssAnon:", "RssShmem:"))) * KIBIBYTE


def wake_ups(pid):
    """How often any thread gave its core away or lost it."""
    count = 0
    for status in Path(f"/proc/{pid}/task").glob("*/status"):
        count += sum(int(line.split()[1]) for line in status.read_text().splitlines() if "_ctxt_switches:" in line)
    return count


def libraries(pid):
    """The names of the files that are mapped to be run, sorted."""
    lines = Path(f"/proc/{pid}/maps").read_text().splitlines()
    return sorted({os.path.basename(line.split()[-1]) for line in lines if ".so" in line})


class Peak:
    """Samples what a process and its children own, every millisecond while the block runs. Shared buffers are mapped
    once by the engine, so that its own numbers count each once."""

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
            self.bytes = max(self.bytes, sum(map(own_bytes, family(self.pid))))
