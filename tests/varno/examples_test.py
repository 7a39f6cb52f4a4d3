#!/usr/bin/env python3
"""The comment of an example, its case and its place in the gallery belong together.

Usage: examples_test.py
"""

import re
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
EXAMPLES = sorted((ROOT / "examples" / "varno").glob("*.varno"))


class ExamplesTest(unittest.TestCase):
    def test_there_are_examples(self):
        self.assertGreaterEqual(len(EXAMPLES), 12)

    def test_comment_tells_command_and_what_to_look_for(self):
        for example in EXAMPLES:
            text = example.read_text(encoding="ascii")
            with self.subTest(example.name):
                self.assertRegex(
                    text, rf"\A(// \S.*\n)+//\n//     varno .*{example.name}\n"
                          rf"//     varno .* -g png -G {example.stem} {example.name} \| bash\n//\n"
                          r"// Look for: ")

    def test_case_runs_the_command_of_the_comment(self):
        for example in EXAMPLES:
            command = re.search(r"^//     varno (.*)$", example.read_text(), re.MULTILINE)
            case = ROOT / "tests" / "varno" / "cases" / "examples" / f"example_{example.stem}"
            with self.subTest(example.name):
                self.assertEqual((case / "args").read_text().strip(), command[1])
                self.assertEqual(
                    (case / "input_from").read_text().strip(), f"examples/varno/{example.name}")
                self.assertTrue((case / "check").exists())

    def test_gallery_shows_every_picture_with_its_commands(self):
        page = (ROOT / "docs" / "varno" / "gallery.md").read_text()
        for example in EXAMPLES:
            commands = re.findall(r"^//(     varno .*\n)", example.read_text(), re.MULTILINE)
            with self.subTest(example.name):
                self.assertIn(f"](gallery/{example.stem}.png)", page)
                self.assertIn("".join(command.removeprefix(" ") for command in commands), page)
                picture = ROOT / "docs" / "varno" / "gallery" / f"{example.stem}.png"
                self.assertTrue(picture.read_bytes().startswith(b"\x89PNG"))


if __name__ == "__main__":
    unittest.main()
