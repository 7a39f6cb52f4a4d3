"""The page on the module and the example that draws, as they stand."""

import doctest
import importlib
import sys
from pathlib import Path
from unittest import mock

import mpmath
import pytest

import varno

ROOT = Path(__file__).resolve().parents[3]


# What the page shows are cosines, powers of e, 1/(1 - t) and sn of Jacobi.
def test_page_shows_what_is_printed():
    with mpmath.workdps(15):
        failures, tests = doctest.testfile(str(ROOT / "docs" / "solve" / "python.md"),
                                           module_relative=False)
    assert failures == 0
    assert tests > 15


# e to 30 digits
def test_example_of_the_module_prints_what_it_shows():
    assert doctest.testmod(varno).failed == 0


def test_value_of_the_page_is_that_of_the_jacobi_function():
    with mpmath.workdps(20):
        k = mpmath.sin(1)
        angle = 2 * mpmath.asin(k * mpmath.ellipfun("cd", mpmath.mpf(1) / 3, m=k**2))
    page = (ROOT / "docs" / "solve" / "python.md").read_text()
    assert f"({float(angle):.9f}, True)" in page


@pytest.fixture
def pendulum(monkeypatch):
    monkeypatch.syspath_prepend(str(ROOT / "examples" / "solve" / "python"))
    return importlib.import_module("pendulum")


def test_period_of_the_example_is_an_elliptic_integral(pendulum):
    with mpmath.workdps(50):
        exact = 4 * mpmath.ellipk(mpmath.sin(1)**2)
        assert abs(mpmath.mpf(pendulum.period()) - exact) < mpmath.mpf("1e-38")


# To import matplotlib takes longer than all other tests.
def test_example_draws_a_curve_for_each_angle(pendulum, monkeypatch):
    matplotlib = mock.MagicMock()
    monkeypatch.setitem(sys.modules, "matplotlib", matplotlib)
    pendulum.main("picture.png")
    calls = matplotlib.pyplot.plot.call_args_list
    assert [call.kwargs["label"] for call in calls] == ["from 1", "from 2", "from 3", "from 3.14"]
    for call, angle in zip(calls, (1, 2, 3, 3.14)):
        times, angles = call.args
        assert len(times) == len(angles) == 401
        assert angles[0] == angle and abs(angles).max() <= angle * (1 + 1e-14)
    matplotlib.pyplot.savefig.assert_called_once_with("picture.png")
