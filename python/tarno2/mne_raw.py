"""Recordings for MNE-Python.

The samples are volts, which is what MNE counts in; the digital lines are one stimulus channel `STI` whose bit *i* is
line *i*. Marks are annotations, triggers too (`trigger`), and where frames do not follow each other there is the
annotation `EDGE boundary`, over which MNE's filters do not reach.
"""

from __future__ import annotations

from datetime import datetime, timedelta, timezone
from typing import TYPE_CHECKING, Any, List, Tuple

import numpy as np

from .libraries import library

if TYPE_CHECKING:
    from .recording import Recording


def raw(recording: "Recording", frames: slice, channels: Any, kind: str) -> Any:
    """`frames`: a slice without a step; `channels`: as between brackets, all when None; `kind`: MNE's type of the
    channels, for example ``eeg`` or ``misc``."""
    mne = library("mne", "to_mne()")
    first, last, step = frames.indices(recording.frames)
    if step != 1:
        raise ValueError("frames for MNE follow each other: a slice without a step")
    columns = recording.volts.columns.select(channels).numbers()
    data = recording.volts[first:last, columns].T
    names = [recording.channels[column].name for column in columns]
    kinds = [kind] * len(names)
    if recording.line_names:
        weights = np.left_shift(np.int64(1), np.arange(len(recording.line_names)))
        port = recording.lines[first:last] @ weights.astype(np.float64)
        data = np.vstack([data, port])
        names.append("STI")
        kinds.append("stim")
    made = mne.io.RawArray(data, mne.create_info(_unique(names), recording.rate, kinds), verbose="error")
    if recording.start is not None:
        made.set_meas_date(_moment(recording, first))
    onsets = _annotations(recording, first, last)
    made.set_annotations(
        mne.Annotations(
            [(frame - first) / recording.rate for frame, _ in onsets],
            [0.0] * len(onsets),
            [text for _, text in onsets],
            orig_time=made.info["meas_date"],
        )
    )
    return made


def _moment(recording: "Recording", frame: int) -> datetime:
    """When the first frame of the Raw came."""
    moment = recording.utc[frame] if recording.has_utc and frame < recording.frames else recording.start
    microseconds = int(np.datetime64(moment, "us").astype(np.int64))
    return datetime.fromtimestamp(0, timezone.utc) + timedelta(microseconds=microseconds)


def _annotations(recording: "Recording", first: int, last: int) -> List[Tuple[int, str]]:
    """Frames and what is said of them, in their order."""
    found = [(mark.frame, mark.label) for mark in recording.marks if mark.frame is not None]
    found += [(int(frame), "trigger") for frame in recording.records.triggers if frame >= 0]
    found += [(int(frame), "EDGE boundary") for frame in recording.breaks()]
    return sorted((frame, text) for frame, text in found if first <= frame < last)


def _unique(names: List[str]) -> List[str]:
    """MNE wants every name once."""
    taken = set()
    unique = []
    for name in names:
        number, tried = 1, name
        while tried in taken:
            number += 1
            tried = f"{name} ({number})"
        taken.add(tried)
        unique.append(tried)
    return unique
