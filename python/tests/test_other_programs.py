"""What tarno2-export writes for other programs, read by those programs."""

import json
import os
import shutil
import subprocess
import zipfile
from datetime import datetime, timezone

import numpy as np
import pytest
from conftest import GUARD, PROGRAMS, need, run, text_of

DATA = ["board1", "board2", "board3", "board4", "cut_1", "triggered", "decimated", "packets"]


def need_program(name):
    """Likewise of a program."""
    if not shutil.which(name):
        (pytest.fail if os.environ.get("TARNO2_TEST_ALL") else pytest.skip)(f"no {name}")


def export(data, folder, form, *options):
    output = folder / f"out.{form}"
    run(PROGRAMS / "tarno2-export", data, "-o", output, "--format", form, "--overwrite", *options)
    return output


def passport(data):
    base = data.with_name(data.stem.split("_")[0])
    return json.loads(base.with_suffix(".json").read_text("utf-8"))


def rate_of(told):
    """Frames a second; in packet mode a frame is a packet."""
    rate = told["rate"]
    return rate["packetsGiven"] / rate["decimation"] if "packetsGiven" in rate else rate["recorded"]


@pytest.fixture(params=DATA)
def data(request, recordings):
    return recordings / f"{request.param}.dat"


def codes_of(data, folder):
    """Codes of the channels, with those without a sign around 0, and lines."""
    told = passport(data)
    table = text_of(data, folder, "--voltage-precision", "0").astype(np.int64)
    channels = len(told["channels"])
    codes, lines = table[:, :channels], table[:, channels:]
    if not told["sample"]["signed"]:
        codes = codes - (1 << (told["sample"]["codeBits"] - 1))
    return codes, lines


def test_wav_holds_the_codes(data, tmp_path):
    soundfile = need("soundfile")
    wavfile = need("scipy.io.wavfile")
    need_program("sox")
    codes, _ = codes_of(data, tmp_path)
    wav = export(data, tmp_path, "wav")
    facts = soundfile.info(wav)
    bits = int(facts.subtype.removeprefix("PCM_"))
    read, rate = soundfile.read(wav, dtype="int32", always_2d=True)
    assert rate == round(rate_of(passport(data)))
    assert np.array_equal(read.astype(np.int64) >> (32 - bits), codes)
    read = wavfile.read(wav)[1].reshape(codes.shape).astype(np.int64)
    assert np.array_equal(read >> (8 if bits == 24 else 0), codes)
    raw = subprocess.run(["sox", wav, "-t", "s32", "-"], capture_output=True, check=True, timeout=GUARD).stdout
    assert np.array_equal(np.frombuffer(raw, "<i4").reshape(codes.shape) >> (32 - bits), codes)
    lowest = -(1 << (passport(data)["sample"]["codeBits"] - 1))
    assert f": {lowest} = " in facts.extra_info


@pytest.mark.parametrize("bits", [24, 32])
def test_wav_of_more_bits(recordings, tmp_path, bits):
    soundfile = need("soundfile")
    codes, _ = codes_of(recordings / "board1.dat", tmp_path)
    wav = export(recordings / "board1.dat", tmp_path, "wav", "--bits", bits)
    assert soundfile.info(wav).subtype == f"PCM_{bits}"
    assert np.array_equal(soundfile.read(wav, dtype="int32")[0] >> (32 - bits), codes)


def test_rf64_beyond_four_gibibytes(recordings, tmp_path):
    """Its header, with the samples as a hole behind it."""
    soundfile = need("soundfile")
    frames = 5 * 2**30 // 4
    big = tmp_path / "big.dat"
    shutil.copy(recordings / "decimated.txt", tmp_path / "big.txt")
    with open(big, "wb") as file:
        file.truncate(frames * 4)
    command = [PROGRAMS / "tarno2-export", big, "-", "--format", "wav", "--quiet"]
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as exporting:
        begin = exporting.stdout.read(65536)
        exporting.kill()
    wav = tmp_path / "big.wav"
    wav.write_bytes(begin)
    os.truncate(wav, begin.index(b"data") + 8 + frames * 4)
    facts = soundfile.info(wav)
    assert (facts.format, facts.frames) == ("RF64", frames)


