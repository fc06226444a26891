"""Whether processes are stuck, from what the system says about them in /proc; see proc(5)."""

import os
import threading
import time

TICKS = os.sysconf("SC_CLK_TCK")
LONGEST_PAUSE = 1.0
READY, READING, ENDED = "R", "D", "ZX"


def stat_of(path):
    """The fields of a process or thread from its state on, or None if there is no such process."""
    try:
        with open("/proc/%s/stat" % path) as file:
            return file.read().rsplit(")", 1)[1].split()
    except OSError:
        return None


def threads_of(process):
    try:
        return os.listdir("/proc/%d/task" % process)
    except OSError:
        return []


def states_of(process):
    """The states of the threads of a process, without those that have ended."""
    stats = [stat_of("%d/task/%s" % (process, thread)) for thread in threads_of(process)]
    return [stat[0] for stat in stats if stat and stat[0] not in ENDED]


def processor_seconds(process):
    """The processor time of a process and of its children that it has reaped."""
    stat = stat_of(process)
    return sum(map(int, stat[11:15])) / TICKS if stat else 0


def is_script_busy():
    """Whether another thread of this process could go on: the others may wait for it."""
    own = threading.get_native_id()
    stats = [stat_of("self/task/" + thread) for thread in threads_of(os.getpid())
             if int(thread) != own]
    return any(stat and stat[0] in (READY, READING) for stat in stats)


class Watch:
    """Notices that processes are stuck: that they have waited, or computed, for `patience` seconds.
    On a machine with too much work, time passes in which they do neither, which does not count."""

    def __init__(self, numbers, patience):
        """`numbers` returns the numbers of the processes that run now."""
        self.numbers, self.patience = numbers, patience
        self.waited = 0
        self.last = time.monotonic()
        self.before = {number: processor_seconds(number) for number in numbers()}

    def stuck(self):
        """What the processes do in vain; empty if they are not stuck. To be called repeatedly."""
        now = time.monotonic()
        pause, self.last = min(now - self.last, LONGEST_PAUSE), now
        numbers = self.numbers()
        states = [state for number in numbers for state in states_of(number)]
        if states and READY not in states and READING not in states and not is_script_busy():
            self.waited += pause
        computed = sum(processor_seconds(number) - self.before.get(number, 0)
                       for number in numbers)
        if self.waited > self.patience:
            return "waited for %.0f s" % self.waited
        return "computed for %.0f s" % computed if computed > self.patience else ""
