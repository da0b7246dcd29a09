"""What goes wrong, in words."""
from __future__ import annotations

from typing import Union

from .enums import ErrorCode

# What happened, and what to try.
_TEXTS = {
    ErrorCode.NONE: ("success", "Nothing has to be done"),
    ErrorCode.NOT_CONNECTED: ("no controller is connected", "Connect first; zrv.devices() lists what is there"),
    ErrorCode.SERIAL_COMM: ("the controller cannot be reached over its port",
                            "Check that it is on, plugged in and not used by another program"),
    ErrorCode.DEVICE_RESPONSE: ("the controller did not answer in time",
                                "Try again; if it stays silent, switch it off and on"),
    ErrorCode.SERIAL_RESET: ("the link could not be brought back in step", "Switch the controller off and on"),
    ErrorCode.BAD_ACKNOWLEDGE: ("the answer is not that of a controller",
                                "Check with zrv.devices() that this is the controller's port"),
    ErrorCode.INVALID_VALUE: ("a value is outside its range", "The documentation of the call gives the range"),
    ErrorCode.READ_ONLY_PARAM: ("a value in it can only be read", "The other values were set"),
    ErrorCode.INVALID_PARAM: ("there is no such parameter, or it cannot be set", "zrv.Param lists them"),
    ErrorCode.INVALID_PORT_NAME: ("there is no serial port of that name",
                                  "Give a name like ttyUSB0 or /dev/ttyUSB0, on Windows COM3"),
    ErrorCode.NO_DEVICE_FOUND: ("no controller was found there",
                                "Check the cable, your right to open the port and that no other program has it; "
                                "without hardware, run `zrv simulate --port-dir DIR` and give port_directory=DIR"),
}


class ZrvError(Exception):
    """A call failed. `code` says how, for programs; the text says what and what to try, for people.

    A code that a newer library returns and this package does not know stays a plain number.
    """

    def __init__(self, code: int, tried: str, why: str = "") -> None:
        known = code in _TEXTS
        self.code: Union[ErrorCode, int] = ErrorCode(code) if known else code
        what, advice = _TEXTS[ErrorCode(code)] if known else (f"error {code}", "Try again")
        super().__init__(f"could not {tried}: {why}" if why else f"could not {tried}: {what}. {advice}.")
