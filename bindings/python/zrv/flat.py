"""Declares every function of ZRVFlatInterface.h, as the header itself says.

`raw` is the loaded library: `raw.ZRVSineWaveform(generator, x, y, m, 1000, 0.5, 3, 0.0)`. Handles are numbers, and
null ones or sizes that are not true end the process: unlike the rest of the package, `raw` checks types only.
NumPy arrays go straight in: where the header says const, anything that converts; elsewhere contiguous arrays of just
the element type, because the library writes into them. Device calls belong into `with zrv.lock:`.
"""
from __future__ import annotations

import ctypes
import re
from typing import Any, Dict, Iterator, List, NamedTuple, Optional, Tuple, Type

import numpy as np

from . import records
from .library import data_file, path_bytes
from .library import raw as raw

_NUMBERS: Dict[str, Any] = {"bool": ctypes.c_bool, "unsigned char": ctypes.c_ubyte, "int": ctypes.c_int,
                            "unsigned int": ctypes.c_uint, "float": ctypes.c_float}
_RECORDS = {kind.__name__: kind for kind in [*records.Record.__subclasses__(), *records.Settings.__subclasses__()]
            if kind is not records.Settings}


class Function(NamedTuple):
    """A function as declared: C types of the result and the arguments."""
    name: str
    result: str
    arguments: Tuple[str, ...]


def header_functions() -> Iterator[Function]:
    """What the header declares, in its order."""
    header = data_file("ZRVFlatInterface.h")
    if header is None:
        raise ImportError("the package is not whole: ZRVFlatInterface.h is missing. Install it again")
    text = re.sub(r"/\*.*?\*/", " ", header.read_text(encoding="utf-8"), flags=re.DOTALL)
    for result, name, arguments in re.findall(r"ZRV_API\s+([^;]*?)\s*(\w+)\(([^)]*)\);", text):
        types = [] if arguments.strip() == "void" else [_type_of(argument) for argument in arguments.split(",")]
        yield Function(name, " ".join(result.split()), tuple(types))


def _type_of(argument: str) -> str:
    """`const float* x` without the name."""
    return re.sub(r"\s*\w+$", "", " ".join(argument.split()))


class _Array:
    """An argument that points to numbers: None, an array of NumPy or ctypes, or a byref()."""

    def __init__(self, ctype: Any, read_only: bool) -> None:
        self.pointer = ctypes.POINTER(ctype)
        self.dtype = np.dtype(ctype)
        self.read_only = read_only

    def from_param(self, value: Any) -> Any:
        if not isinstance(value, np.ndarray):
            return self.pointer.from_param(value)
        if self.read_only:
            value = np.ascontiguousarray(value, self.dtype)
        elif value.dtype != self.dtype or not value.flags.carray:
            raise TypeError(f"needs a contiguous, writable array of {self.dtype}")
        return value.ctypes.data_as(self.pointer)


def _record_of(ctype: str) -> Optional[Type[records.Record]]:
    match = re.fullmatch(r"ZRV(\w+?)(Struct)?", ctype)
    return _RECORDS.get(match.group(1)) if match else None


def ctypes_of(ctype: str) -> Any:
    """What ctypes calls a type of the header. Handles are void pointers; enumerations, by value, unsigned int."""
    plain = ctype.replace("const ", "").rstrip("*")
    record = _record_of(plain)
    if ctype.endswith("*"):
        if plain == "char":
            return ctypes.c_char_p
        if plain in _NUMBERS:
            return _Array(_NUMBERS[plain], ctype.startswith("const "))
        return ctypes.POINTER(record) if record else ctypes.c_void_p
    return None if ctype == "void" else record or _NUMBERS.get(ctype, ctypes.c_uint)


def _declare(functions: List[Function]) -> None:
    for function in functions:
        try:
            entry = getattr(raw, function.name)
        except AttributeError:
            raise ImportError(f"the library {raw._name} has no {function.name}: it is older than this package. "
                              "Build and install both from the same tree") from None
        # Text that is to be freed stays a pointer; as c_char_p it would be copied and lost.
        freed = function.result == "char*"
        entry.restype = ctypes.POINTER(ctypes.c_char) if freed else ctypes_of(function.result)
        entry.argtypes = [ctypes_of(argument) for argument in function.arguments]


_declare(list(header_functions()))

# Parameter files hold enumerations by name, which the library looks up in this header.
_definitions = data_file("ZRVDefinitions.h")
if _definitions is not None:
    raw.ZRVSetDefinitionsFile(path_bytes(_definitions))
