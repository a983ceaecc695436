# SPDX-License-Identifier: Apache-2.0
"""A tvsim session and its clients, for the tests that need no C++."""
import json
import os
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import time

PATIENCE = 60  # seconds; everything here takes far less on a machine that does nothing else

SHOWN, NOT_SHOWN = 8, 6  # events


def await_true(what, condition):
    end = time.monotonic() + PATIENCE
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"waited for: {what}")
        time.sleep(0.002)
    return value


def settled(what, value):
    """What `value` returns once it has been the same for a while: a picture's own process ends when it is drawn."""
    found, since = value(), time.monotonic()

    def is_settled():
        nonlocal found, since
        now = value()
        if now != found:
            found, since = now, time.monotonic()
        return time.monotonic() - since > 0.5

    await_true(f"a number of {what} that stays", is_settled)
    return found


class Client:
    """A connection to a control socket."""

    def __init__(self, path):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(path)  # waits for its turn, which it would not with a limit
        self.socket.settimeout(PATIENCE)
        self.buffer = b""
        self.last_id = 0
        self.notifications = []

    def close(self):
        self.socket.close()

    def receive(self):
        """The next message; None at the end."""
        while b"\n" not in self.buffer:
            got = self.socket.recv(1 << 16)
            if not got:
                return None
            self.buffer += got
        line, self.buffer = self.buffer.split(b"\n", 1)
        return json.loads(line)

    def send(self, method, **params):
        self.last_id += 1
        text = json.dumps({"jsonrpc": "2.0", "id": self.last_id, "method": method, "params": params})
        self.socket.sendall(text.encode() + b"\n")
        return self.last_id

    def answer_to(self, number):
        while (message := self.receive()) is not None:
            if message.get("id") == number:
                return message
            if "method" in message:
                self.notifications.append(message)
        raise AssertionError("the session has closed the connection")

    def call(self, method, **params):
        return self.answer_to(self.send(method, **params))

    def await_notification(self, method, matches=lambda params: True):
        """The next one of that kind; it and those before it are taken."""
        while True:
            while self.notifications:
                message = self.notifications.pop(0)
                if message["method"] == method and matches(message["params"]):
                    return message["params"]
            message = self.receive()
            assert message is not None, f"waited for {method}, and the session has ended"
            self.notifications.append(message)


class Session:
    """tvsim serving a session in a folder of its own, on a screen of its own unless `screen` says otherwise."""

    def __init__(self, tvsim, engine, *arguments, size="640x360", screen=("--headless",)):
        self.folder = tempfile.mkdtemp(prefix="tvsim-")
        runtime = os.path.join(self.folder, "runtime")
        os.mkdir(runtime)
        environment = {**os.environ, "XDG_RUNTIME_DIR": runtime, "XDG_STATE_HOME": os.path.join(self.folder, "state"),
                       "OLM_LOG_FILE": ""}
        self.errors = open(os.path.join(self.folder, "errors"), "w+", encoding="utf-8", errors="replace")
        self.process = subprocess.Popen(
            [tvsim, "serve", *screen, f"--size={size}", f"--engine={engine}", *arguments], env=environment,
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=self.errors, text=True)
        self.address = self.process.stdout.readline().strip()
        assert self.address.startswith("http://"), self.said()
        self.path = os.path.join(runtime, "tvsim", "tv", "control")

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        """Nothing stays of a session that was not ended, because its test failed."""
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()

    def said(self):
        self.errors.seek(0)
        return self.errors.read()

    def connect(self):
        return Client(self.path)

    def processes(self):
        """(id, name) of everything that this session has started."""
        found = []
        for entry in os.listdir("/proc"):
            if not entry.isdigit():
                continue
            try:
                with open(f"/proc/{entry}/environ", "rb") as environ, open(f"/proc/{entry}/comm") as comm:
                    if self.folder.encode() in environ.read():
                        found.append((int(entry), comm.read().strip()))
            except OSError:
                pass  # it has ended meanwhile
        return found

    def job(self):
        """The tvsim process that runs the session: the one with the most children that are none of tvsim's."""
        tvsims = [number for number, name in self.processes() if name == "tvsim"]
        return max(tvsims)

    def engine(self):
        """The newest engine, as this namespace numbers it; None while there is none."""
        found = [number for number, name in self.processes() if name in ("picture-player", "fake-engine")]
        return max(found) if found else None

    def server(self):
        """The X server of its own screen."""
        return next((number for number, name in self.processes() if name == "Xvfb"), None)

    def end(self, number=signal.SIGTERM):
        """Ends tvsim and sees that nothing of it stays."""
        self.process.send_signal(number)
        self.process.wait(PATIENCE)
        await_true("the end of all processes", lambda: not self.processes())
        left = [os.path.join(folder, name) for folder, _, names in os.walk(os.path.join(self.folder, "runtime"))
                for name in names]
        assert not left, f"files of the session are left: {left}"
        self.errors.close()
        self.process.stdout.close()
        shutil.rmtree(self.folder)


class Application:
    """Plays one picture again and again."""

    def __init__(self, session, picture):
        self.picture = picture
        self.client = session.connect()
        self.log = self.client.call("session.status")["result"]["engineLog"]

    def command(self, name, **params):
        """1, 0, or the error's number."""
        answer = self.client.call("command." + name, **params)
        return answer["result"] if "result" in answer else answer["error"]["code"]

    def start_playing(self):
        """The first answer that is not 1; None when all are."""
        for name, params in (("InitPlayer", {"url": self.picture}),
                             ("SetDisplayArea", {"x": 0, "y": 0, "width": 0, "height": 0}), ("StartPlayback", {})):
            if (answer := self.command(name, **params)) != 1:
                return f"{name} answers {answer}"
            if name == "InitPlayer":
                self.client.notifications.clear()  # of the picture before, which has gone by now
        return None

    def await_picture(self):
        event = self.client.await_notification("engine.event", lambda event: event["event"] in (SHOWN, NOT_SHOWN))
        return None if event["event"] == SHOWN else "event 6"

    def show(self):
        """Why the picture does not stand; None when it does."""
        return self.start_playing() or self.await_picture()

    def engine(self):
        """The engine's process, as the session numbers it."""
        return self.client.call("session.status")["result"]["engineProcess"]

    def window(self):
        """The engine's, as its log tells."""
        with open(self.log, encoding="utf-8", errors="replace") as file:
            return int(re.findall(r"StaticSetWindow 0x([0-9a-f]+)", file.read())[-1], 16)


def memory_of(process):
    """Kilobytes of a process's own memory, without what it shares."""
    with open(f"/proc/{process}/smaps_rollup", encoding="ascii") as file:
        lines = dict(line.split(":", 1) for line in file if ":" in line)
    return int(lines["Private_Clean"].split()[0]) + int(lines["Private_Dirty"].split()[0])


def descriptors_of(process):
    return len(os.listdir(f"/proc/{process}/fd"))


def shared_memory():
    """System V segments on this machine that nobody is attached to: what a killed process leaves."""
    with open("/proc/sysvipc/shm", encoding="ascii") as file:
        rows = [line.split() for line in file]
    attached = rows[0].index("nattch")
    return sum(row[attached] == "0" for row in rows[1:])
