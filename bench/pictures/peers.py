# SPDX-License-Identifier: Apache-2.0
"""Picture viewers that may be installed, and the time that the next picture takes to the screen, seen from outside."""
import os
import select
import shutil
import signal
import socket
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


class Feh:
    """Goes on when it is sent a signal."""
    COMMAND = "feh"

    def __init__(self, folder, pictures):
        self.arguments = ["--quiet", "--fullscreen", "--hide-pointer", "--no-menus", *pictures]

    def go_on(self, pid):
        os.kill(pid, signal.SIGUSR1)


class Mpv:
    """Goes on when its socket says so. Of its ways to draw the one that costs least without a graphics processor."""
    COMMAND = "mpv"

    def __init__(self, folder, pictures):
        self.socket = folder / "mpv.sock"
        self.arguments = ["--no-config", "--really-quiet", "--fullscreen", "--vo=x11", "--no-osc", "--osd-level=0",
                          "--image-display-duration=inf", "--loop-playlist=inf", f"--input-ipc-server={self.socket}", *pictures]

    def go_on(self, pid):
        _say(self.socket, b'{"command": ["playlist-next"]}\n')


class Imv:
    """The same; it has no other way to draw than through OpenGL."""
    COMMAND = "imv-x11"

    def __init__(self, folder, pictures):
        self.folder = folder
        self.arguments = ["-f", *pictures]

    def go_on(self, pid):
        _say(self.folder / f"imv-{pid}.sock", b"next\n")


def _say(path, words):
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(str(path))
        connection.sendall(words)


class Peer:
    """Its command, started with two pictures between which it goes to and fro. A context manager that ends it."""

    def __init__(self, kind, folder, pictures):
        self._kind = kind(folder, pictures)
        # Its socket, where it has one, among our files; nothing of the user's settings.
        environment = {**os.environ, "XDG_RUNTIME_DIR": str(folder), "XDG_CONFIG_HOME": str(folder), "HOME": str(folder)}
        self._process = subprocess.Popen([kind.COMMAND, *self._kind.arguments], env=environment, stdin=subprocess.DEVNULL,
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()

    def go_on(self):
        self._kind.go_on(self._process.pid)


def next_picture(kind, watch, folder, first, second, rounds):
    """Median milliseconds from the word to go on from `first` to `second` on the screen."""
    with Peer(kind, folder, [first, second]) as peer:
        watch.last_change(time.monotonic())
        taken = []
        for _ in range(rounds):
            for picture in (second, first):
                begin = time.monotonic()
                peer.go_on()
                milliseconds = watch.last_change(begin)
                if picture == second:
                    taken.append(milliseconds)
        return statistics.median(taken)


KINDS = {"feh": Feh, "mpv": Mpv, "imv": Imv}


def installed():
    return {name: kind for name, kind in KINDS.items() if shutil.which(kind.COMMAND)}
