"""What the program measures of a recording, against NumPy on the same samples."""

import os

import numpy as np
import pytest
from conftest import PROGRAMS, run

import tarno2

MEASURED = PROGRAMS.parent / "tests/tarno2-measured"
TERMS = {  # of the windows, sums of cosines of alternating sign
    0: [0.5, 0.5],
    1: [0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368],
    2: [0.35875, 0.48829, 0.14128, 0.01168],
    3: [1.0],
}


def measured(path, first, end, window, length, averaged):
    """The statistics, a row a channel, and the powers of the spectrum with the width of a bin."""
    if not MEASURED.exists() and not os.environ.get("TARNO2_TEST_ALL"):
        pytest.skip(f"no {MEASURED}")
    lines = run(MEASURED, path, first, end, window, length, int(averaged)).splitlines()
    at = next(i for i, line in enumerate(lines) if line.startswith("spectrum"))
    numbers = [np.array(line.split(), dtype=float) for line in lines[:at]]
    return np.array(numbers), lines[at].split(), np.array([line.split() for line in lines[at + 1 :]], dtype=float)


def powers(volts, window, length, averaged):
    """Welch's mean of the blocks, as powers of sines."""
    turn = 2 * np.pi * np.arange(length) / length
    shape = sum((-1) ** k * term * np.cos(k * turn) for k, term in enumerate(TERMS[window]))
    starts = range(0, len(volts) - length + 1, length // 2) if averaged else [len(volts) - length]
    bins = np.array([np.fft.rfft(volts[start : start + length] * shape) for start in starts])
    single = np.mean(np.abs(bins) ** 2, axis=0) / shape.sum() ** 2
    single[1:-1] *= 2
    return single, len(starts)


BOARDS = ["board1", "board2", "board3", "board4"]


@pytest.mark.parametrize("name", BOARDS)
@pytest.mark.parametrize("window", TERMS)
@pytest.mark.parametrize("averaged", [False, True])
def test_spectrum_is_numpys(recordings, name, window, averaged):
    plain = recordings / f"{name}.dat"
    rec = tarno2.open(plain)
    first, end, length = 101, 9000, 2048
    volts = np.asarray(rec.volts[first:end])
    full = max(abs(limit) for channel in rec.channels for limit in (channel.upper, channel.lower))
    _, (_, blocks, width), seen = measured(plain, first, end, window, length, averaged)
    assert float(width) == pytest.approx(rec.rate / length, rel=1e-9)
    for column in range(volts.shape[1]):
        wanted, count = powers(volts[:, column], window, length, averaged)
        assert int(blocks) == count
        # As amplitudes, to a billionth of the full scale.
        assert np.max(np.abs(np.sqrt(seen[column]) - np.sqrt(wanted))) < 1e-9 * full


@pytest.mark.parametrize("name", BOARDS)
def test_statistics_are_numpys(recordings, name):
    plain = recordings / f"{name}.dat"
    rec = tarno2.open(plain)
    volts = np.asarray(rec.volts[50:9000])
    full = max(abs(limit) for channel in rec.channels for limit in (channel.upper, channel.lower))
    seen, _, _ = measured(plain, 50, 9000, 0, 256, True)
    rms = np.sqrt(np.mean(volts**2, axis=0))
    wanted = [volts.min(axis=0), volts.max(axis=0), volts.mean(axis=0), rms, volts.std(axis=0)]
    for column, values in enumerate(wanted):
        assert np.max(np.abs(seen[:, column] - values)) < 1e-9 * full