def test_npy_is_mapped(data, tmp_path):
    codes, lines = codes_of(data, tmp_path)
    shift = 0 if passport(data)["sample"]["signed"] else 1 << (passport(data)["sample"]["codeBits"] - 1)
    array = np.load(export(data, tmp_path, "npy"), mmap_mode="r")
    table = np.stack([array[name].astype(np.int64) for name in array.dtype.names], 1)
    assert np.array_equal(table[:, : codes.shape[1]] - shift, codes)
    assert np.array_equal(table[:, codes.shape[1] :], lines)
    units = np.load(export(data, tmp_path, "npy", "--data", "units"), mmap_mode="r")
    text = text_of(data, tmp_path, "--data", "units", "--voltage-precision", "9")
    assert np.allclose(np.stack([units[name] for name in units.dtype.names], 1), text, rtol=0, atol=5.1e-10)


def test_npy_fields_have_the_names(recordings, tmp_path):
    names = np.load(export(recordings / "cut.dat", tmp_path, "npy"), mmap_mode="r").dtype.names
    assert names == ("bearing", "Ход", "Channel 5", "pump", "Line 1")


def session(archive, channels, lines, frames):
    """The samples of a session: floats by channels, bytes of lines."""
    with zipfile.ZipFile(archive) as files:
        names = files.namelist()

        def joined(prefix):
            chunks = sorted((n for n in names if n.startswith(prefix + "-")), key=lambda n: int(n.rsplit("-", 1)[1]))
            return b"".join(map(files.read, chunks))

        values = [np.frombuffer(joined(f"analog-1-{lines + i + 1}"), "<f4") for i in range(channels)]
        port = np.frombuffer(joined("logic-1"), "u1").reshape(frames, -1) if lines else np.zeros((frames, 0), "u1")
        return np.stack(values, 1), port


