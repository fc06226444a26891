"""Tests of what scripts/chaos takes for a finding."""

import os
import pathlib
import subprocess
import time
import unittest

import chaos
import disturbances
from watch import Watch

CANCEL = disturbances.Cancel.__new__(disturbances.Cancel)
LOCK = disturbances.ForeignLock.__new__(disturbances.ForeignLock)


def cancelled(**members):
    return {"error": dict(members, code=-32800, message="cancelled")}


class Responses(unittest.TestCase):
    def test_have_an_outcome(self):
        outcome = {"error": None, "result": []}
        self.assertIs(chaos.outcome_in({"result": outcome}, [LOCK]), outcome)

    def test_may_say_that_the_request_was_cancelled(self):
        outcome = {"error": {"class": "cancelled"}}
        self.assertIs(chaos.outcome_in(cancelled(data=outcome), [LOCK, CANCEL]), outcome)
        self.assertIsNone(chaos.outcome_in(cancelled(), [CANCEL]))

    def test_must_not_say_so_otherwise(self):
        with self.assertRaises(AssertionError):
            chaos.outcome_in(cancelled(), [LOCK])
        with self.assertRaises(AssertionError):
            chaos.outcome_in(cancelled(data={"error": None}), [CANCEL])

    def test_have_no_other_error(self):
        for code in -32603, -32602, -32600, 0:
            with self.assertRaises(AssertionError):
                chaos.outcome_in({"error": {"code": code, "message": "failed"}}, [LOCK, CANCEL])


class Processes(unittest.TestCase):
    def setUp(self):
        self.children = []

    def tearDown(self):
        for child in self.children:
            child.kill()
            child.wait()

    def watch(self, *command):
        self.children.append(subprocess.Popen(command))
        return Watch(lambda: [self.children[-1].pid], 0.2)

    def what_is_stuck(self, watch):
        while not (stuck := watch.stuck()):
            time.sleep(0.01)
        return stuck

    def test_that_wait_are_stuck(self):
        self.assertIn("waited", self.what_is_stuck(self.watch("sleep", "600")))

    def test_that_compute_are_stuck(self):
        self.assertIn("computed", self.what_is_stuck(self.watch("sh", "-c", "while :; do :; done")))

    def test_that_have_ended_are_not_stuck(self):
        watch = self.watch("true")
        os.waitid(os.P_PID, self.children[-1].pid, os.WEXITED | os.WNOWAIT)
        watch.waited = 0
        for _ in range(100):
            self.assertEqual(watch.stuck(), "")
            time.sleep(0.01)
        self.children[-1].wait()
        self.assertEqual(watch.stuck(), "")


class Script(unittest.TestCase):
    def test_explains_itself(self):
        script = pathlib.Path(__file__).resolve().parents[2] / "scripts/chaos"
        run = subprocess.run([script, "--help"], stdout=subprocess.PIPE, check=True)
        self.assertIn(b"scripts/chaos [MINUTES]", run.stdout)


if __name__ == "__main__":
    unittest.main()
