#!/usr/bin/env python3
"""Writes a small seed corpus for each fuzzer: make_seeds.py DIRECTORY fills DIRECTORY/<fuzzer>/."""
import pathlib
import struct
import sys

top = pathlib.Path(sys.argv[1])


def seed(fuzzer, name, data):
    (top / fuzzer).mkdir(parents=True, exist_ok=True)
    (top / fuzzer / name).write_bytes(data)


def section(fmt, records, frames, body):
    return b"ILDA" + struct.pack(">HH16sHHHH", 0, fmt, b"seed", records, 0, frames, 0) + body


def words(*values):
    return struct.pack("<%dh" % len(values), *values)


two_frames = section(0, 3, 2, bytes(range(24))) + section(0, 2, 2, bytes(16))
seed("drawing", "3d", two_frames)
seed("drawing", "palette", section(2, 2, 0, b"RGBrgb") + two_frames)
seed("drawing", "2d", section(1, 2, 1, bytes(range(12))))
seed("drawing", "colour", section(5, 2, 1, bytes(range(16))))

glyph = words(2, 2, -5, 5, -5, 0, 1, 5, 0, 0)
seed("font", "small", words(1, 1, 1, 2, 1, 1) + glyph + glyph + words(0, -1, 0, 0))
seed("jhf", "wrapped", b"  501  6JZPO\nTO RRSUV\n12345  1JZ\n")
seed("points", "points", b"sps 20000\n0.5 -0.25 255\r\n\n-1e-3 +1 0\n")
seed("points", "times", b"0.5 -0.25 255 10\n1 1 1 1e3\n")
seed("parameter", "decimal", b"\x04Gain = -2.5e1 V\nGain = 3\n")
seed("parameter", "hexadecimal", b"\x04Mask = 0x1F\n")
