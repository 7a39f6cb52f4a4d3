#!/usr/bin/env python3
"""Runs the gnuplot script that a case of varno wrote and looks at what came out.

Usage: check_plot.py BASE TERMINAL TITLE...
       check_plot.py BASE TERMINAL --matrix COLUMNS
       check_plot.py BASE TERMINAL --no-plot

For the check of a case, in its working folder. The script is stdout.actual; BASE and TERMINAL are
the arguments of -G and -g. Expected are

- the files BASE.p and BASE.dat, with the lines of the two here-documents;
- a curve for each TITLE, in this order: the first is the order when its title is ORD, the others
  are the columns behind the time;
- with --matrix, a surface with the values of the one matrix;
- the picture BASE.TERMINAL, in which every curve, or something of the surface, is seen: for the
  terminals png and (curves only) svg. Others may need a screen, and no more is expected of them.

The terminal may have a size as in "png size 320,240".
"""

import collections
import re
import struct
import subprocess
import sys
import xml.etree.ElementTree
import zlib
from pathlib import Path

SCRIPT = Path("stdout.actual")
# Pixels of a curve. Its sample in the key has fewer.
LEAST_PIXELS = 150
DEFAULT_PNG_SIZE = (640, 480)
PICTURE_TERMINALS = ("png", "svg")


def expect(holds, message):
    if not holds:
        sys.exit(message)


# ---------------------------------------------------------------------------------------
# What the script holds


def here_document(end):
    """The lines up to the line END of the document that a command with <<END begins."""
    script = SCRIPT.read_bytes().decode("latin-1")
    found = re.search(rf"^cat ?<<{end} > [^\n]*\n(.*?\n){end}\n", script, re.DOTALL | re.MULTILINE)
    expect(found, f"no here-document {end}")
    return found.group(1)


def data_rows():
    return [[float(number) for number in line.split()]
            for line in here_document("END_OF_DATA").splitlines()
            if line.strip() and not line.startswith("#")]


def table_curves(titles):
    """The curves that a table should show: [(title, [(x, y), ...]), ...]"""
    columns = list(zip(*data_rows()))
    expect(columns, "the table is empty")
    order = [columns.pop(0)] if titles[0] == "ORD" else []
    time, *values = columns
    expect(len(titles) <= len(order + values), "the table has too few columns")
    return [(title, list(zip(time, column))) for title, column in zip(titles, order + values)]


def matrix_surface(column_count):
    """The points that a matrix should show: {(x, y): value}"""
    rows = data_rows()
    expect(rows and all(len(row) == column_count for row in rows), "not the expected matrix")
    return {(x, y): value for y, row in enumerate(rows) for x, value in enumerate(row)}


# ---------------------------------------------------------------------------------------
# What gnuplot makes of it


