"""Makes scans."""
from __future__ import annotations

import ctypes
import inspect
import os
from enum import IntEnum
from threading import RLock
from typing import Any, Callable, Dict, List, Optional, Sequence, Type, TypeVar

import numpy as np
import numpy.typing as npt

from .enums import ErrorCode, Profile, ScanPattern
from .errors import ZrvError
from .handle import Handle
from .library import FileName, data_file, path_bytes, readable_path
from .records import (ClockSettings, ImportSettings, LissajousSettings, PatternSettings, ScanSettings, Settings,
                      SignalSettings, SpirographSettings, TextSettings, WaveformSettings, whole)
from .scan import MAX_SAMPLES, Scan, floats, whole_numbers

Method = TypeVar("Method", bound=Callable[..., Any])
MOST_KEYPOINTS = 1 << 20
MOST_IMAGE_LINES = 4096


class FilterType(IntEnum):
    """Low passes of DataGenerator.set_filter. LOADED: the coefficients of load_filter."""
    NONE = 0
    BESSEL = 1
    BUTTERWORTH = 2
    CHEBYSHEV_1 = 3
    CHEBYSHEV_2 = 4
    ELLIPTIC = 5
    LEGENDRE = 6
    LOADED = 7


def _takes(kind: Type[Settings]) -> Callable[[Method], Method]:
    """Lets help() and completion show the settings of a method with their initial values, which the library knows."""
    def with_signature(method: Method) -> Method:
        own = [p for p in inspect.signature(method).parameters.values() if p.kind is not p.VAR_KEYWORD]
        initial = {**dict(kind()), **dict(ScanSettings())}
        keywords = [inspect.Parameter(name, inspect.Parameter.KEYWORD_ONLY, default=round(value, 6)
                                      if isinstance(value, float) else value) for name, value in initial.items()]
        method.__signature__ = inspect.Signature([*own, *keywords])  # type: ignore[attr-defined]
        kinds: List[Type[Settings]] = [kind, ScanSettings]
        about = [f"{each.__name__}: {inspect.getdoc(each)}" for each in kinds]
        method.__doc__ = "\n\n".join([inspect.getdoc(method) or "", *about])
        return method
    return with_signature


