"""Libraries that are asked for only when something needs them."""

from __future__ import annotations

import importlib
from typing import Any


def library(name: str, purpose: str) -> Any:
    """Imports a library, or says which package is missing."""
    try:
        return importlib.import_module(name)
    except ImportError as error:
        package = name.split(".")[0]
        raise ImportError(f'{purpose} needs the package "{package}" (pip install {package}): {error}') from error
