"""Samples that a controller plays."""
from __future__ import annotations

import os
from dataclasses import dataclass
from typing import Any, Dict, Optional, Tuple

import numpy as np
import numpy.typing as npt

from .library import FileName
from .records import whole

Floats = npt.NDArray[np.float32]
Bytes = npt.NDArray[np.uint8]
Colours = npt.NDArray[np.uint32]

MAX_SAMPLES = 1 << 24
LIT = 255


def floats(name: str, values: Any) -> Floats:
    """A contiguous float32 array of one dimension, all finite; not copied where it is one already."""
    array = np.ascontiguousarray(values, np.float32)
    if array.ndim != 1 or not array.size:
        raise ValueError(f"{name} has to have one dimension and at least one value; its shape is {np.shape(values)}")
    if not np.isfinite(array).all():
        raise ValueError(f"{name} has values that are infinite, too large or no numbers (NaN)")
    return array


def whole_numbers(name: str, values: Any, dtype: Any, highest: int) -> Any:
    """A contiguous array of whole numbers 0..highest; ValueError where C would wrap around or cut."""
    given = np.asarray(values)
    if given.dtype.kind not in "biuf" or given.ndim != 1:
        raise ValueError(f"{name} has to be an array of whole numbers, of one dimension")
    if given.dtype != dtype or highest < np.iinfo(dtype).max:
        if not np.all((given >= 0) & (given <= highest) & (given == np.floor(given))):
            raise ValueError(f"{name} has to have whole numbers 0..{highest}")
    return np.ascontiguousarray(given, dtype)


@dataclass(frozen=True, eq=False, init=False)
class Scan:
    """Samples, played at `sample_rate`.

    x, y         positions, float32 of shape (n,), -1..1; what lies outside is clamped by the controller's format
    m            digital bytes, uint8 of shape (n,), for laser and outputs: 0 dark, 255 all on; a number is that of all
    sample_rate  samples a second
    frames       of an animation: the n samples are so many frames
    rgb          colours 0xRRGGBB, uint32 of shape (n,), or None: white. Controllers with colours play them

    Other arrays are converted. ValueError: arrays of different lengths or with impossible values.
    """

    x: Floats
    y: Floats
    m: Bytes
    sample_rate: int
    frames: int
    rgb: Optional[Colours]

    def __init__(self, x: npt.ArrayLike, y: npt.ArrayLike, m: npt.ArrayLike = LIT, sample_rate: int = 20000,
                 frames: int = 1, rgb: Optional[npt.ArrayLike] = None) -> None:
        arrays: Dict[str, Any] = {"x": floats("x", x), "y": floats("y", y)}
        count = len(arrays["x"])
        arrays["m"] = whole_numbers("m", m if np.ndim(m) else np.full(count, m), np.uint8, 255)
        if rgb is not None:
            arrays["rgb"] = whole_numbers("rgb", rgb, np.uint32, 0xFFFFFF)
        if any(len(array) != count for array in arrays.values()):
            lengths = ", ".join(f"{name} {len(array)}" for name, array in arrays.items())
            raise ValueError(f"the arrays have to be of one length, but they have {lengths} elements")
        fields = {"rgb": None, **arrays, "sample_rate": whole("sample_rate", sample_rate, 1, MAX_SAMPLES),
                  "frames": whole("frames", frames, 1, whole("the number of samples", count, 1, MAX_SAMPLES))}
        for name, value in fields.items():
            object.__setattr__(self, name, value)

    def __len__(self) -> int:
        return len(self.x)

    def __repr__(self) -> str:
        frames = f", {self.frames} frames" if self.frames > 1 else ""
        return f"<Scan of {len(self)} samples, {self.sample_rate} samples/s, {self.duration:.4g} s{frames}>"

    @property
    def duration(self) -> float:
        """Seconds."""
        return len(self) / self.sample_rate

    @property
    def xy(self) -> Floats:
        """Positions of shape (n, 2)."""
        return np.stack([self.x, self.y], axis=1)

    def arrays(self) -> Tuple[Floats, Floats, Bytes]:
        """x, y and m, checked anew: an array can change its size after it was given."""
        again = Scan(self.x, self.y, self.m, self.sample_rate)
        return again.x, again.y, again.m

    def save(self, path: FileName) -> None:
        """Writes a point file, which DataGenerator.import_file and the zrv command read. OSError when that fails."""
        from .generator import DataGenerator
        with open(os.fspath(path), "wb"):  # the library does not report a file that cannot be written
            pass
        DataGenerator()._export(path, self)
