"""The records of a recording that kept frames around triggers."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass
from typing import Any, Dict, List, Optional, Tuple, Union, overload

import numpy as np
from numpy.typing import NDArray

from .pieces import Piece


@dataclass(frozen=True)
class TriggerRecord:
    """The frames around one trigger."""

    begin: int  #: its first frame in the recording
    frames: int  #: fewer than the others have where the recording ended within it
    trigger: Optional[int]  #: the frame of the trigger in the recording; None where it was cut off
    stream_trigger: Optional[int]  #: the same frame of the stream; None where nobody knows

    @property
    def slice(self) -> slice:
        """Its frames: ``rec.volts[rec.records[0].slice, "bearing"]``."""
        return slice(self.begin, self.begin + self.frames)


class TriggerRecords(Sequence):  # type: ignore[type-arg]
    """All records, in the order of the files; as arrays `begins`, `frames`, `triggers` and `stream_triggers` (-1 where
    nobody knows), and one by one."""

    def __init__(
        self, pieces: Sequence[Piece], prehistory: int, history: int, triggers: Dict[Tuple[int, int], int]
    ) -> None:
        """`triggers`: in the stream, by the number of the piece and the first frame in it."""
        length = prehistory + history
        begins: List[NDArray[Any]] = [np.empty(0, np.int64)]
        frames: List[NDArray[Any]] = [np.empty(0, np.int64)]
        stream: List[int] = []
        for piece in pieces if length else ():
            local = np.arange(0, piece.frames, length, dtype=np.int64)
            begins.append(local + piece.begin)
            frames.append(np.minimum(piece.frames - local, length))
            stream += [triggers.get((piece.number, int(first)), -1) for first in local]
        self.prehistory = prehistory
        self.begins: NDArray[Any] = np.concatenate(begins)
        self.frames: NDArray[Any] = np.concatenate(frames)
        self.triggers: NDArray[Any] = np.where(self.frames > prehistory, self.begins + prehistory, -1)
        self.stream_triggers: NDArray[Any] = np.array(stream, dtype=np.int64)

    @property
    def stream_begins(self) -> NDArray[Any]:
        """First frames in the stream; only where every trigger is known."""
        return np.maximum(self.stream_triggers - self.prehistory, 0)

    def __len__(self) -> int:
        return len(self.begins)

    @overload
    def __getitem__(self, key: int) -> TriggerRecord:
        ...

    @overload
    def __getitem__(self, key: slice) -> List[TriggerRecord]:
        ...

    def __getitem__(self, key: Union[int, slice]) -> Union[TriggerRecord, List[TriggerRecord]]:
        if isinstance(key, slice):
            return [self[i] for i in range(*key.indices(len(self)))]
        trigger, stream = int(self.triggers[key]), int(self.stream_triggers[key])
        return TriggerRecord(
            int(self.begins[key]),
            int(self.frames[key]),
            trigger if trigger >= 0 else None,
            stream if stream >= 0 else None,
        )
