"""Where the frames of a recording's files lie in the stream that its board gave."""

from __future__ import annotations

from typing import Any, Optional

import numpy as np
from numpy.typing import ArrayLike, NDArray


class StreamPlaces:
    """Runs of frames that follow each other both in the files and in the stream."""

    def __init__(self, begins: ArrayLike, stream_begins: ArrayLike, frames: ArrayLike) -> None:
        """First frame of each run in the recording, in the stream, and how many they are; in the files' order."""
        self._begins = np.asarray(begins, dtype=np.int64)
        self._stream = np.asarray(stream_begins, dtype=np.int64)
        self._frames = np.asarray(frames, dtype=np.int64)
        self._order = np.argsort(self._stream, kind="stable")

    def of(self, frames: NDArray[Any]) -> NDArray[Any]:
        """Frames of the stream for frames of the recording, which are all in it."""
        run = np.searchsorted(self._begins, frames, side="right") - 1
        stream: NDArray[Any] = np.asarray(frames, dtype=np.int64) - self._begins[run] + self._stream[run]
        return stream

    def frame_of(self, stream_frame: int) -> Optional[int]:
        """The frame of the recording that is this one of the stream; None when it is in no file."""
        sorted_begins = self._stream[self._order]
        at = int(np.searchsorted(sorted_begins, stream_frame, side="right")) - 1
        if at < 0:
            return None
        run = self._order[at]
        into = stream_frame - int(self._stream[run])
        return int(self._begins[run]) + into if into < int(self._frames[run]) else None
