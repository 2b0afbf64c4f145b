"""Puts together what the files of a recording tell."""

from __future__ import annotations

import warnings
from dataclasses import replace
from pathlib import Path
from typing import List, Optional, Tuple

from .clock import Clock
from .description import Description, read_description
from .errors import RecordingError, RecordingWarning
from .files import RecordingFiles, files_of, is_data_name
from .layout import SampleLayout
from .losses import read_losses
from .marks import Mark, read_marks
from .passport import Passport, read_passport
from .pieces import Piece, joined
from .recording import Channel, Facts, Recording
from .records import TriggerRecords
from .stream import StreamPlaces


def open_recording(path: "str | Path") -> Recording:
    """Opens a recording by any of its files: a data file, its description, its passport. The pieces of one that was cut
    are joined, whichever of them is named.

    Nothing but the texts is read. Raises RecordingError when the files can't be used; warns (RecordingWarning) of what
    is odd about them, such as a data file that is shorter than its description tells.
    """
    notes: List[str] = []
    files, passport = _whole(files_of(Path(path)), notes)
    listed = len(passport.piece_frames) if passport else 0
    numbers = [k for k in range(listed) if files.data(k).is_file()] if listed else _following(files)
    if not numbers:
        raise RecordingError(f"{files.data()}: there is no such data file")
    descriptions = [_description(files, k, notes) for k in numbers]
    known = next((description for description in descriptions if description), None)
    passport = _fitting(passport, known, notes)
    if known is None and passport is None:
        raise RecordingError(f"{files.data(numbers[0])}: it has no description {files.description(numbers[0]).name}")
    if listed and len(numbers) < listed:
        missing = [files.data(k).name for k in range(listed) if k not in numbers]
        notes.append(f"{files.data()}: pieces are missing: {', '.join(missing)}")
    facts = _facts(files, passport, known, _pieces(files, numbers, descriptions, passport, notes), notes)
    for note in facts.notes:
        warnings.warn(note, RecordingWarning, stacklevel=2)
    return Recording(facts)


def open_folder(folder: "str | Path", pattern: str = "*.dat") -> List[Recording]:
    """Opens every recording whose data file lies in a folder, in the order of the names; the pieces of each once. Data
    without a description and a passport are passed over."""
    place = Path(folder)
    if not place.is_dir():
        raise RecordingError(f"{place}: there is no such folder")
    found: "dict[Path, Recording]" = {}
    seen: "set[Path]" = set()
    for path in sorted(place.glob(pattern)):
        if path in seen or not is_data_name(path) or not path.is_file():
            continue
        files, _ = _whole(files_of(path), [])
        if files.data() not in found and (files.passport.is_file() or files.description().is_file()):
            recording = open_recording(files.data() if files.data().is_file() else path)
            found[files.data()] = recording
            seen.update(piece.path for piece in recording.pieces)
    return list(found.values())


def _whole(files: RecordingFiles, notes: List[str]) -> Tuple[RecordingFiles, Optional[Passport]]:
    """The recording that a file is a piece of, or its own."""
    own = _passport(files, notes)
    whole = files.whole()
    if own or files.passport.exists() or not whole:
        return files, own
    candidate, number = whole
    if not candidate.passport.exists():
        return (candidate, None) if number in _following(candidate) and candidate.data().is_file() else (files, None)
    passport = _passport(candidate, notes)
    listed = passport is not None and (number < len(passport.piece_frames) or passport.state == "recording")
    return (candidate, passport) if listed else (files, None)


def _following(files: RecordingFiles) -> List[int]:
    """The pieces of a recording without a passport, by their names, and by their descriptions: a file that has other
    samples is no piece of it."""
    numbers: List[int] = []
    first: Optional[Description] = None
    for number in files.following():
        path = files.description(number)
        description = read_description(path) if path.exists() else None
        if first and description and not _alike(first, description):
            break
        first = first or description
        numbers.append(number)
    return numbers


def _passport(files: RecordingFiles, notes: List[str]) -> Optional[Passport]:
    if not files.passport.exists():
        return None
    try:
        return read_passport(files.passport)
    except RecordingError as error:
        notes.append(str(error))
        return None


def _fitting(passport: Optional[Passport], known: Optional[Description], notes: List[str]) -> Optional[Passport]:
    """The passport, unless the description contradicts it."""
    if passport and known and known.channel_count != len(passport.channels):
        notes.append(f"{passport.path}: tells of {len(passport.channels)} channels, not {known.channel_count}")
        return None
    if passport and known and known.layout.width != passport.layout.width:
        notes.append(f"{passport.path}: tells of words of {passport.layout.width} bytes, not {known.layout.width}")
        return None
    return passport


def _description(files: RecordingFiles, number: int, notes: List[str]) -> Optional[Description]:
    path = files.description(number)
    if not path.exists():
        # A piece that is still written, or was cut off, has none.
        notes.append(f"{path}: there is no description")
        return None
    return read_description(path)


