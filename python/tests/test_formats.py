"""What docs/formats.md says is so, tried on files that the programs themselves have made."""

import fcntl
import json
import os
import re
import subprocess
from contextlib import contextmanager
from datetime import date, datetime

import numpy as np
import pytest
from conftest import GUARD, PROGRAMS, ROOT, TRIGGER, record, run, settings, text_of, wait_for_bytes

import tarno2

PAGE = (ROOT / "docs/formats.md").read_text("utf-8")


def part(title):
    """What stands below a title of the page."""
    return PAGE.split(f"\n## {title}\n")[1].split("\n## ")[0]


def described(data):
    """The values of a description, as they stand."""
    text = re.sub(r"\\\r\n", "", data.with_suffix(".txt").read_bytes().decode("cp1251"))
    return dict(re.findall(r"^(\w+) = (.*?) ?\r$", text, re.MULTILINE))


def created(data):
    return datetime.strptime(described(data)["CreateTime"], '"Время %H:%M:%S Дата %d.%m.%Y"')


def exported(data, *options, **environment):
    """The lines of a data file as text."""
    command = [PROGRAMS / "tarno2-export", data, "-", "--quiet", *options]
    environment = {**os.environ, **environment}
    text = subprocess.run(command, env=environment, capture_output=True, check=True, timeout=GUARD).stdout
    assert text.count(b"\n") == text.count(b"\r\n") and text.endswith(b"\r\n")
    return text.decode("utf-8").split("\r\n")[:-1]


@contextmanager
def running(folder, text, until="run.dat"):
    """A recording by these settings from when that file has something in it; ended when it is left."""
    (folder / "auto.txt").write_text(text, "utf-8")
    command = [PROGRAMS / "tarno2-console", "/c", folder / "auto.txt"]
    environment = {**os.environ, "TARNO2_HOME": str(folder)}
    recorder = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL)
    try:
        wait_for_bytes(recorder, folder / until)
        yield folder / "run.dat"
    finally:
        recorder.terminate()
        assert recorder.wait(GUARD) == 0


def test_names_are_those_of_the_page(recordings):
    pieces = [f"cut{number}{ending}" for number in ("", "_1", "_2") for ending in (".dat", ".txt")]
    beside = ["cut.cfg", "cut.json", "cut.marks.csv", "cut.sha256"]
    assert sorted(file.name for file in recordings.glob("cut*")) == sorted(pieces + beside)
    assert {file.suffix for file in recordings.glob("board2*")} == {".cfg", ".dat", ".json", ".sha256", ".txt"}


def shapes():
    """A pattern for each line that the table of the journal tells of, by its first word."""
    kinds = {"N": r"\d+", "X": r"-?[\d.e+-]+", "F": "[01]", "HHHHHHHH": "[0-9a-f]{8}", "NAME": ".*"}
    found = {}
    for cell in re.findall(r"^\| (`.*?) \|", part("The journal"), re.MULTILINE):
        more = r" -?\d+" * int((re.search(r"and (\d) integers", cell) or [0, 0])[1])
        more += r" -?[\d.e+-]+" if "and a real" in cell else ""
        for line in re.findall("`(.*?)`", cell):
            words = [kinds.get(word, re.escape(word)) for word in line.split(" ")]
            found[words[0]] = " ".join(words) + more
    return found


