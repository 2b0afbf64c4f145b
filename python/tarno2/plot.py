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


def envelope(view: Any, borders: NDArray[Any], columns: NDArray[Any]) -> Tuple[NDArray[Any], NDArray[Any]]:
    """The lowest and the highest value of each run of frames, of each column; `borders`: where the runs begin, and where
    the last one ends. Reads every frame, block by block."""
    lows, highs = [], []
    runs = len(borders) - 1
    samples = int(borders[-1] - borders[0]) * max(len(columns), 1)
    together = max(BLOCK_SAMPLES * runs // samples, 1)
    for i in range(0, runs, together):
        ends = borders[i : i + together + 1]
        values = view[int(ends[0]) : int(ends[-1]), columns]
        starts = ends[:-1] - ends[0]
        lows.append(np.minimum.reduceat(values, starts, axis=0))
        highs.append(np.maximum.reduceat(values, starts, axis=0))
    return np.concatenate(lows), np.concatenate(highs)


def _borders(first: int, last: int, gaps: NDArray[Any]) -> NDArray[Any]:
    """About as many runs of frames as there are points, none of them over a gap."""
    even = np.linspace(first, last, min(POINTS, last - first) + 1).astype(np.int64)
    borders: NDArray[Any] = np.unique(np.concatenate([even, gaps]))
    return borders


def _curve(seconds: NDArray[Any], lows: NDArray[Any], highs: NDArray[Any], gaps: NDArray[Any]) -> Any:
    """Lows and highs one after the other, so that a line stands where there is one value and a band elsewhere; parted in
    front of each of the runs `gaps`."""
    x, y = np.repeat(seconds, 2), np.column_stack([lows, highs]).ravel()
    return np.insert(x, 2 * gaps, np.nan), np.insert(y, 2 * gaps, np.nan)


def figure(recording: "Recording", first: int, last: int, channels: Any) -> Any:
    """A matplotlib Figure: a curve a channel in its unit, over the time, with the marks. One sample among millions is
    seen, for the curves are the lowest and the highest of all frames."""
    figures = library("matplotlib.figure", "plot")
    if first >= last:
        raise ValueError("there is no frame to be drawn")
    columns = recording.units.columns.select(channels).numbers()
    gaps = recording.breaks()
    gaps = gaps[(gaps > first) & (gaps < last)]
    # Of more gaps than points none is seen.
    gaps = gaps if len(gaps) <= POINTS else gaps[:0]
    borders = _borders(first, last, gaps)
    lows, highs = envelope(recording.units, borders, columns)
    seconds = recording.time[borders[:-1]]
    made = figures.Figure(figsize=(12, 1 + 2.2 * len(columns)), layout="constrained")
    for row, column in enumerate(columns):
        channel = recording.channels[column]
        axes = made.add_subplot(len(columns), 1, row + 1)
        curve = _curve(seconds, lows[:, row], highs[:, row], np.searchsorted(borders, gaps))
        axes.plot(*curve, linewidth=0.8)
        axes.set_ylabel(f"{channel.name} [{channel.unit}]")
        axes.grid(True, alpha=0.3)
        for mark in recording.marks:
            if mark.frame is not None and first <= mark.frame < last:
                axes.axvline(recording.time[mark.frame], color="tab:red", linewidth=0.6)
    axes.set_xlabel("time [s]")
    return made
