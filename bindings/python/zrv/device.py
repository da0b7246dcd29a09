"""Drives a controller."""
from __future__ import annotations

import contextlib
import ctypes
import os
import time
import warnings
from threading import RLock
from typing import Any, Generic, List, NamedTuple, Optional, Tuple, Type, TypeVar, Union, overload

import numpy as np
import numpy.typing as npt

from .enums import Axes, Boot, DataMode, ErrorCode, Flash, Param, Sync
from .errors import ZrvError
from .flat import raw
from .handle import Handle
from .library import FileName, path_bytes, readable_path
from .records import DeviceParams, TrackParams, TrackStatus, whole
from .scan import MAX_SAMPLES, Colours, Floats, Scan, whole_numbers

T = TypeVar("T", int, float, bool, Axes, Boot, DataMode, Sync)

MOST_REPEATS = 32
TABLE_COLOURS = 100000
MOST_STREAM_PAIRS = 125000
WAITING_PAIRS = 32768  # what a stream read without a count may bring
MOST_SENSOR_SAMPLES = 100000
_POLL_SECONDS = 0.02
_TRIES = 3
_UNDER_WAY_SECONDS = 0.05
_WHITE = 0xFFFFFF

#: Held during every device call: one thread at a time may call into a device. Hold it around device calls through
#: `zrv.raw`.
lock = RLock()


class FoundDevice(NamedTuple):
    """A controller that answered. `port` is what Device takes."""
    port: str
    name: str
    firmware: str
    link: str
    baud_rate: int
    vmax: float


class StopPoint(NamedTuple):
    """Where the output stopped: position -1..1, digital byte, number of the sample."""
    x: float
    y: float
    m: int
    sample: int


def set_port_directory(path: Optional[FileName] = None) -> None:
    """Linux: where serial ports are looked for, for all devices; None: /dev. `zrv simulate --port-dir` puts them into
    other folders."""
    with lock:
        raw.ZRVSetPortDirectory(None if path is None else path_bytes(path))


def devices() -> List[FoundDevice]:
    """The controllers that answer, 12 at most, but for those that are connected. Takes about a second for each port
    that stays silent."""
    found = Handle("Device", lock)._run("ZRVGetAvailableDevices")

    def text(value: Any) -> str:
        return str(value.value.decode(errors="replace"))
    return [FoundDevice(text(found.comm_port_name[i]), text(found.device_name[i]), text(found.firmware_name[i]),
                        text(found.comm_type[i]), found.usart_baud_rate[i], found.vmax_mems_driver[i])
            for i in range(found.num_devices)]


class _Parameter(Generic[T]):
    """An attribute of Device that is a parameter of the controller: read as last read or set, set at once."""

    def __init__(self, param: Param, kind: Type[T], doc: str) -> None:
        self._param = param
        self._kind: Any = kind
        self.__doc__ = doc

    @overload
    def __get__(self, device: None, owner: Any) -> "_Parameter[T]": ...
    @overload
    def __get__(self, device: "Device", owner: Any) -> T: ...

    def __get__(self, device: Optional["Device"], owner: Any) -> Any:
        if device is None:
            return self
        value = device._call(f"read {self._param.name}", "ZRVGetDeviceParam", self._param)
        try:
            return self._kind(value if self._kind is float else int(value))
        except ValueError:
            return int(value)  # the wire may bring a number that has no name

    def __set__(self, device: "Device", value: T) -> None:
        number = float(self._kind(value))
        device._call(f"set {self._param.name} to {value!r}", "ZRVSetDeviceParam", self._param, number, 0.0)


