"""Times of the computer's clock: microseconds since 1970, UTC."""

from __future__ import annotations

import re

import numpy as np

_FORM = re.compile(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z")


def parse_utc(text: object) -> int:
    """Microseconds since 1970 of ``2026-11-22T18:01:29.123456Z``. Raises ValueError for any other text."""
    if not isinstance(text, str) or not _FORM.fullmatch(text):
        raise ValueError(f"{text!r} is no time")
    return int(np.datetime64(text[:-1], "us").astype(np.int64))


def utc_text(microseconds: int) -> str:
    """The inverse of `parse_utc`."""
    return str(np.datetime64(microseconds, "us")) + "Z"
