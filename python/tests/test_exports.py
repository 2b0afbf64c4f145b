"""What is handed to other libraries is the recording."""

import builtins
import json
import shutil
import sys

import numpy as np
import pytest
from conftest import ROOT, need, run

import tarno2


@pytest.fixture(scope="module")
def cut(recordings):
    return tarno2.open(recordings / "cut.dat")


@pytest.fixture(scope="module")
def triggered(recordings):
    return tarno2.open(recordings / "triggered.dat")


def test_hdf5_holds_all_of_it(triggered, tmp_path):
    h5py = need("h5py")
    done = []
    path = triggered.to_hdf5(tmp_path / "x.h5", progress=done.append)
    with h5py.File(path) as file:
        codes = file["codes"]
        assert np.array_equal(codes, triggered.codes[:]) and np.array_equal(file["lines"], triggered.lines[:])
        assert list(codes.attrs["names"]) == ["bearing", "Ход", "Channel 5"]
        spread = (codes.attrs["upper"] - codes.attrs["lower"]) / (codes.attrs["highest"] - codes.attrs["lowest"])
        volts = (codes[:] - codes.attrs["lowest"]) * spread + codes.attrs["lower"]
        assert np.allclose(volts * codes.attrs["factor"] + codes.attrs["offset"], triggered.units[:], atol=1e-12)
        assert np.array_equal(file["records"]["trigger"], triggered.records.triggers)
        assert list(file["marks"]["number"]) == [mark.number for mark in triggered.marks]
        assert json.loads(file["passport"][()]) == triggered.passport.json
    assert done[-1] == 1
    with pytest.raises(FileExistsError, match="overwrite=True"):
        triggered.to_hdf5(path)
    with pytest.raises(ValueError, match='"kelvin" is none of'):
        triggered.to_hdf5(path, "kelvin", overwrite=True)
    assert [file.name for file in tmp_path.iterdir()] == ["x.h5"]  # the earlier one, and no half of another


def test_dask_chunks_never_cross_a_piece(cut):
    need("dask")
    array = cut.to_dask("codes", block=1 << 20)
    borders = np.cumsum((0,) + array.chunks[0])
    assert len(borders) > len(cut.pieces) + 1 and {piece.begin for piece in cut.pieces} <= set(borders)
    assert np.array_equal(array.compute(scheduler="threads"), cut.codes[:])
    assert np.array_equal(array[5:300000:7, 1].compute(), cut.codes[5:300000:7, 1])


def test_xarray_has_names_and_times(triggered):
    need("xarray")
    data = triggered.to_xarray()
    assert np.array_equal(data["units"].sel(channel="Ход").values, triggered.units[:, "Ход"])
    assert np.array_equal(data["lines"].sel(line="pump").values, triggered.lines[:, 0])
    assert np.array_equal(data["time"].values, triggered.time[:])
    assert data["utc"].values[-1] == triggered.utc[-1] and list(data["unit"].values) == ["g", "мм", "V"]


def test_mne_has_marks_triggers_and_gaps(triggered):
    mne = need("mne")
    raw = triggered.to_mne(slice(2000, 12000), ["bearing", 2])
    assert raw.ch_names == ["bearing", "Channel 5", "STI"] and raw.info["sfreq"] == triggered.rate
    assert np.allclose(raw.get_data()[:2].T, triggered.volts[2000:12000, [0, 2]])
    assert np.array_equal(raw.get_data()[2], triggered.lines[2000:12000, 0] + 2.0 * triggered.lines[2000:12000, 1])
    found = {
        text: round(onset * triggered.rate) for onset, text in zip(raw.annotations.onset, raw.annotations.description)
    }
    assert found["EDGE boundary"] == 8000 and found["trigger"] == 9000
    moment = np.datetime64(raw.info["meas_date"].replace(tzinfo=None), "us")
    assert abs(moment - triggered.utc[2000]) <= np.timedelta64(1, "us")
    assert len(mne.find_events(raw, "STI", verbose="error", shortest_event=1)) > 0


def test_a_missing_library_is_named(cut, tmp_path, monkeypatch):
    known = builtins.__import__
    names = {"h5py": cut.to_hdf5, "dask": cut.to_dask, "xarray": cut.to_xarray, "mne": cut.to_mne}
    for name in names:
        for module in [module for module in sys.modules if module.split(".")[0] == name]:
            monkeypatch.delitem(sys.modules, module)

    def missing(name, *rest):
        if name.split(".")[0] in names:
            raise ImportError(f"No module named {name}")
        return known(name, *rest)

    monkeypatch.setattr(builtins, "__import__", missing)
    monkeypatch.setattr("importlib.import_module", missing)
    for name, export in names.items():
        with pytest.raises(ImportError, match=f'needs the package "{name}"'):
            export()


def module(*arguments):
    return run(sys.executable, "-m", "tarno2", *arguments, PYTHONPATH=str(ROOT / "python"))


def test_info_and_plot(recordings, tmp_path):
    need("matplotlib")
    text = module("info", recordings / "triggered.json")
    for words in ("triggered.dat", "of 5000 frames", "1  Ход [мм], -2.5 to 2.5 V, volts x 0.5 + 1.25", "pump, Line 1"):
        assert words in text
    picture = tmp_path / "cut.png"
    for name, more in [("cut", ("--channels", "bearing,2", "--from", "0.1", "--to", "0.2")), ("triggered", ())]:
        module("plot", recordings / f"{name}.dat", "-o", picture, *more)
        assert picture.read_bytes().startswith(b"\x89PNG")
    assert module("to-hdf5", recordings / "cut.dat", "-o", tmp_path / "cut.h5").strip().endswith("cut.h5")
    with pytest.raises(AssertionError, match="tarno2: .*none.dat: there is no such file"):
        module("info", tmp_path / "none.dat")


def test_one_sample_among_many_is_seen(cut):
    from tarno2.plot import envelope

    borders = np.unique(np.random.default_rng(3).integers(10, cut.frames, 500))
    lows, highs = envelope(cut.units, borders, np.array([2, 0]))
    values = cut.units[:, [2, 0]]
    runs = [values[first:last] for first, last in zip(borders, borders[1:])]
    assert np.array_equal(lows, [run.min(axis=0) for run in runs])
    assert np.array_equal(highs, [run.max(axis=0) for run in runs])


def test_any_number_of_workers_computes_the_same_spectra(recordings, tmp_path):
    need("distributed")
    folder = tmp_path / "folder"
    folder.mkdir()
    for file in [*recordings.glob("cut*"), *recordings.glob("board1*")]:
        shutil.copy(file, folder)
    spectra = {}
    for workers in (1, 4):
        output = tmp_path / f"{workers}.npz"
        example = ROOT / "python/examples/folder_spectra.py"
        run(
            *(sys.executable, example, folder, "--workers", workers, "--length", 50000, "-o", output),
            PYTHONPATH=str(ROOT / "python"),
        )
        spectra[workers] = np.load(output)
    assert sorted(spectra[1]) == ["board1 density", "board1 frequencies", "cut density", "cut frequencies"]
    for name in spectra[1]:
        assert np.array_equal(spectra[1][name], spectra[4][name])
    # The sine of the first channel: 10 Hz, of 8 g amplitude; half its square is the power.
    power, step = spectra[1]["cut density"][:, 0], spectra[1]["cut frequencies"][1]
    assert step == 2 and power.argmax() == 5 and power.sum() * step == pytest.approx(32, rel=1e-3)
