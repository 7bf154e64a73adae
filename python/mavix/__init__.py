"""The Mavix device from Python, through the engines of Mavix Utility and its mavix tool.

    import mavix
    dev = mavix.Device("127.0.0.1:4660:2424")
    print(dev.settings())
    dev.write(0x1000, b"\\x01\\x02")
    dev.read(0x1000, 2)

Failures raise mavix.Error or one of its kinds (Timeout, BadReply, BusError, Refused,
ConnectionFailed). The pytest plugin mavix.pytest_plugin provides the fixture mavix_sim.
"""

from mavix._errors import BadReply, BusError, ConnectionFailed, Error, Refused, Timeout
from mavix._mavix import Device, Gpib, Register, Registers, Serial, Settings, Transfer

for _type in (Device, Gpib, Register, Registers, Serial, Settings, Transfer):
    _type.__module__ = "mavix"

__all__ = [
    "BadReply", "BusError", "ConnectionFailed", "Device", "Error", "Gpib", "Refused",
    "Register", "Registers", "Serial", "Settings", "Timeout", "Transfer",
]
