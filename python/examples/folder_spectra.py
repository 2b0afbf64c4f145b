#!/usr/bin/env python3
"""Spectra of all recordings in a folder, computed by a Dask cluster on this computer.

    python3 folder_spectra.py FOLDER [--workers N] [--length FRAMES] [-o spectra.npz]

For each channel of each recording the power spectral density by Welch's method, in the channel's unit squared a hertz:
segments of LENGTH frames with Hann's window, averaged. A chunk of the array is a part of one data file; a worker opens
that file by itself, and only sums of spectra come back. They are added in the order of the recording, so any number of
workers gives the same result to the last bit. With Client("tcp://host:8786") in place of the LocalCluster it runs on
the computers of a network, which all must see the folder under the same path. Of a recording with triggers take a
LENGTH that divides its records, else some segments reach from one record into the next.
"""

from __future__ import annotations

import argparse
import sys
from pathlib import Path

import dask
import numpy as np
from dask.distributed import Client, LocalCluster

import tarno2


def sum_of_spectra(block: np.ndarray, length: int) -> "tuple[int, np.ndarray]":
    """How many whole segments a chunk has, and the sum of their squared spectra; frequencies by channels."""
    window = np.hanning(length)[:, np.newaxis]
    total = np.zeros((length // 2 + 1, block.shape[1]))
    count = len(block) // length
    for i in range(count):
        segment = block[i * length : (i + 1) * length]
        total += np.abs(np.fft.rfft((segment - segment.mean(axis=0)) * window, axis=0)) ** 2
    return count, total


def chunk_sums(recording: tarno2.Recording, length: int) -> list:
    """A task a chunk; nothing is computed yet."""
    chunks = recording.to_dask("units").to_delayed().ravel()
    return [dask.delayed(sum_of_spectra)(chunk, length) for chunk in chunks]


def density(recording: tarno2.Recording, sums: list, length: int) -> np.ndarray:
    """The power spectral density from the sums of all chunks."""
    count = sum(part[0] for part in sums)
    if count == 0:
        raise SystemExit(f"{recording.path}: no piece of it has {length} frames")
    power = sum(part[1] for part in sums) / count
    power /= recording.rate * (np.hanning(length) ** 2).sum()
    # Both halves of the spectrum in one, but for zero and, where there is one, the middle.
    power[1 : -1 if length % 2 == 0 else None] *= 2
    return power


def main() -> int:
    parser = argparse.ArgumentParser(description="Spectra of all recordings in a folder.")
    parser.add_argument("folder", type=Path)
    parser.add_argument("--workers", type=int, default=4)
    parser.add_argument("--length", type=int, default=4096, help="frames of a segment (4096)")
    parser.add_argument("-o", "--output", type=Path, default=Path("spectra.npz"))
    arguments = parser.parse_args()
    recordings = tarno2.open_folder(arguments.folder)
    if not recordings:
        print(f"{arguments.folder}: there are no recordings", file=sys.stderr)
        return 1
    results = {}
    with LocalCluster(n_workers=arguments.workers, threads_per_worker=1, dashboard_address=None) as cluster:
        with Client(cluster):
            tasks = [chunk_sums(recording, arguments.length) for recording in recordings]
            for recording, sums in zip(recordings, dask.compute(*tasks)):
                power = density(recording, sums, arguments.length)
                frequencies = np.fft.rfftfreq(arguments.length, 1 / recording.rate)
                results[f"{recording.path.stem} frequencies"] = frequencies
                results[f"{recording.path.stem} density"] = power
                for channel in recording.channels:
                    peak = frequencies[power[:, channel.index].argmax()]
                    print(f"{recording.path.name}: {channel.name}: highest at {peak:g} Hz")
    np.savez(arguments.output, **results)
    return 0


if __name__ == "__main__":
    sys.exit(main())
