"""varno.solve against closed forms, by mpmath and numpy."""

import os
import signal
import subprocess
import sys
import threading
import time
from decimal import Decimal
from fractions import Fraction
from pathlib import Path

import mpmath
import numpy
import pytest

import varno

OSCILLATOR = "x' = v; v' = -x; x(0) = 1; energy = x^2 + v^2;"
# Takes minutes: each of both runs makes some hundred thousand steps.
LONG = "x' = v; v' = -x; x(0) = 1;"
LONG_TIME = 10**7


def test_up_to_15_digits_columns_are_arrays():
    result = varno.solve(OSCILLATOR, to=10, points=20)
    assert list(result) == ["t", "x", "v", "energy"]
    assert result["x"].dtype == numpy.float64
    numpy.testing.assert_array_equal(result["t"], numpy.arange(21) / 2)
    numpy.testing.assert_allclose(result["x"], numpy.cos(result["t"]), rtol=1e-13, atol=1e-15)
    numpy.testing.assert_allclose(result["energy"], 1, rtol=1e-14)
    assert result.summary.verified
    assert result.summary.rows == 21


def test_beyond_numbers_are_those_of_mpmath(digits_60):
    result = varno.solve(OSCILLATOR, to="2*pi/3", last=True, digits=50)
    assert isinstance(result["x"][0], mpmath.mpf)
    assert abs(result["x"][0] + mpmath.mpf(1) / 2) < mpmath.mpf("1e-50")
    assert abs(result["v"][0] + mpmath.sqrt(3) / 2) < mpmath.mpf("1e-50")
    assert abs(result["t"][0] - 2 * mpmath.pi / 3) < mpmath.mpf("1e-50")


def test_numbers_do_not_depend_on_the_precision_of_mpmath(digits_60):
    result = varno.solve("y' = y & 1;", last=True, digits=50)
    with mpmath.workdps(5):
        number = result["y"][0]
    assert abs(number - mpmath.e) < mpmath.mpf("1e-49")


def test_verified_zeros_are_zeros():
    for digits in (15, 20):
        result = varno.solve(OSCILLATOR, to="pi/2", last=True, digits=digits)
        assert result["x"][0] == 0
        assert result.texts("x") == [f"0e-{2 * 15 if digits == 15 else digits + 15}"]


def test_definitions_without_a_value_are_nan():
    for digits in (15, 20):
        result = varno.solve("x' = 1; root = sqrt(x - 1);", at=[0, 2], to=2, digits=digits)
        assert mpmath.isnan(result["root"][0])
        assert result["root"][1] == 1


@pytest.mark.parametrize("rate", [3, 3.0, "6/2", Fraction(3), Decimal("3.00"), mpmath.mpf(3),
                                  numpy.float64(3), numpy.int64(3)])
def test_settings(rate):
    result = varno.solve("rate = 1; y' = rate & 0;", last=True, set={"rate": rate, "y(0)": 0.1})
    assert result["y"][0] == 3.1


def test_floats_are_what_is_printed_of_them(digits_60):
    result = varno.solve("y' = 0*y;", last=True, digits=50, set={"y(0)": 0.1})
    assert abs(result["y"][0] - mpmath.mpf(1) / 10) < mpmath.mpf("1e-50")
    result = varno.solve("y' = 0*y;", last=True, digits=50, set={"y(0)": Fraction(0.1)})
    assert result["y"][0] == mpmath.mpf(0.1)


def test_a_mistake_in_set_is_shown_there():
    with pytest.raises(varno.InputError, match="(?m)^set:1:1: .* no parameter 'spead'\n  spead=1$"):
        varno.solve("speed = 2; y' = speed & 0;", set={"spead": 1})


@pytest.mark.parametrize("value", [None, True, float("nan"), float("inf"), mpmath.inf, [1]])
def test_what_is_no_number_is_refused(value):
    with pytest.raises((TypeError, ValueError)):
        varno.solve("y' = y & 1;", set={"y(0)": value})


@pytest.mark.parametrize("choice, times", [
    ({"every": 0.25}, [0, 0.25, 0.5, 0.75, 1]), ({"points": 2}, [0, 0.5, 1]),
    ({"at": [1, "1/4"]}, [0.25, 1]), ({"last": True}, [1]),
    ({"from_": -1, "to": -2, "points": 1}, [-1, -2]), ({"columns": "y", "last": True}, [1]),
])
def test_choices_of_rows(choice, times):
    result = varno.solve("y' = y; y(0) = 1; z = y;", **choice)
    numpy.testing.assert_array_equal(result["t"], times)
    numpy.testing.assert_allclose(result["y"], numpy.exp(result["t"]), rtol=1e-14)


def test_steps_are_rows():
    result = varno.solve(OSCILLATOR, to=20, steps=True)
    assert 2 < len(result["t"]) < 100
    numpy.testing.assert_allclose(result["v"], -numpy.sin(result["t"]), rtol=1e-12, atol=1e-14)


