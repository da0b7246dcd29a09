"""What goes wrong, in words."""
from __future__ import annotations

from typing import Union

from .enums import ErrorCode
from .library import raw


class ZrvError(Exception):
    """A call failed. `code` says how, for programs; the text says what and what to try, for people.

    A code that a newer library returns and this package does not know stays a plain number.
    """

    def __init__(self, code: int, tried: str, why: str = "") -> None:
        known = code in list(ErrorCode)
        self.code: Union[ErrorCode, int] = ErrorCode(code) if known else code
        super().__init__(f"could not {tried}: {why or raw.ZRVGetErrorText(code).decode()}")
