"""Which files are opened, and what is said of those that are not as they should be."""

import json
import shutil
import subprocess

import numpy as np
import pytest
from conftest import PROGRAMS, record, run, settings, wait_for_bytes

import tarno2


@pytest.fixture
def copied(recordings, tmp_path):
    """Copies files of a recording to a folder of its own, where they may be spoiled."""

    def copy(name):
        for file in recordings.glob(f"{name}*"):
            shutil.copy(file, tmp_path / file.name)
        return tmp_path

    return copy


def edit(path, change):
    path.write_bytes(change(path.read_bytes()))


def test_any_file_of_a_recording_opens_it(copied):
    folder = copied("cut")
    for name in ("cut.dat", "cut.txt", "cut.json", "cut.marks.csv", "cut_1.dat", "cut_2.txt"):
        assert tarno2.open(folder / name).path == folder / "cut.dat"
    assert [rec.path.name for rec in tarno2.open_folder(folder)] == ["cut.dat"]
    (folder / "cut.json").unlink()
    rec = tarno2.open(folder / "cut_1.dat")
    assert rec.path.name == "cut.dat" and len(rec.pieces) == 3
    # Another recording that is called like a piece has a passport of its own.
    record(folder, "cut_3", 4, [0], 10000, SizeNeedLow=1000)
    assert len(tarno2.open(folder / "cut.dat").pieces) == 3
    assert tarno2.open(folder / "cut_3.dat").frames == 500
    assert len(tarno2.open_folder(folder)) == 2


def test_files_that_were_renamed_stay_together(copied):
    folder = copied("cut")
    for file in folder.iterdir():
        file.rename(folder / file.name.replace("cut", "pump run 1.5"))
    rec = tarno2.open(folder / "pump run 1.5.dat")
    assert len(rec.pieces) == 3 and rec.channels[0].name == "bearing" and not rec.notes


def test_a_description_is_enough(copied):
    folder = copied("triggered")
    whole = tarno2.open(folder / "triggered.dat")
    (folder / "triggered.json").unlink()
    with pytest.warns(tarno2.RecordingWarning, match="gaps"):
        rec = tarno2.open(folder / "triggered.txt")
    assert np.array_equal(rec.volts[:], whole.volts[:]) and np.array_equal(rec.lines[:], whole.lines[:])
    assert [channel.name for channel in rec.channels] == ["Channel 0", "Channel 1", "Channel 2"]
    assert list(rec.records.triggers) == list(whole.records.triggers)
    assert rec.created is not None and rec.start is None and rec.driver == "Simulator"
    with pytest.raises(tarno2.RecordingError, match="without a passport"):
        rec.utc[0]


def test_a_passport_is_enough(copied):
    folder = copied("board3")
    (folder / "board3.txt").unlink()
    with pytest.warns(tarno2.RecordingWarning, match="board3.txt: there is no description"):
        rec = tarno2.open(folder / "board3.dat")
    assert rec.codes.dtype == np.int32 and rec.frames == 40000


def test_a_short_file_and_an_odd_byte(copied):
    folder = copied("board4")
    edit(folder / "board4.dat", lambda data: data[:801])
    with pytest.warns(tarno2.RecordingWarning, match="holds 100 frames, but its description counts 60000"):
        rec = tarno2.open(folder / "board4.dat")
    assert rec.codes[:].shape == (100, 4)
    edit(folder / "board4.dat", lambda data: b"")
    with pytest.warns(tarno2.RecordingWarning, match="holds 0 frames"):
        rec = tarno2.open(folder / "board4.dat")
    assert rec.codes[:].shape == (0, 4) and rec.time[:].shape == (0,)


def test_a_file_with_other_samples_is_no_piece(copied):
    folder = copied("board1")
    for ending in (".dat", ".txt"):
        shutil.copy(folder / f"board1{ending}", folder / f"board1_1{ending}")
    (folder / "board1.json").unlink()
    whole = tarno2.open(folder / "board1_1.dat")
    assert len(whole.pieces) == 2 and whole.path.name == "board1.dat"
    edit(folder / "board1_1.txt", lambda data: b"DataFormat = 2 , 0 , -1 , 16 , 0 , 0 , 0 , 1\r\n" + data)
    assert len(tarno2.open(folder / "board1.dat").pieces) == 1
    assert tarno2.open(folder / "board1_1.dat").path.name == "board1_1.dat"


def test_channels_in_reverse(copied):
    folder = copied("cut")
    plain = tarno2.open(folder / "cut.dat")
    edit(folder / "cut.json", lambda data: data.replace(b'"backwardOrder": false', b'"backwardOrder": true'))
    rec = tarno2.open(folder / "cut.dat")
    assert [channel.number for channel in rec.channels] == [5, 1, 0]
    first = rec.channels[0]
    assert (first.upper, first.unit) == (0.5, "V") and rec.channels[2].name == "bearing"
    assert np.allclose(rec.volts[:99, 0] * 10, plain.volts[:99, 0], rtol=0, atol=1e-12)
    assert np.array_equal(rec.lines[:99], plain.lines[:99])