def test_a_recording_that_runs(tmp_path):
    wish = settings(tmp_path / "run.dat", 2, [0, 1], 2000000, {**TRIGGER, "CutMode": 1, "SynchroAllSize": 100000})
    with running(tmp_path, wish, until="run_6.txt"):
        with open(tmp_path / "run.tarno2-journal", "rb") as journal:
            with pytest.raises(BlockingIOError):
                fcntl.flock(journal, fcntl.LOCK_SH | fcntl.LOCK_NB)
            # A state may be on its way meanwhile: what reads the same twice is whole.
            halves, before = journal.read(), b""
            while halves != before:
                journal.seek(0)
                halves, before = journal.read(), halves
        command = [PROGRAMS / "tarno2-verify", tmp_path / "run.dat"]
        checked = subprocess.run(command, capture_output=True, text=True, timeout=GUARD)
        assert checked.returncode == 2 and checked.stdout.startswith("UNCHECKED ")
    lines = [half.rstrip(b"\n").decode().split("\n") for half in (halves[:32768], halves[32768:])]
    known = shapes()
    assert len(known) == 20
    for line in lines[0] + lines[1]:
        assert re.fullmatch(known[line.split(" ")[0]], line), line
    words = {line.split(" ")[0] for line in lines[0] + lines[1]}
    assert words == set(known) - {"aside", "earlier", "dropped"}
    sequences = [int(half[1].removeprefix("sequence ")) for half in lines]
    assert abs(sequences[0] - sequences[1]) == 1
    assert not list(tmp_path.glob("*journal"))
    # Each file tells the time of its own first sample; six take 1.5 s at least.
    times = [created(tmp_path / f"run{number}.dat") for number in ("", "_1", "_2", "_3", "_4", "_5", "_6")]
    assert times == sorted(times) and times[0] < times[-1]


def test_the_example_of_an_autosettings_file(tmp_path):
    (example,) = re.findall(r"```ini\n(.*?)```", part("The autosettings file"), re.DOTALL)
    with running(tmp_path, example.replace("/data/pump/run.dat", str(tmp_path / "run.dat"))) as data:
        assert not data.with_suffix(".txt").exists()
    log = (tmp_path / "AutoLog.txt").read_text("cp1251")
    assert log.split("\n")[2] == "Config read OK..."
    told = json.loads(data.with_suffix(".json").read_text("utf-8"))
    assert [(channel["number"], channel["gain"]) for channel in told["channels"]] == [(0, 1), (1, 1), (5, 10)]
    assert told["rate"]["asked"] == 10000


def test_console_mode_takes_nothing_but_the_folder_from_the_settings_file(tmp_path):
    (tmp_path / "data").mkdir()
    file = tmp_path / "Tarno2.cfg"
    file.write_bytes(
        b"Frequency = 5\r\nDecimation = 3\r\nPassport = 0\r\nComment = of the window\r\nChannelsName = a\r\n"
        b"DriverSettings = Simulator/Signal=Counter\r\nMarkLine = 0\r\nChecksums = 0\r\n"
        + f"FileName = {tmp_path}/data/earlier.dat\r\n".encode()
    )
    before = file.read_bytes()
    text = settings("", 1, [0], 20000, {"MeasureFileMode": 2, "SizeNeedLow": 4000}).replace('FileName = ""\n', "")
    (tmp_path / "auto.txt").write_text(text, "utf-8")
    home = {"TARNO2_HOME": str(tmp_path), "TARNO2_SIMULATOR": "RealTime=0"}
    days = [date.today()]
    run(PROGRAMS / "tarno2-console", "/c", tmp_path / "auto.txt", **home)
    days.append(date.today())
    (data,) = (tmp_path / "data").glob("file_*_n*.dat")
    assert any(re.fullmatch(rf"file_{day.year}_{day.month}_{day.day}_n\d+\.dat", data.name) for day in days)
    assert {file.suffix for file in data.parent.iterdir()} == {".dat", ".json", ".sha256", ".txt"}
    told = json.loads(data.with_suffix(".json").read_text("utf-8"))
    assert told["comment"] == "" and told["channels"][0]["name"] == "" and told["rate"]["recorded"] == 20000
    assert np.fromfile(data, "<i2").max() > 20000  # no counter
    assert file.read_bytes() == before


def test_a_size_limit_may_end_before_the_first_frame_of_a_record(tmp_path):
    wish = {**TRIGGER, "SynchroAnalogChannelNumber": 0, "SynchroAllSize": 500, "SynchroPrehistorySize": 100}
    data = record(tmp_path, "run", 2, [0, 1], 1000000, SizeNeedLow=4002, **wish)
    told = described(data)
    assert data.stat().st_size == 4002 and told["DataCountPerChannel"] == "1000"
    assert told["SynchroListCount"] == "3" and told["SynchroListPoint"] == "100 , 200 , 300"


