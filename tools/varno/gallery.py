#!/usr/bin/env python3
"""Makes docs/varno/gallery.md and its pictures from the comments of the examples.

Usage: gallery.py PROGRAM

The comment of an example has three paragraphs: what it is, the commands (the table, then the
picture, each indented by four blanks) and what to look for. The picture is drawn by a gnuplot
script beside the example, since what a picture shows best differs: values over `clock`, an orbit, a
profile.
"""

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs" / "varno" / "gallery.md"
PICTURES = ROOT / "docs" / "varno" / "gallery"

HEAD = """\
# Gallery

Each picture is made by the second command below it, in the folder `examples/varno/`; the first command
prints the table instead. The gnuplot scripts beside the examples run `varno` and draw against `clock`,
the time of the values, or one variable over another. `./dev gallery` makes this page and the pictures
anew.
"""

ENTRY = """
## {name}.varno

![{name}](gallery/{name}.png)

{commands}

{what}

{look}
"""


def read_comment(example):
    """The three paragraphs, each as a list of lines."""
    paragraphs = [[]]
    for line in example.read_text(encoding="ascii").splitlines():
        if not line.startswith("//"):
            break
        if line == "//":
            paragraphs.append([])
        else:
            paragraphs[-1].append(line.removeprefix("// "))
    return paragraphs


def as_markdown(lines):
    return "\n".join(lines).replace("*", r"\*")


def make_picture(program, example, command):
    with tempfile.TemporaryDirectory(prefix="varno-gallery-") as folder:
        for file in (example, example.with_suffix(".gnuplot")):
            shutil.copy(file, folder)
        # The scripts call the program by its name.
        (Path(folder) / "varno").symlink_to(program)
        path = f"{folder}:{os.environ['PATH']}"
        subprocess.run(
            ["bash", "-e", "-o", "pipefail", "-c", command], cwd=folder, check=True,
            env={**os.environ, "HOME": folder, "PATH": path})
        shutil.copy(Path(folder) / f"{example.stem}.png", PICTURES)


def make_entry(program, example):
    what, commands, look = read_comment(example)
    make_picture(program, example, commands[1].strip())
    return ENTRY.format(
        name=example.stem, commands="\n".join(commands), what=as_markdown(what),
        look=as_markdown(look))


def main(arguments):
    if len(arguments) != 1:
        sys.exit("usage: gallery.py PROGRAM")
    program = Path(arguments[0]).resolve()
    shutil.rmtree(PICTURES, ignore_errors=True)
    PICTURES.mkdir()
    examples = sorted((ROOT / "examples" / "varno").glob("*.varno"))
    PAGE.write_text(HEAD + "".join(make_entry(program, example) for example in examples))


if __name__ == "__main__":
    main(sys.argv[1:])
