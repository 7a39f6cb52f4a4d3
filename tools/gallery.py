#!/usr/bin/env python3
"""Makes the gallery of a program, docs/FOLDER/gallery.md and its pictures, from the comments of the
examples in examples/FOLDER.

Usage: gallery.py varno|varno-solve PROGRAM

The comment of an example has three paragraphs: what it is, commands, each indented by four blanks,
and what to look for. One of the commands makes the picture NAME.png: for varno-solve that with
--plot; for varno a gnuplot script beside the example, since what a picture shows best differs
(values over `clock`, an orbit, a profile).
"""

import os
import shutil
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]

ENTRY = """
## {name}.varno

![{name}](gallery/{name}.png)

{commands}

{what}

{look}
"""


@dataclass
class Gallery:
    folder: str  # below docs/ and examples/
    head: str
    mark: str  # of the command that makes a picture
    quiet: str  # what this command is to be followed by


GALLERIES = {
    "varno": Gallery("varno", """\
# Gallery

Each picture is made by the second command below it, in the folder `examples/varno/`; the first command
prints the table instead. The gnuplot scripts beside the examples run `varno` and draw against `clock`,
the time of the values, or one variable over another. `./dev gallery` makes this page and the pictures
anew.
""", "gnuplot ", ""),
    "varno-solve": Gallery("solve", """\
# Gallery

Each picture is made by the command with `--plot` below it, in the folder `examples/solve/`, which needs gnuplot.
`./dev gallery` makes this page and the pictures anew.
""", "--plot", " --quiet"),
}


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
    return "\n".join(lines).replace("*", r"\*").replace("_", r"\_")


def make_picture(name, program, example, command, pictures):
    with tempfile.TemporaryDirectory(prefix="varno-gallery-") as folder:
        for file in example.parent.glob(f"{example.stem}.*"):
            shutil.copy(file, folder)
        # Commands and scripts call the program by its name.
        (Path(folder) / name).symlink_to(program)
        path = f"{folder}:{os.environ['PATH']}"
        subprocess.run(["bash", "-e", "-o", "pipefail", "-c", command], cwd=folder, check=True,
                       env={**os.environ, "HOME": folder, "PATH": path})
        shutil.copy(Path(folder) / f"{example.stem}.png", pictures)


def make_entry(name, program, example, pictures):
    what, commands, look = read_comment(example)
    gallery = GALLERIES[name]
    command = next(command.strip() for command in commands if gallery.mark in command)
    make_picture(name, program, example, command + gallery.quiet, pictures)
    return ENTRY.format(name=example.stem, commands="\n".join(commands), what=as_markdown(what),
                        look=as_markdown(look))


def main(arguments):
    if len(arguments) != 2 or arguments[0] not in GALLERIES:
        sys.exit("usage: gallery.py varno|varno-solve PROGRAM")
    name, program = arguments[0], Path(arguments[1]).resolve()
    gallery = GALLERIES[name]
    page = ROOT / "docs" / gallery.folder / "gallery.md"
    pictures = page.parent / "gallery"
    shutil.rmtree(pictures, ignore_errors=True)
    pictures.mkdir()
    examples = sorted((ROOT / "examples" / gallery.folder).glob("*.varno"))
    page.write_text(gallery.head + "".join(
        make_entry(name, program, example, pictures) for example in examples))


if __name__ == "__main__":
    main(sys.argv[1:])
