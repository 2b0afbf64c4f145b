"""A recording: its samples, and what is known of them."""

from __future__ import annotations

from dataclasses import dataclass
from datetime import datetime
from pathlib import Path
from typing import Any, Callable, List, Optional, Tuple

import numpy as np
from numpy.typing import NDArray

from . import dask_arrays, hdf5, mne_raw, xarray_dataset
from .clock import Clock
from .errors import RecordingError
from .layout import SampleLayout
from .marks import Mark
from .passport import Loss, Passport
from .pieces import Piece, Words
from .records import TriggerRecords
from .selection import Columns
from .stream import StreamPlaces
from .views import Codes, FrameView, Lines, Scaled


@dataclass(frozen=True)
class Channel:
    """A column of the samples."""

    index: int  #: the column
    number: Optional[int]  #: of the board's input; None where no passport tells
    name: str  #: as the operator or the driver called it, else ``Channel 5``
    unit: str  #: ``V`` where it has none of its own
    factor: float  #: a value in the unit is volts x factor + offset
    offset: float  #: in the unit
    upper: float  #: limits of the input, volts
    lower: float
    gain: Optional[int]


@dataclass(frozen=True)
class Facts:
    """What the files of a recording tell, put together; `tarno2.open` does that."""

    path: Path
    layout: SampleLayout
    channels: Tuple[Channel, ...]
    line_names: Tuple[str, ...]
    lowest: int  #: the code of the lower limits
    highest: int
    pieces: Tuple[Piece, ...]
    rate: float
    clock: Optional[Clock]
    created: Optional[datetime]
    driver: str
    passport: Optional[Passport]
    records: TriggerRecords
    places: Optional[StreamPlaces]  #: None where nobody knows
    marks: Tuple[Mark, ...]
    losses: Tuple[Loss, ...]
    notes: Tuple[str, ...]


