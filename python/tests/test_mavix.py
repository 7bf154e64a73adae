"""The module against mavix-sim, through the plugin's fixture: one table of calls and results."""

import os
import signal
import threading
import time

import pytest

import mavix

DOCS = os.path.join(os.path.dirname(__file__), "..", "..", "docs")


def write_then_read(dev):
    dev.write(0x1000, b"\x01\x02\x03\x04")
    return dev.read(0x1000, 4)


def interrupted_read(dev):
    """Ctrl+C during a 3 s wait ends it at once with KeyboardInterrupt."""
    # Python's own handler, even where the test runner was started with SIGINT ignored.
    previous = signal.signal(signal.SIGINT, signal.default_int_handler)
    timer = threading.Timer(0.2, os.kill, (os.getpid(), signal.SIGINT))
    start = time.monotonic()
    timer.start()
    with pytest.raises(KeyboardInterrupt):
        dev.read(0, 4)
    timer.join()
    signal.signal(signal.SIGINT, previous)
    return time.monotonic() - start < 1.5


def from_other_thread(dev):
    errors = []
    thread = threading.Thread(target=lambda: errors.append(_raised(lambda: dev.read(0, 4))))
    thread.start()
    thread.join(5)
    return errors[0]


def _raised(call):
    try:
        call()
    except Exception as error:  # noqa: BLE001 - the table compares the type and text
        return type(error).__name__ + ": " + str(error).split(";")[0]
    return None


def scratch_field(dev):
    dev.regs.load(os.path.join(DOCS, "scratch-map.toml"))
    dev.regs["scratch.ctrl.divider"].write(10)
    dev.regs["scratch.ctrl.mode"].write("loopback")
    return dev.regs["scratch.ctrl"].read(), dev.regs["scratch.ctrl.mode"].text()


def received(dev, tmp_path):
    figures = dev.recv(str(tmp_path / "in.bin"), bytes=1000)
    return figures.bytes, (tmp_path / "in.bin").stat().st_size


def sent(dev, tmp_path):
    (tmp_path / "out.bin").write_bytes(bytes(range(256)) * 4)
    figures = dev.send(str(tmp_path / "out.bin"))
    return figures.bytes, figures.file_size


def serial_loop(dev):
    dev.serial.send("dte", b"hello\r\n")
    time.sleep(0.2)
    return dev.serial.recv("dce")


def other_data_port(dev, tmp_path):
    return mavix.Device(dev.target.rsplit(":", 1)[0] + ":1", timeout_ms=500).recv(
        str(tmp_path / "x.bin"), bytes=10)


E = mavix
CASES = [
    # id, emulator options, call, result (or exception class and the start of its message)
    ("write then read", [], write_then_read, b"\x01\x02\x03\x04"),
    ("settings of the running copy", [], lambda d: d.settings().ip_address, "127.0.0.1"),
    ("set on the EEPROM copy", [], lambda d: (d.set(eeprom=True, tcp_command_port=8023),
                                              d.settings(eeprom=True).tcp_command_port)[1], 8023),
    ("register by name", [], lambda d: d.regs["settings.ip_address"].text(), "127.0.0.1"),
    ("field read-modify-write", [], scratch_field, (0x0A20, "loopback")),
    ("recv with a byte limit", ["--tcp-mode source"], received, (1000, 1000)),
    ("send a file", [], sent, (1024, 1024)),
    ("gpib query", ["--gpib"], lambda d: d.gpib.query(1, "*IDN?"), b"MAVIX,SIM-GPIB-METER,0,1.0"),
    ("serial loop", ["--rs232c"], serial_loop, b"hello\r\n"),
    ("time-out", ["--drop-every 1"], lambda d: d.read(0, 4),
     (E.Timeout, "UDP read is timeout")),
    ("bad reply", ["--wrong-vertype"], lambda d: d.read(0, 4), (E.BadReply, "WREN Recv, ")),
    ("bus error", ["--bus-error"], lambda d: d.read(0, 4), (E.BusError, "WREN Recv, Bus Error")),
    ("gpib error packet", ["--gpib --gpib-fault error-packet:2"],
     lambda d: d.gpib.query(1, "*IDN?"), (E.BusError, "GPIB")),
    ("length over 255", [], lambda d: d.read(0, 256), (E.Refused, "")),
    ("address refused by the General tab", [], lambda d: d.set(ip_address="0.0.0.0"),
     (E.Refused, "")),
    ("data port closed", [], other_data_port, (E.ConnectionFailed, "")),
    ("Ctrl+C", ["--delay 3000"], interrupted_read, True),
    ("another thread", [], from_other_thread,
     "RuntimeError: mavix.Device is used from another thread than the one that made it"),
]


@pytest.mark.parametrize("options,call,expected", [
    pytest.param(o, c, e, id=i, marks=pytest.mark.mavix_sim(*o, timeout_ms=500))
    for i, o, c, e in CASES])
def test_call(mavix_sim, tmp_path, options, call, expected):
    run = (lambda: call(mavix_sim, tmp_path)) if call.__code__.co_argcount == 2 else (
        lambda: call(mavix_sim))
    if isinstance(expected, tuple) and isinstance(expected[0], type):
        with pytest.raises(expected[0]) as raised:
            run()
        assert str(raised.value).startswith(expected[1])
    else:
        assert run() == expected