def test_points_of_events_grow_through_all_pieces(recordings):
    pieces = [described(recordings / f"triggered{number}.dat") for number in ("", "_1", "_2")]
    points = [int(point) for piece in pieces for point in piece["SynchroListPoint"].split(",")]
    assert points == list(range(1000, 1000 * len(points) + 1, 1000))


def test_a_recording_that_is_held_back_was_created_when_it_began(tmp_path):
    """At 10 kHz the line rises for the second time after 2.5 s."""
    port = {"SynchroAnalyzeMode": 2, "SynchroMode": 1, "UseDigitalPort": 1, "SynchroPortMode": 0, "SynchroAllSize": 500}
    signal = "RealTime=1;DigitalPeriod=25000"
    data = record(tmp_path, "run", 1, [0, 1], 20000, signal, MeasureFileMode=0, StopAfterTrigged=1, **port)
    told = json.loads(data.with_suffix(".json").read_text("utf-8"))
    begun = datetime.fromisoformat(told["start"]["local"]).replace(tzinfo=None)
    assert told["records"][0]["trigger"] == 25000 and 0 <= (begun - created(data)).total_seconds() < 2


@pytest.mark.parametrize("edges", [0, 1, 2])
def test_marked_edges_are_the_ones_asked_for(tmp_path, edges):
    data = record(tmp_path, "run", 1, [0, 1], 20000, "DigitalPeriod=500", SizeNeedLow=40000, MarkLine=1, MarkEdge=edges)
    rec = tarno2.open(data)
    steps = np.diff(rec.lines[:, 1].astype(np.int8))
    wanted = np.flatnonzero([steps == 1, steps == -1, steps != 0][edges]) + 1
    assert len(wanted) > 3 and [mark.frame for mark in rec.marks if mark.frame is not None] == list(wanted)


def test_frequency_and_packets_of_a_description(recordings, tmp_path):
    """20 kHz of two channels, every second of 400 packets a second."""
    data = recordings / "packets.dat"
    told = described(data)
    assert (told["PacketMode"], told["PacketFreq"], told["Frequency"]) == ("1", "-56", "5000.000000")
    text = text_of(data, tmp_path, "--first-column", "seconds")
    assert text[500, 0] == pytest.approx(500 / 5000)  # text takes no rate of packets but one that it is told
    assert text_of(data, tmp_path, "--first-column", "seconds", "--packet-frequency", 200)[500, 0] == 2.5


def test_an_external_clock_and_a_comment_of_the_code_page(tmp_path):
    wish = {"MeasureFileMode": 2, "SizeNeedLow": 4000, "BoardMode": 8, "Comment": '"насос; 2"'}
    file = tmp_path / "auto.txt"
    file.write_text(settings(tmp_path / "run.dat", 1, [1, 0], 20000, wish), "cp1251")
    home = {"TARNO2_HOME": str(tmp_path), "TARNO2_SIMULATOR": "RealTime=0;ExternalClockRate=3000"}
    run(PROGRAMS / "tarno2-console", "/c", file, **home)
    told = described(tmp_path / "run.dat")
    assert (told["ExternalFreqMode"], told["Frequency"]) == ("1", "10000.000000") and told["SynchronousChannels"] == "1"
    passport = json.loads((tmp_path / "run.json").read_text("utf-8"))
    assert passport["comment"] == "насос; 2" and passport["rate"]["externalClock"]
    assert passport["rate"]["recorded"] == 10000  # what was expected of the clock


