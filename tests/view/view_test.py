#!/usr/bin/env python3
"""zrv simulate --view: what its HTTP end lets in, and what a browser shows of a pattern that plays.

view_test.py ZRV [unittest arguments]. With ZRV_VIEW_PICTURES=DIR the pictures are kept there.
"""
import math
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.request

from chromium import Chromium

ZRV = sys.argv.pop(1)
AMBER = (255, 200, 87)  # a laser without colours


class Simulator:
    """zrv simulate --view, with its port in a folder of its own."""

    def __init__(self, *arguments, port=None):
        self.folder = tempfile.TemporaryDirectory(prefix="zrv-view-")
        view = ["--view"] + ([str(port)] if port else [])
        self.process = subprocess.Popen([ZRV, "--port-dir", self.folder.name, "simulate", *arguments, *view],
                                        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        said = ""
        while "Ctrl-C" not in said:
            line = self.process.stdout.readline()
            if not line:
                raise RuntimeError("zrv simulate ended: " + said)
            said += line
        self.url = re.search(r"http://127\.0\.0\.1:(\d+)/", said).group(0)
        self.port = int(self.url.split(":")[2].strip("/"))

    def zrv(self, command, port="ttyUSB0", *arguments):
        return subprocess.run([ZRV, "--port-dir", self.folder.name, command, port, *arguments], check=True,
                              capture_output=True, text=True, timeout=60).stdout

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        status = self.process.wait(20)
        self.process.stdout.close()
        self.folder.cleanup()
        return status

    def ask(self, request, host=None):
        """Status of the answer to raw bytes; 0 when the connection is closed without one."""
        with socket.create_connection(("127.0.0.1", self.port), timeout=20) as connection:
            try:
                connection.sendall(request.replace(b"HOST", f"Host: {host or self.url[7:-1]}".encode()))
            except ConnectionError:
                pass  # refused before all of it was sent; the answer is there
            try:
                head = connection.recv(64)
            except ConnectionError:
                return 0
        return int(head.split()[1]) if head else 0


class HttpTest(unittest.TestCase):
    def setUp(self):
        self.simulator = Simulator()
        self.addCleanup(self.simulator.stop)

    def get(self, path):
        with urllib.request.urlopen(self.simulator.url + path, timeout=10) as answer:
            return answer.read()

    def test_listens_on_the_loopback_address_alone(self):
        wanted = f"{self.simulator.port:04X}"
        found = []
        for table in ("/proc/net/tcp", "/proc/net/tcp6"):
            with open(table) as lines:
                rows = [line.split() for line in lines][1:]
            found += [row[1] for row in rows if row[1].endswith(":" + wanted) and row[3] == "0A"]
        self.assertEqual(found, ["0100007F:" + wanted])

    def test_answers_only_what_it_should(self):
        port = self.simulator.port
        page = b"GET / HTTP/1.1\r\nHOST\r\n\r\n"
        for name, request, host, status in (
                ("the page", page, None, 200),
                ("by name", page, f"localhost:{port}", 200),
                ("only its head", page.replace(b"GET", b"HEAD"), None, 200),
                ("of another name that leads here", page, f"pages.example:{port}", 403),
                ("of a name that begins as ours", page, f"localhost.example:{port}", 403),
                ("of another port", page, f"127.0.0.1:{port - 1}", 403),
                ("of no port", page, "127.0.0.1", 403),
                ("points, of another name", b"GET /drawn?after=0 HTTP/1.1\r\nHOST\r\n\r\n", "a.example", 403),
                ("without a name", b"GET / HTTP/1.1\r\n\r\n", None, 403),
                ("an unknown path", page.replace(b"/ ", b"/../secret "), None, 404),
                ("points after a word", b"GET /drawn?after=-1 HTTP/1.1\r\nHOST\r\n\r\n", None, 400),
                ("points after too much", b"GET /drawn?after=18446744073709551616 HTTP/1.1\r\nHOST\r\n\r\n", None, 400),
                ("a change", b"POST /state HTTP/1.1\r\nHOST\r\nContent-Length: 2\r\n\r\n{}", None, 405),
                ("a body", b"GET / HTTP/1.1\r\nHOST\r\nContent-Length: 9000000000\r\n\r\n" + b"x" * 100000, None, 0),
                ("a long path", b"GET /" + b"x" * 100000 + b" HTTP/1.1\r\nHOST\r\n\r\n", None, 414),
                ("a long header", b"GET / HTTP/1.1\r\nHOST\r\nX: " + b"x" * 100000 + b"\r\n\r\n", None, 431),
                ("many headers", b"GET / HTTP/1.1\r\nHOST\r\n" + b"X: y\r\n" * 100000 + b"\r\n", None, 431)):
            with self.subTest(name):
                self.assertEqual(self.simulator.ask(request, host), status)
        self.assertIn(b"<title>ZRV live view</title>", self.get(""))

    def test_a_reader_that_does_not_read_holds_nobody_up(self):
        lazy = [socket.create_connection(("127.0.0.1", self.simulator.port)) for _ in range(30)]
        request = f"GET / HTTP/1.1\r\nHost: 127.0.0.1:{self.simulator.port}\r\n\r\n".encode()
        for connection in lazy:
            self.addCleanup(connection.close)
            connection.setblocking(False)
            try:
                while connection.send(request * 20):
                    pass
            except BlockingIOError:
                pass
        start = time.monotonic()
        self.assertIn(b'"playing":false', self.get("state"))
        self.assertIn("20000 samples/s", self.simulator.zrv("set", "ttyUSB0", "SampleRate", "20000"))
        self.assertLess(time.monotonic() - start, 5)

    def test_hands_out_each_point_once_and_bounded(self):
        self.simulator.zrv("play", "ttyUSB0", "rose", "--samples", "20000", "--rate", "100000", "--repeat", "2")
        everything = int(re.search(rb'"drawn":(\d+)', self.get("state")).group(1))
        self.assertGreaterEqual(everything, 40000)
        first, end = struct.unpack("<QQ", self.get("drawn?after=0")[:16])
        self.assertEqual((first, end), (everything - 4 * 4096, everything))
        self.assertEqual(len(self.get("drawn?after=0")), 16 + 4096 * 8)
        self.assertEqual(len(self.get(f"drawn?after={everything - 1000}")), 16 + 1000 * 8)
        self.assertEqual(len(self.get(f"drawn?after={everything + 1000}")), 16)


def lit(picture, box, colour, least=150):
    """Positions, in the units of the mirror, of the pixels of about that colour."""
    span = 1.12
    left, top, size = round(box["x"]), round(box["y"]), round(box["width"])
    found = []
    for row in range(size):
        for column in range(size):
            pixel = picture[top + row][left + column]
            level = max(pixel) / max(colour)
            if max(pixel) >= least and all(abs(p - level * c) < 40 for p, c in zip(pixel, colour)):
                found.append((((column + 0.5) / size * 2 - 1) * span, (1 - (row + 0.5) / size * 2) * span))
    return found


def drawing(lines):
    """An ILDA file of true colours with one frame, from (x, y, rgb or None) points."""
    header = struct.pack(">4s3xB8s8sHHHBx", b"ILDA", 5, b"test", b"", len(lines), 0, 1, 0)
    records = b"".join(struct.pack(">hhBBBB", round(x * 32767), round(y * 32767), 0 if rgb else 0x40,
                                   *reversed(rgb or (0, 0, 0))) for x, y, rgb in lines)
    return header + records + struct.pack(">4s3xB8s8sHHHBx", b"ILDA", 5, b"", b"", 0, 0, 0, 0)


class BrowserTest(unittest.TestCase):
    def watch(self, *arguments):
        self.simulator = Simulator(*arguments)
        self.addCleanup(lambda: self.simulator.stop())
        self.browser = Chromium()
        self.addCleanup(self.browser.close)
        self.browser.open(self.simulator.url)
        self.browser.wait_for("document.getElementById('status')?.textContent == 'idle'")

    def play(self, *arguments):
        """Plays until the test is over."""
        player = subprocess.Popen([ZRV, "--port-dir", self.simulator.folder.name, "play", "ttyUSB0", *arguments],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(player.wait)
        self.addCleanup(player.terminate)
        self.browser.wait_for("document.getElementById('status').textContent == 'playing'")
        time.sleep(1)
        return player

    def picture(self, name):
        folder = os.environ.get("ZRV_VIEW_PICTURES")
        box = self.browser.evaluate("(() => { const b = document.getElementById('beam').getBoundingClientRect();"
                                    "return {x: b.x, y: b.y, width: b.width}; })()")
        return self.browser.screenshot(os.path.join(folder, name) if folder else None), box

    def assert_clean(self):
        self.assertEqual(self.browser.complaints, [])
        self.assertTrue(self.browser.requests)
        strangers = [url for url in self.browser.requests if not url.startswith((self.simulator.url, "data:"))]
        self.assertEqual(strangers, [])

    def text(self, element):
        return self.browser.evaluate(f"document.getElementById('{element}').innerText")

    def test_shows_the_figure_the_settings_and_the_traffic(self):
        self.watch("--name", "<b>Bench</b> & 7")
        self.assertEqual(self.text("name"), "<b>Bench</b> & 7")
        self.assertIn("play ttyUSB0 lissajous", self.text("hint"))
        picture, box = self.picture("idle.png")
        self.assertEqual(lit(picture, box, AMBER), [])

        # A circle goes through the filter and the mirror as a circle, 10 Hz being slow for both.
        player = self.play("lissajous", "--freq-x", "1", "--freq-y", "1", "--phase", "90", "--samples", "2000",
                           "--rate", "20000")
        picture, box = self.picture("playing.png")
        points = lit(picture, box, AMBER)
        radii = [math.hypot(*point) for point in points]
        self.assertGreater(min(radii), 0.86)
        self.assertLess(max(radii), 0.94)
        around = {round(math.degrees(math.atan2(y, x)) / 10) % 36 for x, y in points}
        self.assertEqual(around, set(range(36)))
        self.assertIn("20000 samples/s", self.text("settings"))
        self.assertIn("2000 of 25000", self.text("settings"))
        traffic = self.text("traffic")
        for expected in ("sample block", "→ 10000 B", "SetSampleRate", "20 4E 00", "PlayEndless", "← 3 B",
                         "acknowledged"):
            self.assertIn(expected, traffic)

        # Fades when it ends, and says what may be done next.
        player.terminate()
        self.browser.wait_for("document.getElementById('status').textContent == 'idle'")
        self.browser.wait_for("!document.getElementById('hint').hidden")
        time.sleep(5)
        picture, box = self.picture("faded.png")
        self.assertEqual(lit(picture, box, AMBER), [])  # nor is the spot where the mirror rests lit
        self.assert_clean()

    def test_shows_colours_pauses_and_comes_back(self):
        self.watch("--format", "3")
        # Glows on for long, so that a slow machine still shows all of the drawing at once.
        self.browser.evaluate("document.getElementById('persistence').value = 80")
        red, green = (255, 0, 0), (0, 255, 0)
        step = [i / 300 for i in range(301)]
        lines = ([(0.6, 0.6 - 1.2 * t, red) for t in step] + [(0.6 - 1.2 * t, -0.6, None) for t in step] +
                 [(-0.6, -0.6 + 1.2 * t, green) for t in step] + [(-0.6 + 1.2 * t, 0.6, None) for t in step])
        file = os.path.join(self.simulator.folder.name, "two.ild")
        with open(file, "wb") as out:
            out.write(drawing(lines))
        player = self.play("ilda", file, "--rate", "20000")
        picture, box = self.picture("colours.png")  # a drawing is scaled to 0.9
        for colour, side in ((red, 1), (green, -1)):
            points = lit(picture, box, colour, least=200)
            self.assertGreater(len(points), 200)
            self.assertTrue(all(0.8 < x * side < 0.95 for x, y in points), colour)
            self.assertLess(min(y for x, y in points), -0.8)
            self.assertGreater(max(y for x, y in points), 0.8)

        # Paused, the picture stays as it is.
        self.browser.evaluate("document.dispatchEvent(new KeyboardEvent('keydown', {key: 'p'}))")
        still, box = self.picture("paused.png")
        player.terminate()
        time.sleep(3)
        self.assertEqual(lit(self.picture("paused.png")[0], box, red), lit(still, box, red))
        self.browser.evaluate("document.getElementById('pause').click()")
        self.browser.wait_for("document.getElementById('status').textContent == 'idle'")
        self.browser.resize(420, 760)
        time.sleep(1)
        self.assertTrue(self.browser.evaluate("document.documentElement.scrollWidth <= innerWidth"))
        self.picture("small.png")
        self.assert_clean()

        # Gone, and back at the same place.
        port = self.simulator.port
        self.assertEqual(self.simulator.stop(), 0)
        self.browser.wait_for("!document.getElementById('gone').hidden")
        self.assertIn("has stopped", self.text("gone"))
        self.picture("gone.png")
        self.simulator = Simulator("--name", "Another", port=port)
        self.browser.wait_for("document.getElementById('name').textContent == 'Another'")
        self.browser.wait_for("document.getElementById('gone').hidden")


if __name__ == "__main__":
    unittest.main(verbosity=2)
