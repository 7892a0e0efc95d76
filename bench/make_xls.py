# SPDX-License-Identifier: Apache-2.0
"""Writes one XLS workbook for the benchmarks: two sheets of 65,536 rows, every kind of cell record."""
import random
import struct

SECTOR = 4096
FREE, END, TABLE = 0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD
MAX_DATA = 8224
WORDS = ["ka", "ro", "mi", "té", "su", " and ", "& ", "no", "länge", "漢", "x"]


def record(number, data=b""):
    return struct.pack("<HH", number, len(data)) + data


def bof(kind):
    return record(0x809, struct.pack("<HHHHII", 0x600, kind, 0, 0, 0, 0x600))


def string(text):
    is_wide = any(ord(c) > 0xFF for c in text)
    return struct.pack("<HB", len(text), is_wide) + text.encode("utf-16-le" if is_wide else "latin-1")


def shared_strings(strings, references):
    """SST and its CONTINUE records; no string is cut."""
    parts, data, number = [], struct.pack("<II", references, len(strings)), 0xFC
    for text in map(string, strings):
        if len(data) + len(text) > MAX_DATA:
            parts.append(record(number, data))
            data, number = b"", 0x3C
        data += text
    return b"".join(parts) + record(number, data)


class Cells:
    def __init__(self):
        self.strings, self.references = {}, 0

    def row(self, rng, r):
        value = rng.gauss(0, 500)
        unique = "".join(rng.choice(WORDS) for _ in range(6)) + "%x" % rng.getrandbits(32)
        shared = [unique, "area %d" % rng.randrange(800), rng.choice(WORDS)]
        self.references += len(shared)
        cells = b"".join(record(0xFD, struct.pack("<HHHI", r, c, 0, self.strings.setdefault(s, len(self.strings))))
                         for c, s in enumerate(shared))
        cells += record(0x27E, struct.pack("<HHHI", r, 3, 0, rng.randrange(10 ** 6) << 2 | 2))
        cells += record(0x203, struct.pack("<HHHd", r, 4, 0, value))
        cells += record(0xBD, struct.pack("<HHHIHIH", r, 5, 1, rng.randrange(45000) << 2 | 2, 0, 7 << 2 | 3, 6))
        cells += record(0x203, struct.pack("<HHHd", r, 7, 1, 36526 + rng.random() * 9000))
        cells += record(0x205, struct.pack("<HHHBB", r, 8, 0, rng.randrange(2), 0))
        cells += record(0x201, struct.pack("<HHH", r, 9, 1)) if rng.random() < 0.5 else b""
        cells += record(0x205, struct.pack("<HHHBB", r, 10, 0, 0x2A, 1))
        return cells + record(0x6, struct.pack("<HHHdHIH", r, 11, 0, value, 0, 0, 3) + b"\x1e\1\0")


def stream(rng):
    cells = Cells()
    sheets = [bof(0x10) + b"".join(cells.row(rng, r) for r in range(65536)) + record(0xA) for _ in range(2)]
    styles = b"".join(record(0xE0, struct.pack("<HHH", 0, f, 1) + bytes(14)) for f in (0, 14))
    strings = shared_strings(cells.strings, cells.references)
    entry = lambda name, at: record(0x85, struct.pack("<IHBB", at, 0, len(name), 0) + name)
    start = len(bof(5) + styles + entry(b"one", 0) + entry(b"two", 0) + strings + record(0xA))
    return (bof(5) + styles + entry(b"one", start) + entry(b"two", start + len(sheets[0])) + strings + record(0xA)
            + b"".join(sheets))


def write(path, rng):
    """A compound file of version 4: header, sector tables, directory, the stream."""
    data = stream(rng)
    count = -(-len(data) // SECTOR)
    tables = -(-(count + 1) * 4 // (SECTOR - 4))
    chain = [TABLE] * tables + [END] + list(range(tables + 2, tables + 1 + count)) + [END]
    chain += [FREE] * (tables * SECTOR // 4 - len(chain))
    header = b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(16) + struct.pack(
        "<HHHHH6xIIIIIIIIII", 0x3E, 4, 0xFFFE, 12, 6, 1, tables, tables, 0, SECTOR, END, 0, END, 0, 0)
    header = header[:76] + b"".join(struct.pack("<I", i if i < tables else FREE) for i in range(109))
    directory = b""
    for name, kind, child, first, size in (("Root Entry", 5, 1, END, 0), ("Workbook", 2, FREE, tables + 1, len(data))):
        label = name.encode("utf-16-le")
        directory += label.ljust(64, b"\0") + struct.pack("<HBBIII36xIQ", len(label) + 2, kind, 1, FREE, FREE, child,
                                                          first, size)
    with open(path, "wb") as file:
        file.write(header.ljust(SECTOR, b"\0") + struct.pack("<%dI" % len(chain), *chain)
                   + directory.ljust(SECTOR, b"\0") + data.ljust(count * SECTOR, b"\0"))