def test_a_narrower_range_of_codes_is_told_by_the_passport_alone(recordings, tmp_path):
    for ending in (".dat", ".txt", ".json"):
        (tmp_path / f"run{ending}").write_bytes((recordings / f"board1{ending}").read_bytes())
    told = (tmp_path / "run.json").read_text("utf-8").replace("board1.", "run.")
    told = told.replace('"codeMinimum": -8192', '"codeMinimum": -8000').replace("8191", "8000")
    (tmp_path / "run.json").write_text(told, "utf-8")
    rec = tarno2.open(tmp_path / "run.dat")
    range_of = rec.channels[0].upper
    assert np.allclose(rec.volts[:, 0], rec.codes[:, 0] * range_of / 8000)
    options = ["--data", "volts", "--voltage-precision", "9"]
    text = text_of(tmp_path / "run.dat", tmp_path, *options, "--code-min", -8000, "--code-max", 8000)
    assert np.allclose(text[:, 0], rec.volts[:, 0], rtol=0, atol=1e-9)
    assert text_of(tmp_path / "run.dat", tmp_path, *options)[:, 0].max() < text[:, 0].max()


def test_text_is_the_same_in_every_language(recordings):
    options = ["--header", "--data", "units", "--first-column", "seconds"]
    lines = exported(recordings / "cut.dat", *options, LC_ALL="ru_RU.UTF-8")
    assert lines[0].split("\t") == ["Time [s]", "bearing [g]", "Ход [мм]", "Channel 5 [V]", "pump", "Line 1"]
    assert re.fullmatch(r"0\.000010(\t-?\d+\.\d{6}){3}(\t[01]){2}", lines[2])
    assert lines == exported(recordings / "cut.dat", *options, LC_ALL="C")
    clock = exported(recordings / "cut_1.dat", "--first-column", "clock", "--decimal", "comma", LC_ALL="C")
    assert clock[1].startswith("0:0:0:0,010000\t")


def test_a_part_keeps_its_times_and_marks(recordings):
    """The driver marked frame 70000, which is not taken."""
    data = recordings / "cut.dat"
    part_of = ["--from", "69990", "--to", "70010", "--every", "3", "--marks", "--first-column", "seconds"]
    rows = [line.split("\t") for line in exported(data, *part_of, "--channels", "5")]
    assert [row[0] for row in rows] == [f"{frame / 100000:.6f}" for frame in range(69990, 70010, 3)]
    marked = [row[0] for row in rows if "Mark 1" in row[-1].split("; ")]
    assert marked == ["0.699990"] and {len(row) for row in rows} == {5}
    command = [PROGRAMS / "tarno2-export", data, "-", "--format", "wav", "--every", "4", "--quiet"]
    wav = subprocess.run(command, capture_output=True, check=True, timeout=GUARD).stdout
    assert int.from_bytes(wav[24:28], "little") == 25000


def test_time_of_triggered_records_runs_on(recordings, tmp_path):
    rec = tarno2.open(recordings / "triggered.dat")
    text = text_of(rec.pieces[0].path, tmp_path, "--first-column", "seconds")
    assert np.allclose(text[:, 0], np.arange(len(text)) / rec.rate, rtol=0, atol=5.1e-7)


def test_marks_of_an_analysis_have_no_place_in_the_text(tmp_path):
    level = {"SynchroAnalyzeMode": 1, "AnalyzeAnalogWriteMode": 0, "AnalyzeAnalogWriteValue": 1.0}
    data = record(tmp_path, "run", 1, [0], 10000, "MarkEvery=500", SizeNeedLow=20000, **level)
    assert data.with_suffix(".marks.csv").read_text("utf-8").count("driver") > 10
    lines = exported(data, "--marks", "--header")
    assert lines[0].endswith("\tMark") and all(line.endswith("\t") for line in lines[1:])


def test_a_passport_that_can_not_be_written_ends_no_recording(tmp_path):
    with running(tmp_path, settings(tmp_path / "run.dat", 1, [0, 1], 20000, {})) as data:
        data.with_suffix(".json").unlink()
        data.with_suffix(".json").mkdir()
    assert described(data)["DataCountPerChannel"] == str(data.stat().st_size // 4)
    assert "run.json" in (tmp_path / "AutoLog.txt").read_text("cp1251")
