"""Dask arrays of recordings.

Chunks are runs of frames of one piece, so that a worker reads one file from front to back; a piece is cut further into
chunks whose volts have about `BLOCK_BYTES`. All arrays of a recording have the same ones. What goes to a worker is the
name of the recording, not its samples: all workers must see the folder under the same path.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, List, Tuple

import numpy as np

from .libraries import library

if TYPE_CHECKING:
    from .recording import Recording

BLOCK_BYTES = 32 << 20


class _Source:
    """One view of a recording, which other processes open by themselves."""

    def __init__(self, recording: "Recording", name: str) -> None:
        self._recording, self._name = recording, name
        view = getattr(recording, name)
        self.shape, self.ndim, self.dtype = view.shape, view.ndim, view.dtype

    def __getitem__(self, key: Any) -> Any:
        return getattr(self._recording, self._name)[key]


def chunks(recording: "Recording", block: int) -> Tuple[int, ...]:
    """Counts of frames: the parts, as even as they can be, of each piece."""
    counts: List[int] = []
    for piece in recording.pieces:
        volts = piece.frames * len(recording.channels) * 8
        parts = min(max(-(-volts // max(block, 1)), 1), piece.frames)
        borders = [piece.frames * i // parts for i in range(parts + 1)]
        counts += [last - first for first, last in zip(borders, borders[1:])]
    return tuple(counts) or (0,)


def array(recording: "Recording", name: str, block: int = BLOCK_BYTES) -> Any:
    """A Dask array of one of the recording's views, by its name."""
    dask_array = library("dask.array", "to_dask()")
    source = _Source(recording, name)
    shape = (chunks(recording, block),) + tuple((width,) for width in source.shape[1:])
    meta = np.empty((0,) * source.ndim, source.dtype)
    return dask_array.from_array(source, chunks=shape, name=False, asarray=False, fancy=False, meta=meta)
