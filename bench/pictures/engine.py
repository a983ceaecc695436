# SPDX-License-Identifier: Apache-2.0
"""A running picture-player, driven over its channel as an application would."""
import json
import os
import select
import subprocess
import time

PATIENCE_SECONDS = 60
SHOWN, REFUSED = 8, 6


class Engine:
    """Started by the constructor; a context manager that ends it."""

    def __init__(self, build, folder, environment=None, under=()):
        """`under`: a command that runs the one behind it."""
        self.started = time.monotonic()
        self._process = subprocess.Popen(
            [*under, build / "bin" / "picture-player"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            env={**os.environ, "OLM_LOG_FILE": str(folder / "engine.log"), "OLM_LOG_LEVEL": "1",
                 "VCONF_SESSION": str(folder), **(environment or {})})
        self.pid = self._process.pid
        self._rest, self._lines, self._id = b"", [], 0

    def __enter__(self):
        return self

    def __exit__(self, problem, *_):
        self._process.stdin.close()
        if problem:
            self._process.kill()
        self._process.wait(PATIENCE_SECONDS)
        self._process.stdout.close()

    def send(self, *commands):
        """Each command is a name or a list of a name and its texts; all go out in one write. The last one's id."""
        text = ""
        for command in commands:
            name, *texts = [command] if isinstance(command, str) else command
            self._id += 1
            text += json.dumps({"jsonrpc": "2.0", "id": self._id, "method": "engine.execute",
                                "params": {"command": name, "params": [str(part) for part in texts]}}) + "\n"
        self._process.stdin.write(text.encode())
        self._process.stdin.flush()
        return self._id

    def run(self, *commands):
        """Waits for the last one's answer and returns its result."""
        number = self.send(*commands)
        return self.wait(lambda message: message.get("id") == number)["result"]

    def wait_until_shown(self):
        """Event 8; an error when the picture is refused."""
        message = self.wait(lambda message: message.get("params", {}).get("event") in (SHOWN, REFUSED))
        if message["params"]["event"] == REFUSED:
            raise RuntimeError("the engine refuses the picture")

    def wait(self, wanted):
        """The first message to come that is `wanted`; those before it are dropped."""
        while True:
            message = json.loads(self._next_line())
            if "error" in message:
                raise RuntimeError(f"the engine answers {message}")
            if wanted(message):
                return message

    def _next_line(self):
        while not self._lines:
            if not select.select([self._process.stdout], [], [], PATIENCE_SECONDS)[0]:
                raise RuntimeError(f"the engine has said nothing for {PATIENCE_SECONDS} s")
            got = os.read(self._process.stdout.fileno(), 65536)
            if not got:
                raise RuntimeError("the engine has ended")
            *self._lines, self._rest = (self._rest + got).split(b"\n")
        return self._lines.pop(0)

    def show_first(self, picture):
        """Makes the window, over the whole screen, and shows a picture in it."""
        self.run(["InitPlayer", picture], ["SetDisplayArea", 0, 0, 0, 0])
        self.send("StartPlayback")
        self.wait_until_shown()

    def show_next(self, picture):
        """From the commands for another picture to its event, in milliseconds."""
        begin = time.monotonic()
        self.send(["ChangePlayingURL", picture], "StartPlayback")
        self.wait_until_shown()
        return (time.monotonic() - begin) * 1e3

    def show_prepared(self, picture, lead_seconds):
        """The same for a picture that was announced that long before: from "StartPlayback" on."""
        self.run(["ChangePlayingURL", picture])
        time.sleep(lead_seconds)
        begin = time.monotonic()
        self.send("StartPlayback")
        self.wait_until_shown()
        return (time.monotonic() - begin) * 1e3
