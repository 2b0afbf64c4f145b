"""The passport ``<base>.json``: all that the program knew of a recording."""

from __future__ import annotations

import json
import math
from dataclasses import dataclass, field
from pathlib import Path
from typing import Any, Dict, List, Optional, Tuple

from .errors import RecordingError
from .layout import SampleLayout
from .utc import parse_utc

MOST_BYTES = 1 << 28


@dataclass(frozen=True)
class PassportChannel:
    """A channel, in the order in which the recording was asked for."""

    number: int
    name: str
    unit: str
    gain: int
    upper: float
    lower: float
    factor: float
    offset: float


@dataclass(frozen=True)
class Loss:
    """Samples that the host knows to be lost; docs/formats.md tells what both numbers count for each cause."""

    cause: str  #: ``overwritten``, ``transfer``, ``board`` or ``disk``
    sample: int
    count: int


@dataclass(frozen=True)
class Passport:
    """The fields that a reader of samples needs; `json` has all of them, as they stand in the file."""

    path: Path
    json: Dict[str, Any] = field(repr=False)
    state: str  #: ``recording``, ``complete`` or ``recovered``
    driver: str
    board: str
    comment: str
    start: int  #: microseconds since 1970
    rate: float  #: frames a second in the files, Hz
    decimation: int
    layout: SampleLayout
    lowest: int  #: the code of a channel's lower limit
    highest: int  #: the code of its upper limit
    backward: bool
    channels: Tuple[PassportChannel, ...]
    line_names: Tuple[str, ...]
    mode: str  #: of the synchronisation: ``off``, ``analysis`` or ``records``
    prehistory: int
    history: int
    piece_frames: Tuple[int, ...]  #: of each piece; empty while the recording runs
    triggers: Dict[Tuple[int, int], int] = field(repr=False)  #: frame of the stream, by piece and first frame in it
    losses: Tuple[Loss, ...] = ()
    pairs: Tuple[Tuple[int, int, int], ...] = field(default=(), repr=False)  #: frame, nanoseconds, UTC
    end: str = ""  #: why it ended


def read_passport(path: Path) -> Passport:
    """Reads a passport. Raises RecordingError when the file can't be read, or is none."""
    try:
        with path.open("rb") as file:
            data = file.read(MOST_BYTES + 1)
        if len(data) > MOST_BYTES:
            raise ValueError("it is too long")
        tree = json.loads(data.decode("utf-8"))
        if not isinstance(tree, dict) or tree.get("format") != "Tarno2 passport" or tree.get("formatVersion") != 1:
            raise ValueError("it is no passport of this version")
        return _passport(path, tree)
    except OSError as error:
        raise RecordingError(f"{path}: cannot be read: {error.strerror}") from error
    except KeyError as error:
        raise RecordingError(f"{path}: the passport lacks {error}") from error
    except (ValueError, TypeError, AttributeError, OverflowError, RecursionError) as error:
        raise RecordingError(f"{path}: {error}") from error


def _passport(path: Path, tree: Dict[str, Any]) -> Passport:
    sample, rate, synchronisation = tree["sample"], tree["rate"], tree["synchronisation"]
    decimation = max(int(rate["decimation"]), 1)
    # In packet mode a frame is a packet, and `recorded` tells the samples within one.
    frames_a_second = rate["packetsGiven"] / decimation if "packetsGiven" in rate else rate["recorded"]
    records = synchronisation["mode"] == "records"
    return Passport(
        path=path,
        json=tree,
        state=_text(tree["state"]),
        driver=_text(tree["driver"]),
        board=_text(tree["board"]),
        comment=_text(tree["comment"]),
        start=parse_utc(tree["start"]["utc"]),
        rate=_positive(frames_a_second, "rate"),
        decimation=decimation,
        layout=_layout(sample),
        lowest=int(sample["codeMinimum"]),
        highest=int(sample["codeMaximum"]),
        backward=bool(sample["backwardOrder"]),
        channels=tuple(_channel(entry) for entry in tree["channels"]),
        line_names=_line_names(tree["lines"]),
        mode=_text(synchronisation["mode"]),
        prehistory=int(synchronisation["prehistory"]) if records else 0,
        history=int(synchronisation["history"]) if records else 0,
        piece_frames=tuple(int(piece["frames"]) for piece in tree.get("pieces", [])),
        triggers={
            (int(record["piece"]), int(record["frame"])): int(record["trigger"])
            for record in tree.get("records", [])
            if "trigger" in record
        },
        losses=tuple(
            Loss(_text(loss["cause"]), int(loss["sample"]), int(loss["count"])) for loss in tree.get("losses", [])
        ),
        pairs=tuple(
            (int(pair["frame"]), int(pair["monotonic"]), parse_utc(pair["utc"]))
            for pair in tree.get("clock", {}).get("pairs", [])
        ),
        end=_text(tree.get("end", {}).get("reason", "")),
    )


def _text(value: Any) -> str:
    if not isinstance(value, str):
        raise ValueError(f"{value!r} is no text")
    return value


def _positive(value: Any, name: str) -> float:
    number = float(value)
    if not (math.isfinite(number) and number > 0):
        raise ValueError(f"its {name} is {value!r}")
    return number


def _layout(sample: Dict[str, Any]) -> SampleLayout:
    layout = SampleLayout(
        int(sample["bytes"]),
        int(sample["codeShift"]),
        int(sample["codeBits"]),
        bool(sample["signed"]),
        int(sample["lineShift"]),
        int(sample["lineMask"]),
        int(sample["lines"]),
    )
    bits = 8 * layout.width
    if (
        layout.width not in (2, 4)
        or layout.code_bits < 1
        or layout.code_shift < 0
        or layout.code_shift + layout.code_bits > bits
        or not 0 <= layout.line_shift < bits
        or not 0 <= layout.line_count <= 32
        or int(sample["codeMinimum"]) >= int(sample["codeMaximum"])
    ):
        raise ValueError("there is no such sample")
    return layout


def _channel(entry: Dict[str, Any]) -> PassportChannel:
    factor, offset = float(entry["factor"]), float(entry["offset"])
    if not (math.isfinite(factor) and factor != 0 and math.isfinite(offset)):
        factor, offset = 1.0, 0.0
    return PassportChannel(
        int(entry["number"]),
        _text(entry["name"]),
        _text(entry["unit"]),
        int(entry["gain"]),
        float(entry["upper"]),
        float(entry["lower"]),
        factor,
        offset,
    )


def _line_names(lines: List[Dict[str, Any]]) -> Tuple[str, ...]:
    names: List[str] = []
    for line in lines:
        number: Optional[int] = line["number"]
        if number is None or not 0 <= number < 32:
            continue
        names += [""] * (number + 1 - len(names))
        names[number] = _text(line["name"])
    return tuple(names)
