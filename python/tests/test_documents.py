"""What docs/reading.md and docs/formats.md say is so."""

import re
import shutil
import subprocess
import sys
import zlib

import numpy as np
import pytest
from conftest import GUARD, PROGRAMS, ROOT, run, settings

import tarno2


def blocks(page, language):
    """The programs of a page in that language."""
    text = (ROOT / "docs" / page).read_text("utf-8")
    return re.findall(rf"^```{language}\n(.*?)^```", text, re.DOTALL | re.MULTILINE)


@pytest.fixture
def folder(recordings, tmp_path):
    """A recording that is called as on the page."""
    for file in recordings.glob("triggered*"):
        shutil.copy(file, tmp_path / file.name.replace("triggered", "run"))
    return tmp_path


def printed(command, folder, **environment):
    done = subprocess.run(
        list(map(str, command)),
        cwd=folder,
        env={"PATH": "/usr/bin:/bin", "HOME": str(folder), "LC_ALL": "C.UTF-8", **environment},
        capture_output=True,
        text=True,
        timeout=GUARD,
        stdin=subprocess.DEVNULL,
    )
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def program(folder, language, ending, more=""):
    (source,) = blocks("reading.md", language)
    (folder / f"program{ending}").write_text(source + more, "utf-8")
    return folder / f"program{ending}"


def test_python_page(folder):
    lines = printed([sys.executable, program(folder, "python", ".py")], folder, PYTHONPATH=str(ROOT / "python"))
    rec = tarno2.open(folder / "run.dat")
    assert "('Ход', 'мм')" in lines and "highest at 10 Hz" not in lines  # records are no even stream
    assert len(lines.splitlines()) == 2 + len(rec.marks) + len(rec.records)


def test_octave_page(folder):
    lines = printed(["octave-cli", "--quiet", "--path", ROOT / "matlab", program(folder, "matlab", ".m")], folder)
    assert "bearing [g]\nХод [мм]\n" in lines and re.search(r"^highest at \d+(\.\d+)? Hz$", lines, re.MULTILINE)


def test_c_page(folder):
    source = program(folder, "c", ".c")
    printed(["gcc", "-Wall", "-Wextra", "-Werror", "-O1", source, "-o", folder / "program"], folder)
    volts = np.array(printed([folder / "program"], folder).split(), float)
    rec = tarno2.open(folder / "run.dat")
    assert np.abs(volts - rec.volts[rec.pieces[0].slice, 0]).max() <= 5.1e-7


def test_r_page(folder):
    more = 'writeBin(c(volts, time), "out.bin")\n'
    printed(["Rscript", "--vanilla", program(folder, "r", ".R", more)], folder)
    rec = tarno2.open(folder / "run.dat")
    volts, time = np.split(np.fromfile(folder / "out.bin"), 2)
    assert np.allclose(volts, rec.volts[rec.pieces[0].slice, 0], rtol=0, atol=1e-12)
    assert np.allclose(time, np.arange(len(time)) / rec.rate, rtol=1e-6)


def test_the_examples_of_the_formats(tmp_path):
    (description,) = [block for block in blocks("formats.md", "ini") if "DataFormat" in block]
    (tmp_path / "run.txt").write_bytes(description.replace("\n", "\r\n").encode("cp1251"))
    (tmp_path / "run.dat").write_bytes(bytes.fromhex("0140FCFF"))
    with pytest.warns(tarno2.RecordingWarning, match="holds 1 frames"):
        rec = tarno2.open(tmp_path / "run.dat")
    assert rec.codes[0].tolist() == [4096, -1] and rec.lines[0].tolist() == [1, 0]
    assert rec.volts[0, 0] == pytest.approx(2.5, abs=1e-3)
    frames = int(re.search(r"DataCountPerChannel = (\d+)", description)[1])
    (tmp_path / "run.dat").write_bytes(bytes(4 * frames))
    with pytest.warns(tarno2.RecordingWarning, match="gaps"):
        rec = tarno2.open(tmp_path / "run.dat")
    assert [entry.trigger for entry in rec.records] == [1000, 6000] and not any("holds" in note for note in rec.notes)


