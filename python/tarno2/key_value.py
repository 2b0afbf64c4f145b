"""The grammar of descriptions: lines ``key = value`` with comments, texts in quotes, and continued lines."""

from __future__ import annotations

import re
from pathlib import Path
from typing import Dict, List, Optional

from .errors import RecordingError

MOST_BYTES = 20 * 1024 * 1024

_INTEGER = re.compile(r"\s*([+-]?\d{1,18})(?!\d)")
_REAL = re.compile(r"\s*([+-]?(?:\d+\.?\d*|\.\d+)(?:[eE][+-]?\d+)?)")


class KeyValueText:
    """A text of keys and values. A key that is missing, and a value that can't be read, are ``None``."""

    def __init__(self, text: str) -> None:
        self._values: Dict[str, str] = {}
        for line in _joined_lines(text):
            key, equals, value = line.partition("=")
            if equals:
                # Where a key stands twice the first one counts.
                self._values.setdefault(key.strip(" \t"), value)

    @classmethod
    def read(cls, path: Path) -> KeyValueText:
        """Reads a file in code page 1251, at most 20 MiB of it."""
        try:
            with path.open("rb") as file:
                data = file.read(MOST_BYTES + 1)
        except OSError as error:
            raise RecordingError(f"{path}: cannot be read: {error.strerror}") from error
        if len(data) > MOST_BYTES:
            raise RecordingError(f"{path}: has more than 20 MiB, which no description has")
        return cls(data.decode("cp1251", errors="replace"))

    def integer(self, key: str) -> Optional[int]:
        numbers = _INTEGER.match(self._values.get(key, ""))
        return int(numbers.group(1)) if numbers else None

    def real(self, key: str) -> Optional[float]:
        number = _REAL.match(self._values.get(key, ""))
        return float(number.group(1)) if number else None

    def integers(self, key: str) -> Optional[List[int]]:
        """Parts of a list that are no numbers are passed over."""
        if key not in self._values:
            return None
        found = (_INTEGER.match(part) for part in self._values[key].split(","))
        return [int(number.group(1)) for number in found if number]

    def reals(self, key: str) -> Optional[List[float]]:
        if key not in self._values:
            return None
        found = (_REAL.match(part) for part in self._values[key].split(","))
        return [float(number.group(1)) for number in found if number]

    def text(self, key: str) -> Optional[str]:
        """What stands between double quotes; a backslash takes the next character as it is."""
        quoted = re.match(r'\s*"((?:[^"\\]|\\.)*)"', self._values.get(key, ""))
        return re.sub(r"\\(.)", r"\1", quoted.group(1)) if quoted else None


def _joined_lines(text: str) -> List[str]:
    """The lines without comments, those that a backslash continues put together."""
    # A file without any CR was made by hand on another system.
    lines = text.split("\r\n" if "\r" in text else "\n")
    joined: List[str] = []
    continued = False
    for line in lines:
        plain, goes_on = _without_comment(line.replace("\r", ""))
        if continued:
            joined[-1] += " " + plain.strip(" \t")
        else:
            joined.append(plain.strip(" \t"))
        continued = goes_on
    return joined


def _without_comment(line: str) -> "tuple[str, bool]":
    """A line up to its comment, and whether a backslash at its end continues it."""
    quoted = False
    i = 0
    while i < len(line):
        if line[i] == "\\":
            if i + 1 == len(line):
                return line[:i], True
            i += 1
        elif line[i] == '"':
            quoted = not quoted
        elif line[i] == ";" and not quoted:
            return line[:i], False
        i += 1
    return line, False
