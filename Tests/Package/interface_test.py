#!/usr/bin/env python3
"""Compares the types of the installed headers with the recorded ones, and changes headers to see that
scripts/interface notices.

Usage: interface_test.py [TEST…]
"""
import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]


def interface(host, *options):
    return subprocess.run([SOURCE / "scripts/interface", "--host", host, *options],
                          text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=300)


class Interface(unittest.TestCase):
    def setUp(self):
        folder = Path(tempfile.mkdtemp(prefix="nebgit-interface-"))
        self.addCleanup(shutil.rmtree, folder)
        self.host = folder / "Host"
        shutil.copytree(SOURCE / "Host", self.host, ignore=shutil.ignore_patterns("*.cpp"))

    def change(self, header, text, replacement):
        path = self.host / "NEBFoundation" / header
        content = path.read_text()
        self.assertIn(text, content)
        path.write_text(content.replace(text, replacement, 1))

    def step_version(self):
        path = self.host / "NEBFoundation/NEBSourceControlABIStamp.h"
        path.write_text(re.sub(r"(ContractVersion = )\d+", r"\g<1>1000", path.read_text()))

    def test_is_the_recorded_one(self):
        done = interface(SOURCE / "Host")
        self.assertEqual(done.stderr, "")
        self.assertEqual(done.returncode, 0)

    def test_a_change_requires_another_contract_version(self):
        # Two members of the same size change places, so no size and no symbol changes.
        members = ("    NEBValue startingRevision;\n    NEBValue endingRevision;\n",
                   "    NEBValue endingRevision;\n    NEBValue startingRevision;\n")
        self.change("NEBSourceControlRequest.h", *members)
        done = interface(self.host, "--write")
        self.assertEqual(done.returncode, 1)
        self.assertIn("- NEBSourceControlRequest: endingRevision at ", done.stderr)
        self.assertIn("+ NEBSourceControlRequest: endingRevision at ", done.stderr)
        self.assertIn("Increase NEBSourceControlContractVersion", done.stderr)
        self.step_version()
        self.assertEqual(interface(self.host, "--write").returncode, 0)
        record = (self.host / "interface.txt").read_text()
        self.assertTrue(record.startswith("contract version 1000\n"))

    def test_a_removed_type_and_another_order_of_virtual_functions_are_changes(self):
        record = self.host / "interface.txt"
        record.write_text(record.read_text() + "NEBSourceControlRemoved: 8 bytes\n")
        self.change("NEBSourceControlOperation.h", "    void main() override {}\n", "")
        done = interface(self.host)
        self.assertEqual(done.returncode, 1)
        self.assertIn("- NEBSourceControlRemoved: 8 bytes\n", done.stderr)
        self.assertIn("+ NEBSourceControlOperation: virtual start, className,", done.stderr)

    def test_an_addition_is_only_recorded(self):
        self.change("NEBSourceControlTrust.h", "namespace neb {\n",
                    "namespace neb {\nstruct NEBSourceControlAddition { int number; };\n")
        done = interface(self.host)
        self.assertEqual(done.returncode, 1)
        self.assertIn("Run 'scripts/interface --write' to record these additions.", done.stderr)
        self.assertEqual(interface(self.host, "--write").returncode, 0)
        record = (self.host / "interface.txt").read_text()
        self.assertIn("\nNEBSourceControlAddition: number at 0: int\n", record)


if __name__ == "__main__":
    unittest.main()
