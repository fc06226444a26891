"""Carries out requests of all types while everything goes wrong, and checks what must hold.

    python3 Tests/Chaos/chaos.py build/debug/bin/nebsc [--minutes N] [--seed N] [--disk FOLDER]

Each step restores the repositories of the examples in docs/requests.md, chooses one of the
examples and up to three disturbances, and sends the request through `nebsc request` or through one
server that lives as long as the run. Afterwards:

- no process, temporary file or lock is left, and the server has as many descriptors as before;
- both repositories pass `git fsck`;
- the server responds with an outcome, or that the request was cancelled if it was;
- an outcome without error has the records that it has without disturbances, and the repositories
  are as they are then;
- the request has ended before it has waited or computed for 60 seconds.

--disk names the folder on a small file system of its own that is filled in some steps. The exit
status is 1 if something did not hold; the seed repeats the choices, though not their effects.
"""

import argparse
import collections
import ctypes
import glob
import json
import os
import random
import re
import resource
import shutil
import subprocess
import sys
import tempfile
import threading
import time

import disturbances
from watch import Watch
from world import World, examples

PATIENCE = 60
PATIENCE_AFTERWARDS = 10
# What may differ although the request succeeded: git, or an operation that runs beside the main
# one, does that work as well as it can and reports nothing, or only in the text of the result.
BEST_EFFORT = {
    "1 ": "demo: git ls-files -s",
    "10 ": "demo: git ls-files -s",
    "33 ": "records|demo/.git/refs/remotes/.*|demo: git for-each-ref",
    "1012 ": "demo/.git/refs/remotes/.*|demo: git for-each-ref",
}
PR_SET_CHILD_SUBREAPER = 36
REQUEST_CANCELLED = -32800


class Process:
    """`nebsc request`, run once."""

    is_server = False

    def __init__(self, program, world):
        self.program, self.world = program, world
        self.child = None

    @property
    def number(self):
        return self.child.pid

    def cancel(self, signal):
        self.child.send_signal(signal)

    def outcome(self, request, variables, happening, started):
        """The outcome as an object, or None if nebsc ended without one, as after a signal."""
        few = next((one for one in happening if hasattr(one, "limit")), None)
        is_slow = any(isinstance(one, disturbances.SlowPipes) for one in happening)
        limit = (lambda: resource.setrlimit(resource.RLIMIT_NOFILE, (few.limit, few.limit))
                 ) if few else None
        with open(self.world.original + "-errors", "w+b") as errors:
            self.child = subprocess.Popen([self.program, "request"], stdin=subprocess.PIPE,
                                          stdout=subprocess.PIPE, stderr=errors, bufsize=0,
                                          cwd="/", env=variables, preexec_fn=limit)
            started(self)
            output = self.talk(request.encode(), is_slow)
            status = self.child.wait()
            errors.seek(0)
            self.errors = errors.read().decode(errors="replace")
        try:
            outcome = json.loads(output)
        except ValueError:
            outcome = None
        if status == 0 and (outcome is None or outcome["error"] is not None):
            raise AssertionError("exit status 0, but the output is %r" % output[-300:])
        return outcome

    def talk(self, request, is_slow):
        piece = 7 if is_slow else 1 << 16
        try:
            for begin in range(0, len(request), piece):
                self.child.stdin.write(request[begin:begin + piece])
        except BrokenPipeError:
            pass
        self.child.stdin.close()
        output = b""
        while part := self.child.stdout.read(piece):
            output += part
            if is_slow and len(output) < 2000:
                time.sleep(0.0005)
        self.child.stdout.close()
        return output


def outcome_in(message, happening):
    """The outcome in a response of the server, or None for a request that was cancelled before it
    started. Any other error of JSON-RPC is a finding: docs/server.md has it for invalid requests
    and for a server without memory, but not for what disturbs it here."""
    error = message.get("error")
    if error is None:
        return message["result"]
    if error["code"] != REQUEST_CANCELLED:
        raise AssertionError("the server responds with the error %s" % error)
    if not any(isinstance(one, disturbances.Cancel) for one in happening):
        raise AssertionError("the server says that a request was cancelled that was not")
    outcome = error.get("data")
    if outcome is not None and (outcome["error"] or {}).get("class") != "cancelled":
        raise AssertionError("the outcome of a cancelled request is %s" % outcome["error"])
    return outcome


