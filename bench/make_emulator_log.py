#!/usr/bin/env python3
"""Writes an emulator log of about the given size: make_emulator_log.py FILE MEGABYTES"""

import sys


def main():
    path, megabytes = sys.argv[1], int(sys.argv[2])
    tags = (":INFO :", ":WARN :", ":ERROR:")
    block = []
    for i in range(10000):
        text = f"device pka_{i % 8} unit {i % 128}: transfer {i:08d} of block {i * 37:010d}".ljust(45)
        if i % 5 == 4:
            block.append(text + "\r\n")
        else:
            stamp = f"20261122:{i // 3600 % 24:02d}{i // 60 % 60:02d}{i % 60:02d}"
            block.append(f"{stamp}{tags[i % 3]}  {0x250 + i % 64:08X}{'':20}{text}\r\n")
    start = "20261122:000000:INFO :  00000249" + " " * 20 + "started\r\n"
    data = "".join(block).encode("utf-16-le")
    with open(path, "wb") as out:
        out.write(start.encode("utf-16-le"))
        for _ in range(megabytes * 1_000_000 // len(data)):
            out.write(data)


main()
