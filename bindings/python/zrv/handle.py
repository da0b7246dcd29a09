"""What devices and generators share: an object of the library that is freed once and refuses to be used afterwards."""
from __future__ import annotations

import ctypes
import weakref
from typing import Any

from .enums import ErrorCode
from .errors import ZrvError
from .flat import raw


def _delete(kind: str, address: int, lock: Any) -> None:
    with lock:
        getattr(raw, f"ZRVDelete{kind}")(address)


class Handle:
    """An object of the library. `kind` names the create and delete functions; `lock` lets one call at a time in."""

    __slots__ = ("_lock", "_address", "_freed", "__weakref__")

    def __init__(self, kind: str, lock: Any) -> None:
        self._lock = lock
        with lock:
            self._address = getattr(raw, f"ZRVCreate{kind}")()
        if not self._address:
            raise MemoryError
        self._freed = weakref.finalize(self, _delete, kind, self._address, lock)

    def close(self) -> None:
        """Frees it. Afterwards every use raises ZrvError; nothing happens the second time."""
        self._freed()

    @property
    def handle(self) -> int:
        """The address that the functions of `zrv.raw` take first. Raises ZrvError once it is freed."""
        if not self._freed.alive:
            raise ZrvError(ErrorCode.NOT_CONNECTED, f"use this {type(self).__name__}",
                           "it was closed. Make a new one")
        return int(self._address)

    def _run(self, function: str, *arguments: Any) -> Any:
        """Calls a function of the flat interface with the handle ahead of its arguments."""
        with self._lock:
            try:
                return getattr(raw, function)(self.handle, *arguments)
            except ctypes.ArgumentError as error:
                raise TypeError(f"{function}, where argument 1 is the handle: {error}") from None
