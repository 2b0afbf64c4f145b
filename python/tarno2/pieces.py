"""The data files of a recording, read as one."""

from __future__ import annotations

from bisect import bisect_right
from dataclasses import dataclass
from pathlib import Path
from threading import Lock
from typing import Any, Dict, Iterator, List, Sequence, Tuple, Union

import numpy as np
from numpy.typing import NDArray

from .errors import RecordingError
from .selection import Selection, as_key

MOST_MAPPED = 16  # files that stay mapped: each holds a descriptor, and a recording may have thousands of pieces
BLOCK_SAMPLES = 1 << 20


@dataclass(frozen=True)
class Piece:
    """A data file."""

    path: Path
    number: int  #: 0 for ``<base>.dat``, k for ``<base>_k.dat``
    begin: int  #: its first frame in the recording as it is here
    frames: int

    @property
    def slice(self) -> slice:
        """Its frames: ``rec.volts[rec.pieces[1].slice]``."""
        return slice(self.begin, self.begin + self.frames)


class Words:
    """The sample words of all pieces, one behind the other: frames by channels. Nothing is read before it is asked
    for."""

    def __init__(self, pieces: Sequence[Piece], word: "np.dtype[Any]", channels: int) -> None:
        self.pieces = tuple(pieces)
        self.word = word
        self.channels = channels
        self.frames = pieces[-1].begin + pieces[-1].frames if pieces else 0
        self._begins = [piece.begin for piece in pieces]
        self._mapped: Dict[int, NDArray[Any]] = {}
        self._lock = Lock()

    def blocks(self, rows: Selection, columns: Selection) -> Iterator[Tuple[slice, NDArray[Any]]]:
        """The words of a selection, as the files hold them: where each block belongs in the result, and the block, at
        most about a million samples."""
        step = max(BLOCK_SAMPLES // max(len(columns), 1), 1)
        done = 0
        for index, local in self._parts(rows):
            words = self._map(index)
            for first in range(0, len(local), step):
                part = local[first : first + step]
                yield slice(done, done + len(part)), words[as_key(part)][:, columns.key]
                done += len(part)

    def _parts(self, rows: Selection) -> Iterator[Tuple[int, Union[range, NDArray[Any]]]]:
        """A selection as rows of pieces, in its order."""
        if isinstance(rows.index, range):
            yield from self._parts_of_range(rows.index)
            return
        owners = np.searchsorted(np.array(self._begins), rows.index, side="right") - 1
        borders = np.flatnonzero(np.diff(owners)) + 1
        for run in np.split(np.arange(len(owners)), borders):
            if len(run):
                index = int(owners[run[0]])
                yield index, rows.index[run] - self._begins[index]

    def _parts_of_range(self, rows: range) -> Iterator[Tuple[int, range]]:
        while rows:
            index = bisect_right(self._begins, rows[0]) - 1
            piece = self.pieces[index]
            # As many as lie in this piece, from either side.
            room = piece.begin + piece.frames - 1 - rows[0] if rows.step > 0 else rows[0] - piece.begin
            part = rows[: room // abs(rows.step) + 1]
            yield index, range(part.start - piece.begin, part.stop - piece.begin, part.step)
            rows = rows[len(part) :]

    def _map(self, index: int) -> NDArray[Any]:
        """The words of a piece."""
        with self._lock:
            words = self._mapped.get(index)
            if words is None:
                words = self._mapped[index] = self._opened(self.pieces[index])
                if len(self._mapped) > MOST_MAPPED:
                    del self._mapped[next(iter(self._mapped))]
            return words

    def _opened(self, piece: Piece) -> NDArray[Any]:
        try:
            mapped = np.memmap(piece.path, self.word, "r", shape=(piece.frames, self.channels))
        except (OSError, ValueError) as error:
            raise RecordingError(f"{piece.path}: its {piece.frames} frames can't be read: {error}") from error
        # Without the class: each index of a memmap makes another one, which costs more than the samples.
        return mapped.view(np.ndarray)


def joined(files: Sequence[Tuple[Path, int, int]]) -> List[Piece]:
    """Pieces of files, numbers and counts of frames; files without a frame are left out."""
    pieces: List[Piece] = []
    begin = 0
    for path, number, frames in files:
        if frames:
            pieces.append(Piece(path, number, begin, frames))
            begin += frames
    return pieces
