#!/usr/bin/env python3
"""The model as a program: varno_model.py [OPTIONS] [FILE] does what varno does, slowly.

The time report at the end always shows 0, and the banner of the usage text an invented date.
"""

import os
import signal
import sys
from pathlib import Path

from driver import run, with_deep_stack
from ends import NotModelled


def main():
    arguments = [os.fsencode(argument) for argument in sys.argv[1:]]
    home = Path(os.environ.get("HOME", "."))
    try:
        status = with_deep_stack(lambda: run(
            b"varno", arguments, sys.stdin.buffer.read, Path.cwd(), home,
            sys.stdout.buffer, sys.stderr.buffer))
    except NotModelled as reason:
        sys.exit(f"varno_model.py: not modelled: {reason}")
    sys.stdout.flush()
    sys.stderr.flush()
    if not status.isdecimal():
        number = signal.Signals[status]
        signal.signal(number, signal.SIG_DFL)  # whatever the parent set
        os.kill(os.getpid(), number)
    sys.exit(int(status))


if __name__ == "__main__":
    main()
