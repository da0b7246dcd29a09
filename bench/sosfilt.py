"""Seconds that scipy.signal.sosfilt takes for two channels of a million samples: sosfilt.py ORDER."""
import sys
import time

import numpy
from scipy import signal

sections = signal.butter(int(sys.argv[1]), 0.1, fs=1, output="sos")
samples = numpy.random.default_rng(1).uniform(-1, 1, (2, 1_000_000))
best = float("inf")
for _ in range(5):
    start = time.process_time()
    signal.sosfilt(sections, samples)
    best = min(best, time.process_time() - start)
print(best)
