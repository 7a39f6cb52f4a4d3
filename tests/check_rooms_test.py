#!/usr/bin/env python3
"""The check of rooms finds what it should, on small source trees.

Usage: check_rooms_test.py
"""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

CHECK = Path(__file__).resolve().parents[1] / "tools" / "check_rooms.py"


class CheckRoomsTest(unittest.TestCase):
    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.root = Path(scratch.name).resolve()
        # low <- middle <- high, the last for its source only
        self.rooms = {"low": ("", ""), "p/middle": ("low", ""), "p/high": ("p/middle", "")}
        self.write("low/a.h", "#include <vector>")
        self.write("low/a.cpp", '#include "low/a.h"')
        self.write("p/middle/b.h", '#include "low/a.h"')
        self.write("p/high/c.h", '#include "p/middle/b.h"')
        self.write("p/high/c.cpp", '#include "p/high/c.h"')

    def write(self, name, text):
        path = self.root / "src" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text + "\n")

    def check(self):
        rooms = self.root / "rooms.txt"
        rooms.write_text("".join(
            f"src/{name} {name}: {uses} ; {private}\n" for name, (uses, private) in self.rooms.items()))
        result = subprocess.run(
            [sys.executable, CHECK, rooms, self.root], capture_output=True, text=True)
        self.assertEqual(result.returncode, 1 if result.stderr else 0)
        return result.stdout, result.stderr.splitlines()

    def test_declared_includes_pass_and_arrows_are_printed(self):
        self.rooms["p/high"] = ("p/middle", "low")
        self.write("p/high/c.cpp", '#include "p/high/c.h"\n#include "low/a.h"')
        arrows, problems = self.check()
        self.assertEqual(problems, [])
        self.assertEqual(
            arrows, "low      -> -\np/middle -> low\np/high   -> p/middle (low)\n")

    def test_upward_include(self):
        self.write("low/a.cpp", '#include "low/a.h"\n#include "p/high/c.h"')
        self.assertEqual(self.check()[1], [
            'src/low/a.cpp: includes "p/high/c.h", but low does not list p/high in USES or '
            'PRIVATE_USES'])

    def test_include_through_a_neighbour(self):
        self.write("p/high/c.cpp", '#include "p/high/c.h"\n  #  include "low/a.h"')
        self.assertEqual(self.check()[1], [
            'src/p/high/c.cpp: includes "low/a.h", but p/high does not list low in USES or '
            'PRIVATE_USES'])

    def test_private_neighbour_in_a_header_that_others_see(self):
        self.rooms["p/middle"] = ("", "low")
        self.write("p/middle/b.h", '#include "p/middle/inner.h"')
        self.write("p/middle/inner.h", '#include "low/a.h"')
        self.assertEqual(self.check()[1], [
            'src/p/middle/inner.h: includes "low/a.h", but p/middle does not list low in USES'])

    def test_private_neighbour_in_a_header_for_own_sources(self):
        self.rooms["p/high"] = ("p/middle", "low")
        self.write("p/high/inner.h", '#include "low/a.h"')
        self.write("p/high/c.cpp", '#include "p/high/inner.h"')
        self.assertEqual(self.check()[1], [])

    def test_folder_of_a_room_belongs_to_it(self):
        self.write("p/high/public/c.h", "")
        self.assertEqual(self.check()[1], [])

    def test_neighbour_that_is_not_used(self):
        self.rooms["p/high"] = ("p/middle low", "")
        self.assertEqual(self.check()[1], [
            "p/high: lists low in USES, but no header of it includes one of low"])

    def test_rooms_in_a_circle(self):
        self.rooms["low"] = ("", "p/high")
        self.write("low/a.cpp", '#include "p/high/c.h"')
        self.assertEqual(self.check()[1], [
            "rooms use one another in a circle: low -> p/high -> p/middle -> low"])

    def test_headers_in_a_circle(self):
        self.write("low/a.h", '#include "low/d.h"')
        self.write("low/d.h", '#include "low/a.h"')
        self.assertEqual(self.check()[1], [
            "headers include one another in a circle: low/a.h -> low/d.h -> low/a.h"])

    def test_other_spelling_of_a_path(self):
        self.write("p/high/c.cpp", '#include "c.h"')
        self.assertEqual(self.check()[1], [
            'src/p/high/c.cpp: "c.h" is not the path of a header in a room'])

    def test_folder_that_is_no_room(self):
        self.write("p/stray/e.cpp", "")
        self.assertEqual(self.check()[1], ["src/p/stray/e.cpp: its folder is no room"])


if __name__ == "__main__":
    unittest.main()
