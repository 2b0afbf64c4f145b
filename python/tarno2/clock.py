"""The clock of a recording: which frame of its stream came when."""

from __future__ import annotations

from typing import Any, Optional, Sequence, Tuple

import numpy as np
from numpy.typing import NDArray


class Clock:
    """A straight line between frames of the stream and the time by the computer's clock.

    With two pairs or more it goes through them by least squares over the clock that never jumps; a system clock that
    was set while the recording ran counts as it stood at the first pair. With fewer the first frame came at `start`,
    and the others follow at `rate`.
    """

    def __init__(self, start: int, rate: float, pairs: Sequence[Tuple[int, int, int]] = ()) -> None:
        """`start`: microseconds since 1970; `rate`: Hz; `pairs`: frame, monotonic nanoseconds, UTC in microseconds."""
        self.measured: Optional[float] = None  #: frames a second that really came, Hz
        self._utc, self._frame, self._rate = start, 0.0, rate
        if len(pairs) < 2:
            return
        frames = np.array([pair[0] - pairs[0][0] for pair in pairs], dtype=np.float64)
        seconds = np.array([pair[1] - pairs[0][1] for pair in pairs], dtype=np.float64) * 1e-9
        around = seconds - seconds.mean()
        squares, products = float(around @ around), float(around @ (frames - frames.mean()))
        if squares > 0 and products > 0:
            self.measured = products / squares
            self._utc, self._rate = pairs[0][2], self.measured
            self._frame = pairs[0][0] + float(frames.mean()) - self._rate * float(seconds.mean())

    def utc_of(self, frames: NDArray[Any]) -> NDArray[Any]:
        """When frames of the stream came, in nanoseconds."""
        after = np.round((np.asarray(frames) - self._frame) / self._rate * 1e9).astype(np.int64)
        times: NDArray[Any] = (after + self._utc * 1000).astype("datetime64[ns]")
        return times

    def frame_at(self, utc: "np.datetime64 | str") -> float:
        """The frame of the stream, with its fraction, that came at a time."""
        after = np.datetime64(utc, "ns").astype(np.int64) - self._utc * 1000
        return float(self._frame + float(after) * 1e-9 * self._rate)