class Device(Handle):
    """A connected controller.

        with zrv.Device("ttyUSB0") as device:
            device.play(scan, repeat=3, wait=True)

    port            "COM3", "ttyUSB0", "/dev/ttyUSB0"; None: the first controller found
    port_directory  as set_port_directory

    Connecting centres the mirror and switches the laser modulation off. Leaving the `with` block, or close(), stops
    playback, switches laser and outputs off (as stop() does) and disconnects; detach() leaves the controller playing.
    Afterwards every use raises ZrvError, as does every call that fails. Calls block until the controller answers,
    mostly two seconds at most. Any thread may call; the calls of all devices take their turns.

    The parameters below are those of the controller, changed as soon as they are set and clamped to its limits without
    a word. `params` is the whole record.
    """

    __slots__ = ()

    sample_rate = _Parameter(Param.SAMPLE_RATE, int, "Samples a second.")
    usart_baud_rate = _Parameter(Param.USART_BAUD_RATE, int, "Baud, 115200..3686400.")
    hardware_filter_bw = _Parameter(Param.HARDWARE_FILTER_BW, int, "Hz.")
    vdifference_max = _Parameter(Param.VDIFFERENCE_MAX, float, "Volts.")
    vbias = _Parameter(Param.VBIAS, float, "Volts.")
    data_scale = _Parameter(Param.DATA_SCALE, float, "0..1.")
    data_rotation = _Parameter(Param.DATA_ROTATION, float, "Radians.")
    mems_driver_enable = _Parameter(Param.MEMS_DRIVER_ENABLE, bool, "Whether the mirror is driven.")
    digital_output_enable = _Parameter(Param.DIGITAL_OUTPUT_ENABLE, bool, "Whether the digital byte goes out.")
    laser_modulation_enable = _Parameter(Param.LASER_MODULATION_ENABLE, bool, "Whether the laser is modulated.")
    buffer_offset = _Parameter(Param.BUFFER_OFFSET, int, "Samples.")
    device_axes = _Parameter(Param.DEVICE_AXES, Axes, "Orientation of the axes.")
    boot_setting = _Parameter(Param.BOOT_SETTING, Boot, "What the controller starts with.")
    data_mode = _Parameter(Param.DATA_MODE, DataMode, "What the controller plays or streams.")
    sync_mode = _Parameter(Param.SYNC_MODE, Sync, "Synchronisation output.")
    sync_state = _Parameter(Param.SYNC_STATE, int, "Output format code, 0..7; read only.")
    device_state = _Parameter(Param.DEVICE_STATE, int, "State word, asked for anew; read only.")

    def __init__(self, port: Optional[FileName] = None, *, port_directory: Optional[FileName] = None) -> None:
        super().__init__("Device", lock)
        if port_directory is not None:
            set_port_directory(port_directory)
        try:
            self.connect(port)
        except BaseException:
            self._freed()
            raise

    def __enter__(self) -> "Device":
        return self

    def __exit__(self, *_: Any) -> None:
        self.close()

    def __repr__(self) -> str:
        return f"<Device {'connected' if self._freed.alive and self.is_connected else 'closed'}>"

    def _call(self, tried: str, function: str, *arguments: Any) -> Any:
        """A call that tells by GetLastError how it went. Not for those that leave an earlier call's outcome."""
        with lock:
            if not self.is_connected:
                raise ZrvError(ErrorCode.NOT_CONNECTED, tried)
            return self._checked(tried, function, *arguments)

    def _checked(self, tried: str, function: str, *arguments: Any) -> Any:
        with lock:
            result = self._run(function, *arguments)
            code = self._run("ZRVGetLastError")
        if code != ErrorCode.NONE:
            raise ZrvError(code, tried)
        return result

    # ---- Connection

    def connect(self, port: Optional[FileName] = None) -> None:
        """Connects, to the first controller found without a port; an open connection is closed first."""
        if port is None:
            self._checked("connect to a controller", "ZRVConnectDeviceAuto")
        else:
            self._checked(f"connect to {os.fspath(port)}", "ZRVConnectDevice", path_bytes(port))

    def disconnect(self) -> None:
        """Leaves the controller as it is: what it plays goes on playing. connect() comes back."""
        self._run("ZRVDisconnectDevice")

    def detach(self) -> None:
        """Disconnects for good and leaves the controller playing."""
        self._freed()

    def close(self) -> None:
        """Stops playback, switches laser modulation and outputs off, and disconnects for good. RuntimeWarning: the
        controller does not answer, so that the laser may still be on. Nothing happens the second time."""
        with lock:
            try:
                if self._freed.alive and self.is_connected:
                    self.stop()
            except ZrvError as error:
                warnings.warn(f"could not make sure that the laser is off, switch it off by hand: {error}",
                              RuntimeWarning, stacklevel=2)
            finally:
                self._freed()

    @property
    def is_connected(self) -> bool:
        """Whether a port is attached; asks nobody."""
        return bool(self._run("ZRVIsDeviceConnected"))

    def is_responding(self) -> bool:
        """Asks the controller for an acknowledgement."""
        return bool(self._run("ZRVIsDeviceResponding"))

    def reset_link(self) -> None:
        """Ends half-sent commands and drops stale answers. Failed calls do this by themselves."""
        self._run("ZRVSendSerialReset")

    def reset(self) -> None:
        """Restarts the controller."""
        self._call("reset the controller", "ZRVResetDevice")

    # ---- Parameters

    @property
    def params(self) -> DeviceParams:
        """The whole record, read anew. Assigned, the fields that differ are set; ZrvError with READ_ONLY_PARAM when
        one of them can only be read."""
        record: DeviceParams = self._call("read the parameters", "ZRVGetDeviceParams")
        return record

    @params.setter
    def params(self, record: DeviceParams) -> None:
        self._call("set the parameters", "ZRVSetDeviceParams", record)

    def configure(self, **parameters: Any) -> None:
        """Sets several parameters: configure(sample_rate=40000, vbias=80). TypeError: there is none of that name."""
        known = [name for name, value in vars(Device).items() if isinstance(value, _Parameter)]
        unknown = sorted(set(parameters) - set(known))
        if unknown:
            raise TypeError(f"there is no parameter {', '.join(unknown)}; there are {', '.join(known)}")
        for name, value in parameters.items():
            setattr(self, name, value)

    @property
    def output_offsets(self) -> Tuple[float, float]:
        """X and Y, -1..1; asked for anew."""
        with lock:
            self._call("read the output offsets", "ZRVGetOutputOffsets")
            x, y = (self._run("ZRVGetDeviceParamAxis", Param.OUTPUT_OFFSETS, axis) for axis in (0, 1))
        return x, y

    @output_offsets.setter
    def output_offsets(self, offsets: Tuple[float, float]) -> None:
        self._call("set the output offsets", "ZRVSetDeviceParam", Param.OUTPUT_OFFSETS, *map(float, offsets))

    def rename(self, name: str) -> None:
        """Renames the controller: 31 bytes at most."""
        fitting = DeviceParams(device_name=name).device_name
        self._call(f"rename the controller to {name!r}", "ZRVSetDeviceName", fitting.encode())

    def load_params(self, path: FileName) -> None:
        """Applies a parameter file. OSError: it cannot be read."""
        self._call(f"load {os.fspath(path)}", "ZRVLoadDeviceParams", readable_path(path))

    def save_params(self, path: FileName) -> None:
        """Writes the parameters, as last read or set, to a parameter file."""
        self._call(f"write {os.fspath(path)}", "ZRVSaveDeviceParams", path_bytes(path))

    def save_to_flash(self, what: Flash = Flash.SETTINGS) -> None:
        """Stores the settings in the controller's flash. Takes about a second."""
        self._call("save to flash", "ZRVSaveToFlash", Flash(what))

    # ---- Playing

    def play(self, scan: Scan, repeat: Optional[int] = None, wait: bool = False, *, laser: bool = True,
             delay_samples: int = 0, minimize_jump: bool = False) -> None:
        """Sets the sample rate, sends the scan with its colours, switches mirror, laser modulation and outputs on and
        starts.

        repeat         1..32 times; None: without end
        wait           returns at the end. Ctrl-C is heard, other threads may call meanwhile
        laser          False: leaves the laser modulation and the outputs off
        delay_samples  how much later the digital byte goes out than the position
        minimize_jump  begin at the sample nearest to where the output last stopped

        ValueError: more samples than the controller holds, or waiting for what does not end. RuntimeWarning: the
        controller's limits allow another sample rate only.
        """
        if wait and repeat is None:
            raise ValueError("wait=True needs repeat=1..32: without it the scan plays without end")
        with lock:
            self.sample_rate = scan.sample_rate
            rate = self.sample_rate
            self.set_rgb(_WHITE if scan.rgb is None else scan.rgb[:TABLE_COLOURS])
            self.send(scan, delay_samples, minimize_jump)
            self.configure(mems_driver_enable=True, digital_output_enable=laser, laser_modulation_enable=laser)
            self.start(repeat)
        if rate != scan.sample_rate:
            warnings.warn(f"the controller plays at {rate} samples per second, not {scan.sample_rate}: its limit",
                          RuntimeWarning, stacklevel=2)
        if wait:
            self.wait()

    def send(self, scan: Scan, delay_samples: int = 0, minimize_jump: bool = False) -> None:
        """Loads the samples into the controller; playback goes on as it was. ValueError: more than it holds."""
        x, y, m = scan.arrays()
        with lock:
            capacity = self.params.sample_buffer_capacity
            if len(x) > capacity:
                raise ValueError(f"the scan has {len(x)} samples, but the controller holds {capacity}. Make fewer "
                                 "frames, or lower the sample rate")
            self._call("send the samples", "ZRVSendDataStream", x, y, m, len(x),
                       whole("delay_samples", delay_samples, 0, MAX_SAMPLES), minimize_jump)

    def start(self, repeat: Optional[int] = None) -> None:
        """Plays what was sent 1..32 times; None: without end."""
        times = -1 if repeat is None else whole("repeat", repeat, 1, MOST_REPEATS)
        self._call("start playing", "ZRVStartDataStream", times, False)

    def wait(self, timeout: Optional[float] = None) -> bool:
        """Waits for the end of playback, `timeout` seconds at most; whether it came."""
        end = None if timeout is None else time.monotonic() + timeout
        while self.is_running:
            if end is not None and time.monotonic() >= end:
                return False
            time.sleep(_POLL_SECONDS)
        return True

    def stop(self) -> StopPoint:
        """Ends playback, switches laser modulation and outputs off and tells where the output stopped. Tries until it
        works: on a link that is sound again two calls fail at most."""
        with lock:
            for _ in range(_TRIES - 1):
                try:
                    return self._stop()
                except ZrvError:
                    time.sleep(_UNDER_WAY_SECONDS)  # what is under way for a call that failed comes, and is dropped
                    self.reset_link()
            try:
                return self._stop()
            except ZrvError:  # send what may still help all the same
                with contextlib.suppress(ZrvError):
                    self._call("read the parameters", "ZRVGetDeviceParams")
                for output in ("laser_modulation_enable", "digital_output_enable"):
                    with contextlib.suppress(ZrvError):
                        self.configure(**{output: False})
                raise

    def _stop(self) -> StopPoint:
        self._call("stop playing", "ZRVStopDataStream")
        # After an acknowledgement that was lost the record may say off while the laser is on, and switching it off
        # would send nothing: read it first.
        self._call("read the parameters", "ZRVGetDeviceParams")
        self.configure(laser_modulation_enable=False, digital_output_enable=False)
        return StopPoint(*(self._run(f"ZRVGet{what}Stop") for what in "XYMI"))

    @property
    def is_running(self) -> bool:
        """Whether the controller plays."""
        return bool(self._call("ask what the controller does", "ZRVIsDeviceRunning"))

    @property
    def samples_remaining(self) -> int:
        """Samples still to play."""
        return int(self._call("ask for the samples remaining", "ZRVGetSamplesRemaining"))

    # ---- Position and laser

    def goto(self, x: float, y: float, m: int = 255, milliseconds: int = 100) -> None:
        """Moves to (x, y), -1..1, smoothly in 1..5000 ms or at once (0), and stays there with the digital byte m."""
        self._call(f"go to ({x}, {y})", "ZRVGoToDevicePosition", x, y, whole("m", m, 0, 255),
                   whole("milliseconds", milliseconds, 0, 5000))

    def reset_position(self) -> None:
        """Clears the output offsets and moves to the centre."""
        self._call("go to the centre", "ZRVResetDevicePosition")

    def set_rgb(self, colours: Union[int, npt.ArrayLike]) -> None:
        """Laser colours 0xRRGGBB: one for all samples, or an array by sample index, of 100000 at most. They go out with
        the next samples sent, to controllers with colours."""
        if np.ndim(colours) == 0:
            self._run("ZRVSetRGBData", whole("colours", colours, 0, _WHITE), 0)
            return
        table = whole_numbers("colours", colours, np.uint32, _WHITE)
        self._run("ZRVSetRGBDataArray", table, whole("the number of colours", len(table), 0, TABLE_COLOURS))

    def get_rgb(self, count: int = TABLE_COLOURS) -> Colours:
        """The first `count` colours of the table, uint32."""
        table = np.empty(whole("count", count, 0, TABLE_COLOURS), np.uint32)
        self._run("ZRVGetRGBData", table, count)
        return table

    def set_gammas(self, red: float = 1.0, green: float = 1.0, blue: float = 1.0) -> None:
        """sent = trunc((value / 255) ** gamma * 255), each 0 and up."""
        self._run("ZRVSetRGBGammas", red, green, blue)

    def set_laser_boost(self, on: bool) -> None:
        self._call("switch the laser boost", "ZRVSetLaserBoostEnable", 1 if on else 0)

    # ---- Sensing

    def analog_input(self, channel: int = 0) -> float:
        """One reading of input 0 or 1 in volts, about -10..10."""
        return float(self._call("read an analog input", "ZRVGetAnalogInputValue", whole("channel", channel, 0, 1)))

    def photo_detector(self) -> float:
        """One reading, 0..2."""
        return float(self._call("read the photodetector", "ZRVGetPhotoDetectorValue"))

    def capture(self, num_samples: int) -> Tuple[Floats, Floats]:
        """Both analog inputs at the sample rate, in volts: two float32 arrays of num_samples (1..16777215)."""
        ai0, ai1 = _pair(whole("num_samples", num_samples, 1, MAX_SAMPLES - 1))
        self._call("capture the analog inputs", "ZRVGetAnalogInputBuffer", ai0, ai1, num_samples)
        return ai0, ai1

    def read_stream(self, num_samples: int = 0) -> Tuple[Floats, Floats]:
        """What the controller sends by itself while data_mode is ANALOG_VOLTS, ANALOG_VOLTS_RAW (volts and counts) or
        ANALOG_NORMALIZED (-1..1): waits for num_samples pairs, 125000 at most, or takes those that have come (0). Two
        float32 arrays, shorter than asked for when the controller sends less."""
        ai0, ai1 = _pair(whole("num_samples", num_samples, 0, MOST_STREAM_PAIRS) or WAITING_PAIRS)
        with lock:
            self._need_mode(DataMode.ANALOG_VOLTS, DataMode.ANALOG_VOLTS_RAW, DataMode.ANALOG_NORMALIZED)
            count = self._call("read the stream", "ZRVGetAnalogInputStream", ai0, ai1, num_samples)
        return ai0[:count], ai1[:count]

    def read_sensor(self, num_samples: int, gain: float = 1.0) -> Floats:
        """One block of 1..100000 samples of the sensor module, while data_mode is OR_BEX1; empty when none comes.
        Values are count * 10 with firmware "ORBEX1D", else count * gain * 3.3 / 2.048 / 65535."""
        data = np.zeros(whole("num_samples", num_samples, 1, MOST_SENSOR_SAMPLES), np.float32)
        with lock:
            self._need_mode(DataMode.OR_BEX1)
            count = self._call("read the sensor module", "ZRVGetOrBEX1Stream", data, gain, num_samples)
        return data[:count]

    def _need_mode(self, *modes: DataMode) -> None:
        if self.data_mode not in modes:
            names = " or ".join(mode.name for mode in modes)
            raise ZrvError(ErrorCode.INVALID_VALUE, "read a stream", f"data_mode has to be {names} first")

    # ---- Tracking

    @property
    def is_tracking_supported(self) -> bool:
        return bool(self._call("ask for tracking", "ZRVIsTrackingSupported"))

    @property
    def track_params(self) -> TrackParams:
        """Read anew. Without tracking, tracking_supported is False. Assigned, all of them are sent, clamped."""
        record: TrackParams = self._call("read the tracking parameters", "ZRVGetTrackParams")
        return record

    @track_params.setter
    def track_params(self, record: TrackParams) -> None:
        self._call("set the tracking parameters", "ZRVSetTrackParams", record)

    def track_status(self) -> TrackStatus:
        """The tracked point."""
        record: TrackStatus = self._call("read the tracking status", "ZRVGetTrackStatus")
        return record

    def track_integrals(self) -> Tuple[int, int]:
        """The two tracking integrals, -32768..32767."""
        first, second = ctypes.c_int(), ctypes.c_int()
        self._call("read the tracking integrals", "ZRVGetTrackIntegrals", ctypes.byref(first), ctypes.byref(second))
        return first.value, second.value


def _pair(count: int) -> Tuple[Floats, Floats]:
    return np.zeros(count, np.float32), np.zeros(count, np.float32)
