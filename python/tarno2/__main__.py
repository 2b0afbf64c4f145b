"""``python3 -m tarno2 info|plot|to-hdf5 FILE``."""

from __future__ import annotations

import argparse
import sys
import warnings
from bisect import bisect_left
from pathlib import Path
from typing import Any, List, Optional

from . import __version__
from .errors import RecordingError, RecordingWarning
from .opening import open_recording
from .plot import figure
from .recording import Recording
from .summary import summary


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python3 -m tarno2", description="Shows and converts recordings of Tarno2.")
    parser.add_argument("--version", action="version", version=f"tarno2 {__version__}")
    commands = parser.add_subparsers(dest="command", required=True)
    info = commands.add_parser("info", help="what the recording is")
    plot = commands.add_parser("plot", help="a picture of the signal")
    plot.add_argument("-o", "--output", type=Path, help="picture (.png, .svg, .pdf); without it RECORDING with .png")
    plot.add_argument("--channels", help="numbers or names of columns, parted by commas; without it all, at most 8")
    plot.add_argument("--from", dest="first", type=float, default=0.0, help="seconds, as the axis shows them")
    plot.add_argument("--to", dest="last", type=float, help="likewise; without it the end")
    hdf5 = commands.add_parser("to-hdf5", help="a file of HDF5")
    hdf5.add_argument("-o", "--output", type=Path, help="without it RECORDING with .h5")
    hdf5.add_argument("--values", choices=["codes", "volts", "units"], default="codes")
    hdf5.add_argument("--overwrite", action="store_true", help="replace a file that is there")
    for command in (info, plot, hdf5):
        command.add_argument("recording", metavar="FILE", type=Path, help="data file, description or passport")
    return parser


def _columns(text: Optional[str], recording: Recording) -> "List[int | str] | slice":
    if text is None:
        return slice(0, 8)
    names = recording.units.columns.names
    return [part if part in names or not part.lstrip("-").isdigit() else int(part) for part in text.split(",")]


def _plot(recording: Recording, arguments: argparse.Namespace) -> None:
    times: Any = recording.time  # bisect takes whatever has a length and indexes
    first = bisect_left(times, arguments.first)
    last = recording.frames if arguments.last is None else bisect_left(times, arguments.last)
    output = arguments.output or recording.path.with_suffix(".png")
    figure(recording, first, last, _columns(arguments.channels, recording)).savefig(output, dpi=100)
    print(output)


def _to_hdf5(recording: Recording, arguments: argparse.Namespace) -> None:
    def show(share: float) -> None:
        print(f"\r{share:4.0%}", end="\n" if share >= 1 else "", file=sys.stderr, flush=True)

    progress = show if sys.stderr.isatty() else None
    print(recording.to_hdf5(arguments.output, arguments.values, arguments.overwrite, progress))


def main(arguments: Optional[List[str]] = None) -> int:
    """0 done, 1 the recording can't be used or something else went wrong, 2 bad use."""
    parsed = _parser().parse_args(arguments)
    try:
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", RecordingWarning)
            recording = open_recording(parsed.recording)
        if parsed.command == "info":
            print(summary(recording))
            return 0
        for note in recording.notes:
            print(f"warning: {note}", file=sys.stderr)
        (_plot if parsed.command == "plot" else _to_hdf5)(recording, parsed)
        return 0
    except (RecordingError, OSError, ImportError, LookupError, ValueError) as error:
        print(f"tarno2: {error.args[0] if isinstance(error, KeyError) else error}", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        return 1


if __name__ == "__main__":
    sys.exit(main())