def check_session(data, folder):
    """Has sigrok's tools read what was exported and write it again; returns how many chunks there were."""
    volts = text_of(data, folder, "--data", "volts", "--voltage-precision", "9")
    channels = len(passport(data)["channels"])
    lines = volts.shape[1] - channels
    exported = export(data, folder, "sr")
    again = folder / "again.sr"
    done = subprocess.run(
        ["sigrok-cli", "-i", exported, "-O", "srzip", "-o", again], capture_output=True, text=True, timeout=GUARD
    )
    assert done.returncode == 0 and again.exists(), done.stderr
    values, port = session(again, channels, lines, len(volts))
    assert np.allclose(values, volts[:, :channels], rtol=1.2e-7, atol=1e-9)
    assert all(np.array_equal((port[:, i // 8] >> (i % 8)) & 1, volts[:, channels + i]) for i in range(lines))
    shown = subprocess.run(["sigrok-cli", "-i", exported, "--show"], capture_output=True, text=True, check=True).stdout
    assert f"Samplerate: {round(rate_of(passport(data)))}\n" in shown
    return sum(name.startswith("analog-1-") for name in zipfile.ZipFile(exported).namelist()) // channels


def test_session_is_read_by_sigrok(data, tmp_path):
    need_program("sigrok-cli")
    check_session(data, tmp_path)


def test_session_of_several_chunks(recordings, tmp_path):
    need_program("sigrok-cli")
    for suffix in (".txt", ".json"):
        shutil.copy(recordings / f"board1{suffix}", tmp_path / f"long{suffix}")
    piece = (recordings / "board1.dat").read_bytes()
    (tmp_path / "long.dat").write_bytes(piece * 30)
    assert check_session(tmp_path / "long.dat", tmp_path) > 1


@pytest.mark.parametrize("form", ["edf", "bdf"])
def test_edf_and_bdf_are_read_by_mne(data, tmp_path, form):
    mne = need("mne")
    told = passport(data)
    if told["sample"]["codeBits"] > 16 and form == "edf":
        command = [PROGRAMS / "tarno2-export", data, "-o", tmp_path / "wide.edf", "--format", "edf"]
        refused = subprocess.run(command, capture_output=True, text=True, timeout=GUARD)
        assert refused.returncode == 2 and refused.stderr.endswith("the codes do not fit into 16 bits\n")
        assert not (tmp_path / "wide.edf").exists()
        return
    read = mne.io.read_raw_edf if form == "edf" else mne.io.read_raw_bdf
    raw = read(export(data, tmp_path, form), preload=True, verbose="error")
    text = text_of(data, tmp_path, "--data", "units", "--voltage-precision", "9")
    spans = np.array([abs(c["upper"] - c["lower"]) * abs(c["factor"]) for c in told["channels"]])
    spans = np.append(spans, np.ones(text.shape[1] - len(spans)))
    assert np.all(np.abs(raw.get_data()[:, : len(text)].T - text) <= spans * 1e-7 + 5.1e-10)
    assert raw.info["sfreq"] == pytest.approx(rate_of(told), rel=1e-6)
    channels = [c.get("name") or f"Channel {c['number']}" for c in told["channels"]]
    plain = [n if n.isascii() else f"Channel {c['number']}" for n, c in zip(channels, told["channels"])]
    assert raw.ch_names[: len(plain)] == plain
    begin = datetime.fromisoformat(told["start"]["local"]).replace(tzinfo=timezone.utc)
    assert abs((raw.info["meas_date"] - begin).total_seconds()) < 30
    check_annotations(raw, data, tmp_path, told)


def check_annotations(raw, data, folder, told):
    """Marks where the text has them, triggers after the frames that come before them in a record."""
    output = folder / "marks.csv"
    run(PROGRAMS / "tarno2-export", data, "-o", output, "--quiet", "--marks", "--first-column", "samples")
    rows = [line.split("\t") for line in output.read_text("utf-8").splitlines()]
    expected = {int(row[0]): row[-1] for row in rows if row[-1]}
    size = told["synchronisation"].get("prehistory", 0) + told["synchronisation"].get("history", 0)
    if told["synchronisation"]["mode"] == "records":
        for i in range(-(-len(rows) // size)):
            frame = i * size + told["synchronisation"]["prehistory"]
            rest = expected.get(frame)
            expected[frame] = f"Trigger {i + 1}" + (f"; {rest}" if rest else "")
    found = [(o, d) for o, d in zip(raw.annotations.onset, raw.annotations.description) if d != "Recording ends"]
    assert [d for _, d in found] == [expected[frame] for frame in sorted(expected)]
    assert np.allclose([o for o, _ in found], np.array(sorted(expected)) / rate_of(told), atol=1e-6)


def test_choice_of_frames_and_channels(recordings, tmp_path):
    data = recordings / "cut.dat"
    whole = text_of(data, tmp_path, "--first-column", "samples")
    rate = passport(data)["rate"]["recorded"]
    choice = ["--from", "0.1s", "--to", "20000", "--every", "7", "--channels", "5,bearing"]
    wanted = whole[round(0.1 * rate) : 20000 : 7]
    text = text_of(data, tmp_path, "--first-column", "samples", *choice)
    assert np.array_equal(text, wanted[:, [0, 3, 1, 4, 5]])
    array = np.load(export(data, tmp_path, "npy", *choice))
    assert array.dtype.names == ("Channel 5", "bearing", "pump", "Line 1")
    assert np.array_equal(np.stack([array[n] for n in array.dtype.names], 1), text[:, 1:])
    piped = subprocess.run(
        [PROGRAMS / "tarno2-export", data, "-", "--format", "npy", *choice], capture_output=True, timeout=GUARD
    ).stdout
    assert piped == (tmp_path / "out.npy").read_bytes()
