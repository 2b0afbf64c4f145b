"""The list of marks ``<base>.marks.csv``."""

from __future__ import annotations

import csv
import io
from dataclasses import dataclass
from pathlib import Path
from typing import Dict, List, Optional

import numpy as np

from .errors import RecordingError
from .utc import parse_utc

HEADER = ["mark", "frame", "utc", "source", "text"]
MOST_BYTES = 1 << 30


@dataclass(frozen=True)
class Mark:
    """What was marked while the recording ran."""

    number: int  #: from 1
    stream_frame: int  #: frame of the stream
    utc: np.datetime64  #: by the computer's clock
    source: str  #: ``operator``, ``line`` (an edge of a digital line) or ``driver``
    text: str  #: often empty
    frame: Optional[int] = None  #: frame of the recording's files; None where it is in none of them

    @property
    def label(self) -> str:
        """Its text, or its number where it has none."""
        return self.text or str(self.number)


def read_marks(path: Path) -> List[Mark]:
    """Marks by their numbers; of two lines for one mark the later one counts. No file is no mark."""
    try:
        with path.open("rb") as file:
            data = file.read(MOST_BYTES)
    except FileNotFoundError:
        return []
    except OSError as error:
        raise RecordingError(f"{path}: cannot be read: {error.strerror}") from error
    # What stands behind the last line end was cut off by a crash.
    text = data[: data.rfind(b"\n") + 1].decode("utf-8-sig", errors="replace")
    rows = csv.reader(io.StringIO(text, newline=""))
    if text and next(rows, []) != HEADER:
        raise RecordingError(f"{path}: it is no list of marks")
    marks: Dict[int, Mark] = {}
    try:
        for row in rows:
            number, frame, utc, source, words = row
            moment = np.datetime64(parse_utc(utc), "us")
            marks[int(number)] = Mark(int(number), int(frame), moment, source, words)
    except (ValueError, OverflowError, csv.Error) as error:
        raise RecordingError(f"{path}: line {rows.line_num} is no mark") from error
    return [marks[number] for number in sorted(marks)]
