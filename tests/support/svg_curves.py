#!/usr/bin/env python3
"""Prints what gnuplot has drawn into an svg picture: a line for each curve with its name in the key,
if it has one, and the number of its points, without those of its sample in the key.

Usage: svg_curves.py PICTURE
"""

import re
import sys
import xml.etree.ElementTree as ElementTree

SVG = "{http://www.w3.org/2000/svg}"
KEY_SAMPLE_POINTS = 2


def points_of(group):
    """Corners of the group's paths: each is a move or a line."""
    paths = (path.get("d", "") for path in group.iter(SVG + "path"))
    return sum(len(re.findall(r"[-\d.]+,[-\d.]+", path)) for path in paths)


for group in ElementTree.parse(sys.argv[1]).getroot().iter(SVG + "g"):
    if (group.get("id") or "").startswith("gnuplot_plot_"):
        name = group.findtext(f".//{SVG}text")
        print(f"{name}: {points_of(group) - (KEY_SAMPLE_POINTS if name else 0)}")
