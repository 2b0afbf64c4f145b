"""What a recording is, in words."""

from __future__ import annotations

from typing import TYPE_CHECKING, Iterator, List

if TYPE_CHECKING:
    from .recording import Channel, Recording

MOST_SHOWN = 10


def summary(recording: "Recording") -> str:
    """Several lines for somebody who reads them."""
    return "\n".join(_lines(recording))


def _lines(recording: "Recording") -> Iterator[str]:
    passport = recording.passport
    yield f"{recording.path}"
    yield f"  frames     {recording.frames} in {_count(len(recording.pieces), 'file')}, {recording.duration:.6f} s"
    yield f"  rate       {recording.rate:.6f} Hz" + (
        f", every frame of {recording.decimation}" if recording.decimation > 1 else ""
    )
    if recording.clock and recording.clock.measured:
        yield f"             {recording.clock.measured:.6f} Hz by the computer's clock"
    if recording.start is not None:
        yield f"  start      {recording.start}Z"
    elif recording.created:
        yield f"  start      {recording.created} (local time)"
    board = passport.board if passport else ""
    yield f"  board      {', '.join(filter(None, [recording.driver, board]))}"
    if passport and passport.comment:
        yield f"  comment    {passport.comment}"
    if passport:
        yield f"  state      {', '.join(filter(None, [passport.state, passport.end]))}"
    yield f"  channels   {len(recording.channels)}"
    yield from (f"    {_channel(channel)}" for channel in recording.channels[:MOST_SHOWN])
    if len(recording.channels) > MOST_SHOWN:
        yield "    ..."
    if recording.line_names:
        yield f"  lines      {', '.join(recording.line_names)}"
    if len(recording.records):
        yield f"  records    {len(recording.records)} of {int(recording.records.frames[0])} frames"
    yield from _marks(recording)
    for loss in recording.losses:
        yield f"  lost       {loss.cause}: sample {loss.sample}, {loss.count}"
    for note in recording.notes:
        yield f"  note       {note}"


def _count(count: int, what: str) -> str:
    return f"{count} {what}" + ("" if count == 1 else "s")


def _channel(channel: "Channel") -> str:
    parts: List[str] = [
        f"{channel.index:3d}  {channel.name} [{channel.unit}]",
        f"{channel.lower:g} to {channel.upper:g} V",
    ]
    if channel.factor != 1 or channel.offset != 0:
        parts.append(f"volts x {channel.factor:g} {'+' if channel.offset >= 0 else '-'} {abs(channel.offset):g}")
    return ", ".join(parts)


def _marks(recording: "Recording") -> Iterator[str]:
    if recording.marks:
        yield f"  marks      {len(recording.marks)}"
    for mark in recording.marks[:MOST_SHOWN]:
        frame = "-" if mark.frame is None else mark.frame
        yield f"    {mark.number:3d}  frame {frame}, {mark.utc}Z, {mark.source}  {mark.text}".rstrip()
    if len(recording.marks) > MOST_SHOWN:
        yield "    ..."
