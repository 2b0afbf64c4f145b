"""What is read is what the program itself exports as text."""

import numpy as np
import pytest
from conftest import text_of

import tarno2

NAMES = ["board1", "board2", "board3", "board4", "cut", "triggered", "clocked", "decimated", "level", "packets"]
STEP = 5.1e-7  # volts: half of the text's last decimal


@pytest.mark.parametrize("name", NAMES)
@pytest.mark.filterwarnings("ignore::tarno2.RecordingWarning")
def test_samples_are_those_of_the_text(recordings, tmp_path, name):
    rec = tarno2.open(recordings / f"{name}.dat")
    width = len(rec.channels)
    assert rec.frames >= 1000 and sum(piece.frames for piece in rec.pieces) == rec.frames
    for piece in rec.pieces:
        codes = text_of(piece.path, tmp_path)
        assert np.array_equal(rec.codes[piece.slice], codes[:, :width])
        assert np.array_equal(rec.lines[piece.slice], codes[:, width:])
        volts = text_of(piece.path, tmp_path, "--data", "volts")[:, :width]
        assert np.abs(rec.volts[piece.slice] - volts).max() <= STEP
        units = text_of(piece.path, tmp_path, "--data", "units")[:, :width]
        assert np.abs(rec.units[piece.slice] - units).max() <= STEP


def test_names_units_and_times_are_those_of_the_text(recordings, tmp_path):
    rec = tarno2.open(recordings / "cut.dat")
    assert [piece.path.name for piece in rec.pieces] == ["cut.dat", "cut_1.dat", "cut_2.dat"]
    assert [channel.name for channel in rec.channels] == ["bearing", "Ход", "Channel 5"]
    assert [channel.unit for channel in rec.channels] == ["g", "мм", "V"]
    assert rec.line_names == ("pump", "Line 1")
    seconds = text_of(rec.pieces[1].path, tmp_path, "--first-column", "seconds", "--time-precision", "9")[:, 0]
    begin = rec.pieces[1].begin
    assert np.allclose(rec.time[rec.pieces[1].slice] - begin / rec.rate, seconds, atol=1e-9)
    assert rec.utc[0] == rec.start  # without a second pair of the clock it begins with the first frame
    assert tarno2.open(recordings / "decimated.dat").rate == pytest.approx(100000 / 2 / 3)


def test_packets_count_by_their_own_rate(recordings):
    rec = tarno2.open(recordings / "packets.dat")
    assert rec.rate == pytest.approx(200) and rec.time[200] == pytest.approx(1)


def test_marks_lie_where_they_were_set(recordings, tmp_path):
    rec = tarno2.open(recordings / "cut.dat")
    edges = [mark.frame for mark in rec.marks if mark.source == "line"]
    assert len(edges) > 15
    level = rec.lines[:, 1].astype(np.int8)
    assert edges == list(np.flatnonzero(np.diff(level) == 1) + 1)
    driver = [mark.frame for mark in rec.marks if mark.source == "driver"]
    # The last ones may lie behind the end.
    assert [frame for frame in driver if frame is not None] == list(range(70000, rec.frames, 70000))


def test_records_begin_and_trigger_where_they_say(recordings):
    rec = tarno2.open(recordings / "triggered.dat")
    assert len(rec.pieces) > 1 and len(rec.records) == -(-rec.frames // 5000)
    channel = rec.volts[:, "Ход"]
    for entry in rec.records[:-1]:
        assert entry.trigger == entry.begin + 1000
        assert channel[entry.trigger - 1] < 0.5 <= channel[entry.trigger]
        assert rec.stream[entry.trigger] == entry.stream_trigger
    # Within a record time goes on by the rate, between records it jumps.
    steps = np.round(np.diff(rec.time[:]) * rec.rate).astype(int)
    assert list(np.flatnonzero(steps != 1) + 1) == list(rec.breaks()) == [entry.begin for entry in rec.records[1:]]
    placed = [mark for mark in rec.marks if mark.frame is not None]
    assert placed and all(rec.stream[mark.frame] == mark.stream_frame for mark in placed)
    assert rec.records[-1].frames == rec.frames - rec.records[-1].begin


def test_times_are_those_of_the_passport(recordings):
    rec = tarno2.open(recordings / "clocked.dat")
    told = [entry for entry in rec.passport.json["records"] if "utc" in entry]
    assert len(told) > 10 and len(rec.passport.pairs) > 2
    triggers = rec.records.triggers[: len(told)]
    seen = rec.utc[triggers[triggers >= 0]]
    for utc, entry in zip(seen, told):
        assert abs(utc - np.datetime64(entry["utc"][:-1])) <= np.timedelta64(1, "us")
    assert rec.clock.measured == pytest.approx(rec.passport.json["clock"]["measuredFrequency"], rel=1e-12)
    assert rec.clock.frame_at(seen[5]) == pytest.approx(told[5]["trigger"], abs=0.1)


def test_a_level_leaves_no_places(recordings):
    with pytest.warns(tarno2.RecordingWarning, match="gaps between its frames are not known"):
        rec = tarno2.open(recordings / "level.dat")
    assert rec.time[1] == 1 / rec.rate and not rec.has_utc
    with pytest.raises(tarno2.RecordingError, match="which frames were kept"):
        rec.stream[0]
