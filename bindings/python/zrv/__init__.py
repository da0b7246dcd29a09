"""Drives a MEMS-mirror laser-scanning controller and generates the scans it plays.

    import zrv

    scan = zrv.DataGenerator().lissajous(freq_x=3, freq_y=4)
    with zrv.Device() as device:          # the first controller found
        device.play(scan, repeat=3, wait=True)

`DataGenerator` makes `Scan`s, NumPy arrays of samples; own arrays become one with `Scan(x, y)`. `Device` plays them and
reads inputs. What fails raises `ZrvError`. Angles are in radians, positions -1..1. The functions of the C interface are
all in `zrv.raw` (see help(zrv.flat)).

The library is looked for where the environment variable ZRV_LIBRARY says, within this package, and where the system
keeps libraries.
"""
from .device import Device, FoundDevice, StopPoint, devices, lock, set_port_directory
from .enums import (Animation, Axes, Boot, Closing, Curve, DataMode, ErrorCode, Flash, ImportFormat, Modulation, Param,
                    Profile, ScanPattern, Sync, Waveform, WaveformAxes)
from .errors import ZrvError
from .flat import raw
from .generator import DataGenerator, FilterType
from .records import (AvailableDevices, ClockSettings, DeviceParams, ImportSettings, LissajousSettings,
                      PatternSettings, ScanSettings, SignalSettings, SpirographSettings, TextSettings, TrackParams,
                      TrackStatus, WaveformSettings)
from .scan import Scan

__version__: str = raw.ZRVGetAPIVersion().decode()

__all__ = [
    "Animation", "AvailableDevices", "Axes", "Boot", "ClockSettings", "Closing", "Curve", "DataGenerator", "DataMode",
    "Device", "DeviceParams", "ErrorCode", "FilterType", "Flash", "FoundDevice", "ImportFormat", "ImportSettings",
    "LissajousSettings", "Modulation", "Param", "PatternSettings", "Profile", "Scan", "ScanPattern", "ScanSettings",
    "SignalSettings", "SpirographSettings", "StopPoint", "Sync", "TextSettings", "TrackParams", "TrackStatus",
    "Waveform", "WaveformAxes", "WaveformSettings", "ZrvError", "devices", "lock", "raw", "set_port_directory",
]
