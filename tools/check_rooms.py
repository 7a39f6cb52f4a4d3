#!/usr/bin/env python3
"""Prints which room may include which, and finds the includes that no room has declared.

Usage: check_rooms.py ROOMS_FILE [ROOT]

The build lists its rooms in ROOMS_FILE (cmake/Rooms.cmake describes a line of it). ROOT is the root of
the source tree. Reported are

  - an include of another room's header in a header that other rooms see, where the room does not list
    the other one in USES, and in a source, or in a header for the room's own sources, where it lists
    it neither there nor in PRIVATE_USES. The compiler lets some of them pass: the headers of a
    neighbour's neighbours are within its reach;
  - a room that is listed, and included nowhere;
  - rooms that use one another in a circle;
  - headers that include one another in a circle;
  - a file of src/ that stands neither in a room nor in a folder of one, and a source or header that no room can include because it is
    spelled in another way than by its path from src/.

Ends with status 0 when there is nothing to report, otherwise 1.
"""

import re
import sys
from dataclasses import dataclass
from pathlib import Path

SUFFIXES = {".h", ".cpp", ".ll", ".yy"}
# Made by the build: in the room of the grammar, and by cmake/Version.cmake.
GENERATED = {"grammar.h", "version.h"}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


@dataclass
class Room:
    name: str
    folder: Path
    uses: set
    private_uses: set


def read_rooms(text, root):
    """The rooms by name, in the order of the list."""
    rooms = {}
    for line in filter(str.strip, text.splitlines()):
        head, _, tail = line.partition(":")
        folder, name = head.split()
        uses, _, private_uses = tail.partition(";")
        rooms[name] = Room(name, root / folder, set(uses.split()), set(private_uses.split()))
    return rooms


def files_of(room):
    return sorted(path for path in room.folder.iterdir() if path.suffix in SUFFIXES)


def includes_of(path):
    return INCLUDE.findall(path.read_text(encoding="utf-8"))


def room_of_include(rooms, include):
    """The name of the room that a header belongs to; None for no room."""
    name = include.rpartition("/")[0]
    return name if name in rooms else None


def shown_headers(rooms):
    """The headers that come into files of other rooms, by way of others, too."""
    includes = {(room.name, f"{room.name}/{path.name}"): includes_of(path)
                for room in rooms.values() for path in files_of(room)}
    of_header = {file: list_ for (_, file), list_ in includes.items() if file.endswith(".h")}
    pending = [include for (name, _), list_ in includes.items() for include in list_
               if room_of_include(rooms, include) not in (None, name)]
    shown = set()
    while pending:
        header = pending.pop()
        if header not in shown:
            shown.add(header)
            pending += of_header.get(header, ())
    return shown


def undeclared_includes(rooms, root):
    shown = shown_headers(rooms)
    for room in rooms.values():
        for path in files_of(room):
            is_shown = f"{room.name}/{path.name}" in shown
            allowed = {room.name} | room.uses
            if not is_shown:
                allowed |= room.private_uses
            for include in includes_of(path):
                if include in GENERATED:
                    continue
                where = path.relative_to(root)
                name = room_of_include(rooms, include)
                if name is None:
                    yield f"{where}: \"{include}\" is not the path of a header in a room"
                elif name not in allowed:
                    kind = "USES" if is_shown else "USES or PRIVATE_USES"
                    yield f"{where}: includes \"{include}\", but {room.name} does not list {name} in {kind}"


def unused_neighbours(rooms):
    for room in rooms.values():
        by_headers, by_sources = set(), set()
        for path in files_of(room):
            used = {room_of_include(rooms, include) for include in includes_of(path)}
            by_sources |= used
            if path.suffix == ".h":
                by_headers |= used
        for name in sorted(room.uses - by_headers):
            yield f"{room.name}: lists {name} in USES, but no header of it includes one of {name}"
        for name in sorted(room.private_uses - by_sources):
            yield f"{room.name}: lists {name} in PRIVATE_USES, but nothing in it includes one of {name}"


def circles(arrows, what):
    """Reports each circle of a graph {node: neighbours} once, by depth-first search."""
    finished = set()

    def visit(node, path):
        if node in path:
            circle = path[path.index(node):] + [node]
            yield f"{what} in a circle: {' -> '.join(circle)}"
            return
        if node in finished:
            return
        for neighbour in sorted(arrows.get(node, ())):
            yield from visit(neighbour, path + [node])
        finished.add(node)

    for node in sorted(arrows):
        yield from visit(node, [])


def header_arrows(rooms):
    return {f"{room.name}/{path.name}": set(includes_of(path))
            for room in rooms.values() for path in files_of(room) if path.suffix == ".h"}


def homeless_files(rooms, root):
    folders = {room.folder for room in rooms.values()}
    for path in sorted((root / "src").rglob("*")):
        if path.suffix in SUFFIXES and folders.isdisjoint(path.parents):
            yield f"{path.relative_to(root)}: its folder is no room"


def problems_of(rooms, root):
    yield from undeclared_includes(rooms, root)
    yield from unused_neighbours(rooms)
    yield from circles({room.name: room.uses | room.private_uses for room in rooms.values()},
                       "rooms use one another")
    yield from circles(header_arrows(rooms), "headers include one another")
    yield from homeless_files(rooms, root)


def print_arrows(rooms):
    width = max(map(len, rooms), default=0)
    for room in rooms.values():
        public = " ".join(sorted(room.uses))
        private = " ".join(f"({name})" for name in sorted(room.private_uses))
        print(f"{room.name:<{width}} -> {' '.join(filter(None, (public, private))) or '-'}")


def main(arguments):
    if len(arguments) not in (1, 2):
        sys.exit("usage: check_rooms.py ROOMS_FILE [ROOT]")
    root = Path(arguments[1] if len(arguments) == 2 else Path(__file__).parents[1]).resolve()
    rooms = read_rooms(Path(arguments[0]).read_text(), root)
    print_arrows(rooms)
    problems = list(problems_of(rooms, root))
    for problem in problems:
        print(problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
