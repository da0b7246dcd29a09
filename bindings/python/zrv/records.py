"""The records of the library as classes.

A field is an attribute: reading gives Python's numbers, texts and enumerations, and what does not fit is refused.
The annotations are at the same time the C types, in the order of ZRVDefinitions.h. Fields that begin with an
underscore are sizes and pointers, which the package fills in.
"""
from __future__ import annotations

import ctypes
import operator
from enum import IntEnum
from typing import Annotated, Any, Callable, Iterator, Tuple, Type, TypeVar, get_type_hints

from .enums import (Animation, Axes, Boot, Closing, Curve, DataMode, ImportFormat, Modulation, Profile, ScanPattern,
                    Sync, Waveform, WaveformAxes)
from .library import raw

Int = Annotated[int, ctypes.c_int]
UInt = Annotated[int, ctypes.c_uint]
Byte = Annotated[int, ctypes.c_ubyte]
Float = Annotated[float, ctypes.c_float]
Bool = Annotated[bool, ctypes.c_bool]
Text = Annotated[bytes, ctypes.c_char_p]
Text16 = Annotated[str, ctypes.c_char * 16]
Text18 = Annotated[str, ctypes.c_char * 18]
Text32 = Annotated[str, ctypes.c_char * 32]
Floats = Annotated[Any, ctypes.POINTER(ctypes.c_float)]
UInts = Annotated[Any, ctypes.POINTER(ctypes.c_uint)]
Bytes = Annotated[Any, ctypes.POINTER(ctypes.c_ubyte)]

MAX_DEVICES = 12
R = TypeVar("R", bound="Record")


def whole(name: str, value: Any, lowest: int, highest: int) -> int:
    """A whole number within a range. Raises TypeError or ValueError, where C would wrap around."""
    number = operator.index(value)
    if not lowest <= number <= highest:
        raise ValueError(f"{name} is {number}, but has to be {lowest}..{highest}")
    return number


def _whole_setter(name: str, ctype: Any) -> Callable[[Any], int]:
    bits = 8 * ctypes.sizeof(ctype)
    lowest, highest = (-(1 << bits - 1), (1 << bits - 1) - 1) if ctype is ctypes.c_int else (0, (1 << bits) - 1)
    return lambda value: whole(name, value, lowest, highest)


def _text_setter(name: str, size: int) -> Callable[[Any], bytes]:
    def encode(value: str) -> bytes:
        text = value.encode()
        if len(text) >= size or b"\0" in text:
            raise ValueError(f"{name} takes {size - 1} bytes at most, none of them zero")
        return text
    return encode


def _as_member(kind: Type[IntEnum]) -> Callable[[int], int]:
    # The wire may bring a number that has no name.
    return lambda value: kind(value) if value in kind.__members__.values() else value


def _ctype(hint: Any) -> Any:
    return ctypes.c_uint if isinstance(hint, type) else hint.__metadata__[0]


def _field(name: str, hint: Any, plain: Any) -> property:
    """A property over the plain field of ctypes, which would cut numbers and give texts as bytes."""
    ctype = _ctype(hint)
    to_python: Callable[[Any], Any] = lambda value: value
    to_c: Callable[[Any], Any] = to_python
    if isinstance(hint, type):
        to_python, to_c = _as_member(hint), hint
    elif hint.__origin__ is int:
        to_c = _whole_setter(name, ctype)
    elif hint.__origin__ is str:
        to_python, to_c = lambda value: value.decode(errors="replace"), _text_setter(name, ctypes.sizeof(ctype))

    def read(record: Any) -> Any:
        return to_python(plain.__get__(record))

    def write(record: Any, value: Any) -> None:
        plain.__set__(record, to_c(value))
    return property(read, write)


def _record(cls: Type[R]) -> Type[R]:
    """Makes the fields of a record from its annotations."""
    hints = get_type_hints(cls, include_extras=True)
    cls._fields_ = [(name, _ctype(hint)) for name, hint in hints.items()]
    for name, hint in hints.items():
        if not name.startswith("_"):
            setattr(cls, name, _field(name, hint, getattr(cls, name)))
    return cls


