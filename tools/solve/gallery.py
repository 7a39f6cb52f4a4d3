#!/usr/bin/env python3
"""Makes docs/solve/gallery.md and its pictures from the comments of the examples.

Usage: gallery.py PROGRAM

The comment of an example has three paragraphs: what it is, commands, each indented by four blanks,
and what to look for. The command with --plot makes the picture NAME.png.
"""

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs" / "solve" / "gallery.md"
PICTURES = ROOT / "docs" / "solve" / "gallery"

HEAD = """\
# Gallery

Each picture is made by the command with `--plot` below it, in the folder `examples/solve/`, which needs gnuplot.
`./dev gallery` makes this page and the pictures anew.
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


def plot_command(commands):
    return next(command.strip() for command in commands if "--plot" in command)


def as_markdown(lines):
    return "\n".join(lines).replace("*", r"\*").replace("_", r"\_")


def make_picture(program, example, command):
    with tempfile.TemporaryDirectory(prefix="varno-gallery-") as folder:
        shutil.copy(example, folder)
        (Path(folder) / "varno-solve").symlink_to(program)
        path = f"{folder}:{os.environ['PATH']}"
        subprocess.run(["bash", "-e", "-c", command + " --quiet"], cwd=folder, check=True,
                       env={**os.environ, "PATH": path})
        shutil.copy(Path(folder) / f"{example.stem}.png", PICTURES)


def make_entry(program, example):
    what, commands, look = read_comment(example)
    make_picture(program, example, plot_command(commands))
    return ENTRY.format(name=example.stem, commands="\n".join(commands), what=as_markdown(what),
                        look=as_markdown(look))


def main(arguments):
    if len(arguments) != 1:
        sys.exit("usage: gallery.py PROGRAM")
    program = Path(arguments[0]).resolve()
    shutil.rmtree(PICTURES, ignore_errors=True)
    PICTURES.mkdir()
    examples = sorted((ROOT / "examples" / "solve").glob("*.varno"))
    PAGE.write_text(HEAD + "".join(make_entry(program, example) for example in examples))


if __name__ == "__main__":
    main(sys.argv[1:])
