"""Makes the wheel of the package `zrv` with nothing but the standard library.

The wheel holds the package, the two headers that it reads and, when the library has been built, that and the default
font. The build is looked for in the folder `build` at the top of the tree, or where ZRV_BUILD_DIR says.
"""
from __future__ import annotations

import base64
import hashlib
import os
import re
import sys
import sysconfig
import zipfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
TREE = HERE.parents[1]
HEADERS = [TREE / "include" / name for name in ("ZRVDefinitions.h", "ZRVFlatInterface.h")]
LIBRARY = "bin/zrv.dll" if sys.platform == "win32" else "libzrv.so"


def _build_files() -> list[Path]:
    """The library, if there is one, and with it the fonts and the acknowledgement that their licence asks for."""
    build = Path(os.environ.get("ZRV_BUILD_DIR") or TREE / "build")
    library = build / LIBRARY
    if not library.is_file():
        print(f"no library at {library}: the package will look for an installed one")
        return []
    return [library, *sorted((build / "share" / "zrv").glob("hershey.*"))]


def _record_line(name: str, data: bytes) -> str:
    digest = base64.urlsafe_b64encode(hashlib.sha256(data).digest()).rstrip(b"=").decode()
    return f"{name},sha256={digest},{len(data)}\n"


def build_wheel(wheel_directory: str, config_settings: object = None, metadata_directory: object = None) -> str:
    """Called by pip; returns the wheel's file name."""
    version, = re.findall(r"project\(ZRV VERSION ([0-9.]+)", (TREE / "CMakeLists.txt").read_text())
    built = _build_files()
    platform = re.sub(r"[-.]", "_", sysconfig.get_platform()) if built else "any"
    tag = f"py3-none-{platform}"
    info = f"zrv-{version}.dist-info"
    package = [*sorted((HERE / "zrv").glob("*.py")), HERE / "zrv" / "py.typed"]
    files = {f"zrv/{path.name}": path.read_bytes() for path in [*package, *HEADERS, *built]}
    files[f"{info}/METADATA"] = (
        f"Metadata-Version: 2.1\nName: zrv\nVersion: {version}\n"
        "Summary: Drives a MEMS-mirror laser-scanning controller and generates its scan data\n"
        "License: MIT\nLicense-File: LICENSE\nRequires-Python: >=3.9\nRequires-Dist: numpy\n").encode()
    files[f"{info}/LICENSE"] = (TREE / "LICENSE").read_bytes()
    files[f"{info}/WHEEL"] = (
        f"Wheel-Version: 1.0\nGenerator: zrv\nRoot-Is-Purelib: {'false' if built else 'true'}\nTag: {tag}\n").encode()
    lines = [_record_line(name, data) for name, data in files.items()]
    files[f"{info}/RECORD"] = "".join([*lines, f"{info}/RECORD,,\n"]).encode()

    wheel = f"zrv-{version}-{tag}.whl"
    with zipfile.ZipFile(Path(wheel_directory) / wheel, "w", zipfile.ZIP_DEFLATED) as archive:
        for name, data in files.items():
            archive.writestr(name, data)
    return wheel