def test_a_missing_piece_leaves_a_gap(copied):
    folder = copied("cut")
    whole = tarno2.open(folder / "cut.dat")
    (folder / "cut_1.dat").unlink()
    with pytest.warns(tarno2.RecordingWarning, match="pieces are missing: cut_1.dat"):
        rec = tarno2.open(folder / "cut.dat")
    gap = whole.pieces[1]
    assert rec.frames == whole.frames - gap.frames and list(rec.breaks()) == [gap.begin]
    assert np.array_equal(rec.volts[gap.begin :], whole.volts[gap.begin + gap.frames :])
    assert rec.time[gap.begin] == whole.time[gap.begin + gap.frames]
    lost = [mark.number for mark in rec.marks if mark.frame is None and mark.stream_frame < whole.frames]
    assert lost == [mark.number for mark in whole.marks if mark.frame in range(gap.begin, gap.begin + gap.frames)]


def test_a_recording_that_was_cut_off(tmp_path):
    file = tmp_path / "off.cfg"
    file.write_text(settings(tmp_path / "off.dat", 1, [0, 1], 200000, {"WriteAge": 10}), "utf-8")
    recorder = subprocess.Popen(
        [str(PROGRAMS / "tarno2-console"), "/c", str(file)],
        env={"TARNO2_HOME": str(tmp_path), "PATH": "/usr/bin:/bin"},
        stdin=subprocess.DEVNULL,
    )
    data = tmp_path / "off.dat"
    wait_for_bytes(recorder, data, 20001)
    # What runs may be looked at by its first passport.
    with pytest.warns(tarno2.RecordingWarning, match="there is no description"):
        running = tarno2.open(data)
    assert running.passport.state == "recording" and running.frames > 0 and running.has_utc
    recorder.kill()
    recorder.wait()
    run(PROGRAMS / "tarno2-recover", data, TARNO2_HOME=str(tmp_path))
    assert subprocess.run(["sha256sum", "--status", "-c", "off.sha256"], cwd=tmp_path).returncode == 0
    rec = tarno2.open(data)
    assert rec.passport.state == "recovered" and rec.frames == data.stat().st_size // 4
    assert np.array_equal(rec.codes[: running.frames], running.codes[:]) and rec.utc[0] == rec.start


def test_marks_that_were_cut_off(copied):
    folder = copied("cut")
    count = len(tarno2.open(folder / "cut.dat").marks)
    line = b'2,77,2026-11-22T18:01:29.123456Z,operator,"valve, ""open"""\r\n'
    edit(folder / "cut.marks.csv", lambda data: data + line + b"9999,12")
    rec = tarno2.open(folder / "cut.dat")
    assert len(rec.marks) == count and rec.marks[1].text == 'valve, "open"' and rec.marks[1].frame == 77
    edit(folder / "cut.marks.csv", lambda data: data + b"\r\n")
    with pytest.warns(tarno2.RecordingWarning, match=rf"cut.marks.csv: line {count + 3} is no mark"):
        assert tarno2.open(folder / "cut.dat").marks == ()


@pytest.mark.parametrize(
    "key, value",
    [
        ("DataFormat", "3 , 2 , 65532 , 14 , 0 , 3 , 2 , 1"),
        ("ChannelNumber", "0"),
        ("ChannelNumber", "99999999"),
        ("ChannelsRange", "5 , -5 , 5"),
        ("Frequency", "-1"),
    ],
)
def test_descriptions_that_make_no_sense(copied, key, value):
    folder = copied("board1")
    edit(folder / "board1.txt", lambda data: f"{key} = {value}\r\n".encode() + data)
    with pytest.raises(tarno2.RecordingError, match=rf"board1.txt: {key} is missing or makes no sense"):
        tarno2.open(folder / "board1.dat")


def test_files_that_are_no_recordings(copied):
    folder = copied("board1")
    with pytest.raises(tarno2.RecordingError, match="nothing.dat: there is no such file"):
        tarno2.open(folder / "nothing.dat")
    with pytest.raises(tarno2.RecordingError, match="open_folder"):
        tarno2.open(folder)
    passport = json.loads((folder / "board1.json").read_text("utf-8"))
    for change, words in [({"sample": None}, "NoneType"), ({"start": {"utc": "noon"}}, "'noon' is no time")]:
        (folder / "board1.json").write_text(json.dumps({**passport, **change}), "utf-8")
        with pytest.warns(tarno2.RecordingWarning, match=words):
            assert tarno2.open(folder / "board1.dat").passport is None
    (folder / "board1.json").write_text("{", "utf-8")
    (folder / "board1.txt").unlink()
    with pytest.raises(tarno2.RecordingError, match="has no description board1.txt"):
        tarno2.open(folder / "board1.dat")


def test_descriptions_made_by_hand(copied):
    folder = copied("board2")
    (folder / "board2.json").unlink()
    whole = tarno2.open(folder / "board2.dat")
    edit(
        folder / "board2.txt",
        lambda data: data.replace(b"\r\n", b"\n")
        .replace(b"Frequency", b"; a comment\n\tFrequency  ")
        .replace(b" , ", b","),
    )
    edit(folder / "board2.txt", lambda data: data.replace(b'"Simulator"', b'"a;b\\"\\\\" ; c'))
    rec = tarno2.open(folder / "board2.dat")
    assert rec.rate == whole.rate and np.array_equal(rec.volts[:9], whole.volts[:9])
    assert rec.driver == 'a;b"\\'
