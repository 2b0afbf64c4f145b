"""Recordings made by the program itself, for all tests."""

import importlib
import os
import subprocess
import time
from pathlib import Path

import numpy as np
import pytest

ROOT = Path(__file__).resolve().parents[2]
PROGRAMS = Path(os.environ.get("TARNO2_PROGRAMS", ROOT / "build/release/bin"))
GUARD = 120  # s, for what should take a second


def need(name):
    """A library without which a test has nothing to try; where TARNO2_TEST_ALL is set it must be there."""
    try:
        return importlib.import_module(name)
    except ImportError as error:
        (pytest.fail if os.environ.get("TARNO2_TEST_ALL") else pytest.skip)(f"no {name}: {error}")


def run(program, *arguments, **environment):
    """What a program prints; fails with it when it does not end well."""
    done = subprocess.run(
        [str(program), *map(str, arguments)],
        env={**os.environ, **environment},
        capture_output=True,
        text=True,
        timeout=GUARD,
        stdin=subprocess.DEVNULL,
    )
    assert done.returncode == 0, f"{program}: {done.stdout}{done.stderr}"
    return done.stdout


def wait_for_bytes(recorder, file, count=1):
    """Until a running recorder has so many bytes in a file."""
    end = time.monotonic() + GUARD
    while not (file.exists() and file.stat().st_size >= count):
        assert recorder.poll() is None, f"the recorder ended without {file.name}"
        assert time.monotonic() < end, f"{file.name} does not come"
        time.sleep(0.01)


def settings(data, board, channels, frequency, more):
    """The text of an autosettings file."""
    text = f'DriverName = "Simulator"\nBaseNumber = {board}\nFileName = "{data}"\n'
    text += f"ChannelCount = {len(channels)}\nChannelsNumber = {', '.join(map(str, channels))}\n"
    return text + f"Frequency = {frequency}\n" + "".join(f"{key} = {value}\n" for key, value in more.items())


def record(folder, name, board, channels, frequency, simulator="", **more):
    """Records so many bytes (SizeNeedLow) as fast as the computer can, unless `simulator` tells otherwise; returns the
    data file."""
    data = folder / f"{name}.dat"
    file = folder / f"{name}.cfg"
    more = {"MeasureFileMode": 2, "SizeNeedLow": 480000, **more}
    file.write_text(settings(data, board, channels, frequency, more), "utf-8")
    run(
        PROGRAMS / "tarno2-console",
        *("--status", "/c", file),
        TARNO2_HOME=str(folder),
        TARNO2_SIMULATOR=simulator if "RealTime" in simulator else f"RealTime=0;{simulator}",
    )
    return data


def text_of(piece, folder, *options):
    """The numbers of a data file as the program exports them."""
    output = folder / "text.csv"
    run(PROGRAMS / "tarno2-export", piece, "-o", output, "--quiet", *options)
    return np.loadtxt(output, ndmin=2)


LABELS = {
    "ChannelsGain": "1, 2, 10",
    "ChannelsName": '"bearing;Ход;"',
    "ChannelsUnit": '"g;мм"',
    "ChannelsFactor": "2, 0.5, 1",
    "ChannelsOffset": "0, 1.25, 0",
    "LinesName": '"pump;"',
}
TRIGGER = {
    "SynchroAnalyzeMode": 2,
    "SynchroAnalogMode": 0,
    "SynchroAnalogChannelNumber": 1,
    "SynchroAnalogValue": 0.5,
    "SynchroAllSize": 5000,
    "SynchroPrehistorySize": 1000,
}


@pytest.fixture(scope="session")
def recordings(tmp_path_factory):
    """The folder of the recordings: each board, one cut into pieces with names, units and marks, one with triggers, one
    of which the first of three frames was kept, and one that a level chose."""
    if not (PROGRAMS / "tarno2-console").exists():
        pytest.fail(f"no programs in {PROGRAMS}: build them, or name their folder in TARNO2_PROGRAMS")
    folder = tmp_path_factory.mktemp("recordings")
    record(folder, "board1", 1, [0, 1, 3], 30000)
    record(folder, "board2", 2, [159, 0, 1, 2, 3], 1000000)
    record(folder, "board3", 3, [7, 0, 1], 100000, "DigitalPeriod=3")
    record(folder, "board4", 4, [0, 1, 2, 3], 40000)
    cut = {"CutMode": 1, "SizeNeedLow": 2500002, **LABELS}
    record(folder, "cut", 1, [0, 1, 5], 300000, "DigitalPeriod=5000;MarkEvery=70000", MarkLine=1, **cut)
    record(folder, "triggered", 1, [0, 1, 5], 300000, "DigitalPeriod=9000", MarkLine=1, **cut, **TRIGGER)
    clocked = {"MeasureFileMode": 1, "TimeNeed": 2.5, **TRIGGER, "SynchroAllSize": 300, "SynchroPrehistorySize": 100}
    record(folder, "clocked", 1, [0, 1], 20000, "RealTime=1;ClockError=300", **clocked)
    record(folder, "decimated", 2, [0, 1], 100000, Decimation=3)
    record(
        *(folder, "level", 1, [0], 10000),
        **{"SynchroAnalyzeMode": 1, "AnalyzeAnalogWriteMode": 0, "AnalyzeAnalogWriteValue": 1.0, "SizeNeedLow": 20000},
    )
    record(folder, "packets", 1, [0, 1], 20000, BoardMode=4, PacketFreq=400, Decimation=2, SizeNeedLow=4000)
    return folder