class Server:
    """One `nebsc serve` for the whole run."""

    is_server = True
    errors = ""

    def __init__(self, program, world):
        self.last = 0
        self.child = subprocess.Popen([program, "serve"], stdin=subprocess.PIPE,
                                      stdout=subprocess.PIPE, cwd="/", env=world.variables)
        self.call("initialize", {}, lambda _: None)
        self.descriptors = self.count_descriptors()

    @property
    def number(self):
        return self.child.pid

    def count_descriptors(self):
        return len(os.listdir("/proc/%d/fd" % self.child.pid))

    def send(self, message):
        content = json.dumps(dict(message, jsonrpc="2.0")).encode()
        self.child.stdin.write(b"Content-Length: %d\r\n\r\n" % len(content) + content)
        self.child.stdin.flush()

    def receive(self):
        length = 0
        while line := self.child.stdout.readline().strip():
            length = int(line.split(b":")[1]) if line.startswith(b"Content-Length") else length
        if length == 0:
            raise AssertionError("the server has ended")
        return json.loads(self.child.stdout.read(length))

    def call(self, method, params, started):
        self.last += 1
        self.send({"id": self.last, "method": method, "params": params})
        started(self)
        while (message := self.receive()).get("id") != self.last:
            pass
        return message

    def cancel(self, signal):
        self.send({"method": "$/cancelRequest", "params": {"id": self.last}})

    def outcome(self, request, variables, happening, started):
        return outcome_in(self.call("sourceControl/perform", json.loads(request), started),
                          happening)

    def end(self):
        self.call("shutdown", {}, lambda _: None)
        self.send({"method": "exit"})
        watch = Watch(lambda: [self.number], PATIENCE)
        while self.child.poll() is None:
            if stuck := watch.stuck():
                raise AssertionError("the server has not ended: it " + stuck)
            time.sleep(0.01)
        return self.child.returncode


class Chaos:
    def __init__(self, program, world, seed):
        self.world = world
        self.program = program
        self.random = random.Random(seed)
        self.server = Server(program, world)
        self.usual = {}
        self.findings = 0
        self.counts = collections.Counter()
        self.longest = (0, "")

    def usual_of(self, example):
        """What the request returns and leaves behind when nothing disturbs it, and its duration."""
        if example.name not in self.usual:
            self.world.restore(example)
            begin = time.monotonic()
            outcome = Process(self.program, self.world).outcome(
                self.world.request_of(example), self.world.variables, [], lambda _: None)
            duration = time.monotonic() - begin
            self.usual[example.name] = (outcome, self.world.state(),
                                        self.world.temporary_files(), duration)
        return self.usual[example.name]

    def choose(self, process, duration, kinds):
        suitable = [kind for kind in kinds if kind.suits_server or not process.is_server]
        chosen = self.random.sample(suitable, self.random.choice([0, 1, 1, 1, 2, 3]))
        if disturbances.KillNebsc in chosen and disturbances.Cancel in chosen:
            chosen.remove(disturbances.Cancel)
        return [kind(self.random, self.world, duration) for kind in chosen]

    def step(self, example, kinds):
        usual, usual_state, usual_files, duration = self.usual_of(example)
        self.world.restore(example)
        process = self.random.choice([self.server, Process(self.program, self.world)])
        happening = self.choose(process, duration, kinds)
        variables = dict(self.world.variables)
        for one in happening:
            one.prepare(variables)
        what = "%s%s: %s" % (example.name, " (server)" if process.is_server else "",
                             ", ".join(map(str, happening)) or "undisturbed")
        try:
            begin = time.monotonic()
            outcome = self.carry_out(process, example, variables, happening)
            self.longest = max(self.longest, (time.monotonic() - begin, what))
            error = outcome and outcome["error"]
            problems = self.problems(process, happening)
            if not any(one.kills_nebsc for one in happening):
                expected = usual_files if outcome and not error else []
                problems += ["left in the temporary folder: %s" % name
                             for name in self.world.temporary_files() if name not in expected]
            if outcome and not error:
                problems += self.differences(example, usual, usual_state, outcome)
            elif usual and not usual["error"] and not happening:
                problems.append("fails without disturbance: %s" % error)
            kind = "nothing" if outcome is None else error["class"] if error else "success"
            for one in happening or ["undisturbed"]:
                name = one if isinstance(one, str) else type(one).__name__
                self.counts[name, kind] += 1
        except (AssertionError, TimeoutError) as exception:
            problems = [str(exception)]
        for problem in problems:
            self.findings += 1
            print("FOUND in %s:\n    %s" % (what, problem), flush=True)

    def carry_out(self, process, example, variables, happening):
        threads = []

        def started(running):
            for one in happening:
                threads.append(threading.Thread(target=one.run, args=[running], daemon=True))
                threads[-1].start()

        ended = threading.Event()

        def watch():
            watched = Watch(lambda: self.running(process.is_server), PATIENCE)
            while not ended.wait(0.5):
                if stuck := watched.stuck():
                    print("STUCK in %s: %s: %s" % (
                        example.name, ", ".join(map(str, happening)), stuck), flush=True)
                    subprocess.run(["ps", "-e", "--forest", "-o", "pid,ppid,stat,time,wchan,args"])
                    os._exit(1)

        threads.append(threading.Thread(target=watch, daemon=True))
        threads[-1].start()
        try:
            return process.outcome(self.world.request_of(example), variables, happening, started)
        finally:
            ended.set()
            for one in happening:
                one.ended.set()
            for thread in threads:
                thread.join()
            for one in happening:
                one.undo()

    def problems(self, process, happening):
        problems = self.stray_processes()
        if process.is_server and (now := process.count_descriptors()) != process.descriptors:
            problems.append("the server has %d descriptors, before %d" % (now, process.descriptors))
            process.descriptors = now
        return problems + self.world.damage(any(one.kills_git for one in happening))

    def stray_processes(self):
        """This process is the parent of every process that lost its own, so none escapes."""
        watch = Watch(self.running, PATIENCE_AFTERWARDS)
        while left := self.running():
            if stuck := watch.stuck():
                return ["still running, %s: %s" % (stuck, subprocess.run(
                    ["ps", "-o", "pid,stat,args", "-p", ",".join(map(str, left))],
                    stdout=subprocess.PIPE).stdout.decode())]
            self.reap(left)
            time.sleep(0.002)
        return []

    def running(self, with_server=False):
        """The numbers of the processes that this one or the server has started."""
        return [number for number in disturbances.descendants_of(os.getpid())
                if with_server or number != self.server.number]

    @staticmethod
    def reap(numbers):
        for number in numbers:
            try:
                os.waitpid(number, os.WNOHANG)
            except ChildProcessError:
                pass

    def differences(self, example, usual, usual_state, outcome):
        if usual["error"]:
            return ["succeeds, but undisturbed it fails with %s" % usual["error"]["class"]]
        usual_state = dict(usual_state, records=self.world.records(usual))
        state = dict(self.world.state(), records=self.world.records(outcome))
        allowed = next((names for prefix, names in BEST_EFFORT.items()
                        if example.name.startswith(prefix)), "$^")
        return ["success, but %s:\n    %s\n    undisturbed:\n    %s" % (
            name, state.get(name), usual_state.get(name))
                for name in sorted(set(state) | set(usual_state))
                if state.get(name) != usual_state.get(name) and not re.fullmatch(allowed, name)]

    def report(self, steps):
        for kind in sorted({kind for kind, _ in self.counts}):
            outcomes = {name: count for (of, name), count in self.counts.items() if of == kind}
            print("%-15s %5d: %s" % (kind, sum(outcomes.values()), ", ".join(
                "%s %d" % one for one in sorted(outcomes.items(), key=lambda one: -one[1]))))
        print("%d steps, the longest request %.1f s (%s), %d findings" %
              (steps, *self.longest, self.findings))


