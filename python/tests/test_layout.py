"""Codes and lines of every form of sample, against plain arithmetic."""

import numpy as np
import pytest

from tarno2.layout import SampleLayout


@pytest.mark.parametrize("width", [2, 4])
@pytest.mark.parametrize("signed", [False, True])
def test_every_code_of_every_width(width, signed):
    words = np.random.default_rng(4).integers(0, 1 << (8 * width), 300, np.uint64).astype(f"<u{width}")
    words[:2] = 0, (1 << (8 * width)) - 1
    for bits in range(1, 8 * width + 1):
        for shift in range(8 * width - bits + 1):
            layout = SampleLayout(width, shift, bits, signed)
            wanted = [(int(word) >> shift) & ((1 << bits) - 1) for word in words]
            if signed:
                wanted = [code - (1 << bits) if code >> (bits - 1) else code for code in wanted]
            codes = layout.codes(words)
            assert codes.dtype == layout.code and codes.tolist() == wanted, (bits, shift)
            assert min(wanted) >= layout.lowest and max(wanted) <= layout.highest


@pytest.mark.parametrize(
    "width, shift, mask, count", [(2, 0, 3, 2), (2, 14, 0xC000, 2), (4, 24, -16777216, 8), (4, 0, -1, 32)]
)
def test_lines(width, shift, mask, count):
    words = np.random.default_rng(5).integers(0, 1 << (8 * width), 300, np.uint64).astype(f"<u{width}")
    layout = SampleLayout(width, 0, 8 * width, True, shift, mask & 0xFFFFFFFF, count)
    wanted = [[(int(word) & mask) >> shift >> line & 1 for line in range(count)] for word in words]
    assert layout.lines(words).tolist() == wanted
