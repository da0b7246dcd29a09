"""Scans: known answers, files, and what is refused."""
import ctypes
import struct

import numpy as np
import pytest
import zrv


@pytest.fixture
def generator():
    return zrv.DataGenerator()


def test_lissajous_is_the_formula(generator):
    scan = generator.lissajous(zrv.LissajousSettings(freq_x=5), amplitude=0.5, phase=0.25, sample_rate=40000,
                               refresh_rate=25)
    t = np.arange(1600) * 2 * np.pi / 1600
    assert scan.sample_rate == 40000 and scan.x.dtype == np.float32 and scan.m.dtype == np.uint8
    assert np.abs(scan.x - 0.5 * np.sin(5 * t)).max() < 1e-6
    assert np.abs(scan.y - 0.5 * np.sin(4 * t + 0.25)).max() < 1e-6


def test_every_pattern_gives_samples(generator):
    square = ([-0.5, 0.5, 0.5, -0.5, -0.5], [-0.5, -0.5, 0.5, 0.5, -0.5])
    scans = [generator.waveform(waveform=zrv.Waveform.SQUARE), generator.spirograph(curve=zrv.Curve.ROSE),
             generator.clock(), generator.clock(digital=True), generator.signal(), generator.text("Hello"),
             generator.raster(num_lines=5), generator.raster(imaging=True), generator.interpolate(*square),
             generator.point_to_point(*square, m=[0, 1, 2, 3, 4], dwell_times=[1, 2, 3, 4, 5])]
    for scan in scans:
        assert len(scan) > 100 and np.abs(scan.xy).max() <= 1 and scan.m.any()
    assert set(scans[-1].m) == {0, 1, 2, 3, 4} and scans[-1].duration == pytest.approx(0.015, abs=1e-3)
    animated = generator.text("Hi", animation=zrv.Animation.ROTATE, animation_duration=0.5)
    assert animated.frames == 10 and len(animated) % 10 == 0


def test_files_and_filter(generator, tmp_path):
    scan = zrv.Scan([0, 0.5, -0.25], [0.125, 0, 1], [0, 7, 255], sample_rate=12345)
    scan.save(tmp_path / "points.txt")
    read = generator.import_file(tmp_path / "points.txt")
    assert read.sample_rate == 12345 and np.array_equal(read.xy, scan.xy) and list(read.m) == [0, 7, 255]
    generator.set_filter(zrv.FilterType.BESSEL, order=3, cutoff=500, sample_rate=20000)
    step = generator.filter(zrv.Scan(np.ones(1000), -np.ones(1000)))
    assert step.x[0] < 0.1 and step.x[-1] == pytest.approx(1, abs=1e-4) and np.array_equal(step.x, -step.y)
    generator.set_projection([[-0.5, -0.5], [0.5, -0.5], [0.5, 0.5], [-0.5, 0.5]])
    plain, half = generator.lissajous(), generator.lissajous(projective=True)
    assert np.abs(half.xy - plain.xy / 2).max() < 1e-6


def test_drawings_keep_their_colours(generator, tmp_path):
    def section(data_format, number, records):
        return b"ILDA\0\0\0" + bytes([data_format]) + bytes(16) + struct.pack(">HHHBB", len(records), number, 2, 0, 0)
    corners = [(-9000, -9000), (9000, -9000), (9000, 9000)]
    data = b""
    for number, bgr in enumerate([(0, 0, 255), (0, 255, 0)]):
        data += section(5, number, corners) + b"".join(struct.pack(">hhBBBB", *corner, 0, *bgr) for corner in corners)
    (tmp_path / "two.ild").write_bytes(data + section(5, 2, []))
    drawing = generator.import_file(tmp_path / "two.ild", frames=[2, 1])
    assert drawing.frames == 2 and set(drawing.rgb) == {0, 0xFF0000, 0x00FF00}
    assert drawing.rgb[drawing.m != 0][0] == 0x00FF00
    assert set(generator.import_file(tmp_path / "two.ild", frames=[1]).rgb) == {0, 0xFF0000}


def test_image_is_taken_as_red_green_blue(generator):
    red = np.full((4, 4, 3), (255, 0, 0), np.uint8)  # 29 % bright
    assert generator.image(red, 4, 4).m.max() == 255 - 73


def test_what_c_would_not_check_is_refused(generator, tmp_path):
    (tmp_path / "no.ild").write_bytes(b"nothing of the kind")
    refused = [
        (TypeError, "freqx.*freq_x", lambda: generator.lissajous(freqx=3)),
        (ValueError, "freq_x is -1", lambda: generator.lissajous(freq_x=-1)),
        (ValueError, "modulation=9", lambda: generator.lissajous(modulation=9)),
        (TypeError, "WaveformSettings", lambda: generator.lissajous(zrv.WaveformSettings())),
        (TypeError, "num_points", lambda: generator.point_to_point([0], [0], num_points=1000)),
        (ValueError, "dwell_times", lambda: generator.point_to_point([0, 1], [0, 1], dwell_times=[5])),
        (ValueError, "'\xe9'", lambda: generator.text("caf\xe9")),
        (zrv.ZrvError, "samples", lambda: generator.lissajous(refresh_rate=1e-6)),
        (zrv.ZrvError, "another kind", lambda: generator.import_file(tmp_path / "no.ild")),
        (FileNotFoundError, "missing", lambda: generator.import_file(tmp_path / "missing")),
        (ValueError, "zero", lambda: generator.import_file("a\0b")),
        (TypeError, "not bool", lambda: generator.import_file(True)),  # open() would close standard output
        (ValueError, "no font", lambda: generator.load_font(tmp_path / "no.ild")),
        (ValueError, "2..", lambda: generator.interpolate([0], [0])),
        (ValueError, "uint8", lambda: generator.image(np.zeros((3, 3)))),
        (OSError, "", lambda: zrv.Scan([0], [0]).save(tmp_path / "no" / "such")),
        (ctypes.ArgumentError, "contiguous", lambda: zrv.raw.ZRVNoiseWaveform(generator.handle, np.zeros(9), 9, 1.0)),
    ]
    closed = zrv.DataGenerator()
    closed.close()
    refused.append((zrv.ZrvError, "closed", closed.lissajous))
    for error, text, call in refused:
        with pytest.raises(error, match=text):
            call()
