"""pip, in an environment of its own and without a network."""
import os
import subprocess
import venv
from pathlib import Path

TREE = Path(__file__).resolve().parents[2]
USE = """
import zrv
from pathlib import Path
package = Path(zrv.__file__).parent
assert Path(zrv.raw._name) == package / "libzrv.so", zrv.raw._name
assert (package / "py.typed").is_file() and (package / "hershey.txt").is_file()
print(zrv.DataGenerator().text("Hi"), zrv.__version__)
"""


def run(*command, **environment):
    kept = {name: value for name, value in os.environ.items() if not name.startswith(("ZRV_", "PYTHON"))}
    return subprocess.run(command, env={**kept, **environment}, capture_output=True, text=True)


def test_pip_installs_from_the_tree(tmp_path):
    venv.create(tmp_path / "env", system_site_packages=True, with_pip=True)
    python = str(tmp_path / "env" / "bin" / "python")

    def install(build, *options):
        done = run(python, "-m", "pip", "install", *options, str(TREE / "bindings" / "python"), PIP_NO_INDEX="1",
                   PYTHONDONTWRITEBYTECODE="1", ZRV_BUILD_DIR=build)
        assert done.returncode == 0, done.stdout + done.stderr

    install(os.environ["ZRV_BUILD_DIR"])
    used = run(python, "-c", USE)
    assert used.returncode == 0 and used.stdout.startswith("<Scan of 1"), used.stderr

    install(str(tmp_path), "--force-reinstall", "--no-deps")  # nothing built here: no library in the package
    missing = run(python, "-c", "import zrv", ZRV_LIBRARY=str(tmp_path / "none.so"))
    assert missing.returncode == 1 and "ImportError" in missing.stderr and "ZRV_LIBRARY" in missing.stderr
    named = run(python, "-c", "import zrv", ZRV_LIBRARY=os.path.join(os.environ["ZRV_BUILD_DIR"], "libzrv.so"))
    assert named.returncode == 0, named.stderr