def all_kinds(disk):
    kinds = [disturbances.Cancel, disturbances.KillNebsc, disturbances.KillGit,
             disturbances.StopGit, disturbances.ForeignLock, disturbances.SlowPipes,
             disturbances.FewDescriptors]
    if disk:
        kinds.append(disturbances.FullDisk)
    else:
        print("No small disk: no disk is filled.")
    libraries = glob.glob("/usr/lib/*/faketime/libfaketimeMT.so.1")
    if libraries:
        disturbances.ClockJump.library = libraries[0]
        kinds.append(disturbances.ClockJump)
    else:
        print("No libfaketime: no clock jumps.")
    return kinds


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("program")
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 30))
    parser.add_argument("--disk")
    parser.add_argument("--only", default="", help="examples whose name contains this")
    arguments = parser.parse_args()
    print("--seed %d" % arguments.seed, flush=True)
    ctypes.CDLL(None).prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
    folder = tempfile.mkdtemp(prefix="neb-chaos-")
    try:
        world = World(folder, arguments.disk or tempfile.mkdtemp(dir=folder))
        chaos = Chaos(os.path.abspath(arguments.program), world, arguments.seed)
        kinds = all_kinds(arguments.disk)
        every = [one for one in examples() if arguments.only in one.name]
        end = time.monotonic() + 60 * arguments.minutes
        steps = 0
        while time.monotonic() < end:
            chaos.step(chaos.random.choice(every), kinds)
            steps += 1
        status = chaos.server.end()
        chaos.report(steps)
        return 1 if chaos.findings or status != 0 else 0
    finally:
        shutil.rmtree(folder, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
