# SPDX-License-Identifier: Apache-2.0
"""Picture viewers that may be installed, and the time that the next picture takes to the screen, seen from outside."""
import os
import select
import shutil
import signal
import statistics
import subprocess
import time

# No viewer draws in steps that are further apart; the first look may take as long as the largest decode.
QUIET_SECONDS, PATIENCE_SECONDS = 0.7, 60


class Watch:
    """screen_watch, kept running. Its times are those of time.monotonic."""

    def __init__(self, build):
        self._process = subprocess.Popen([build / "bin" / "screen_watch"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.stdin.close()
        self._process.wait()
        self._process.stdout.close()

    def last_change(self, since):
        """Milliseconds from `since` to the last change before the screen is quiet."""
        last = b""
        wait = PATIENCE_SECONDS
        while select.select([self._process.stdout], [], [], wait)[0]:
            last, wait = os.read(self._process.stdout.fileno(), 65536), QUIET_SECONDS
        if not last:
            raise RuntimeError(f"nothing has changed on the screen for {PATIENCE_SECONDS} s")
        return float(last.split()[-1]) - since * 1e3


def feh(watch, first, second, rounds):
    """feh goes to the next picture when it is sent a signal, and back to the first after the last."""
    command = ["feh", "--quiet", "--fullscreen", "--hide-pointer", "--no-menus", first, second]
    with subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
        try:
            watch.last_change(time.monotonic())
            taken = []
            for _ in range(rounds):
                for picture in (second, first):
                    begin = time.monotonic()
                    process.send_signal(signal.SIGUSR1)
                    milliseconds = watch.last_change(begin)
                    if picture == second:
                        taken.append(milliseconds)
            return statistics.median(taken)
        finally:
            process.terminate()


PEERS = {"feh": feh}


def installed():
    return {name: measure for name, measure in PEERS.items() if shutil.which(name)}