def test_choices_exclude_each_other():
    with pytest.raises(varno.InputError, match="every and last exclude each other"):
        varno.solve("y' = y;", every=1, last=True)


def test_sweep_is_a_list_in_order():
    results = varno.solve("rate = 1; y' = rate*y;", last=True, jobs=2,
                          sweep={"rate": [-1, Fraction(1, 2)], "y(0)": [1, 2]})
    assert [result.settings for result in results] == [
        {"rate": -1, "y(0)": 1}, {"rate": -1, "y(0)": 2},
        {"rate": Fraction(1, 2), "y(0)": 1}, {"rate": Fraction(1, 2), "y(0)": 2}]
    values = [result["y"][0] for result in results]
    e = numpy.e
    numpy.testing.assert_allclose(values, [1 / e, 2 / e, e**0.5, 2 * e**0.5], rtol=1e-14)


def test_a_run_of_a_sweep_that_ends_early_keeps_the_others():
    first, second = varno.solve("y' = y^2;", to=2, every=1, sweep={"y(0)": ["1/4", 1]})
    assert first.error is None
    numpy.testing.assert_allclose(first["y"], [1 / 4, 1 / 3, 1 / 2], rtol=1e-14)
    assert second.error.reason == "singularity"
    assert len(second["t"]) == 1


def test_mistakes_have_their_places():
    with pytest.raises(ValueError) as error:
        varno.solve("x' = sinn(y) & 1;\ny' = 2x;", name="wrong.varno")
    assert isinstance(error.value, varno.InputError)
    # As README shows it
    assert str(error.value).startswith(
        "wrong.varno:1:6: error: there is no function 'sinn'\n  x' = sinn(y) & 1;\n       ^~~~\n"
        "  hint: did you mean 'sin'?\nwrong.varno:2:7: error: ")
    with pytest.raises(varno.InputError, match="--digits 0: between 1 and 10000"):
        varno.solve("y' = y;", digits=0)
    with pytest.raises(varno.InputError, match="there is no column 'z'"):
        varno.solve("y' = y;", columns=["z"])


def test_early_ends_keep_the_rows():
    with pytest.raises(varno.RunEnded, match="pole of order 1") as ended:
        varno.solve("y' = y^2 & 1;", to=2, every="1/2")
    assert ended.value.reason == "singularity"
    numpy.testing.assert_array_equal(ended.value.result["y"], [1, 2])
    with pytest.raises(varno.RunEnded) as ended:
        varno.solve(OSCILLATOR, to=1000, max_steps=5)
    assert ended.value.reason == "limit"


def test_between_the_rows(digits_60):
    result = varno.solve(OSCILLATOR, to=20, last=True, digits=30, dense=True)
    for t in (17, 0.5, Fraction(1, 3)):
        point = result.at(t)
        time = mpmath.mpf(t.numerator) / t.denominator if isinstance(t, Fraction) else t
        assert abs(point["x"] - mpmath.cos(time)) < mpmath.mpf("1e-30")
        assert point.verified
    assert not result.at("pi/2").verified
    with pytest.raises(varno.InputError, match="t = 21 is not between"):
        result.at(21)
    assert varno.solve(OSCILLATOR, last=True, dense=True).at(0.5)["x"] == pytest.approx(
        numpy.cos(0.5), rel=1e-14)


def test_explain():
    text = varno.explain("mu = 2; x'' = mu*x;", set={"mu": 3})
    assert "x'' = 3*x" in text


def test_other_threads_go_on():
    counts = []
    done = threading.Event()

    def count():
        while not done.is_set():
            counts.append(time.monotonic())
            time.sleep(0.001)

    thread = threading.Thread(target=count)
    thread.start()
    try:
        begin = time.monotonic()
        with pytest.raises(varno.RunEnded):
            varno.solve(LONG, to=LONG_TIME, last=True, max_seconds=0.2)
        end = time.monotonic()
    finally:
        done.set()
        thread.join()
    # Not while the last count was waiting for the lock
    assert sum(begin < moment < end - 0.01 for moment in counts) > 5


@pytest.mark.parametrize("sweep", ["", "sweep={'v(0)': [0, 1, 2]}, jobs=2"])
def test_ctrl_c(sweep):
    program = f"""if True:
        import sys, varno
        print("begun", flush=True)
        try:
            varno.solve({LONG!r}, to={LONG_TIME}, last=True, {sweep})
        except KeyboardInterrupt:
            sys.exit(7)
        """
    process = subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE,
                               env={**os.environ, "PYTHONPATH": str(Path(varno.__file__).parents[1])})
    process.stdout.readline()
    time.sleep(0.2)
    process.send_signal(signal.SIGINT)
    assert process.wait(timeout=60) == 7
    process.stdout.close()
