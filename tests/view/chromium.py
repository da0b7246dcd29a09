"""Chromium without a window, driven over a pipe in its own protocol (--remote-debugging-pipe)."""
import base64
import json
import os
import select
import subprocess
import tempfile
import time

FLAGS = ("--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking "
         "--disable-component-update --disable-sync --disable-dev-shm-usage --remote-debugging-pipe").split()
# The width and the bytes (red, green, blue, alpha) of a picture, by the browser itself; all in base 64.
DECODE = """async png => {
  const image = await createImageBitmap(new Blob([Uint8Array.from(atob(png), c => c.charCodeAt(0))]));
  const context = new OffscreenCanvas(image.width, image.height).getContext('2d');
  context.drawImage(image, 0, 0);
  const {data} = context.getImageData(0, 0, image.width, image.height);
  let bytes = '';
  for (let i = 0; i < data.length; i += 8192) bytes += String.fromCharCode(...data.subarray(i, i + 8192));
  return [image.width, btoa(bytes)];
}"""
PATIENCE = 60  # seconds; a busy machine takes long to start a browser


class Chromium:
    """One page, with all that it asked for (requests) and complained of (complaints)."""

    def __init__(self, width=1400, height=900):
        self.requests, self.complaints = [], []
        self._profile = tempfile.TemporaryDirectory(prefix="zrv-view-", ignore_cleanup_errors=True)
        commands, self._out = os.pipe()
        self._in, answers = os.pipe()
        program = ["chromium", *FLAGS, "--user-data-dir=" + self._profile.name, "about:blank"]
        # The browser wants the pipe at descriptors 3 and 4.
        self._process = subprocess.Popen(["bash", "-c", f'exec "$@" 3<&{commands} 4>&{answers}', "bash", *program],
                                         pass_fds=(commands, answers), stderr=subprocess.DEVNULL)
        os.close(commands)
        os.close(answers)
        self._buffer, self._number, self._session = b"", 0, None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.call(domain + ".enable")
        self.resize(width, height)

    def close(self):
        self._process.kill()
        self._process.wait()
        os.close(self._in)
        os.close(self._out)
        self._profile.cleanup()

    def _read(self, seconds):
        """The next message; None when none came in time."""
        end = time.monotonic() + seconds
        while b"\0" not in self._buffer:
            if not select.select([self._in], [], [], max(0, end - time.monotonic()))[0]:
                return None
            piece = os.read(self._in, 1 << 16)
            if not piece:
                raise RuntimeError("chromium ended")
            self._buffer += piece
        text, self._buffer = self._buffer.split(b"\0", 1)
        return json.loads(text)

    def _note(self, event):
        method, params = event.get("method"), event.get("params", {})
        if method == "Network.requestWillBeSent":
            self.requests.append(params["request"]["url"])
        if method == "Runtime.exceptionThrown" or (method == "Runtime.consoleAPICalled" and
                                                   params["type"] in ("error", "warning", "assert")):
            self.complaints.append(json.dumps(params))
        if method == "Log.entryAdded" and params["entry"]["level"] in ("error", "warning"):
            self.complaints.append(json.dumps(params["entry"]))

    def call(self, method, **params):
        self._number += 1
        message = {"id": self._number, "method": method, "params": params}
        if self._session:
            message["sessionId"] = self._session
        os.write(self._out, json.dumps(message).encode() + b"\0")
        while True:
            answer = self._read(PATIENCE)
            if answer is None:
                raise TimeoutError(method)
            if answer.get("id") != self._number:
                self._note(answer)
            elif "error" in answer:
                raise RuntimeError(f"{method}: {answer['error']}")
            else:
                return answer["result"]

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def open(self, url):
        self.call("Page.navigate", url=url)

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(f"{expression}: {result['exceptionDetails']}")
        return result["result"].get("value")

    def wait_for(self, expression, seconds=30):
        end = time.monotonic() + seconds
        while not self.evaluate(expression):
            if time.monotonic() > end:
                raise TimeoutError(f"{expression} never came true; the page says: "
                                   + self.evaluate("document.body.innerText"))
            time.sleep(0.05)

    def screenshot(self, file=None):
        """Rows of (red, green, blue)."""
        png = self.call("Page.captureScreenshot", format="png")["data"]
        if file:
            with open(file, "wb") as out:
                out.write(base64.b64decode(png))
        width, data = self.evaluate(f"({DECODE})('{png}')")
        rgba = base64.b64decode(data)
        return [list(zip(*(rgba[at + channel:at + 4 * width:4] for channel in range(3))))
                for at in range(0, len(rgba), 4 * width)]
