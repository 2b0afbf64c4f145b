"""The reader for MATLAB and Octave gives what that for Python gives."""

import os
import shutil

import numpy as np
import pytest
from conftest import ROOT, run

import tarno2


@pytest.fixture(scope="module")
def octave(tmp_path_factory):
    """Runs statements, and returns the variables that they save in `saved`, a list of names."""
    if not shutil.which("octave-cli"):
        (pytest.fail if os.environ.get("TARNO2_TEST_ALL") else pytest.skip)("no octave-cli")
    folder = tmp_path_factory.mktemp("octave")

    def execute(statements, names):
        # Numbers go by plain binary files, for what Octave saves SciPy alone reads.
        script = folder / "statements.m"
        lines = [f"addpath('{ROOT / 'matlab'}');", *statements]
        for name in names:
            lines.append(f"f = fopen('{folder / name}.bin', 'w'); fwrite(f, double({name}), 'double'); fclose(f);")
        script.write_text("\n".join(lines) + "\n", "utf-8")
        run("octave-cli", "--quiet", "--no-init-file", script, HOME=str(folder))
        return [np.fromfile(folder / f"{name}.bin") for name in names]

    return execute


NAMES = ["board1", "board2", "board3", "board4", "cut", "triggered", "clocked", "decimated", "level", "packets"]
FIELDS = ["codes", "volts", "units", "lines", "time", "utc"]


@pytest.mark.parametrize("name", NAMES)
@pytest.mark.filterwarnings("ignore::tarno2.RecordingWarning")
def test_octave_reads_the_same(recordings, octave, name):
    rec = tarno2.open(recordings / f"{name}.dat")
    lists = ["marks", "markframes", "triggers", "stream"]
    results = octave(
        [
            f"r = tarno2_read('{recordings / name}.dat');",
            *(f"{field} = r.{field};" for field in FIELDS),
            "marks = [r.marks.number]; markframes = [r.marks.frame];",
            "triggers = [r.records.trigger]; stream = [r.records.streamTrigger];",
        ],
        FIELDS + lists,
    )
    read = dict(zip(FIELDS + lists, results))
    for field in ("codes", "lines"):
        assert np.array_equal(read[field], rec.array(field)[:].ravel("F"))
    for field in ("volts", "units"):
        assert np.abs(read[field] - rec.array(field)[:].ravel("F")).max() < 1e-12
    assert np.allclose(read["time"], rec.time[:], rtol=0, atol=1e-12)
    if rec.has_utc:
        assert np.abs(read["utc"] - rec.utc[:].astype(np.int64) * 1e-9).max() < 2e-6
    assert list(read["marks"]) == [mark.number for mark in rec.marks]
    frames = [np.nan if mark.frame is None else mark.frame + 1 for mark in rec.marks]
    assert np.array_equal(read["markframes"], frames, equal_nan=True)
    assert np.array_equal(read["triggers"], np.where(rec.records.triggers < 0, np.nan, rec.records.triggers + 1.0))
    assert np.array_equal(read["stream"], rec.records.stream_triggers)


def test_octave_reads_parts_over_pieces(recordings, octave):
    rec = tarno2.open(recordings / "cut.dat")
    first = rec.pieces[1].begin - 10
    statements = [
        f"r = tarno2_read('{recordings}/cut_2.txt', 'from', {first + 1}, 'count', {rec.frames - first - 7}, ...",
        "'channels', {'Ход', 'bearing'}, 'want', {'units', 'time'});",
        "units = r.units; time = r.time; ok = strcmp(r.unitNames, {'мм', 'g'}) & ~isfield(r, 'codes');",
        f"tail = tarno2_read('{recordings}/cut.json', 'from', {rec.frames - 1}, 'count', 99, 'channels', 3);",
        "rest = tail.codes; said = 0;",
        "try, tarno2_read('nothing.dat'); catch e, said = any(strfind(e.message, 'no such')); end",
    ]
    units, time, ok, rest, said = octave(statements, ["units", "time", "ok", "rest", "said"])
    chosen = slice(first, rec.frames - 7)
    assert np.allclose(units, rec.units[chosen, ["Ход", "bearing"]].ravel("F"), rtol=0, atol=1e-12)
    assert np.allclose(time, rec.time[chosen], rtol=0, atol=1e-12) and ok.all() and said.all()
    assert np.array_equal(rest, rec.codes[-2:, 2])
