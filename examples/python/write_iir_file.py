#!/usr/bin/env python3
"""Writes a coefficient file for the output filter (type 7) from scipy's Butterworth design.

    write_iir_file.py low_pass.iir --order 4 --cutoff 1000 --rate 20000
    write_iir_file.py band_stop.iir --order 2 --cutoff 900 1100 --rate 20000 --kind bandstop

Then, in a program:

    generator.LoadIIRFilterParams("low_pass.iir");
    generator.SetupSoftwareFilter(7, 0, 0, 0, true);

The file is little-endian: u32 sample rate, u32 order N, N + 1 doubles b (numerator), N + 1 doubles a (denominator).
Any other design that gives b and a (scipy.signal.ellip, firwin with a = [1], MATLAB's butter) can be written so.
"""
import argparse
import struct
import sys

MAX_ORDER = 31


def write_coefficients(path, rate, b, a):
    """Writes b and a, the shorter filled up with zeros; at most 32 coefficients each."""
    order = max(len(b), len(a)) - 1
    if not 1 <= order <= MAX_ORDER:
        raise ValueError(f"the order is {order}, a file holds 1 to {MAX_ORDER}")
    blocks = [list(block) + [0.0] * (order + 1 - len(block)) for block in (b, a)]
    with open(path, "wb") as file:
        file.write(struct.pack("<II", rate, order))
        for block in blocks:
            file.write(struct.pack(f"<{order + 1}d", *block))


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("file", help="file to write")
    parser.add_argument("--order", type=int, default=4, help="order of the design (default 4)")
    parser.add_argument("--cutoff", type=float, nargs="+", required=True, help="Hz; two for a band")
    parser.add_argument("--rate", type=int, required=True, help="samples a second")
    parser.add_argument("--kind", default="lowpass", choices=["lowpass", "highpass", "bandpass", "bandstop"])
    return parser.parse_args()


def main():
    arguments = parse_arguments()
    try:
        from scipy import signal
    except ImportError as missing:
        return f"This script needs scipy, which this Python lacks ({missing}). Debian: apt install python3-scipy"
    cutoff = arguments.cutoff if len(arguments.cutoff) > 1 else arguments.cutoff[0]
    try:
        b, a = signal.butter(arguments.order, cutoff, arguments.kind, fs=arguments.rate)
        write_coefficients(arguments.file, arguments.rate, b, a)
    except (ValueError, OSError, struct.error) as error:
        return f"{arguments.file}: {error}"
    print(f"{arguments.file}: {arguments.kind}, {max(len(a), len(b)) - 1} poles, made for {arguments.rate} samples a second")
    return 0


if __name__ == "__main__":
    sys.exit(main())
