"""How a sample word is divided into the code of a channel and the lines of the digital port."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np
from numpy.typing import NDArray


@dataclass(frozen=True)
class SampleLayout:
    """Of a word of ``width`` bytes, little-endian."""

    width: int  #: bytes: 2 or 4
    code_shift: int
    code_bits: int
    signed: bool
    line_shift: int = 0
    line_mask: int = 0  #: of the unshifted word
    line_count: int = 0

    @property
    def word(self) -> "np.dtype[Any]":
        """The type of a word in its file."""
        return np.dtype("<u2" if self.width == 2 else "<u4")

    @property
    def code(self) -> "np.dtype[Any]":
        """The smallest signed type that holds every code: differences of neighbours are never taken modulo 2^n."""
        bits = self.code_bits + (0 if self.signed else 1)
        return np.dtype(np.int16 if bits <= 16 else np.int32 if bits <= 32 else np.int64)

    @property
    def lowest(self) -> int:
        """The lowest code that the bits allow."""
        return -(1 << (self.code_bits - 1)) if self.signed else 0

    @property
    def highest(self) -> int:
        return (1 << (self.code_bits - 1 if self.signed else self.code_bits)) - 1

    def codes(self, words: NDArray[Any]) -> NDArray[Any]:
        """The codes of words, of the same shape; may be the words themselves."""
        if not self.signed:
            field: NDArray[Any] = words >> words.dtype.type(self.code_shift)
            field = field & words.dtype.type((1 << self.code_bits) - 1)
            return field.astype(self.code, copy=False)
        # The code is moved to the top of its word, and back with its sign.
        rest = 8 * self.width - self.code_bits
        above = rest - self.code_shift
        top = words << words.dtype.type(above) if above else words
        codes: NDArray[Any] = top.view(f"<i{self.width}")
        if rest:
            codes = codes >> codes.dtype.type(rest)
        return codes.astype(self.code, copy=False)

    def lines(self, words: NDArray[Any]) -> NDArray[np.uint8]:
        """The lines in words, 0 or 1; one more dimension than the words have, of the lines from 0 on."""
        mask = words.dtype.type(self.line_mask & ((1 << (8 * self.width)) - 1))
        port = (words & mask) >> words.dtype.type(self.line_shift)
        shifts = np.minimum(np.arange(self.line_count), 8 * self.width - 1).astype(words.dtype)
        bits = (port[..., np.newaxis] >> shifts) & words.dtype.type(1)
        bits[..., 8 * self.width :] = 0
        lines: NDArray[np.uint8] = bits.astype(np.uint8)
        return lines