def run_script(base, has_picture):
    result = subprocess.run(["bash", SCRIPT], stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if has_picture:
        # Warnings of gnuplot, about fonts for one, do no harm.
        expect(result.returncode == 0, f"status {result.returncode}: {result.stdout}")
    # The shell joins a line that ends in a backslash with the next one.
    commands = here_document("END_OF_CMDS").replace("\\\n", "")
    for name, expected in ((f"{base}.p", commands), (f"{base}.dat", here_document("END_OF_DATA"))):
        actual = Path(name).read_bytes().decode("latin-1")
        expect(actual == expected, f"{name} is not the here-document:\n{actual}")


def plotted_points(base):
    """The points that gnuplot takes for the plot, as it lists them in place of a picture."""
    commands = "set table 'points'\n" + Path(f"{base}.p").read_text()
    # The terminal and the picture belong to the first run of the commands.
    commands = re.sub(r"^set (term|out) .*\n", "", commands, flags=re.MULTILINE)
    subprocess.run(["gnuplot"], input=commands, text=True, check=True)
    return Path("points").read_text()


def plotted_curves(base):
    curves = []
    for line in plotted_points(base).splitlines():
        found = re.fullmatch(r'# Curve title: "(.*)"', line)
        if found:
            curves.append((found.group(1), []))
        elif line.strip() and not line.startswith("#"):
            x, y = line.split()[:2]
            curves[-1][1].append((float(x), float(y)))
    return curves


def plotted_surface(base):
    surface, _, _contours = plotted_points(base).partition("# Contour")
    points = {}
    for line in surface.splitlines():
        if line.strip() and not line.startswith("#"):
            x, y, value = line.split()[:3]
            points[int(x), int(y)] = float(value)
    return points


def is_close(a, b):
    """To the six digits that gnuplot lists."""
    return abs(a - b) <= 1e-5 * max(abs(a), abs(b))


def are_close(expected, actual):
    return len(expected) == len(actual) and all(
        is_close(a, b) for one, other in zip(expected, actual) for a, b in zip(one, other))


def check_curves(base, titles):
    expected = table_curves(titles)
    actual = plotted_curves(base)
    expect([title for title, _ in actual] == titles, f"titles: {[title for title, _ in actual]}")
    for (title, points), (_, plotted) in zip(expected, actual):
        expect(are_close(points, plotted), f"curve {title}: {plotted} instead of {points}")


def check_surface(base, column_count):
    expected = matrix_surface(column_count)
    actual = plotted_surface(base)
    expect(expected.keys() == actual.keys()
           and all(is_close(expected[point], actual[point]) for point in expected),
           f"surface {actual} instead of {expected}")


# ---------------------------------------------------------------------------------------
# Pictures


def read_png(path):
    """Size and colours of the pixels: ((width, height), {"rrggbb": count})."""
    data = path.read_bytes()
    expect(data.startswith(b"\x89PNG\r\n\x1a\n"), f"{path}: not a PNG")
    position = 8
    pixels = b""
    while position < len(data):
        length, kind = struct.unpack(">I4s", data[position:position + 8])
        body = data[position + 8:position + 8 + length]
        position += 12 + length
        if kind == b"IHDR":
            width, height, depth, colour_type, _, _, interlaced = struct.unpack(">IIBBBBB", body)
        elif kind == b"PLTE":
            palette = body
        elif kind == b"IDAT":
            pixels += body
    expect(kind == b"IEND" and position == len(data), f"{path}: cut off")
    expect(colour_type in (2, 3) and not interlaced, f"{path}: unexpected kind of PNG")

    colours = collections.Counter()
    for line in png_lines(zlib.decompress(pixels), width, height, depth, colour_type):
        if colour_type == 2:
            colours.update(line[i:i + 3].hex() for i in range(0, len(line), 3))
        else:
            values = "".join(f"{byte:08b}" for byte in line)
            indices = (int(values[i:i + depth], 2) for i in range(0, width * depth, depth))
            colours.update(palette[3 * i:3 * i + 3].hex() for i in indices)
    return (width, height), colours


def png_lines(data, width, height, depth, colour_type):
    """The lines of pixels with the filter of each taken off."""
    bits = depth * (3 if colour_type == 2 else 1)
    step = max(bits // 8, 1)
    length = (width * bits + 7) // 8
    above = bytearray(length)
    for y in range(height):
        start = y * (length + 1)
        kind = data[start]
        line = bytearray(data[start + 1:start + 1 + length])
        for i in range(length):
            left = line[i - step] if i >= step else 0
            up = above[i]
            corner = above[i - step] if i >= step else 0
            nearest = min((left, up, corner), key=lambda value: abs(left + up - corner - value))
            line[i] = line[i] + (0, left, up, (left + up) // 2, nearest)[kind] & 0xff
        yield bytes(line)
        above = line


def is_bright(colour):
    """Neither white nor black nor between them: what curves have, and texts and axes have not."""
    channels = bytes.fromhex(colour)
    return max(channels) - min(channels) > 50


def check_png(path, expected_size, curve_count):
    size, colours = read_png(path)
    expect(size == expected_size, f"{path}: size {size}")
    drawn = [colour for colour, pixels in colours.items()
             if is_bright(colour) and pixels >= LEAST_PIXELS]
    expect(len(drawn) >= curve_count, f"{path}: {len(drawn)} of {curve_count} colours: {colours}")


def check_svg(path, titles):
    """Each plot is a group with its title and a path of lines."""
    namespace = "{http://www.w3.org/2000/svg}"
    plots = [group for group in xml.etree.ElementTree.parse(path).iter(f"{namespace}g")
             if group.get("id", "").startswith("gnuplot_plot_")]
    actual = [plot.findtext(f"{namespace}title") for plot in plots]
    expect(actual == titles, f"{path}: plots of {actual}")
    for plot in plots:
        expect(any("L" in path.get("d") for path in plot.iter(f"{namespace}path")),
               f"{path}: a plot without lines")


# ---------------------------------------------------------------------------------------


def main(base, terminal, *titles):
    kind, *options = terminal.split()
    run_script(base, kind in PICTURE_TERMINALS)
    if titles[0] == "--no-plot":
        return
    if titles[0] == "--matrix":
        check_surface(base, int(titles[1]))
        titles = ["surface"]
    else:
        titles = list(titles)
        check_curves(base, titles)

    picture = Path(f"{base}.{terminal}")
    if kind == "png":
        size = tuple(map(int, options[1].split(","))) if options else DEFAULT_PNG_SIZE
        check_png(picture, size, len(titles))
    elif kind == "svg":
        check_svg(picture, titles)


if __name__ == "__main__":
    main(*sys.argv[1:])
