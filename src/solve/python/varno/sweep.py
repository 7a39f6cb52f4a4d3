"""Runs for all combinations of values, on several threads."""

import itertools
import os
from concurrent.futures import ThreadPoolExecutor

from . import core


def combinations(sweep):
    """Of {"mu": [1, 2], "x(0)": [0, 1]}; the last name changes from run to run."""
    for values in itertools.product(*sweep.values()):
        yield dict(zip(sweep, values))


def run_all(run, settings, jobs):
    """[run(settings, stop), ...] in the order of the settings. The runs end when this thread is
    interrupted."""
    stop = core.Stop()
    threads = ThreadPoolExecutor(jobs or os.cpu_count())
    try:
        return [future.result() for future in [threads.submit(run, one, stop) for one in settings]]
    except BaseException:
        stop.set()
        raise
    finally:
        threads.shutdown(cancel_futures=True)
