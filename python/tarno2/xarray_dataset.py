"""xarray Datasets of recordings.

Dimensions are `frame`, `channel` and `line`; the last two have their names as labels. `time` (seconds) and, where a
passport tells it, `utc` stand along the frames. All are Dask arrays: nothing is read before it is computed.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Any, Dict

from .dask_arrays import array
from .libraries import library

if TYPE_CHECKING:
    from .recording import Recording


def dataset(recording: "Recording") -> Any:
    """All of a recording; its marks are no part of it."""
    xarray = library("xarray", "to_xarray()")
    samples = ("frame", "channel")
    variables: Dict[str, Any] = {
        "volts": (samples, array(recording, "volts"), {"units": "V"}),
        "units": (samples, array(recording, "units"), {"long_name": "values in the units of the channels"}),
        "codes": (samples, array(recording, "codes")),
    }
    coordinates: Dict[str, Any] = {
        "channel": [channel.name for channel in recording.channels],
        "unit": ("channel", [channel.unit for channel in recording.channels]),
        "time": ("frame", array(recording, "time"), {"units": "s"}),
    }
    if recording.line_names:
        variables["lines"] = (("frame", "line"), array(recording, "lines"))
        coordinates["line"] = list(recording.line_names)
    if recording.has_utc:
        coordinates["utc"] = ("frame", array(recording, "utc"))
    attributes = {"rate": recording.rate, "driver": recording.driver, "source": str(recording.path)}
    if recording.start is not None:
        attributes["start"] = f"{recording.start}Z"
    return xarray.Dataset(variables, coordinates, attributes)
