"""What the tests of the Python module share."""

import mpmath
import pytest


@pytest.fixture
def digits_60():
    """mpmath computes with 60 digits."""
    with mpmath.workdps(60):
        yield