def test_real_descriptions_have_the_form_of_the_example(recordings):
    (example,) = [block for block in blocks("formats.md", "ini") if "DataFormat" in block]
    data = (recordings / "triggered.txt").read_bytes()
    assert data.count(b"\n") == data.count(b"\r\n") and data.endswith(b" \r\n\r\n")

    def form(text):
        """Without numbers, and lists without their length."""
        text = re.sub(r"-?\d+(\.\d+)?", "0", text)
        return re.sub(r"(0 ,(\\\s+| ))+0 \n", "0 \n", text)

    assert form(data.decode("cp1251").replace("\r\n", "\n")) == form(example)


def test_checksums_are_those_of_sha256sum(recordings):
    for name in ("cut", "triggered"):
        lines = printed(["sha256sum", "-c", f"{name}.sha256"], recordings)
        assert lines.count(": OK") == len(tarno2.open(recordings / f"{name}.dat").pieces) + 1  # and the list of marks


def test_the_journal_of_a_running_recording(tmp_path):
    file = tmp_path / "run.cfg"
    file.write_text(settings(tmp_path / "run.dat", 3, [0, 1], 20000, {"WriteAge": 10}), "utf-8")
    command = [str(PROGRAMS / "tarno2-console"), "/c", str(file)]
    recorder = subprocess.Popen(command, env={"TARNO2_HOME": str(tmp_path)}, stdin=subprocess.DEVNULL)
    data = tmp_path / "run.dat"
    while recorder.poll() is None and not (data.exists() and data.stat().st_size):
        pass
    journal = (tmp_path / "run.tarno2-journal").read_bytes()
    recorder.terminate()
    assert recorder.wait(GUARD) == 0 and not (tmp_path / "run.tarno2-journal").exists()
    assert len(journal) == 65536
    for half in (journal[:32768], journal[32768:]):
        lines = half.rstrip(b"\n").split(b"\n")
        assert lines[0] == b"Tarno2 journal 1" and b"layout 4 0 16777215 24 24 -16777216 8 1" in lines
        assert lines[-1] == b"checksum %08x" % zlib.crc32(b"".join(line + b"\n" for line in lines[:-1]))


def test_passports_have_the_form_of_the_schema(recordings):
    import json

    from conftest import need

    schema = json.loads((ROOT / "docs/passport.schema.json").read_text("utf-8"))
    for path in sorted(recordings.glob("*.json")):
        need("jsonschema").validate(json.loads(path.read_text("utf-8")), schema)


def test_the_program_of_the_passport(recordings):
    (source,) = blocks("passport.md", "python")
    page = {}
    exec(source, page)
    rec = tarno2.open(recordings / "clocked.dat")
    moment = rec.utc[700]
    frame = page["frame_at"](recordings / "clocked.json", moment.astype(np.int64) * 1e-9)
    assert frame == pytest.approx(rec.stream[700], abs=0.1) and rec.clock.frame_at(moment) == pytest.approx(
        frame, abs=0.1
    )


def test_marks_and_losses_are_told_as_the_page_shows(tmp_path, recordings):
    (example,) = re.findall(
        r"^    mark,frame.*?\n\n", (ROOT / "docs/formats.md").read_text("utf-8"), re.DOTALL | re.MULTILINE
    )
    for file in recordings.glob("board1*"):
        shutil.copy(file, tmp_path)
    (tmp_path / "board1.marks.csv").write_text("\r\n".join(re.findall("^    (.*)$", example, re.MULTILINE)) + "\r\n")
    (tmp_path / "board1.log").write_bytes(b"sample = 1200000, count = 4096, cause = overwritten\r\n")
    (tmp_path / "board1.json").unlink()
    rec = tarno2.open(tmp_path / "board1.dat")
    assert [(mark.stream_frame, mark.source, mark.label) for mark in rec.marks] == [
        (48210, "operator", "valve, open"),
        (96400, "line", "2"),
    ]
    assert rec.losses == (tarno2.Loss("overwritten", 1200000, 4096),)
