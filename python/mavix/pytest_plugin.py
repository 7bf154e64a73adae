"""pytest plugin of mavix: the fixture mavix_sim.

A test that takes the fixture ``mavix_sim`` gets a ``mavix.Device`` connected to a mavix-sim
started for that test alone on free loopback ports, and stopped afterwards. The marker gives the
emulator's options (faults, modules) and the device's time-out::

    @pytest.mark.mavix_sim("--gpib", timeout_ms=500)
    def test_meter(mavix_sim):
        assert mavix_sim.gpib.query(1, "*IDN?").startswith(b"MAVIX")

mavix-sim is taken from the environment variable MAVIX_SIM, else from the build tree the module
was built in, else from PATH.
"""

import os
import queue
import shlex
import shutil
import subprocess
import threading
import time

import pytest

import mavix

_START_TIMEOUT_S = 5.0
_STOP_TIMEOUT_S = 5.0


def pytest_configure(config):
    config.addinivalue_line(
        "markers",
        "mavix_sim(*options, timeout_ms=10000): mavix-sim options and the Device's time-out "
        "for the mavix_sim fixture")


def _simulator():
    path = os.environ.get("MAVIX_SIM")
    if not path:
        try:
            from mavix import _buildtree
            path = _buildtree.MAVIX_SIM
        except ImportError:
            path = shutil.which("mavix-sim")
    if not path or not os.access(path, os.X_OK):
        pytest.fail("mavix-sim not found: set MAVIX_SIM to its path or put it on PATH")
    return path


def _ports_line(process):
    """The emulator's line with its ports, waited for at most _START_TIMEOUT_S. A thread reads
    every line the emulator prints, so that a full pipe never holds it up."""
    lines = queue.Queue()

    def read_lines():
        for line in process.stdout:
            lines.put(line)
        lines.put("")

    process.reader = threading.Thread(target=read_lines, daemon=True)
    process.reader.start()
    deadline = time.monotonic() + _START_TIMEOUT_S
    while time.monotonic() < deadline:
        try:
            line = lines.get(timeout=max(deadline - time.monotonic(), 0.01))
        except queue.Empty:
            break
        if line.startswith("mavix-sim: udp ") or not line:
            return line
    return ""


def start_simulator(options):
    """Starts mavix-sim on free loopback ports; returns (process, 'udp:tcp' target text)."""
    arguments = [_simulator(), "--address", "127.0.0.1", "--udp-port", "0", "--tcp-port", "0"]
    for option in options:
        arguments += shlex.split(option)
    process = subprocess.Popen(arguments, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True)
    line = _ports_line(process)
    words = line.split()
    if len(words) < 5 or words[:2] != ["mavix-sim:", "udp"]:
        stop_simulator(process)
        pytest.fail(f"mavix-sim did not start: {line.strip() or 'no output'}")
    udp = words[2].rsplit(":", 1)[1]
    tcp = words[4].rsplit(":", 1)[1]
    return process, f"127.0.0.1:{udp}:{tcp}"


def stop_simulator(process):
    """Ends the emulator by its PID: SIGTERM, then SIGKILL when it does not end in time."""
    if process.poll() is None:
        process.terminate()
        try:
            process.wait(_STOP_TIMEOUT_S)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait(_STOP_TIMEOUT_S)
    process.reader.join(_STOP_TIMEOUT_S)
    process.stdout.close()


@pytest.fixture
def mavix_sim(request):
    """A mavix.Device connected to a mavix-sim of its own (options from the mavix_sim marker)."""
    marker = request.node.get_closest_marker("mavix_sim")
    options = list(marker.args) if marker else []
    timeout_ms = marker.kwargs.get("timeout_ms", 10000) if marker else 10000
    process, target = start_simulator(options)
    try:
        yield mavix.Device(target, timeout_ms=timeout_ms)
    finally:
        stop_simulator(process)
