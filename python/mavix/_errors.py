"""The exceptions of mavix: one family, each carrying the message the window shows."""


class Error(Exception):
    """A Mavix operation failed; str(error) is the message the window would show."""


class Timeout(Error):
    """The device did not answer within the time-out (or the wait was given up)."""


class BadReply(Error):
    """The device's reply was malformed, short, or not the answer to the request."""


class BusError(Error):
    """The device answered with a bus error (or a GPIB module with an error packet)."""


class Refused(Error):
    """Bad input: nothing was sent (an address out of range, a field the window refuses, ...)."""


class ConnectionFailed(Error):
    """The data port could not be connected, or a transfer on it failed."""


for _kind in (Error, Timeout, BadReply, BusError, Refused, ConnectionFailed):
    _kind.__module__ = "mavix"
