"""A simulated controller, in a process of its own on a pseudo-terminal."""
import os
import subprocess

import pytest
import zrv

TOOL = os.environ["ZRV_TOOL"]


@pytest.fixture
def ports(tmp_path):
    """A folder with the port of a controller that takes colours."""
    command = [TOOL, "simulate", "--port-dir", str(tmp_path), "--name", "Bench 9", "--format", "3",
               "--ai0", "dc:2.5", "--capacity", "25000"]
    with subprocess.Popen(command, stdout=subprocess.PIPE, text=True) as simulator:
        while "Ctrl-C" not in (line := simulator.stdout.readline()):
            assert line, "the simulator ended"
        zrv.set_port_directory(tmp_path)
        yield tmp_path
        zrv.set_port_directory()
        simulator.terminate()


@pytest.fixture
def device(ports):
    with zrv.Device("ttyUSB0") as connected:
        yield connected
