"""What stands between the brackets: frames and columns that are chosen."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Dict, List, Sequence, Tuple, Union

import numpy as np
from numpy.typing import NDArray


Key = Union[slice, NDArray[Any]]


@dataclass(frozen=True)
class Selection:
    """Indexes out of a known count, none of them negative."""

    index: Union[range, NDArray[Any]]
    single: bool = False  #: a single one was asked for, so that the result lacks this dimension

    def __len__(self) -> int:
        return len(self.index)

    @property
    def key(self) -> Key:
        """For the brackets of an array."""
        return as_key(self.index)

    def numbers(self) -> NDArray[Any]:
        """The indexes themselves."""
        if isinstance(self.index, range):
            return np.arange(self.index.start, self.index.stop, self.index.step, dtype=np.int64)
        return self.index


def as_key(index: Union[range, NDArray[Any]]) -> Key:
    """A slice where a range can be one: a backward one to the very first element has no stop."""
    if not isinstance(index, range):
        return index
    if not index:
        return slice(0, 0)
    return slice(index.start, index.stop if index.stop >= 0 else None, index.step)


def select(key: Any, count: int, what: str) -> Selection:
    """Chooses by a number, a slice, a list of numbers or one of truths, all as NumPy takes them."""
    if key is None or key is Ellipsis:
        key = slice(None)
    if isinstance(key, slice):
        return Selection(range(*key.indices(count)))
    numbers = np.asarray(key)
    if numbers.dtype == np.bool_ and numbers.ndim == 1:
        if len(numbers) != count:
            raise IndexError(f"{len(numbers)} truths can't choose among {count} {what}s")
        return Selection(np.flatnonzero(numbers))
    if numbers.size == 0 and numbers.ndim == 1:
        numbers = numbers.astype(np.int64)
    if numbers.dtype.kind not in "iu" or numbers.ndim > 1:
        raise IndexError(f"{key!r} is no number of a {what}, no slice and no list of numbers")
    if numbers.dtype.kind == "u" and (numbers >= count).any():  # before they become signed, which the largest can't
        raise IndexError(f"{what} {numbers.max()} is not among {count}")
    numbers = numbers.astype(np.int64)  # narrow ones can't hold all the indexes
    outside = (numbers < -count) | (numbers >= count)
    if outside.any():
        raise IndexError(f"{what} {np.atleast_1d(numbers)[np.atleast_1d(outside)][0]} is not among {count}")
    index = np.atleast_1d(np.where(numbers < 0, numbers + count, numbers))
    single = numbers.ndim == 0
    return Selection(range(int(index[0]), int(index[0]) + 1) if single else index, single)


class Columns:
    """The names of columns, by which they may be chosen."""

    def __init__(self, names: Sequence[str], what: str) -> None:
        self.names: Tuple[str, ...] = tuple(names)
        self._what = what
        self._places: Dict[str, List[int]] = {}
        for place, name in enumerate(self.names):
            self._places.setdefault(name, []).append(place)

    def select(self, key: Any) -> Selection:
        """Like `select`, by names too, and by lists in which numbers and names stand together."""
        if isinstance(key, str):
            key = self.place(key)
        elif isinstance(key, np.ndarray) and key.dtype.kind == "U":
            key = [self.place(name) for name in key.tolist()]
        elif isinstance(key, (list, tuple)):
            key = [self.place(entry) if isinstance(entry, str) else entry for entry in key]
        return select(key, len(self.names), self._what)

    def place(self, name: str) -> int:
        """The column of that name. Raises KeyError."""
        places = self._places.get(name, [])
        if not places:
            raise KeyError(f'no {self._what} is called "{name}"; there are: {", ".join(self.names) or "none"}')
        if len(places) > 1:
            raise KeyError(f'the {self._what}s {", ".join(map(str, places))} are all called "{name}": take a number')
        return places[0]
