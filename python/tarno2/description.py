"""The description ``<base>.txt`` beside each data file."""

from __future__ import annotations

import math
import re
from dataclasses import dataclass
from datetime import datetime
from pathlib import Path
from typing import List, Optional, Tuple

from .errors import RecordingError
from .key_value import KeyValueText
from .layout import SampleLayout

MOST_CHANNELS = 4096


@dataclass(frozen=True)
class Description:
    """What is needed of a description to read its data file."""

    path: Path
    layout: SampleLayout
    channel_count: int
    ranges: Tuple[Tuple[float, float], ...]  #: upper and lower limit of each channel, volts
    frequency: float  #: Hz, of one channel
    frames: Optional[int]  #: that the data file should have
    driver: str
    created: Optional[datetime]  #: local time of the first sample, to the second
    packets: bool  #: each frame was taken as a packet
    backward: bool  #: frames hold the channels in reverse order
    prehistory: int  #: frames of each record before its trigger; of a file without records 0
    history: int  #: frames from the trigger on; 0 where the file holds no records

    @property
    def record_frames(self) -> int:
        """Frames of a record; 0 where the file holds none."""
        return self.prehistory + self.history


def read_description(path: Path) -> Description:
    """Reads a description. Raises RecordingError for one that can't be used."""
    keys = KeyValueText.read(path)
    channel_count = keys.integer("ChannelNumber")
    if channel_count is None or not 1 <= channel_count <= MOST_CHANNELS:
        raise _unusable(path, "ChannelNumber")
    frequency = keys.real("Frequency")
    if frequency is None or not (math.isfinite(frequency) and frequency > 0):
        raise _unusable(path, "Frequency")
    prehistory, history = _record_size(path, keys)
    return Description(
        path=path,
        layout=_layout(path, keys),
        channel_count=channel_count,
        ranges=_ranges(path, keys, channel_count),
        frequency=frequency,
        frames=keys.integer("DataCountPerChannel"),
        driver=keys.text("DriverName") or "",
        created=_time_in(keys.text("CreateTime") or ""),
        packets=keys.integer("PacketMode") == 1,
        backward=keys.integer("BackwardOrder") == 1,
        prehistory=prehistory,
        history=history,
    )


def _unusable(path: Path, key: str) -> RecordingError:
    return RecordingError(f"{path}: {key} is missing or makes no sense")


def _layout(path: Path, keys: KeyValueText) -> SampleLayout:
    values: List[int] = keys.integers("DataFormat") or []
    if len(values) != 8:
        raise _unusable(path, "DataFormat")
    width, shift, _, bits, line_shift, line_mask, line_bits, signed = values
    if (
        width not in (2, 4)
        or shift < 0
        or bits < 1
        or shift + bits > 8 * width
        or not -1 <= line_shift < 8 * width
        or not -1 <= line_bits <= 8 * width
        or signed not in (0, 1)
    ):
        raise _unusable(path, "DataFormat")
    # Where there is no port its fields may be -1, which is "undefined".
    return SampleLayout(width, shift, bits, signed == 1, max(line_shift, 0), line_mask & 0xFFFFFFFF, max(line_bits, 0))


def _ranges(path: Path, keys: KeyValueText, channel_count: int) -> Tuple[Tuple[float, float], ...]:
    limits = keys.reals("ChannelsRange") or []
    if len(limits) != 2 * channel_count or not all(map(math.isfinite, limits)):
        raise _unusable(path, "ChannelsRange")
    return tuple(zip(limits[::2], limits[1::2]))


def _record_size(path: Path, keys: KeyValueText) -> Tuple[int, int]:
    """All records of a recording have one size."""
    if keys.integer("SynchroEnable") != 1:
        return 0, 0
    prehistory = keys.integers("SynchroListPrehistory") or []
    history = keys.integers("SynchroListHistory") or []
    if not prehistory or not history or prehistory[0] < 0 or history[0] < 0 or prehistory[0] + history[0] == 0:
        raise _unusable(path, "SynchroListPrehistory")
    return prehistory[0], history[0]


def _time_in(text: str) -> Optional[datetime]:
    """The time of day and the date in a text: six numbers, whatever words stand between them."""
    numbers = [int(number) for number in re.findall(r"\d{1,18}", text)[:6]]
    if len(numbers) < 6:
        return None
    hour, minute, second, day, month, year = numbers
    try:
        return datetime(year, month, day, hour, minute, min(second, 59))
    except (ValueError, OverflowError):
        return None
