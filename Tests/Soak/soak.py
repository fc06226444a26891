"""Uses `nebsc serve` for a long time, as careless editors do.

    python3 Tests/Soak/soak.py build/release/bin/nebsc 30

One server receives reading and writing requests in random order, cancellations, and invalid
messages. Meanwhile other servers start, and their clients disappear: silently, in the middle of a
message, or while a request runs. Prints the resources of the first server every 15 seconds. The exit
status is 1 if something remains or grows.
"""

import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import threading
import time

MESSAGE = "NEBSourceControlRequestOptionMessage"
EMPTY = "NEBSourceControlRequestOptionAllowEmptyCommit"
LIMIT = "NEBSourceControlRequestOptionLogOutputLimit"
FORCE = "NEBSourceControlRequestOptionForce"


class Server:
    """A `nebsc serve` and its client; answers are counted on a thread of their own."""

    def __init__(self, program, variables, errors=None):
        self.process = subprocess.Popen([program, "serve"], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=errors, env=variables)
        self.answers = {}
        self.open = set()
        self.lock = threading.Condition()
        self.last = 0
        self.reader = threading.Thread(target=self.read, daemon=True)
        self.reader.start()
        self.ask("initialize")

    def read(self):
        stream = self.process.stdout
        while True:
            header = stream.readline()
            if not header:
                break
            while stream.readline() not in (b"\r\n", b""):
                pass
            length = int(header.split(b":")[1])
            message = json.loads(stream.read(length))
            error = message.get("error") or (message.get("result") or {}).get("error")
            kind = "done" if not error else str(error.get("class") or error["code"])
            with self.lock:
                self.answers[kind] = self.answers.get(kind, 0) + 1
                self.open.discard(message.get("id"))
                self.lock.notify_all()

    def send_bytes(self, content):
        self.process.stdin.write(b"Content-Length: %d\r\n\r\n" % len(content) + content)
        self.process.stdin.flush()

    def ask(self, method, params=None):
        with self.lock:
            # No more at once than an impatient editor asks for.
            self.lock.wait_for(lambda: len(self.open) < 24)
            self.last += 1
            self.open.add(self.last)
        message = {"jsonrpc": "2.0", "id": self.last, "method": method, "params": params or {}}
        self.send_bytes(json.dumps(message).encode())
        return self.last

    def cancel(self, number):
        message = {"jsonrpc": "2.0", "method": "$/cancelRequest", "params": {"id": number}}
        self.send_bytes(json.dumps(message).encode())

    def idle(self):
        with self.lock:
            if not self.lock.wait_for(lambda: not self.open, 120):
                sys.exit("The server has not answered in two minutes: %s" % self.open)

    def end(self):
        self.idle()
        self.ask("shutdown")
        self.send_bytes(b'{"jsonrpc":"2.0","method":"exit"}')
        return self.process.wait(60)


def git(folder, *arguments):
    subprocess.run(["git", "-C", folder, *arguments], check=True, capture_output=True)


def make_copies(folder, count):
    copies = []
    for number in range(count):
        copy = os.path.join(folder, str(number))
        os.mkdir(copy)
        git(copy, "init", "-q", "-b", "main")
        for name in ("a.c", "b.c"):
            with open(os.path.join(copy, name), "w") as file:
                file.write("one\ntwo\n")
        git(copy, "add", ".")
        git(copy, "commit", "-q", "-m", "First")
        git(copy, "branch", "topic")
        copies.append(copy)
    return copies


def request(random_number, copies, number):
    """Of answers that do not grow with time, so that memory need not either."""
    copy = random_number.choice(copies)
    tree = {"location": copy}
    file = os.path.join(copy, "a.c")
    return random_number.choice([
        {"type": 15, "sourceTree": tree},
        {"type": 18, "sourceTree": tree, "workDoneToken": number, "options": {LIMIT: 30}},
        {"type": 28, "sourceTree": tree, "files": [file]},
        {"type": 30, "sourceTree": tree, "startingRevision": "HEAD"},
        {"type": 17, "sourceTree": tree, "files": ["."]},
        {"type": 26, "sourceTree": tree},
        {"type": 19, "sourceTree": tree},
        {"type": 24, "sourceTree": tree},
        {"type": 3, "sourceTree": tree, "options": {MESSAGE: "m", EMPTY: True}},
        {"type": 1, "sourceTree": tree, "destination": "n%d" % (number % 20)},
        {"type": 2, "sourceTree": tree, "destination": "n%d" % (number % 19),
         "options": {FORCE: True}},
        {"type": 14, "sourceTree": tree, "destination": random_number.choice(["main", "topic"])},
        {"type": 21, "sourceTree": tree, "files": [file], "startingRevision": "HEAD",
         "destination": os.path.join(copy, "exported-a.c")},
        {"type": 18, "sourceTree": {"location": "/"}},
        {"type": 14, "sourceTree": tree, "destination": "--nosuch"},
        {"type": 99},
    ])


