#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes the workbooks that the benchmarks read. Seeded: two runs give the same cells.

usage: make_data.py FOLDER [NAME ...]      names: numbers mixed strings wide sheets small far xls

Existing files are kept. Needs the standard library only; packs with zlib level 6 as applications do."""
import os
import random
import sys
import zipfile
from xml.sax.saxutils import escape

import make_xls

MAIN = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
OFFICE = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
TYPES = "application/vnd.openxmlformats-officedocument.spreadsheetml."
SYLLABLES = ["ka", "ro", "mi", "té", "su", " and ", "& ", "no", "länge", "漢", "x"]


def column_name(index):
    name = ""
    index += 1
    while index:
        index, rest = divmod(index - 1, 26)
        name = chr(65 + rest) + name
    return name


class Book:
    """Streams one workbook; shared strings are numbered in order of first use, as applications do."""

    def __init__(self, path):
        self.zip = zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED, compresslevel=6)
        self.strings, self.sheets = {}, []

    def text(self, value):
        return ' t="s"><v>%d</v></c>' % self.strings.setdefault(value, len(self.strings))

    def sheet(self, name, rows, width):
        self.sheets.append(name)
        names = [column_name(i) for i in range(width)]
        with self.zip.open("xl/worksheets/sheet%d.xml" % len(self.sheets), "w", force_zip64=True) as part:
            part.write(('<?xml version="1.0"?>\n<worksheet xmlns="%s"><sheetData>' % MAIN).encode())
            for number, cells in rows:
                body = "".join('<c r="%s%d"%s' % (names[i], number, c) for i, c in enumerate(cells) if c)
                part.write(('<row r="%d">%s</row>' % (number, body)).encode())
            part.write(b"</sheetData></worksheet>")

    def close(self):
        add = lambda name, text: self.zip.writestr(name, '<?xml version="1.0"?>\n' + text)
        count = range(1, len(self.sheets) + 1)
        add("xl/sharedStrings.xml", '<sst xmlns="%s">' % MAIN + "".join(
            '<si><t xml:space="preserve">%s</t></si>' % escape(s) for s in self.strings) + "</sst>")
        add("xl/styles.xml", '<styleSheet xmlns="%s"><cellXfs><xf numFmtId="0"/><xf numFmtId="14"/>'
            '<xf numFmtId="22"/></cellXfs></styleSheet>' % MAIN)
        add("xl/workbook.xml", '<workbook xmlns="%s" xmlns:r="%s"><sheets>' % (MAIN, OFFICE) + "".join(
            '<sheet name="%s" sheetId="%d" r:id="rId%d"/>' % (escape(self.sheets[i - 1]), i, i) for i in count)
            + "</sheets></workbook>")
        relation = lambda i, kind, target: '<Relationship Id="rId%d" Type="%s/%s" Target="%s"/>' % (
            i, OFFICE, kind, target)
        head = '<Relationships xmlns="%s/relationships">' % PACKAGE
        add("xl/_rels/workbook.xml.rels", head + "".join(
            relation(i, "worksheet", "worksheets/sheet%d.xml" % i) for i in count)
            + relation(len(count) + 1, "styles", "styles.xml")
            + relation(len(count) + 2, "sharedStrings", "sharedStrings.xml") + "</Relationships>")
        add("_rels/.rels", head + relation(1, "officeDocument", "xl/workbook.xml") + "</Relationships>")
        override = lambda name, kind: '<Override PartName="/xl/%s.xml" ContentType="%s%s+xml"/>' % (
            name, TYPES, kind)
        add("[Content_Types].xml", '<Types xmlns="%s/content-types"><Default Extension="rels" ContentType='
            '"application/vnd.openxmlformats-package.relationships+xml"/>' % PACKAGE
            + override("workbook", "sheet.main") + override("styles", "styles")
            + override("sharedStrings", "sharedStrings")
            + "".join(override("worksheets/sheet%d" % i, "worksheet") for i in count) + "</Types>")
        self.zip.close()


def number(value):
    return "><v>%r</v></c>" % value


def words(rng):
    return "".join(rng.choice(SYLLABLES) for _ in range(rng.randint(2, 9))) + "%x" % rng.getrandbits(24)


def mixed_row(book, rng, row):
    value = rng.gauss(0, 500)
    return [book.text(words(rng)), book.text("area %d" % rng.randrange(800)), number(rng.randrange(10 ** 6)),
            number(value), number(round(value, 2)), ' s="1"' + number(36526 + rng.randrange(9000)),
            ' s="2"' + number(36526 + rng.random() * 9000), ' t="b"><v>%d</v></c>' % rng.randrange(2),
            ' s="1"/>' if rng.random() < 0.5 else None,
            ' t="e"><f>NA()</f><v>#N/A</v></c>' if rng.random() < 0.1 else number(rng.randrange(99)),
            "><f>C%d+D%d</f><v>%r</v></c>" % (row, row, value), book.text(rng.choice(SYLLABLES))]


def numbers_row(rng):
    return [number(rng.gauss(0, 1) * 10 ** rng.randint(-5, 8)) for _ in range(10)] + [
        number(round(rng.random() * 10 ** 6, 2)) for _ in range(10)]


def fill(book, name, rng):
    rows = lambda count, make: ((r, make(r)) for r in range(1, count + 1))
    if name == "numbers":
        book.sheet(name, rows(200000, lambda r: numbers_row(rng)), 20)
    elif name == "mixed":
        book.sheet(name, rows(200000, lambda r: mixed_row(book, rng, r)), 12)
    elif name == "small":
        book.sheet(name, rows(20, lambda r: mixed_row(book, rng, r)), 12)
    elif name == "strings":
        book.sheet(name, rows(100000, lambda r: [book.text(words(rng)) for _ in range(10)]), 10)
    elif name == "wide":
        book.sheet(name, rows(1000, lambda r: [number(rng.gauss(0, 1)) for _ in range(2000)]), 2000)
    elif name == "far":
        book.sheet(name, [(1048576, [None] * 16383 + [number(1)])], 16384)
    elif name == "sheets":
        for i in range(200):
            book.sheet("sheet %d" % (i + 1), rows(500, lambda r: mixed_row(book, rng, r)), 12)
    else:
        sys.exit("make_data.py: no data set is called " + name)


def main():
    folder = sys.argv[1]
    os.makedirs(folder, exist_ok=True)
    for name in sys.argv[2:] or "numbers mixed strings wide sheets small far xls".split():
        file_name = "mixed.xls" if name == "xls" else name + ".xlsx"
        path = os.path.join(folder, file_name)
        if os.path.exists(path):
            continue
        if name == "xls":
            make_xls.write(path + ".part", random.Random(name))
        else:
            book = Book(path + ".part")
            fill(book, name, random.Random(name))
            book.close()
        os.replace(path + ".part", path)
        print("%-14s %9d bytes" % (file_name, os.path.getsize(path)), flush=True)


if __name__ == "__main__":
    main()
