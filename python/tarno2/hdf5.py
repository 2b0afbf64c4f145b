"""HDF5 files of recordings.

    /codes, /volts or /units   frames by channels, as chosen; compressed
    /lines                     frames by lines, 0 or 1; where there is a digital port
    /marks                     a table: number, frame (-1: in no file), stream_frame, utc (microseconds), source, text
    /records                   a table: begin, frames, trigger, stream_trigger (-1: not known); where there are triggers
    /passport                  the text of the passport, where there is one

The samples have the attributes `names`, `units`, `factor`, `offset` (of volts, to the unit), `upper`, `lower` (volts),
`lowest`, `highest` (the codes of these), `rate` (Hz) and `start` (UTC).
"""

from __future__ import annotations

import json
import os
from pathlib import Path
from typing import TYPE_CHECKING, Any, Callable, Optional

import numpy as np

from .libraries import library

if TYPE_CHECKING:
    from .recording import Recording

BLOCK_BYTES = 16 << 20


def write(
    recording: "Recording",
    path: "str | Path | None",
    values: str,
    overwrite: bool,
    progress: Optional[Callable[[float], None]],
) -> Path:
    """Writes a file, ``<base>.h5`` beside the recording when none is named. A file that is there is replaced only when
    `overwrite` is true, and only by a whole one; `progress` is told which share is done, 0 to 1."""
    h5py = library("h5py", "to_hdf5()")
    target = Path(path) if path is not None else recording.path.with_suffix(".h5")
    if target.exists() and not overwrite:
        raise FileExistsError(f"{target}: there is such a file; overwrite=True replaces it")
    partial = target.with_name(target.name + ".part")
    try:
        with h5py.File(partial, "w") as file:
            _write_samples(file, recording, values, progress)
            _write_tables(file, recording, h5py.string_dtype())
        os.replace(partial, target)
    finally:
        partial.unlink(missing_ok=True)
    return target


def _write_samples(file: Any, recording: "Recording", values: str, progress: Optional[Callable[[float], None]]) -> None:
    views = [(values, recording.array(values))]
    if recording.line_names:
        views.append(("lines", recording.lines))
    sets = {
        name: file.create_dataset(
            name, view.shape, view.dtype, chunks=_chunk(view), compression="gzip", compression_opts=1, shuffle=True
        )
        for name, view in views
    }
    row_bytes = max(sum(view.shape[1] * view.dtype.itemsize for _, view in views), 1)
    step = max(BLOCK_BYTES // row_bytes, 1)
    for first in range(0, recording.frames, step):
        for name, view in views:
            sets[name][first : first + step] = view[first : first + step]
        if progress:
            progress(min(first + step, recording.frames) / recording.frames)
    _describe(sets[values], recording)


def _chunk(view: Any) -> Any:
    """Chunks of at most about 256 KiB; none for what is empty."""
    if 0 in view.shape:
        return None
    rows = (256 << 10) // (view.shape[1] * view.dtype.itemsize)
    return (max(min(rows, view.shape[0]), 1), view.shape[1])


def _describe(samples: Any, recording: "Recording") -> None:
    channels = recording.channels
    attributes = samples.attrs
    attributes["names"] = [channel.name for channel in channels]
    attributes["units"] = [channel.unit for channel in channels]
    for name in ("factor", "offset", "upper", "lower"):
        attributes[name] = np.array([getattr(channel, name) for channel in channels])
    attributes["lowest"], attributes["highest"] = recording.code_limits
    attributes["rate"] = recording.rate
    if recording.line_names:
        samples.file["lines"].attrs["names"] = list(recording.line_names)
    if recording.start is not None:
        attributes["start"] = f"{recording.start}Z"


def _write_tables(file: Any, recording: "Recording", text: Any) -> None:
    marks = np.empty(
        len(recording.marks),
        [("number", "i8"), ("frame", "i8"), ("stream_frame", "i8"), ("utc", "i8"), ("source", text), ("text", text)],
    )
    for i, mark in enumerate(recording.marks):
        frame = -1 if mark.frame is None else mark.frame
        utc = mark.utc.astype("datetime64[us]").astype(np.int64)
        marks[i] = (mark.number, frame, mark.stream_frame, utc, mark.source, mark.text)
    file["marks"] = marks
    if len(recording.records):
        names = ("begin", "frames", "trigger", "stream_trigger")
        records = np.empty(len(recording.records), [(name, "i8") for name in names])
        found = recording.records
        columns = (found.begins, found.frames, found.triggers, found.stream_triggers)
        for name, column in zip(names, columns):
            records[name] = column
        file["records"] = records
    if recording.passport:
        file["passport"] = json.dumps(recording.passport.json, ensure_ascii=False)
