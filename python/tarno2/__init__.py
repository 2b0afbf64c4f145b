"""Reads the recordings of Tarno2.

    import tarno2

    rec = tarno2.open("run.dat")
    rec.volts[1_000_000:2_000_000, "bearing"]     # a NumPy array; nothing else is read
    rec.units[::1000]                             # every channel, in its unit, each thousandth frame
    rec.lines[:, 0], rec.time[:1000], rec.utc[-1], rec.marks, rec.records[3]

`open` takes a data file, its description or its passport and joins the pieces of a recording that was cut;
`open_folder` opens all recordings of a folder. `Recording` tells what is there. NumPy is all that is needed; the
exports (`to_hdf5`, `to_xarray`, `to_dask`, `to_mne`) want the libraries that they are called after.
"""

from .clock import Clock
from .errors import RecordingError, RecordingWarning
from .marks import Mark
from .opening import open_folder
from .opening import open_recording as open
from .passport import Loss, Passport
from .pieces import Piece
from .recording import Channel, Recording
from .records import TriggerRecord, TriggerRecords

__version__ = "2.1.0"

__all__ = [
    "Channel",
    "Clock",
    "Loss",
    "Mark",
    "Passport",
    "Piece",
    "Recording",
    "RecordingError",
    "RecordingWarning",
    "TriggerRecord",
    "TriggerRecords",
    "open",
    "open_folder",
]