class Recording:
    """All data files of a recording as one, with their names, units, time, records and marks.

    Samples stay on the disk until they are asked for: ``rec.volts[1_000_000:2_000_000, "bearing"]`` reads one channel
    of a million frames. A *frame* is one sample of every channel; a column is told by its number, from 0, or by its
    name. An object may be used by many threads at once, and be sent to other processes, which open the files
    themselves.
    """

    def __init__(self, facts: Facts) -> None:
        """Use `tarno2.open`."""
        self._facts = facts
        words = Words(facts.pieces, facts.layout.word, len(facts.channels))
        columns = Columns([channel.name for channel in facts.channels], "channel")
        spread = float(facts.highest - facts.lowest)
        upper = np.array([channel.upper for channel in facts.channels])
        lower = np.array([channel.lower for channel in facts.channels])
        volts = (upper - lower) / spread
        zero = lower - volts * facts.lowest
        factor = np.array([channel.factor for channel in facts.channels])
        offset = np.array([channel.offset for channel in facts.channels])
        #: Codes of the converter, frames by channels: signed integers.
        self.codes = Codes(words, facts.layout, columns)
        #: Volts at the input.
        self.volts = Scaled(words, facts.layout, columns, volts, zero)
        #: Values in the units of the channels: volts where a channel has no unit of its own.
        self.units = Scaled(words, facts.layout, columns, volts * factor, zero * factor + offset)
        #: Digital lines, frames by lines: 0 or 1.
        self.lines = Lines(words, facts.layout, Columns(facts.line_names, "line"))
        #: Seconds from the first frame of the stream, of each frame.
        self.time = FrameView(words.frames, np.dtype(np.float64), self._seconds)
        #: Time of each frame by the computer's clock, UTC; RecordingError without a passport.
        self.utc = FrameView(words.frames, np.dtype("datetime64[ns]"), self._utc)
        #: The frame of the stream that each frame is; RecordingError where nobody knows.
        self.stream = FrameView(words.frames, np.dtype(np.int64), self._stream)

    @property
    def path(self) -> Path:
        """The first data file."""
        return self._facts.path

    @property
    def frames(self) -> int:
        """Frames in all pieces."""
        return len(self.codes)

    def __len__(self) -> int:
        return self.frames

    @property
    def channels(self) -> Tuple[Channel, ...]:
        """The columns of the samples."""
        return self._facts.channels

    @property
    def line_names(self) -> Tuple[str, ...]:
        """Names of the digital lines; ``Line 1`` where one has none."""
        return self._facts.line_names

    @property
    def rate(self) -> float:
        """Frames a second in the files, Hz, as the board told; with an external clock as the operator expected.
        ``clock.measured`` is what really came."""
        return self._facts.rate

    @property
    def duration(self) -> float:
        """Seconds of all frames that are in the files."""
        return self.frames / self.rate

    @property
    def decimation(self) -> int:
        """The first of so many frames of the board was kept."""
        return self._facts.passport.decimation if self._facts.passport else 1

    @property
    def clock(self) -> Optional[Clock]:
        """Which frame of the stream came when; None without a passport."""
        return self._facts.clock

    @property
    def start(self) -> Optional[np.datetime64]:
        """When the first frame came, UTC; None without a passport."""
        passport = self._facts.passport
        return np.datetime64(passport.start, "us") if passport else None

    @property
    def created(self) -> Optional[datetime]:
        """When the first file began, in local time, to the second."""
        return self._facts.created

    @property
    def driver(self) -> str:
        """Driver of the board; empty where it is not known."""
        return self._facts.driver

    @property
    def passport(self) -> Optional[Passport]:
        """What the passport tells; ``rec.passport.json`` is all of it. None where there is none."""
        return self._facts.passport

    @property
    def pieces(self) -> Tuple[Piece, ...]:
        """The data files, in their order."""
        return self._facts.pieces

    @property
    def records(self) -> TriggerRecords:
        """The records around triggers; of a recording without triggers none."""
        return self._facts.records

    @property
    def marks(self) -> Tuple[Mark, ...]:
        """What was marked, by the marks' numbers."""
        return self._facts.marks

    @property
    def losses(self) -> Tuple[Loss, ...]:
        """Samples that are known to be lost."""
        return self._facts.losses

    @property
    def notes(self) -> Tuple[str, ...]:
        """What about the files is not as they tell; opening warned of it."""
        return self._facts.notes

    @property
    def code_limits(self) -> Tuple[int, int]:
        """The codes of the lower and of the upper limit of every channel."""
        return self._facts.lowest, self._facts.highest

    @property
    def has_utc(self) -> bool:
        """Whether the time of its frames is known by the computer's clock."""
        return self._facts.clock is not None and self._facts.places is not None

    def breaks(self) -> NDArray[Any]:
        """Frames that do not follow the one before them by one period: first ones of records, and of pieces behind one
        that was taken away. Where nobody knows what was kept, first ones of records alone."""
        begins = (
            self.records.begins if len(self.records) else np.array([piece.begin for piece in self.pieces], np.int64)
        )
        followers: NDArray[Any] = begins[1:]
        if self._facts.places is not None and len(followers):
            followers = followers[self._stream(followers) != self._stream(followers - 1) + 1]
        return followers

    def _stream(self, frames: NDArray[Any]) -> NDArray[Any]:
        if self._facts.places is None:
            raise RecordingError(f"{self.path}: which frames were kept is told by none of its files")
        return self._facts.places.of(frames)

    def _seconds(self, frames: NDArray[Any]) -> NDArray[Any]:
        # Where nobody knows the gaps the time runs on over them, as in an exported text.
        return (self._stream(frames) if self._facts.places else frames) / self.rate

    def _utc(self, frames: NDArray[Any]) -> NDArray[Any]:
        if self._facts.clock is None:
            raise RecordingError(f"{self.path}: without a passport its time is not known; `created` has its local time")
        return self._facts.clock.utc_of(self._stream(frames))

    def to_hdf5(
        self,
        path: "str | Path | None" = None,
        values: str = "codes",
        overwrite: bool = False,
        progress: Optional[Callable[[float], None]] = None,
    ) -> Path:
        """Writes an HDF5 file, block by block: see `tarno2.hdf5`."""
        return hdf5.write(self, path, values, overwrite, progress)

    def to_dask(self, values: str = "volts", block: int = dask_arrays.BLOCK_BYTES) -> Any:
        """A Dask array, frames by columns, whose chunks never cross the border of a piece: see `tarno2.dask_arrays`."""
        self.array(values)
        return dask_arrays.array(self, values, block)

    def to_xarray(self) -> Any:
        """An xarray Dataset of volts, units, codes and lines, read when computed: see `tarno2.xarray_dataset`."""
        return xarray_dataset.dataset(self)

    def to_mne(self, frames: slice = slice(None), channels: Any = None, kind: str = "misc") -> Any:
        """A Raw of MNE-Python with the samples in memory, the lines as a stimulus channel, and annotations: see
        `tarno2.mne_raw`."""
        return mne_raw.raw(self, frames, channels, kind)

    def array(self, values: str) -> Any:
        """`codes`, `volts`, `units` or `lines`, by name."""
        if values not in ("codes", "volts", "units", "lines"):
            raise ValueError(f'"{values}" is none of "codes", "volts", "units" and "lines"')
        return getattr(self, values)

    def __reduce__(self) -> Tuple[Any, ...]:
        return _reopened, (str(self.path.absolute()),)

    def __repr__(self) -> str:
        names: List[str] = [channel.name for channel in self.channels]
        shown = ", ".join(names[:4]) + (", ..." if len(names) > 4 else "")
        return (
            f"<Recording {self.path.name}: {self.frames} frames at {self.rate:g} Hz of {len(names)} channels ({shown})>"
        )


def _reopened(path: str) -> Recording:
    """In another process: who opened it first has seen the warnings."""
    import warnings

    from .errors import RecordingWarning
    from .opening import open_recording

    with warnings.catch_warnings():
        warnings.simplefilter("ignore", RecordingWarning)
        return open_recording(path)