def _pieces(
    files: RecordingFiles,
    numbers: List[int],
    descriptions: List[Optional[Description]],
    passport: Optional[Passport],
    notes: List[str],
) -> Tuple[Piece, ...]:
    """The data files by the frames that they really hold."""
    first = next((description for description in descriptions if description), None)
    counted: List[Tuple[Path, int, int]] = []
    for number, description in zip(numbers, descriptions):
        path = files.data(number)
        if description and first and not _alike(first, description):
            raise RecordingError(f"{description.path}: its samples are others than those of {first.path.name}")
        layout, channels = _format(first, passport)
        try:
            size = path.stat().st_size
        except OSError as error:
            raise RecordingError(f"{path}: cannot be read: {error.strerror}") from error
        frames = size // (layout.width * channels)
        if description and description.frames is not None and description.frames != frames:
            notes.append(f"{path}: holds {frames} frames, but its description counts {description.frames}")
        counted.append((path, number, frames))
    return tuple(joined(counted))


def _alike(a: Description, b: Description) -> bool:
    return a.layout == b.layout and a.channel_count == b.channel_count


def _format(known: Optional[Description], passport: Optional[Passport]) -> Tuple[SampleLayout, int]:
    """How the samples lie in the files: the description beside them knows best."""
    if known:
        return known.layout, known.channel_count
    assert passport is not None
    return passport.layout, len(passport.channels)


def _facts(
    files: RecordingFiles,
    passport: Optional[Passport],
    known: Optional[Description],
    pieces: Tuple[Piece, ...],
    notes: List[str],
) -> Facts:
    layout, channel_count = _format(known, passport)
    if passport:
        same_codes = (layout.code_bits, layout.signed) == (passport.layout.code_bits, passport.layout.signed)
        lowest, highest = (passport.lowest, passport.highest) if same_codes else (layout.lowest, layout.highest)
    else:
        lowest, highest = layout.lowest, layout.highest
    prehistory, history = (passport.prehistory, passport.history) if passport else (0, 0)
    if not passport and known:
        prehistory, history = known.prehistory, known.history
    records = TriggerRecords(pieces, prehistory, history, passport.triggers if passport else {})
    places = _places(passport, pieces, records)
    if places is None:
        notes.append(f"{files.data()}: the gaps between its frames are not known; its time runs on over them")
    if known and known.packets and not passport:
        notes.append(
            f"{files.data()}: taken in packets, whose rate only a passport tells; its time counts by Frequency"
        )
    return Facts(
        path=pieces[0].path if pieces else files.data(),
        layout=layout,
        channels=_channels(passport, known, channel_count),
        line_names=_line_names(passport, layout),
        lowest=lowest,
        highest=highest,
        pieces=pieces,
        rate=_rate(passport, known),
        clock=Clock(passport.start, passport.rate, passport.pairs) if passport else None,
        created=known.created if known else None,
        driver=passport.driver if passport else known.driver if known else "",
        passport=passport,
        records=records,
        places=places,
        marks=_marks(files, places, notes),
        losses=passport.losses if passport and passport.state == "complete" else read_losses(files.beside(".log")),
        notes=tuple(notes),
    )


def _rate(passport: Optional[Passport], known: Optional[Description]) -> float:
    if passport:
        return passport.rate
    assert known is not None
    return known.frequency


def _channels(passport: Optional[Passport], known: Optional[Description], count: int) -> Tuple[Channel, ...]:
    if passport:
        told = [
            Channel(
                0,
                c.number,
                c.name or f"Channel {c.number}",
                c.unit or "V",
                c.factor,
                c.offset,
                c.upper,
                c.lower,
                c.gain,
            )
            for c in passport.channels
        ]
        backward = passport.backward
    else:
        assert known is not None
        told = [
            Channel(0, None, f"Channel {i}", "V", 1.0, 0.0, upper, lower, None)
            for i, (upper, lower) in enumerate(known.ranges)
        ]
        backward = known.backward
    if backward:
        told.reverse()
    return tuple(replace(channel, index=index) for index, channel in enumerate(told[:count]))


def _line_names(passport: Optional[Passport], layout: SampleLayout) -> Tuple[str, ...]:
    names = passport.line_names if passport else ()
    return tuple((names[i] if i < len(names) else "") or f"Line {i}" for i in range(layout.line_count))


def _places(passport: Optional[Passport], pieces: Tuple[Piece, ...], records: TriggerRecords) -> Optional[StreamPlaces]:
    """Where the frames lie in the stream. Without a passport only a recording without triggers tells."""
    begins = [piece.begin for piece in pieces]
    frames = [piece.frames for piece in pieces]
    if len(records):
        known = bool((records.stream_triggers >= 0).all())
        return StreamPlaces(records.begins, records.stream_begins, records.frames) if known else None
    if passport and passport.mode == "analysis":
        return None
    if passport and passport.piece_frames:
        # With pieces that were taken away: the passport knows how long they were.
        before = [sum(passport.piece_frames[: piece.number]) for piece in pieces]
        return StreamPlaces(begins, before, frames)
    return StreamPlaces(begins, begins, frames)


def _marks(files: RecordingFiles, places: Optional[StreamPlaces], notes: List[str]) -> Tuple[Mark, ...]:
    try:
        marks = read_marks(files.beside(".marks.csv"))
    except RecordingError as error:
        notes.append(str(error))
        return ()
    if not places:
        return tuple(marks)
    return tuple(replace(mark, frame=places.frame_of(mark.stream_frame)) for mark in marks)
