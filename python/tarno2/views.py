"""What of a recording is read by indexes: arrays that lie in the files until somebody asks for a part of them."""

from __future__ import annotations

from typing import Any, Callable, Tuple

import numpy as np
from numpy.typing import NDArray

from .layout import SampleLayout
from .pieces import Words
from .selection import Columns, Selection, select


class View:
    """Frames by columns. Indexes are those of NumPy, but that two lists choose rows and columns independently of each
    other, and that a column may be told by its name."""

    ndim = 2

    def __init__(self, frames: int, columns: Columns, dtype: "np.dtype[Any]") -> None:
        self.columns = columns
        self.shape: Tuple[int, ...] = (frames, len(columns.names))
        self.dtype = dtype

    def __len__(self) -> int:
        return self.shape[0]

    def __getitem__(self, key: Any) -> Any:
        """The chosen values, read now."""
        if not isinstance(key, tuple):
            key = (key,)
        if len(key) > 2:
            raise IndexError(f"{len(key)} indexes for frames and columns")
        rows = select(key[0] if key else None, self.shape[0], "frame")
        columns = self.columns.select(key[1] if len(key) == 2 else None)
        values = np.empty((len(rows), len(columns)), self.dtype)
        self._read(rows, columns, values)
        if columns.single:
            values = values[:, 0]
        return values[0] if rows.single else values

    def __array__(self, dtype: Any = None, copy: Any = None) -> NDArray[Any]:
        """All of it, for whoever takes arrays alone."""
        values: NDArray[Any] = self[:]
        return values if dtype is None else values.astype(dtype)

    def __repr__(self) -> str:
        return (
            f"<{type(self).__name__} {self.shape[0]} x {self.shape[1]}, {self.dtype}: {', '.join(self.columns.names)}>"
        )

    def _read(self, rows: Selection, columns: Selection, values: NDArray[Any]) -> None:
        raise NotImplementedError


class Codes(View):
    """The codes of the converter."""

    def __init__(self, words: Words, layout: SampleLayout, columns: Columns) -> None:
        super().__init__(words.frames, columns, layout.code)
        self._words, self._layout = words, layout

    def _read(self, rows: Selection, columns: Selection, values: NDArray[Any]) -> None:
        for place, words in self._words.blocks(rows, columns):
            values[place] = self._layout.codes(words)


class Scaled(View):
    """Codes on a straight line: volts, or the units of the channels."""

    def __init__(
        self, words: Words, layout: SampleLayout, columns: Columns, factors: NDArray[Any], offsets: NDArray[Any]
    ) -> None:
        super().__init__(words.frames, columns, np.dtype(np.float64))
        self._words, self._layout, self._factors, self._offsets = words, layout, factors, offsets

    def _read(self, rows: Selection, columns: Selection, values: NDArray[Any]) -> None:
        factors, offsets = self._factors[columns.key], self._offsets[columns.key]
        for place, words in self._words.blocks(rows, columns):
            np.multiply(self._layout.codes(words), factors, out=values[place])
            values[place] += offsets


class Lines(View):
    """The lines of the digital port, 0 or 1; they are in the first sample of each frame."""

    def __init__(self, words: Words, layout: SampleLayout, columns: Columns) -> None:
        super().__init__(words.frames, columns, np.dtype(np.uint8))
        self._words, self._layout = words, layout

    def _read(self, rows: Selection, columns: Selection, values: NDArray[Any]) -> None:
        for place, words in self._words.blocks(rows, Selection(range(1))):
            values[place] = self._layout.lines(words[:, 0])[:, columns.key]


class FrameView:
    """A value a frame, computed from its number."""

    ndim = 1

    def __init__(self, frames: int, dtype: "np.dtype[Any]", compute: Callable[[NDArray[Any]], NDArray[Any]]) -> None:
        self.shape = (frames,)
        self.dtype = dtype
        self._compute = compute

    def __len__(self) -> int:
        return self.shape[0]

    def __getitem__(self, key: Any) -> Any:
        if isinstance(key, tuple) and len(key) == 1:
            key = key[0]
        rows = select(key, self.shape[0], "frame")
        values = self._compute(rows.numbers())
        return values[0] if rows.single else values

    def __array__(self, dtype: Any = None, copy: Any = None) -> NDArray[Any]:
        values: NDArray[Any] = self[:]
        return values if dtype is None else values.astype(dtype)

    def __repr__(self) -> str:
        return f"<{self.shape[0]} frames, {self.dtype}>"