def leave(program, variables, copies, random_number):
    """A client that goes as it likes."""
    server = Server(program, variables, subprocess.DEVNULL)
    for number in range(random_number.randrange(6)):
        server.ask("sourceControl/perform", request(random_number, copies, -1 - number))
    way = random_number.randrange(4)
    if way == 0:
        server.process.stdin.write(b"Content-Length: 100\r\n\r\n{")
        server.process.stdin.flush()
    elif way == 1:
        server.process.terminate()
    elif way == 2:
        server.process.stdin.write(b"no header\r\n\r\n")
        server.process.stdin.flush()
    server.process.stdin.close()
    server.process.wait(60)


def children_of(pid):
    names = []
    for thread in os.listdir("/proc/%d/task" % pid):
        try:
            with open("/proc/%d/task/%s/children" % (pid, thread)) as file:
                names += file.read().split()
        except FileNotFoundError:
            pass
    return len(names)


def figures(server):
    """Of a server that is idle: KiB resident, descriptors, threads, children."""
    server.idle()
    time.sleep(0.2)
    pid = server.process.pid
    with open("/proc/%d/status" % pid) as file:
        status = dict(line.split(":", 1) for line in file)
    return (int(status["VmRSS"].split()[0]), len(os.listdir("/proc/%d/fd" % pid)),
            int(status["Threads"]), children_of(pid))


def main():
    program, minutes = os.path.abspath(sys.argv[1]), float(sys.argv[2])
    seed = int(os.environ.get("NEB_SEED", random.randrange(1 << 30)))
    print("NEB_SEED=%d" % seed)
    random_number = random.Random(seed)
    folder = tempfile.mkdtemp(prefix="neb-soak-")
    variables = dict(os.environ, HOME=folder, GIT_CONFIG_NOSYSTEM="1", TMPDIR=folder,
                     GIT_AUTHOR_NAME="Ann", GIT_AUTHOR_EMAIL="ann@example.org",
                     GIT_COMMITTER_NAME="Ann", GIT_COMMITTER_EMAIL="ann@example.org")
    os.environ.update(variables)
    try:
        copies = make_copies(folder, 12)
        server = Server(program, variables)
        begin = time.monotonic()
        due = begin
        history = []
        number = gone = 0
        while time.monotonic() < begin + 60 * minutes:
            number += 1
            asked = server.ask("sourceControl/perform", request(random_number, copies, number))
            if random_number.random() < 0.2:
                time.sleep(random_number.random() * 0.02)
                server.cancel(asked)
            if random_number.random() < 0.02:
                server.send_bytes(random_number.choice([b"", b"{", b"[]", b'{"jsonrpc":"2.0"}']))
            if random_number.random() < 0.01:
                leave(program, variables, copies, random_number)
                gone += 1
            if time.monotonic() >= due:
                history.append(figures(server))
                print("%5.1f min %7d requests %4d other clients: %6d KiB resident, %d descriptors, "
                      "%d threads, %d children" %
                      ((time.monotonic() - begin) / 60, number, gone, *history[-1]), flush=True)
                due += 15 if minutes < 10 else 60
        history.append(figures(server))
        status = server.end()
        left = [name for name in os.listdir(folder) if not name.isdigit()]
        locks = [name for copy in copies for _, _, names in os.walk(os.path.join(copy, ".git"))
                 for name in names if name.endswith(".lock")]
        print("%d requests: %s" % (number, json.dumps(server.answers, sort_keys=True)))
        print("at the end: %d KiB resident, %d descriptors, %d threads, %d children; exit status %d; "
              "left behind: %s" % (*history[-1], status, left + locks))
        middle = history[len(history) // 2]
        grows = history[-1][0] > middle[0] * 1.2 + 2048 or history[-1][1] > middle[1]
        return 1 if grows or history[-1][3] or status or left or locks else 0
    finally:
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
