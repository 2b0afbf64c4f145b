"""Indexes choose what NumPy would choose."""

import pickle

import numpy as np
import pytest

import tarno2


@pytest.fixture(scope="module")
def rec(recordings):
    return tarno2.open(recordings / "cut.dat")


def test_slices_reach_over_pieces_as_those_of_numpy(rec):
    reference = rec.codes[:]
    border, count = rec.pieces[1].begin, rec.frames
    places = [0, 1, border - 2, border - 1, border, border + 1, count - 1, count, count + 9, None]
    places += [place - count - 1 for place in places if place is not None]
    random = np.random.default_rng(20)
    steps = [None, 1, 2, 3, 1000, border, count, -1, -2, -7, -border, -count - 1]
    for _ in range(1500):
        first, last = (places[i] for i in random.integers(0, len(places), 2))
        rows = slice(first, last, steps[random.integers(0, len(steps))])
        columns = [slice(None), slice(None, None, -1), 1, -1, [2, 0]][random.integers(0, 5)]
        assert np.array_equal(rec.codes[rows, columns], reference[rows, columns]), (rows, columns)
        assert np.array_equal(rec.time[rows], np.arange(count)[rows] / rec.rate)


def test_numbers_lists_and_names(rec):
    reference = rec.units[:]
    border = rec.pieces[1].begin
    assert rec.units[border, "bearing"] == reference[border, 0] and np.isscalar(rec.units[-1, -1])
    assert np.array_equal(rec.units[border], reference[border])
    assert np.array_equal(rec.units[np.array([-1, 3], np.int8)], reference[[-1, 3]])
    assert np.array_equal(rec.units[np.array([3], np.uint8)], reference[[3]])
    with pytest.raises(IndexError):
        rec.units[np.array([2**64 - 1], np.uint64)]
    assert np.array_equal(rec.units[10:20, ["Channel 5", 0]], reference[10:20, [2, 0]])
    rows = [border, 3, -1, border - 1, 3]
    assert np.array_equal(rec.units[rows, [0, 2]], reference[rows][:, [0, 2]])
    assert np.array_equal(rec.units[reference[:, 0] > 7, 1], reference[reference[:, 0] > 7, 1])
    assert rec.lines[border - 1 : border + 1, "pump"].shape == (2,)
    assert rec.volts[5:5].shape == (0, 3) and rec.volts[[]].shape == (0, 3) and rec.volts[..., 1].shape == (rec.frames,)
    assert np.asarray(rec.codes).dtype == np.int16
    assert rec.utc[3] - rec.utc[0] == np.timedelta64(30, "us")


@pytest.mark.parametrize(
    "key, kind, words",
    [
        ((0, "engine"), KeyError, 'no channel is called "engine"; there are: bearing, Ход, Channel 5'),
        ((0, 3), IndexError, "channel 3 is not among 3"),
        (10**9, IndexError, "frame 1000000000 is not among"),
        (1.5, IndexError, "1.5 is no number of a frame"),
        ((0, 0, 0), IndexError, "3 indexes"),
        ([True, False], IndexError, "2 truths can't choose"),
    ],
)
def test_bad_indexes_say_what_is_wrong(rec, key, kind, words):
    with pytest.raises(kind) as raised:
        rec.volts[key]
    assert words in raised.value.args[0]


def test_two_channels_of_one_name_want_a_number():
    from tarno2.selection import Columns

    with pytest.raises(KeyError, match="channels 0, 2 are all called"):
        Columns(["a", "b", "a"], "channel").select("a")


def test_recordings_go_to_other_processes_by_their_names(rec):
    sent = pickle.dumps(rec)
    assert len(sent) < 500
    assert np.array_equal(pickle.loads(sent).codes[-5:], rec.codes[-5:])
