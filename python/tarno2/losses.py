"""The list of losses ``<base>.log``, for recordings without a passport."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Tuple

from .passport import Loss

_LINE = re.compile(r"sample = (\d{1,18}), count = (\d{1,18}), cause = (\w+)")


def read_losses(path: Path) -> Tuple[Loss, ...]:
    """Losses in the order of their happening; none where there is no such file."""
    try:
        text = path.read_text("ascii", errors="replace")
    except OSError:
        return ()
    return tuple(Loss(found[3], int(found[1]), int(found[2])) for found in _LINE.finditer(text))