class DataGenerator(Handle):
    """Makes scans; needs no controller. One thread at a time calls into it, others wait.

    The patterns take their settings by keyword, those of the pattern and those of ScanSettings; help() of each lists
    them. Records may be given too and keywords then change them:

        generator.lissajous(freq_x=3, sample_rate=40000)
        generator.lissajous(zrv.LissajousSettings(freq_x=3), zrv.ScanSettings(sample_rate=40000), phase=0)

    TypeError: an unknown keyword. ValueError: a value that does not fit its type. ZrvError: settings that give no
    samples, or more than 16777216.
    """

    __slots__ = ("_font_loaded",)

    def __init__(self) -> None:
        self._font_loaded = False
        super().__init__("DataGenerator", RLock())

    # ---- Patterns

    @_takes(WaveformSettings)
    def waveform(self, *records: Settings, **settings: Any) -> Scan:
        """A sine, sawtooth, square or noise, over time or on one axis."""
        return self._compose("Waveform", WaveformSettings(), records, settings)

    @_takes(SpirographSettings)
    def spirograph(self, *records: Settings, **settings: Any) -> Scan:
        """One circle rolling on another, or a rose."""
        return self._compose("Spirograph", SpirographSettings(), records, settings)

    @_takes(LissajousSettings)
    def lissajous(self, *records: Settings, **settings: Any) -> Scan:
        """A Lissajous figure."""
        return self._compose("Lissajous", LissajousSettings(), records, settings)

    @_takes(ClockSettings)
    def clock(self, *records: Settings, **settings: Any) -> Scan:
        """A clock with hands or digits."""
        self._need_font()
        return self._compose("Clock", ClockSettings(), records, settings)

    @_takes(SignalSettings)
    def signal(self, *records: Settings, **settings: Any) -> Scan:
        """One period of a test signal on both axes."""
        return self._compose("Signal", SignalSettings(), records, settings)

    @_takes(TextSettings)
    def text(self, text: str, *records: Settings, **settings: Any) -> Scan:
        """A line of text, of the characters 32..127. The font is the default one unless load_font gave another.
        FileNotFoundError: there is no font; ValueError: other characters."""
        self._need_font(required=True)
        own = TextSettings()
        try:
            own._text = text.encode("ascii")
        except UnicodeEncodeError as error:
            raise ValueError(f"the fonts have no {text[error.start]!r}; they have the characters of ASCII") from None
        own._length = len(own._text)
        return self._compose("Text", own, records, settings)

    @_takes(ImportSettings)
    def import_file(self, path: FileName, *records: Settings, frames: Optional[Sequence[int]] = None,
                    **settings: Any) -> Scan:
        """A drawing (ILDA Image Data Transfer Format), point file or point-time file. frames: those of a drawing to
        take, numbered from 1. OSError: the file cannot be read; ZrvError: it is of no such kind."""
        own = ImportSettings()
        own._file_name = readable_path(path)
        if frames is not None:
            numbers = whole_numbers("frames", frames, np.uint32, 0xFFFFFFFF)
            own._frames, own._num_frames = _owned(numbers, ctypes.c_uint), len(numbers)
        return self._compose("ImportFile", own, records, settings)

    @_takes(PatternSettings)
    def raster(self, *records: Settings, imaging: bool = False, **settings: Any) -> Scan:
        """Lines along y, stacked along x. imaging: without lead-in and with the sample timing that imaging wants.
        The sample rate is chosen between sample_rate_min and sample_rate_max. m: bit 0 active part of a line, bit 1
        pixel clock, bit 2 first active sample of the frame, bit 6 (imaging) backward line, bit 7 line start."""
        own = PatternSettings()
        own._pattern = ScanPattern.IMAGING_RASTER if imaging else ScanPattern.RASTER
        return self._compose("Scan", own, records, settings)

    @_takes(PatternSettings)
    def point_to_point(self, x: npt.ArrayLike, y: npt.ArrayLike, *records: Settings, m: npt.ArrayLike = 255,
                       dwell_times: Optional[npt.ArrayLike] = None, **settings: Any) -> Scan:
        """Dwells at points and moves between them, dark. m: digital byte of each, or of all. dwell_times: ms of each
        with the move to the next, else dwell_time for all. All of one length."""
        points = Scan(x, y, m)
        own = PatternSettings()
        own._pattern, own._num_points = ScanPattern.POINT_TO_POINT, len(points)
        own._point_x, own._point_y = _owned(points.x, ctypes.c_float), _owned(points.y, ctypes.c_float)
        own._point_m = _owned(points.m, ctypes.c_ubyte)
        if dwell_times is not None:
            times = floats("dwell_times", dwell_times)
            if len(times) != len(points):
                raise ValueError(f"{len(points)} points need as many dwell_times, not {len(times)}")
            own._dwell_times = _owned(times, ctypes.c_float)
        return self._compose("Scan", own, records, settings)

    def image(self, pixels: npt.ArrayLike, num_lines: int = 100, num_pixels: int = 100, *, line_duration: float = 0.02,
              x_amplitude: float = 0.9, y_amplitude: float = 0.9, binary: bool = False, threshold: int = 128,
              bidirectional: bool = True, sample_rate_min: int = 200, sample_rate_max: int = 100000) -> Scan:
        """A bitmap burnt line by line, dark burns bright; the longer side spans the amplitude.

        pixels: uint8, (rows, columns) grey or (rows, columns, 3) red, green, blue; resized to num_pixels by num_lines
        (4096 at most each). line_duration in seconds. binary: full intensity below threshold and none above.
        ZrvError: too many samples, or a library built without OpenCV.
        """
        bitmap = np.asarray(pixels)
        if bitmap.dtype != np.uint8 or bitmap.ndim < 2 or bitmap.shape[2:] not in ((), (3,)) or not bitmap.size:
            raise ValueError("pixels has to be a uint8 array of shape (rows, columns) or (rows, columns, 3)")
        rows, columns, channels = (*bitmap.shape, 1)[:3]
        bitmap = np.ascontiguousarray(bitmap if channels == 1 else bitmap[..., ::-1])
        for name, value in {"num_lines": num_lines, "num_pixels": num_pixels}.items():
            whole(name, value, 1, MOST_IMAGE_LINES)
        for name, value in {"sample_rate_min": sample_rate_min, "sample_rate_max": sample_rate_max}.items():
            whole(name, value, 1, 1 << 24)
        whole("threshold", threshold, 0, 256)
        rate = ctypes.c_uint()

        def fill(x: Any, y: Any, m: Any) -> int:
            return int(self._run(
                "ZRVImageRasterPattern", x, y, m, x_amplitude, y_amplitude, num_lines, num_pixels, bitmap, columns,
                rows, channels, 0, binary, threshold, line_duration, bidirectional, ctypes.byref(rate),
                sample_rate_min, sample_rate_max))
        with self._lock:
            arrays = _filled(fill(None, None, None), fill)
            return _scan("image", arrays, rate.value)

    # ---- Own keypoints and samples

    def interpolate(self, x: npt.ArrayLike, y: npt.ArrayLike, m: npt.ArrayLike = 255, *, num_samples: int = 1000,
                    sample_rate: int = 20000, profile: Profile = Profile.OPTIMIZED, blank_speed: float = 2.0,
                    draw_accel: float = 0.1, blank_accel: float = 0.25) -> Scan:
        """Samples, about num_samples, of a path through keypoints (2 at least). The line from a keypoint to the next
        carries the keypoint's digital byte; where that is 0 it is dark. For a closed path repeat the first one."""
        path, profile = Scan(x, y, m), Profile(profile)
        count = whole("the number of keypoints", len(path), 2, MOST_KEYPOINTS)
        wanted = whole("num_samples", num_samples, 1, MAX_SAMPLES // 2)

        def fill(to_x: Any, to_y: Any, to_m: Any) -> int:
            if profile == Profile.OPTIMIZED:
                return int(self._run("ZRVInterpolateDataOptimized", path.x, path.y, path.m, None, to_x, to_y, to_m,
                                     None, count, wanted))
            accel = (draw_accel, blank_accel) if profile == Profile.TRAPEZOIDAL else (0.0, 0.0)
            return int(self._run("ZRVInterpolateData", path.x, path.y, path.m, to_x, to_y, to_m, count, wanted,
                                 blank_speed, *accel))
        return _scan("interpolate", _filled(max(wanted, count + count // 4 + 1) + count, fill), sample_rate)

    def set_filter(self, kind: FilterType, order: int = 4, cutoff: float = 1000.0,
                   sample_rate: float = 20000.0) -> None:
        """Replaces the output filter by a low pass of 1..20 poles, at rest. cutoff in Hz: -3 dB (Bessel, Butterworth,
        Legendre), end of the ripple (Chebyshev I, elliptic), start of the stopband (Chebyshev II)."""
        self._run("ZRVSetupSoftwareFilter", FilterType(kind), whole("order", order, 1, 20), cutoff, sample_rate, True)

    def load_filter(self, path: FileName) -> None:
        """Reads the coefficients for FilterType.LOADED; docs/file-formats.md has the layout."""
        self._run("ZRVLoadIIRFilterParams", readable_path(path))

    def filter(self, scan: Scan, zero_phase: bool = False) -> Scan:
        """The scan through set_filter's filter. zero_phase: without delay, as for a scan that is played in a loop."""
        x, y, m = scan.arrays()
        to_x, to_y = np.empty(3 * len(x), np.float32), np.empty(3 * len(x), np.float32)
        self._run("ZRVFilterData", x, y, to_x, to_y, len(x), zero_phase)
        return Scan(to_x[:len(x)].copy(), to_y[:len(x)].copy(), m, scan.sample_rate, scan.frames, scan.rgb)

    def set_projection(self, corners: Optional[npt.ArrayLike] = None, inverse: bool = False) -> None:
        """Sets what the setting `projective` does. corners, shape (4, 2): where (-1, -1), (1, -1), (1, 1) and (-1, 1)
        are to go; None: the initial map. inverse: the map back."""
        if corners is None:
            self._run("ZRVInitProjectiveTransformMatrix", None, None, inverse)
            return
        points = np.asarray(corners, np.float32)
        if points.shape != (4, 2):
            raise ValueError(f"corners has to have the shape (4, 2), not {points.shape}")
        self._run("ZRVInitProjectiveTransformMatrix", points[:, 0], points[:, 1], inverse)

    # ---- Fonts and files

    def load_font(self, path: Optional[FileName] = None) -> None:
        """Loads a font file, the default one when none is named. OSError: it cannot be read; ValueError: no font."""
        default = data_file("hershey.font") if path is None else path
        if default is None:
            raise FileNotFoundError("the default font hershey.font is not there. It comes with a package that was "
                                    "installed from a built tree, and with the installed library; load_font takes "
                                    "others")
        self._run("ZRVLoadHersheyFile", readable_path(default))
        if not self.num_fonts:
            raise ValueError(f"{os.fspath(default)} holds no font")
        self._font_loaded = True

    @property
    def num_fonts(self) -> int:
        """Fonts in the loaded file: the setting `font` is 0..num_fonts - 1."""
        return int(self._run("ZRVHersheyNumFonts"))

    def _need_font(self, required: bool = False) -> None:
        if not self._font_loaded and (required or data_file("hershey.font")):
            self.load_font()

    def _export(self, path: FileName, scan: Scan) -> None:
        x, y, m = scan.arrays()
        self._run("ZRVExportFile", path_bytes(path), x, y, m, len(x), scan.sample_rate)

    # ---- Settings in, samples out

    def _compose(self, name: str, own: Settings, records: Sequence[Settings], changes: Dict[str, Any]) -> Scan:
        scan = ScanSettings()
        _merge([scan, own], records, changes)
        samples, frames, rate = ctypes.c_uint(), ctypes.c_uint(), ctypes.c_uint(scan.sample_rate)
        results = [samples, frames, rate] if name in _RATED else [samples, frames]

        def fill(x: Any, *arrays: Any) -> int:
            scan._array_capacity = 0 if x is None else len(x)
            self._run(f"ZRVGenerate{name}Data", x, *arrays, ctypes.byref(scan), ctypes.byref(own),
                      *map(ctypes.byref, results))
            return samples.value
        kinds = _SAMPLE if name not in _COLOURED else [*_SAMPLE, np.uint32]
        with self._lock:
            arrays = _filled(fill(*[None] * len(kinds)), fill, kinds)
            return _scan(name, arrays, rate.value, frames.value)


_SAMPLE: List[Any] = [np.float32, np.float32, np.uint8]
_RATED = {"Signal", "ImportFile", "Scan"}  # these say their sample rate
_COLOURED = {"ImportFile"}
_WHITE = 0xFFFFFF


def _owned(values: Any, ctype: Any) -> Any:
    """A copy as an array of ctypes, which a record that points to it keeps alive."""
    return (ctype * len(values))(*values.tolist())


def _merge(to: List[Settings], records: Sequence[Settings], changes: Dict[str, Any]) -> None:
    """Puts given records, and then single settings, where they belong."""
    for record in records:
        target = next((target for target in to if type(target) is type(record)), None)
        if target is None:
            raise TypeError(f"{record!r} is not what it takes: {' and '.join(type(each).__name__ for each in to)}")
        target.update(**dict(record))
    for name, value in changes.items():
        target = next((target for target in to if name in target.keys()), None)
        if target is None:
            known = ", ".join(name for each in reversed(to) for name in each.keys())
            raise TypeError(f"there is no setting {name!r}; there are {known}")
        target.update(**{name: value})


def _filled(count: int, fill: Callable[..., int], kinds: Sequence[Any] = ()) -> List[Any]:
    """Arrays of `count` elements as the library fills them, cut to what it wrote. Too many: empty ones."""
    count = count if count <= MAX_SAMPLES else 0
    arrays = [np.zeros(count, kind) for kind in kinds or _SAMPLE]
    written = fill(*arrays) if count else 0
    return arrays if written == count else [array[:written].copy() for array in arrays]


def _scan(name: str, arrays: Sequence[Any], sample_rate: int, frames: int = 1) -> Scan:
    x, y, m, *rgb = arrays
    if not len(x):
        raise ZrvError(ErrorCode.INVALID_VALUE, f"make the samples ({name})",
                       "these settings give none, or more than 16777216, or the file is of another kind. Start from "
                       "the initial values and change one at a time; help() of the method gives ranges")
    coloured = rgb and np.any(rgb[0][m != 0] != _WHITE)
    return Scan(x, y, m, sample_rate, frames, rgb[0] if coloured else None)
