#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Sorts the fixtures and their parts into one seed folder per fuzz target:
# make_seeds.py FIXTURES CORPUS
import os
import struct
import sys
import zipfile

KINDS = {
    "fuzz_rewrite": lambda name: "sheets/" in name and name.endswith(".xml"),
    "fuzz_worksheet": lambda name: "sheets/" in name and name.endswith(".xml"),
    "fuzz_shared_strings": lambda name: name.endswith("sharedstrings.xml"),
    "fuzz_styles": lambda name: name.endswith("styles.xml"),
    "fuzz_workbook": lambda name: name.endswith("workbook.xml"),
    "fuzz_relationships": lambda name: name.endswith(".rels") or "content_types" in name,
}
FORMULAS = ["Sheet1!$A$1:$B$2", "'It''s'!A1", "Sheet1!$A:$C", "Sheet1!$1:$3", "#REF!", "[1]S!$A$1",
            "SUM(A:C!B2,'[B.xlsx]S'!$A1)", "T[[#This Row],['#]]:T[a]+{1,#N/A;\"x!\"}", "LOG10(A1#)"]

# Tokens of binary formulas after their count: references, memory tokens, arrays, choices, strings.
XLS_FORMULAS = ["0f00 5a000005000200 4305000000 1e0100", "0c00 2dffff010000c001c0 1e0100",
                "1e00 46000000000f00 3a000000000000 3a010000000000 10 6000000000000000 0200" + 32 * "0" +
                "00000001000000000000f03f", "1300 1904010000000000 41ff00 17020141004200 03"]

GOOGLE_CELL = ('{"userEnteredValue": {"%s": %s}, "effectiveValue": {"%s": %s}, "userEnteredFormat": {"numberFormat": '
               '{"type": "DATE"}}}')
GOOGLE_REPLIES = ['{"values": [["a", 1], [], [true, null]]}', '{"sheets": [{"data": [{}]}]}',
                  '{"sheets": [{"data": [{"rowData": [{}, {"values": [{}, %s, %s]}]}]}]}' % (
                      GOOGLE_CELL % ("numberValue", "1.5e3", "errorValue", "{}"),
                      GOOGLE_CELL % ("formulaValue", '"=A1"', "stringValue", '"\\u00fc\\n"'))]


def record(number, data=b""):
    return struct.pack("<HH", number, len(data)) + data


def xls_streams():
    """A BIFF8 book with a shared string over two records, and a BIFF2 sheet."""
    sst = record(0xFC, struct.pack("<II", 1, 1) + b"\x04\0\0ab") + record(0x3C, b"\1c\0d\0")
    xf = record(0xE0, bytes(20))
    name = record(0x18, struct.pack("<HBBHHHI", 0x20, 0, 1, 5, 0, 1, 0) + b"\0\6" + b"\x44\0\0\0\0")
    bof = struct.pack("<HHIII", 0x600, 5, 0, 0, 0)
    sheet_entry = struct.pack("<IBBBB", 0, 0, 0, 1, 0) + b"S"
    end = len(record(0x809, bof) + record(0x85, sheet_entry) + xf + sst + name + record(0xA))
    cells = record(0xFD, struct.pack("<HHHI", 0, 0, 0, 0)) + record(0xBD, struct.pack(
        "<HHHIHIH", 1, 0, 0, 6, 0, 7, 1)) + record(0x6, struct.pack("<HHHHIHHIH", 2, 0, 0, 0, 0, 0xFFFF, 0, 0, 0))
    cells += record(0x207, b"\1\0\0x") + record(0xE5, struct.pack("<HHHHH", 1, 0, 1, 0, 1))
    yield (record(0x809, bof) + record(0x85, struct.pack("<I", end) + sheet_entry[4:]) + xf + sst + name + record(0xA) +
           record(0x809, struct.pack("<HHIII", 0x600, 16, 0, 0, 0)) + cells + record(0xA))
    yield (record(0x9, struct.pack("<HH", 2, 16)) + record(0x4, struct.pack("<HH3xB", 0, 0, 2) + b"ab") +
           record(0x2, struct.pack("<HH3xH", 1, 1, 7)) + record(0xA))


def put(corpus, target, name, data):
    os.makedirs(os.path.join(corpus, target), exist_ok=True)
    with open(os.path.join(corpus, target, name), "wb") as file:
        file.write(data)


def put_parts(corpus, name, path):
    try:
        with zipfile.ZipFile(path) as archive:
            for i, part in enumerate(archive.namelist()):
                plain = part.replace("\\", "/").lower()
                data = archive.read(part)
                for target, wanted in KINDS.items():
                    if wanted(plain) and len(data) <= 65536:
                        put(corpus, target, f"{name}_{i}", data)
    except zipfile.BadZipFile:
        pass  # some fixtures are broken on purpose


def main(fixtures, corpus):
    for folder, _, names in os.walk(fixtures):
        for name in sorted(names):
            path = os.path.join(folder, name)
            if ".xl" not in name or os.path.getsize(path) > 65536:
                continue
            with open(path, "rb") as file:
                data = file.read()
            put(corpus, "fuzz_container", name, data)
            put(corpus, "fuzz_package", name, data)
            if data.startswith(b"\xd0\xcf\x11\xe0"):
                put(corpus, "fuzz_compound_file", name, data)
            put_parts(corpus, name, path)
    for i, formula in enumerate(FORMULAS):
        put(corpus, "fuzz_defined_name", f"formula_{i}", formula.encode())
        put(corpus, "fuzz_formula", f"formula_{i}", formula.encode())
    for i, formula in enumerate(XLS_FORMULAS):
        put(corpus, "fuzz_xls_formula", f"formula_{i}", bytes.fromhex(formula))
    for i, reply in enumerate(GOOGLE_REPLIES):
        put(corpus, "fuzz_google_reply", f"reply_{i}", reply.encode())
    for i, stream in enumerate(xls_streams()):
        put(corpus, "fuzz_xls", f"stream_{i}", stream)
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
