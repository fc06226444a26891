"""Tests of what scripts/chaos takes for a finding."""

import pathlib
import subprocess
import unittest

import chaos
import disturbances

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


class Script(unittest.TestCase):
    def test_explains_itself(self):
        script = pathlib.Path(__file__).resolve().parents[2] / "scripts/chaos"
        run = subprocess.run([script, "--help"], stdout=subprocess.PIPE, check=True)
        self.assertIn(b"scripts/chaos [MINUTES]", run.stdout)


if __name__ == "__main__":
    unittest.main()
