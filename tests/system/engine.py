# SPDX-License-Identifier: Apache-2.0
"""The engine in a process of its own, driven over its channel, for the tests that need no C++."""
import fcntl
import json
import os
import re
import select
import shutil
import socket
import struct
import subprocess
import tempfile
import time

SHOWN, NOT_SHOWN = 8, 6
APPLICATION, WIDGET = "starved", "starved.television"
MAGIC = 0x31666E6F6376000A


class Gone(Exception):
    """The engine has closed the channel."""


class Late(Exception):
    """The engine has not done within the deadline what was waited for."""


class Store:
    """The key store's file, written as another process of the session does."""

    def __init__(self, folder):
        self.path = os.path.join(folder, "store.log")
        with open(self.path, "wb") as file:
            file.write(self.header(40, 0))

    @staticmethod
    def header(length, sequence):
        inverse = (1 << 64) - 1
        return struct.pack("<QQQQQ", MAGIC, length, sequence, length ^ inverse, sequence ^ inverse)

    def set(self, key, value):
        key, value = key.encode(), value.encode()
        with open(self.path, "r+b", buffering=0) as file:
            fcntl.flock(file, fcntl.LOCK_EX)
            _, length, sequence = struct.unpack("<QQQ", file.read(40)[:24])
            record = struct.pack("<QII", sequence + 1, len(key), len(value)) + key + value
            os.pwrite(file.fileno(), record, length)
            os.pwrite(file.fileno(), self.header(length + len(record), sequence + 1), 0)


class Engine:
    """`deadline`: seconds for each answer and event."""

    def __init__(self, program, deadline, **environment):
        self.deadline = deadline
        self.folder = tempfile.mkdtemp(prefix="engine-")
        self.store = Store(self.folder)
        self.log = os.path.join(self.folder, "log")
        self.channel, theirs = socket.socketpair()
        self.process = subprocess.Popen(
            [program], pass_fds=[theirs.fileno()], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=open(self.log, "a", encoding="ascii"),
            env={**os.environ, "OLM_CHANNEL_FD": str(theirs.fileno()), "OLM_LOG_FILE": self.log,
                 "VCONF_SESSION": self.folder, **environment})
        theirs.close()
        self.buffer = b""
        self.last_id = 0
        self.events = []  # numbers, since they were last forgotten

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        self.channel.close()
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.folder)

    def call(self, method, **params):
        """The result, or the error as a mapping."""
        self.last_id += 1
        text = json.dumps({"jsonrpc": "2.0", "id": self.last_id, "method": method, "params": params})
        try:
            self.channel.sendall(text.encode() + b"\n")
        except OSError as error:
            raise Gone() from error
        end = time.monotonic() + self.deadline
        while True:
            message = self.read(end, method + str(params))
            if message.get("id") == self.last_id:
                return message["result"] if "result" in message else message["error"]

    def execute(self, command, *params):
        return self.call("engine.execute", command=command, params=[str(param) for param in params])

    def await_picture(self):
        """The event that ends a picture: shown or not."""
        end = time.monotonic() + self.deadline
        while not (SHOWN in self.events or NOT_SHOWN in self.events):
            self.read(end, "a picture's event")
        return SHOWN if SHOWN in self.events else NOT_SHOWN

    def pictures_ended(self):
        return self.events.count(SHOWN) + self.events.count(NOT_SHOWN)

    def set_state(self, state):
        self.store.set("db/KestWebApp/" + APPLICATION, state)

    def read(self, end, what):
        while b"\n" not in self.buffer:
            left = end - time.monotonic()
            if left <= 0 or not select.select([self.channel], [], [], left)[0]:
                raise Late(what)
            try:
                got = self.channel.recv(1 << 16)
            except OSError as error:
                raise Gone() from error
            if not got:
                raise Gone()
            self.buffer += got
        line, self.buffer = self.buffer.split(b"\n", 1)
        message = json.loads(line)
        if message.get("method") == "engine.event":
            self.events.append(message["params"]["event"])
        return message

    def said(self):
        with open(self.log, encoding="utf-8", errors="replace") as file:
            return file.read()

    def end(self, patience):
        """Ends the channel: the exit status, or the signal's number below zero; None when it does not end."""
        self.channel.close()
        try:
            return self.process.wait(patience)
        except subprocess.TimeoutExpired:
            return None

    def holds(self):
        """Counts of what it has: descriptors by kind, threads, processes below it."""
        base = f"/proc/{self.process.pid}"
        counts = {"processes": len(family_of(self.process.pid)) - 1, "threads": len(os.listdir(base + "/task"))}
        for descriptor in os.listdir(base + "/fd"):
            try:
                target = os.readlink(f"{base}/fd/{descriptor}")
            except OSError:
                continue
            if target == self.log:
                continue  # each library opens it when it first has something to say
            kind = re.sub(r":\[\d+\]| .*", "", target.replace(self.folder, ""))
            # A main loop that gets no event descriptor takes a pipe.
            add(counts, "descriptor " + kind.replace("anon_inode:[eventfd]", "pipe"), 2 if "eventfd" in kind else 1)
        return counts


def add(counts, name, number=1):
    counts[name] = counts.get(name, 0) + number


def family_of(process):
    """It and all below it."""
    family = [process]
    for one in family:
        try:
            for task in os.listdir(f"/proc/{one}/task"):
                with open(f"/proc/{one}/task/{task}/children", encoding="ascii") as file:
                    family += [int(number) for number in file.read().split()]
        except OSError:
            pass  # it has ended meanwhile
    return family


def processes_of(folder):
    """All that have that folder in their environment."""
    found = []
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                with open(f"/proc/{entry}/environ", "rb") as environ:
                    if folder.encode() in environ.read():
                        found.append(int(entry))
            except OSError:
                pass
    return found
