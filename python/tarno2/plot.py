"""Pictures of recordings."""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Tuple

import numpy as np
from numpy.typing import NDArray

from .libraries import library

if TYPE_CHECKING:
    from .recording import Recording

POINTS = 2000  # of a curve: more than a picture has columns
BLOCK_SAMPLES = 1 << 22


def envelope(
    view: Any, first: int, last: int, columns: Any, points: int
) -> Tuple[NDArray[Any], NDArray[Any], NDArray[Any]]:
    """The first frame, the lowest and the highest value of each of so many runs of frames, of each column. Reads every
    frame, block by block."""
    borders = np.unique(np.linspace(first, last, min(points, max(last - first, 1)) + 1).astype(np.int64))
    lows, highs = [], []
    runs = len(borders) - 1
    width = max(len(columns), 1)
    together = max(BLOCK_SAMPLES * runs // max((last - first) * width, 1), 1)
    for i in range(0, runs, together):
        ends = borders[i : i + together + 1]
        values = view[int(ends[0]) : int(ends[-1]), columns]
        starts = ends[:-1] - ends[0]
        lows.append(np.minimum.reduceat(values, starts, axis=0))
        highs.append(np.maximum.reduceat(values, starts, axis=0))
    return borders[:-1], np.concatenate(lows), np.concatenate(highs)


def figure(recording: "Recording", first: int, last: int, channels: Any) -> Any:
    """A matplotlib Figure: a curve a channel in its unit, over the time, with the marks. One sample among millions is
    seen, for the curves are the lowest and the highest of all frames."""
    figures = library("matplotlib.figure", "plot")
    if first >= last:
        raise ValueError("there is no frame to be drawn")
    columns = recording.units.columns.select(channels).numbers()
    frames, lows, highs = envelope(recording.units, first, last, columns, POINTS)
    seconds = recording.time[frames]
    made = figures.Figure(figsize=(12, 1 + 2.2 * len(columns)), layout="constrained")
    for row, column in enumerate(columns):
        channel = recording.channels[column]
        axes = made.add_subplot(len(columns), 1, row + 1)
        # Both in one curve, one after the other, so that a line stands where there is one value and a band elsewhere.
        axes.plot(np.repeat(seconds, 2), np.column_stack([lows[:, row], highs[:, row]]).ravel(), linewidth=0.8)
        axes.set_ylabel(f"{channel.name} [{channel.unit}]")
        axes.grid(True, alpha=0.3)
        for mark in recording.marks:
            if mark.frame is not None and first <= mark.frame < last:
                axes.axvline(recording.time[mark.frame], color="tab:red", linewidth=0.6)
    axes.set_xlabel("time [s]")
    return made
