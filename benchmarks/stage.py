# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0
"""The programs that are measured, and what the kernel and valgrind tell of them."""
import glob
import os
import re
import shutil
import signal
import socket
import sqlite3
import subprocess
import tempfile
import time

BIN = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "build", "release", "bin")
MEMORY = "/run/systemd"  # a file system of its own, so that nobody else works in it
JOURNAL = MEMORY + "/journal"
BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><listen>unix:path={folder}/bus</listen><auth>EXTERNAL</auth>
<policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/>
<allow own="*"/></policy></busconfig>"""


class Journal:
    """Takes what is sent to the journal, as fast as it comes, and keeps none of it."""

    def __init__(self):
        subprocess.run(["mount", "-t", "tmpfs", "tmpfs", MEMORY], check=True)
        os.mkdir(JOURNAL)
        self.lines = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.lines.bind(JOURNAL + "/socket")
        self.streams = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.streams.bind(JOURNAL + "/stdout")
        self.streams.listen(64)
        self.pid = os.fork()
        if self.pid == 0:
            while True:
                self.lines.recv(1 << 20)

    @staticmethod
    def stream():
        """What standard error of a service is connected to."""
        stream = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        stream.connect(JOURNAL + "/stdout")
        return stream

    def close(self):
        os.kill(self.pid, signal.SIGKILL)
        os.waitpid(self.pid, 0)


class Program:
    """A running program; with `counted`, under callgrind."""

    def __init__(self, name, stage, arguments=(), counted=False, **more):
        self.prefix = f"{stage.folder}/{name}.{time.monotonic_ns()}"
        valgrind = ["valgrind", "-q", "--tool=callgrind", "--log-file=" + self.prefix + ".log",
                    "--callgrind-out-file=" + self.prefix, "--combine-dumps=no"]
        command = [f"{BIN}/{name}", *arguments]
        self.process = subprocess.Popen(valgrind + command if counted else command,
                                        env=dict(os.environ, **stage.environment), **more)
        stage.programs.append(self)

    def read(self, name):
        with open(f"/proc/{self.process.pid}/{name}", encoding="ascii") as file:
            return file.read()

    def kilobytes(self, field):
        """Of smaps_rollup: Rss, Private_Dirty."""
        return int(re.search(rf"^{field}: *(\d+)", self.read("smaps_rollup"), re.M)[1])

    def threads(self):
        return len(os.listdir(f"/proc/{self.process.pid}/task"))

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def wakeups(self):
        """How often its threads were woken so far."""
        switches = (self.read(f"task/{task}/status")
                    for task in os.listdir(f"/proc/{self.process.pid}/task"))
        return sum(int(re.search(r"^voluntary_ctxt_switches:\s*(\d+)", text, re.M)[1])
                   for text in switches)

    def dump(self):
        """Ends a stretch of counting; returns the file with its counts."""
        before = set(glob.glob(self.prefix + ".*"))
        subprocess.run(["vgdb", f"--pid={self.process.pid}", "dump"], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        new = set(glob.glob(self.prefix + ".*")) - before
        return max(new, key=os.path.getmtime)

    def instructions(self):
        """How many it executed since the last call."""
        return instructions_of(self.dump())

    def end(self):
        self.process.kill()
        self.process.wait()


def instructions_of(dump):
    with open(dump, encoding="utf-8") as file:
        return int(re.search(r"^(?:summary|totals): (\d+)", file.read(), re.M)[1])


def instructions_by_name(prefix):
    """Of one operation, from the dumps that `costs` asked for."""
    counts = {}
    for dump in glob.glob(prefix + ".*"):
        with open(dump, encoding="utf-8") as file:
            name = re.search(r"^desc: Trigger: Client Request: (\w+)=(\d+)", file.read(), re.M)
        if name:
            counts[name[1]] = instructions_of(dump) / int(name[2])
    return counts


def instructions_within(dump, function):
    """Those of a function and what it calls; of the largest whose name begins so."""
    text = subprocess.run(["callgrind_annotate", "--inclusive=yes", "--threshold=100", dump],
                          check=True, capture_output=True, text=True).stdout
    counts = re.findall(rf"^ *([\d,]+) .*[:?]{re.escape(function)}", text, re.M)
    return max(int(count.replace(",", "")) for count in counts)


class Stage:
    """A private bus with a TV, whose state is below `place`: in memory unless it says otherwise.
    `phones` are registered; with `bonded`, there is a radio, too, which has that many of them."""

    def __init__(self, phones=1, bonded=None, place=MEMORY):
        self.programs = []
        self.folder = tempfile.mkdtemp(prefix="bench-", dir=place)
        self.environment = {"DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/bus",
                            "TV_ROOT": self.folder + "/root"}
        with open(self.folder + "/bus.conf", "w", encoding="ascii") as file:
            file.write(BUS.format(folder=self.folder))
        self.bus = subprocess.Popen(["dbus-daemon", f"--config-file={self.folder}/bus.conf",
                                     "--nofork"], stderr=subprocess.DEVNULL)
        while not os.path.exists(self.folder + "/bus"):
            time.sleep(0.01)
        self.set_up(phones)
        if bonded is not None:
            self.radio = Program("radio", self, [str(bonded)], text=True,
                                 stdin=subprocess.PIPE, stdout=subprocess.PIPE).process
            self.radio.stdout.readline()

    def service(self, **more):
        """The service, logging to the journal, once it knows what the radio has."""
        program = Program("bt-autoconnect", self, stderr=Journal.stream(), **more)
        self.ask("ready")
        return program

    def bare(self, **more):
        program = Program("bare_subscriber", self, stderr=subprocess.DEVNULL, **more)
        self.ask("bare")
        return program

    def starting(self, name, **more):
        """A program that logs to a pipe, once it has its name; and the milliseconds until then."""
        began = time.perf_counter()
        program = Program(name, self, stderr=subprocess.PIPE, **more)
        for line in program.process.stderr:
            if b"Name acquired" in line:
                return program, (time.perf_counter() - began) * 1000
        raise RuntimeError(name + " ended")

    def tvctl(self, *arguments):
        subprocess.run([f"{BIN}/tvctl", *arguments], check=True, stdout=subprocess.DEVNULL,
                       env=dict(os.environ, **self.environment))

    def set_up(self, phones):
        addresses = [f"A0:00:00:{i >> 16:02X}:{i >> 8 & 255:02X}:{i & 255:02X}"
                     for i in range(phones)]
        masks = ["".join(chr(ord(c) ^ i) if 0 < i < 16 else c for i, c in enumerate(address))
                 for address in addresses]
        settings = ",".join(f'{{"address":"{address}","value":"Y"}}' for address in addresses)
        self.tvctl("feature", "set", "com.velmora/featureconf/display_rotator_supported", "true")
        for name, value in (("wakeup-reason", 1), ("ambient-mode", 1), ("ambient-type", 1)):
            self.tvctl("power", "set", name, str(value))
        self.set_key("db/nirvo/musictv_paired3", f"[{settings}]")
        self.set_key("db/org.orlix.bleapp/added_mobile_keylist", "".join(m + "," for m in masks))

    def set_key(self, name, text):
        """Too long for a command line, perhaps: the key is made, then its value replaced."""
        self.tvctl("conf", "set", name, "x")
        with sqlite3.connect(self.folder + "/root/var/lib/tv-platform/config.db") as store:
            store.execute("UPDATE entries SET value = ? WHERE key = ?", (text, name))
        store.close()

    def ask(self, command):
        """Has the radio do something; returns the numbers of its answer."""
        self.radio.stdin.write(command + "\n")
        self.radio.stdin.flush()
        answer = self.radio.stdout.readline()
        if not answer:
            raise RuntimeError("the radio ended during: " + command)
        return {name: float(value) for name, value in (w.split("=") for w in answer.split())}

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for program in reversed(self.programs):
            program.end()
        self.bus.kill()
        self.bus.wait()
        shutil.rmtree(self.folder)
