"""Which files of a folder belong to a recording."""

from __future__ import annotations

import re
from dataclasses import dataclass
from itertools import count
from pathlib import Path
from typing import Iterator, Optional, Tuple

from .errors import RecordingError

# Endings of what stands beside the data; none of them can be that of a data file.
BESIDE = (".txt", ".log", ".json", ".sha256", ".marks.csv", ".tarno2-journal", ".journal")

_EXTENSION = re.compile(r"\.[^\W_]{1,16}")


def split(path: Path) -> Tuple[str, str]:
    """A file's name without its folder, as base and extension. A dot that begins or ends it begins no extension."""
    for ending in BESIDE:
        if path.name.lower().endswith(ending) and len(path.name) > len(ending):
            return path.name[: -len(ending)], path.name[-len(ending) :]
    dot = path.name.rfind(".")
    if dot <= 0 or dot + 1 == len(path.name):
        return path.name, ""
    return path.name[:dot], path.name[dot:]


def is_data_name(path: Path) -> bool:
    """Whether data files may be called so."""
    extension = split(path)[1]
    return extension.lower() not in BESIDE and bool(_EXTENSION.fullmatch(extension))


@dataclass(frozen=True)
class RecordingFiles:
    """The names of a recording's files."""

    folder: Path
    base: str
    extension: str  #: of the data files, with its dot; may be empty

    def beside(self, ending: str) -> Path:
        return self.folder / (self.base + ending)

    def data(self, piece: int = 0) -> Path:
        return self.folder / (self._base_of(piece) + self.extension)

    def description(self, piece: int = 0) -> Path:
        return self.folder / (self._base_of(piece) + ".txt")

    def _base_of(self, piece: int) -> str:
        return f"{self.base}_{piece}" if piece else self.base

    @property
    def passport(self) -> Path:
        return self.beside(".json")

    def whole(self) -> "Optional[Tuple[RecordingFiles, int]]":
        """The recording that this could be a piece of by its name, and which piece."""
        name = re.fullmatch(r"(.+)_([1-9]\d{0,17})", self.base, re.DOTALL)
        return (RecordingFiles(self.folder, name[1], self.extension), int(name[2])) if name else None

    def following(self) -> Iterator[int]:
        """The pieces that are there by their names, from 0 or 1 on without gaps. A file with a passport of its own is a
        recording of its own."""
        if self.data().is_file():
            yield 0
        for piece in count(1):
            if not self.data(piece).is_file() or (self.folder / f"{self._base_of(piece)}.json").exists():
                return
            yield piece


def files_of(path: Path) -> RecordingFiles:
    """The files that belong to a data file, a description, a passport or another file of a recording."""
    if path.is_dir():
        raise RecordingError(f"{path}: is a folder; tarno2.open_folder opens the recordings in it")
    if not path.exists():
        raise RecordingError(f"{path}: there is no such file")
    base, extension = split(path)
    if extension.lower() in BESIDE:
        extension = _data_extension(path, base)
    return RecordingFiles(path.parent, base, extension)


def _data_extension(path: Path, base: str) -> str:
    """The extension of the data that a file stands beside."""
    if (path.parent / (base + ".dat")).is_file():
        return ".dat"
    found = [
        sibling
        for sibling in sorted(path.parent.iterdir())
        if is_data_name(sibling) and split(sibling)[0] == base and sibling.is_file()
    ]
    if not found and (path.parent / base).is_file():
        return ""
    if not found:
        raise RecordingError(f"{path}: there is no data file {base}.dat beside it")
    if len(found) > 1:
        names = ", ".join(sibling.name for sibling in found)
        raise RecordingError(f"{path}: which of {names} it belongs to is not known; open that file")
    return split(found[0])[1]
