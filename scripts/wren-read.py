#!/usr/bin/env python3
"""Read a register range of a Mavix device (or mavix-sim) with one WREN read request over UDP.

Usage: wren-read.py [--host 127.0.0.1] [--port 4660] [--address FFFFFF00] [--length 64]

Prints the bytes as a hex dump; a 64-byte settings image (at FFFFFF00 or FFFFFC00) is also
decoded. Exit code 0 on a good reply, 1 on a time-out or a bad reply.
"""
import argparse
import socket
import struct
import sys

VER_TYPE = 0xFF
READ_REQUEST = 0xC0  # command bit and read bit
ACK_BIT = 0x08
READ_BIT = 0x40
BUS_ERROR_BIT = 0x01
SETTINGS_IMAGES = (0xFFFFFF00, 0xFFFFFC00)


def read_registers(host, port, address, length, packet_id=0, timeout_s=2.0):
    request = struct.pack(">BBBBI", VER_TYPE, READ_REQUEST, packet_id, length, address)
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sock:
        sock.settimeout(timeout_s)
        sock.sendto(request, (host, port))
        reply, _ = sock.recvfrom(65536)
    if len(reply) < 8:
        raise ValueError(f"reply of {len(reply)} bytes is shorter than a header")
    ver_type, flags, reply_id, reply_length, reply_address = struct.unpack(">BBBBI", reply[:8])
    data = reply[8:8 + reply_length]
    if ver_type != VER_TYPE or not flags & ACK_BIT or not flags & READ_BIT or reply_id != packet_id:
        raise ValueError(f"bad reply header {reply[:8].hex(' ')}")
    if flags & BUS_ERROR_BIT:
        raise ValueError(f"bus error at 0x{reply_address:08X}")
    if len(data) < reply_length:
        raise ValueError(f"reply holds {len(data)} of {reply_length} data bytes")
    return data


def hex_dump(address, data):
    for offset in range(0, len(data), 16):
        chunk = data[offset:offset + 16]
        print(f"{(address + offset) & 0xFFFFFFFF:08X}  {chunk.hex(' ').upper()}")


def print_settings(image):
    def u16(offset):
        return struct.unpack(">H", image[offset:offset + 2])[0]

    print("MAC address      :", ":".join(f"{b:02X}" for b in image[18:24]))
    print("IP address       :", ".".join(str(b) for b in image[24:28]))
    print("TCP data port    :", u16(28))
    print("TCP command port :", u16(30))
    print("UDP port         :", u16(34))
    print("keep-alive       :", "enable" if image[16] & 0x04 else "disable")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--host", default="127.0.0.1", help="device address (default 127.0.0.1)")
    parser.add_argument("--port", type=int, default=4660, help="WREN UDP port (default 4660)")
    parser.add_argument("--address", default="FFFFFF00", help="hexadecimal register address")
    parser.add_argument("--length", type=int, default=64, help="bytes to read, 0 to 255")
    parser.add_argument("--timeout", type=float, default=2.0, help="seconds to wait for the reply")
    args = parser.parse_args()
    address = int(args.address, 16)
    if not 0 <= address <= 0xFFFFFFFF or not 0 <= args.length <= 255:
        parser.error("the address must fit 32 bits and the length 0 to 255")
    try:
        data = read_registers(args.host, args.port, address, args.length, timeout_s=args.timeout)
    except socket.timeout:
        print(f"no reply from {args.host}:{args.port} within {args.timeout} s", file=sys.stderr)
        return 1
    except (OSError, ValueError) as error:
        print(error, file=sys.stderr)
        return 1
    hex_dump(address, data)
    if address in SETTINGS_IMAGES and len(data) == 64:
        print_settings(data)
    return 0


if __name__ == "__main__":
    sys.exit(main())
