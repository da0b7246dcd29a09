#!/usr/bin/env python3
"""Connects to a controller, plays a circle for two seconds and stops.

  play_circle.py [PORT]

Without a port it uses the first controller found. The package: pip install ./bindings/python
"""
import sys

import numpy as np
import zrv

angle = np.linspace(0, 2 * np.pi, 2000, endpoint=False)
circle = zrv.Scan(0.5 * np.cos(angle), 0.5 * np.sin(angle), sample_rate=20000)

try:
    with zrv.Device(*sys.argv[1:2]) as device:
        print(f"connected to {device.params.device_name}, playing {circle}")
        device.play(circle, repeat=20, wait=True)
        stop = device.stop()
        print(f"stopped at ({stop.x:.3f}, {stop.y:.3f}), sample {stop.sample}")
except zrv.ZrvError as error:
    sys.exit(str(error))
