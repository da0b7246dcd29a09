"""Devices, against a simulated controller."""
import os
import pty
import re
import select
import subprocess
import sys
import threading
import time
import tty
from pathlib import Path

import numpy as np
import pytest
import zrv

TREE = Path(__file__).resolve().parents[2]
CIRCLE = zrv.Scan(0.5 * np.cos(np.arange(1000) * 2 * np.pi / 1000), 0.5 * np.sin(np.arange(1000) * 2 * np.pi / 1000))


def test_readme_example_plays(ports):
    code, = re.findall(r"```python\n(.*?)```", (TREE / "README.md").read_text(), re.DOTALL)
    names = {}
    exec(code, names)
    assert len(names["scan"]) == 1000
    with pytest.raises(zrv.ZrvError, match="closed"):
        names["device"].play(names["scan"])


def test_examples_run(ports):
    for arguments in (["lissajous_notebook.py"], ["play_circle.py", str(ports / "ttyUSB0")]):
        subprocess.run([sys.executable, str(TREE / "examples" / "python" / arguments[0]), *arguments[1:]], check=True, timeout=60,
                       env={**os.environ, "ZRV_PORT_DIR": str(ports)}, stdout=subprocess.DEVNULL)


def test_lists_plays_and_stops(ports):
    assert [(found.port, found.name) for found in zrv.devices()] == [("ttyUSB0", "Bench 9")]
    with zrv.Device() as device:
        start = time.monotonic()
        device.play(CIRCLE, repeat=8, wait=True)
        assert time.monotonic() - start > 0.35  # 8000 samples at 20000 a second
        device.play(CIRCLE)
        assert device.is_running and 0 < device.samples_remaining <= 1000
        x, y, m, sample = device.stop()
        assert abs(np.hypot(x, y) - 0.5) < 0.05 and m == 255 and sample < 1000 and not device.is_running
        assert not device.laser_modulation_enable
        device.play(CIRCLE)
        assert device.laser_modulation_enable
        device.play(CIRCLE, laser=False)
        assert not device.laser_modulation_enable
        device.laser_modulation_enable = True
    with zrv.Device() as device:
        device.play(CIRCLE)
        device.disconnect()
        with pytest.raises(zrv.ZrvError) as caught:
            device.start()
        assert caught.value.code is zrv.ErrorCode.NOT_CONNECTED and "Connect first" in str(caught.value)
    assert zrv.Device("ttyUSB0").is_responding()


def test_leaving_the_block_stops_and_switches_the_laser_off(ports):
    class Watched(zrv.Device):
        def _run(self, function, *arguments):
            calls.append((function, *arguments[:2]))
            return super()._run(function, *arguments)

    calls = []
    with pytest.raises(KeyboardInterrupt), Watched() as device:
        device.play(CIRCLE)
        calls.clear()
        raise KeyboardInterrupt
    done = [call for call in calls if call[0] in ("ZRVStopDataStream", "ZRVGetDeviceParams", "ZRVSetDeviceParam")]
    assert done == [("ZRVStopDataStream",), ("ZRVGetDeviceParams",), ("ZRVSetDeviceParam", zrv.Param.LASER_MODULATION_ENABLE, 0),
                    ("ZRVSetDeviceParam", zrv.Param.DIGITAL_OUTPUT_ENABLE, 0)]


def test_parameters_by_attribute_record_and_file(device, tmp_path):
    device.configure(sample_rate=34567, device_axes=zrv.Axes.SWAP)
    device.sample_rate = 10**7
    device.output_offsets = 0.25, -0.5
    params = device.params
    assert (params.sample_rate, params.device_axes, params.device_name) == (100000, zrv.Axes.SWAP, "Bench 9")
    assert np.allclose(device.output_offsets, (0.25, -0.5), atol=1e-4)
    device.save_params(tmp_path / "saved.txt")
    assert "DeviceAxes = AxesSwap" in (tmp_path / "saved.txt").read_text()
    params.update(device_axes=zrv.Axes.FLIP_X, vbias=50)
    device.params = params
    assert (device.device_axes, device.vbias) == (zrv.Axes.FLIP_X, 50)
    device.load_params(tmp_path / "saved.txt")
    assert device.device_axes is zrv.Axes.SWAP and device.vbias == dict(device.params)["vbias"] == 80
    params.firmware_name = "mine"
    with pytest.raises(zrv.ZrvError, match="only be read"):
        device.params = params
    device.rename("Bench 10")
    assert device.params.device_name == "Bench 10"


