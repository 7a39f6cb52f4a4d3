"""Programs that cannot write their counts of lines when they end, or that are killed meanwhile."""

import os


def away_from(folder):
    """The environment in which a program instrumented for gcov leaves its counts, and what it has
    to say of them, below a folder: half of them would make those of all programs useless. Any
    other program does not look at it."""
    return {**os.environ, "GCOV_PREFIX": str(folder), "GCOV_ERROR_FILE": os.devnull}
