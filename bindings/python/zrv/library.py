"""Finds and loads the shared library and the files that belong to it."""
from __future__ import annotations

import ctypes
import ctypes.util
import os
import sys
from pathlib import Path
from typing import Optional, Union

#: A file name.
FileName = Union[str, "os.PathLike[str]"]

_HERE = Path(__file__).resolve().parent
_WINDOWS = sys.platform == "win32"
_NAMES = ["zrv.dll"] if _WINDOWS else ["libzrv.so.10", "libzrv.so"]


def path_bytes(path: FileName) -> bytes:
    """A file name as the library takes it. Raises ValueError when it holds a zero."""
    name = os.fspath(path)
    encoded = name.encode("mbcs") if sys.platform == "win32" else os.fsencode(name)
    if b"\0" in encoded:
        raise ValueError(f"the file name {name!r} holds a zero")
    return encoded


def readable_path(path: FileName) -> bytes:
    """The same of a file that can be read. Raises OSError: the library reports nothing of the kind."""
    encoded = path_bytes(path)
    with open(os.fspath(path), "rb"):
        return encoded


def _chosen() -> Optional[Path]:
    """The library that was named, or else the one within the package."""
    named = os.environ.get("ZRV_LIBRARY")
    if named:
        return Path(named).resolve()
    beside = [_HERE / name for name in ("zrv.dll", "libzrv.so")]
    return next((path for path in beside if path.is_file()), None)


def _load() -> ctypes.CDLL:
    chosen = _chosen()
    if chosen is not None:
        names = [str(chosen)]
    else:
        names = [*_NAMES, *filter(None, [ctypes.util.find_library("zrv")])]
    reasons = []
    for name in names:
        try:
            return ctypes.CDLL(name)
        except OSError as error:
            reasons.append(str(error))
    raise ImportError(
        "the library of ZRV cannot be loaded (" + "; ".join(reasons) + ").\n"
        "Build it (scripts/test or cmake) and install this package again, which then brings the library along, or\n"
        "install it (cmake --install build) or name its file in the environment variable ZRV_LIBRARY.")


def data_file(name: str) -> Optional[Path]:
    """A header or the default font: within the package, in the tree it lies in, or where the library is installed."""
    places = [_HERE, _HERE.parents[2] / "include"] if len(_HERE.parents) > 2 else [_HERE]
    chosen = _chosen()
    if chosen is not None:
        places += [chosen.parents[up] / "share" / "zrv" for up in range(min(3, len(chosen.parents)))]
    places += [Path(prefix) / "share" / "zrv" for prefix in (sys.prefix, "/usr/local", "/usr")]
    return next((place / name for place in places if (place / name).is_file()), None)


#: The shared library. Its functions are declared by zrv.flat.
raw = _load()
