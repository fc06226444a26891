"""What can happen to a request while it runs.

Each class is created with a random number generator, the world, and the usual duration of the
request in seconds. prepare() is called before the request starts; run() on a thread of its own
while it runs, with the process of nebsc; undo() when it has ended.
"""

import os
import signal
import threading
import time


def children_of(process):
    """The numbers of the processes that the process started and that have not been reaped."""
    found = []
    try:
        for thread in os.listdir("/proc/%d/task" % process):
            with open("/proc/%d/task/%s/children" % (process, thread)) as file:
                found += [int(number) for number in file.read().split()]
    except OSError:
        pass
    return found


def descendants_of(process):
    """The numbers of those processes and of those that they started."""
    children = children_of(process)
    return children + [number for child in children for number in descendants_of(child)]


class Disturbance:
    kills_git = kills_nebsc = False
    # Whether a server that goes on afterwards can be disturbed so.
    suits_server = True

    def __init__(self, random, world, duration):
        self.random, self.world = random, world
        self.delay = random.random() * duration * 1.3
        self.ended = threading.Event()
        self.text = "after %.1f ms" % (self.delay * 1000)

    def __str__(self):
        return "%s %s" % (type(self).__name__, self.text)

    def prepare(self, variables):
        """Changes the variables of nebsc, or the disk."""

    def run(self, process):
        if not self.ended.wait(self.delay):
            self.strike(process)

    def strike(self, process):
        pass

    def undo(self):
        pass


class Cancel(Disturbance):
    """The user presses Ctrl-C, or closes the window."""

    def __init__(self, random, world, duration):
        super().__init__(random, world, duration)
        self.signal = random.choice([signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
        self.text += " by %s" % self.signal.name

    def strike(self, process):
        process.cancel(self.signal)


class KillNebsc(Disturbance):
    """Not during a cancellation: for a millisecond of it, git is stopped and depends on nebsc."""

    kills_nebsc = True
    suits_server = False

    def strike(self, process):
        process.cancel(signal.SIGKILL)


class KillGit(Disturbance):
    """A program that nebsc started ends by a signal. git notices what happens to its own ones."""

    kills_git = True

    def __init__(self, random, world, duration):
        super().__init__(random, world, duration)
        self.signal = random.choice([signal.SIGKILL, signal.SIGTERM, signal.SIGSEGV])
        self.text += " by %s" % self.signal.name

    def run(self, process):
        self.ended.wait(self.delay)
        while not self.ended.wait(0.0002):
            if children := children_of(process.number):
                try:
                    os.kill(self.random.choice(children), self.signal)
                except ProcessLookupError:
                    continue
                return


class StopGit(Disturbance):
    """The programs that nebsc started are as slow as on an overloaded machine."""

    def run(self, process):
        for _ in range(20):
            if self.ended.wait(self.delay / 4):
                return
            children = descendants_of(process.number)
            self.send(children, signal.SIGSTOP)
            self.ended.wait(self.random.random() * 0.02)
            self.send(children, signal.SIGCONT)

    @staticmethod
    def send(children, number):
        for child in children:
            try:
                os.kill(child, number)
            except ProcessLookupError:
                pass


class FullDisk(Disturbance):
    """Only a few KiB are left on the disk of the repositories and temporary files."""

    def prepare(self, variables):
        self.filler = os.path.join(os.path.dirname(self.world.path), "filler")
        free = self.random.choice([0, 4096, 4096 * self.random.randrange(40)])
        self.text = "with %d KiB" % (free // 1024)
        disk = os.statvfs(os.path.dirname(self.world.path))
        size = disk.f_bavail * disk.f_frsize - free
        with open(self.filler, "wb") as file:
            os.posix_fallocate(file.fileno(), 0, max(size, 1))

    def undo(self):
        os.unlink(self.filler)


class ForeignLock(Disturbance):
    """Another program takes a lock for a while, or forever."""

    names = ["demo/.git/index", "demo/.git/HEAD", "demo/.git/config", "demo/.git/packed-refs",
             "demo/.git/refs/heads/main", "demo/.git/refs/remotes/origin/main",
             "shared.git/refs/heads/main", "shared.git/packed-refs"]

    def __init__(self, random, world, duration):
        super().__init__(random, world, duration)
        self.name = random.choice(self.names)
        self.file = os.path.join(world.path, self.name + ".lock")
        self.delay = random.choice([0, self.delay])
        self.time = random.choice([0.05, 0.3, 1.0, 9.0])
        self.is_taken = False
        self.text = "%s for %.2f s after %.1f ms" % (self.name, self.time, self.delay * 1000)

    def prepare(self, variables):
        if self.delay == 0:
            self.take()

    def take(self):
        try:
            os.close(os.open(self.file, os.O_CREAT | os.O_EXCL | os.O_WRONLY))
            self.is_taken = True
        except OSError:
            pass

    def run(self, process):
        if self.delay > 0 and not self.ended.wait(self.delay):
            self.take()
        self.ended.wait(self.time)
        self.undo()

    def undo(self):
        if self.is_taken:
            self.is_taken = False
            os.unlink(self.file)


class ClockJump(Disturbance):
    """The clock of the system is set to another time. Needs libfaketime."""

    library = None

    def prepare(self, variables):
        self.file = self.world.original + "-clock"
        self.jumps = [self.random.choice(["-400d", "+3d", "+20y", "-1h", "+0"]) for _ in range(4)]
        self.text = " ".join(self.jumps)
        self.write(self.jumps[0])
        variables.update(LD_PRELOAD=self.library, FAKETIME_TIMESTAMP_FILE=self.file,
                         FAKETIME_NO_CACHE="1", FAKETIME_DONT_FAKE_MONOTONIC="1", NO_FAKE_STAT="1")

    def write(self, jump):
        with open(self.file + ".new", "w") as file:
            file.write(jump + "\n")
        os.rename(self.file + ".new", self.file)

    def run(self, process):
        for jump in self.jumps[1:]:
            if self.ended.wait(self.delay / 2):
                return
            self.write(jump)

    suits_server = False


class SlowPipes(Disturbance):
    """The client writes the request and reads the outcome byte by byte."""

    suits_server = False

    def prepare(self, variables):
        self.text = ""


class FewDescriptors(Disturbance):
    """The process may open only a few files."""

    suits_server = False

    def prepare(self, variables):
        self.limit = self.random.randrange(5, 30)
        self.text = "at most %d" % self.limit