class Record(ctypes.Structure):
    """Made with keywords; also a mapping, so that dict(record) works."""

    def __init__(self, **fields: Any) -> None:
        super().__init__()
        self.update(**fields)

    @classmethod
    def keys(cls) -> Tuple[str, ...]:
        return tuple(field[0] for field in cls._fields_ if not field[0].startswith("_"))

    def __iter__(self) -> Iterator[str]:
        return iter(self.keys())

    def __getitem__(self, name: str) -> Any:
        if name not in self.keys():
            raise KeyError(name)
        return getattr(self, name)

    def __eq__(self, other: object) -> bool:
        return type(other) is type(self) and dict(self) == dict(other)  # type: ignore[call-overload]

    def __repr__(self) -> str:
        return f"{type(self).__name__}({', '.join(f'{name}={self[name]!r}' for name in self)})"

    def update(self, **fields: Any) -> None:
        """Sets fields. An unknown one: TypeError; a value that does not fit: ValueError or TypeError."""
        for name, value in fields.items():
            if name not in self.keys():
                raise TypeError(f"{type(self).__name__} has no {name!r}; it has {', '.join(self.keys())}")
            try:
                setattr(self, name, value)
            except (TypeError, ValueError) as error:
                raise type(error)(f"{name}={value!r}: {error}") from None


@_record
class DeviceParams(Record):
    """A controller's configuration. What it reports of itself and its limits can only be read.

    sample_rate in samples a second, hardware_filter_bw in Hz, vdifference_max and vbias in volts, x_offset and
    y_offset -1..1, data_scale 0..1, data_rotation in radians (its sign is lost on reading back), the three enables
    0 or 1, buffer_offset and sample_buffer_capacity in samples.
    """
    params_valid: Byte
    device_name: Text32
    firmware_name: Text16
    comm_type: Text16
    bluetooth_mac: Text18
    hardware_filter_on: UInt
    vmax_mems_driver: Float
    device_state: UInt
    device_error_register: UInt
    usart_baud_rate: UInt
    sample_rate: UInt
    hardware_filter_bw: UInt
    vdifference_max: Float
    vbias: Float
    x_offset: Float
    y_offset: Float
    data_scale: Float
    data_rotation: Float
    mems_driver_enable: UInt
    digital_output_enable: UInt
    laser_modulation_enable: UInt
    buffer_offset: UInt
    device_axes: Axes
    boot_setting: Boot
    data_mode: DataMode
    sync_mode: Sync
    sync_state: UInt
    sample_rate_min: UInt
    sample_rate_max: UInt
    limit_word3: UInt
    sample_buffer_capacity: UInt
    hardware_filter_bw_min: UInt
    hardware_filter_bw_max: UInt
    limit_byte7: UInt
    limit_byte8: UInt
    limit_byte9: UInt
    limit_byte10: UInt
    vbias_min: UInt
    vbias_max: UInt


@_record
class AvailableDevices(Record):
    """What discovery found, as arrays of which the first num_devices entries are filled. zrv.devices() is handier."""
    device_name: Annotated[Any, (ctypes.c_char * 32) * MAX_DEVICES]
    firmware_name: Annotated[Any, (ctypes.c_char * 16) * MAX_DEVICES]
    comm_type: Annotated[Any, (ctypes.c_char * 16) * MAX_DEVICES]
    usart_baud_rate: Annotated[Any, ctypes.c_uint * MAX_DEVICES]
    comm_port_number: Annotated[Any, ctypes.c_uint * MAX_DEVICES]
    comm_port_name: Annotated[Any, (ctypes.c_char * 10) * MAX_DEVICES]
    vmax_mems_driver: Annotated[Any, ctypes.c_float * MAX_DEVICES]
    num_devices: UInt


@_record
class TrackParams(Record):
    """threshold 0..1, normal_gain 0..255, tangential_gain -25..25, buffer_delay 0..191 samples, hit_ratio 0..1."""
    tracking_supported: Bool
    threshold: Float
    normal_gain: Int
    tangential_gain: Int
    buffer_delay: UInt
    hit_ratio: Float
    state_bit0: UInt
    state_bit1: UInt
    state_bit2: UInt


@_record
class TrackStatus(Record):
    """The tracked point, x and y -1..1; valid tells whether it arrived."""
    valid: Bool
    status_flag: Bool
    x: Float
    y: Float
    status_value: UInt


class Settings(Record):
    """Settings of a generator. Those not given have the library's initial values."""

    def __init__(self, **fields: Any) -> None:
        super().__init__()
        getattr(raw, f"ZRVInit{type(self).__name__}")(ctypes.byref(self))
        self.update(**fields)