def test_senses_and_tracks(device):
    device.goto(0.5, -0.25)
    assert device.analog_input(0) == pytest.approx(2.5, abs=1e-3)
    ai0, ai1 = device.capture(3000)
    assert ai0.shape == ai1.shape == (3000,) and np.allclose(ai0, 2.5, atol=1e-3)
    with pytest.raises(zrv.ZrvError, match="ANALOG_VOLTS"):
        device.read_stream(10)
    device.data_mode = zrv.DataMode.ANALOG_VOLTS
    assert np.allclose(device.read_stream(500)[0], 2.5, atol=1e-3)
    device.data_mode = zrv.DataMode.BUFFER
    track = device.track_params
    track.normal_gain = 99
    device.track_params = track
    assert device.track_params.normal_gain == 99 and device.track_status().valid
    device.set_rgb([1, 0xFFFFFF])
    assert list(device.get_rgb(3)) == [1, 0xFFFFFF, 0xFFFFFF]


def test_what_c_would_not_check_is_refused(device):
    big, uneven = np.zeros(30000), np.zeros(3)
    refused = [
        (ValueError, "holds 25000", lambda: device.send(zrv.Scan(big, big))),
        (ValueError, "one length", lambda: zrv.Scan(big, uneven)),
        (ValueError, "NaN", lambda: zrv.Scan([0, np.nan], [0, 0])),
        (ValueError, "0..255", lambda: zrv.Scan([0, 1], [0, 1], [0, 256])),
        (ValueError, "one dimension", lambda: zrv.Scan(np.zeros((2, 2)), np.zeros((2, 2)))),
        (ValueError, "1..32", lambda: device.play(CIRCLE, repeat=33)),
        (ValueError, "without end", lambda: device.play(CIRCLE, wait=True)),
        (ValueError, "channel is 2", lambda: device.analog_input(2)),
        (ValueError, "0..100000", lambda: device.set_rgb(np.zeros(100001, np.uint32))),
        (TypeError, "sample_rate", lambda: device.configure(sampel_rate=1)),
        (TypeError, "wrong type", lambda: device.goto("left", 0)),
        (AttributeError, "sampel_rate", lambda: setattr(device, "sampel_rate", 1)),
        (zrv.ZrvError, "outside its range", lambda: device.goto(2, 0)),
        (zrv.ZrvError, "no serial port of that name", lambda: zrv.Device("nonsense")),
    ]
    for error, text, call in refused:
        with pytest.raises(error, match=text):
            call()
    device.play(CIRCLE, repeat=1, wait=True)


def test_other_threads_may_call_while_one_waits(device):
    stopped = []
    device.play(zrv.Scan(CIRCLE.x, CIRCLE.y, sample_rate=2000), repeat=32)  # 16 s
    assert not device.wait(timeout=0.1)
    threading.Timer(0.2, lambda: stopped.append(device.stop())).start()
    start = time.monotonic()
    assert device.wait(timeout=15) and time.monotonic() - start < 10
    asked = [device.is_responding, lambda: device.params.params_valid]
    answers = []
    workers = [threading.Thread(target=lambda ask=ask: answers.extend(ask() for _ in range(30))) for ask in asked * 2]
    for step in (threading.Thread.start, threading.Thread.join):
        for worker in workers:
            step(worker)
    assert stopped and answers == [True] * 120


class LossyPort:
    """Joins a new pseudo-terminal to a port, and loses the first acknowledgement of one command."""

    def __init__(self, port, lost):
        self.sent, self.lost, self.losing = b"", lost, 0
        self.near, end = pty.openpty()
        self.far = os.open(port, os.O_RDWR | os.O_NOCTTY)
        for line in (end, self.far):
            tty.setraw(line)
        self.path = os.ttyname(end)
        threading.Thread(target=self._pass, daemon=True).start()

    def _pass(self):
        while True:
            for line in select.select([self.near, self.far], [], [])[0]:
                data = os.read(line, 4096)
                if line == self.near:
                    self.sent += data
                    if self.lost and self.lost in self.sent:
                        self.losing, self.lost = 3, None
                    os.write(self.far, data)
                else:
                    data, self.losing = data[self.losing:], max(self.losing - len(data), 0)
                    os.write(self.near, data)


LASER_ON, LASER_OFF = (bytes([0xB5, 0xB0, 0x2B, code, 6, 10]) for code in (0xD9, 0xD8))


@pytest.mark.parametrize("leave", [lambda device: device.stop(), lambda device: device.close()])
def test_laser_is_off_when_the_acknowledgement_of_on_is_lost(ports, leave):
    port = LossyPort(ports / "ttyUSB0", LASER_ON)
    device = zrv.Device(port.path)
    with pytest.raises(zrv.ZrvError, match="LASER_MODULATION"):
        device.play(CIRCLE)
    assert not device.laser_modulation_enable  # or so the record says
    leave(device)
    assert port.sent.index(LASER_OFF) > port.sent.index(LASER_ON)
    device.close()