@_record
class ScanSettings(Settings):
    """What all generators share. Angles are in radians.

    sample_rate samples a second, refresh_rate frames a second: a frame has sample_rate / refresh_rate samples
    (no part in rasters and signals, which choose their own rate between sample_rate_min and sample_rate_max)
    animation, animation_duration in seconds: refresh_rate * animation_duration frames
    scale, angle (clockwise), offset_x, offset_y: about the centre of the figure; tangential, radial: distortions;
    projective: by DataGenerator.set_projection
    profile, blank_speed (1..10), draw_accel, blank_accel (0..0.5), keypoint_budget, closing: from keypoints to samples
    filter, filter_zero_phase: by DataGenerator.set_filter
    """
    _array_capacity: UInt
    sample_rate: UInt
    refresh_rate: Float
    animation: Animation
    animation_duration: Float
    scale: Float
    angle: Float
    offset_x: Float
    offset_y: Float
    projective: Bool
    tangential: Float
    radial: Float
    profile: Profile
    blank_speed: Float
    draw_accel: Float
    blank_accel: Float
    keypoint_budget: UInt
    closing: Closing
    filter: Bool
    filter_zero_phase: Bool
    sample_rate_min: UInt
    sample_rate_max: UInt


@_record
class WaveformSettings(Settings):
    """amplitude: peak value; cycles: periods a frame; phase in radians; portion of a period, 0..1, that rises
    (sawtooth) or is low (square)."""
    waveform: Waveform
    axes: WaveformAxes
    amplitude: Float
    cycles: UInt
    phase: Float
    portion: Float


@_record
class SpirographSettings(Settings):
    """amplitude: radius of the farthest point; ring_a, ring_b: fixed and rolling ring, at least 1 (a rose has
    ring_a / ring_b petals); pen_distance from the rolling ring's centre, for the trochoids."""
    curve: Curve
    triangle_wave: Bool
    amplitude: Float
    ring_a: Int
    ring_b: Int
    pen_distance: Int


@_record
class LissajousSettings(Settings):
    """x = amplitude sin(freq_x t), y = amplitude sin(freq_y t + phase), t once around 2 pi a frame; triangle_wave in
    place of the sine. modulation of y by mod_depth (radians for the phase), mod_freq times a frame, mod_phase."""
    triangle_wave: Bool
    amplitude: Float
    freq_x: UInt
    freq_y: UInt
    phase: Float
    modulation: Modulation
    mod_depth: Float
    mod_freq: UInt
    mod_phase: Float


@_record
class ClockSettings(Settings):
    """digital: digits in `font`, else hands. amplitude: length of the longest hand, half the width of the digits."""
    digital: Bool
    hours: UInt
    minutes: UInt
    seconds: UInt
    amplitude: Float
    font: UInt


@_record
class SignalSettings(Settings):
    """y one sine, or triangle rising for rise_portion (0..1), at frequency (1..40000 Hz); x a sine at x_multiple
    times its rate."""
    triangle_y: Bool
    amplitude_x: Float
    amplitude_y: Float
    frequency: UInt
    x_multiple: Float
    rise_portion: Float


@_record
class ImportSettings(Settings):
    """amplitude: half the longer side of a drawing; angle_x, angle_y: its view, 0 and pi / 2 show a flat one upright;
    keypoints: a point file gives corners, not samples; transition_time between point times, in ms."""
    _file_name: Text
    format: ImportFormat
    _frames: UInts
    _num_frames: UInt
    amplitude: Float
    angle_x: Float
    angle_y: Float
    keypoints: Bool
    transition_time: Float


@_record
class TextSettings(Settings):
    """font: number within the font file; amplitude: half the longer side."""
    _text: Text
    _length: UInt
    font: UInt
    amplitude: Float


@_record
class PatternSettings(Settings):
    """x_amplitude of the stack of lines, y_amplitude of the sweep with its turnarounds, 0..1; num_pixels a line, 2 and
    up; line_duration in seconds; pixel_hold: dwell at each pixel; digital_shift: samples by which m is delayed;
    rotation_angle clockwise; dwell_time and transition_time between points in ms."""
    _pattern: ScanPattern
    x_amplitude: Float
    y_amplitude: Float
    num_lines: UInt
    num_pixels: UInt
    line_duration: Float
    pixel_hold: Bool
    bidirectional: Bool
    digital_shift: Int
    rotation_angle: Float
    _point_x: Floats
    _point_y: Floats
    _point_m: Bytes
    _dwell_times: Floats
    dwell_time: Float
    _num_points: UInt
    transition_time: Float

