#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes new workbooks in every format with zxsheet and has other programs read them: openpyxl, LibreOffice and,
where Node finds it, SheetJS.

usage: read_new_books.py ZXSHEET      exit code 77 when no other program is there"""
import csv
import datetime
import json
import os
import shutil
import subprocess
import sys
import tempfile
import zipfile
from xml.etree import ElementTree

SKIPPED = 77
TABLE = [["name", "count", "ratio", "day", "moment", "flag", "note"],
         ["Änne <&> \"B\"", "3", "0.1", "2024-02-29", "2024-02-29T13:05:00", "true", "007"],
         ["漢字 😀", "-12", "1e-7", "1999-12-31", "2001-01-01T00:00:01", "false", "12345678901234567890"],
         ["two\nlines", "", "2.5", "", "", "", " kept "]]
TYPES = {".xlsx": "sheet.main+xml", ".xlsm": "sheet.macroEnabled.main+xml", ".xltx": "template.main+xml",
         ".xltm": "template.macroEnabled.main+xml"}
SHEETJS = """
const x = require('xlsx'), book = x.readFile(process.argv[1], {cellDates: false});
console.log(JSON.stringify(x.utils.sheet_to_json(book.Sheets[book.SheetNames[0]], {header: 1, raw: true, defval: null})));
"""
failures = []


def check(what, found, expected):
    if found != expected:
        failures.append("%s: %r instead of %r" % (what, found, expected))


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, encoding="utf-8")


def check_package(path, ending):
    with zipfile.ZipFile(path) as package:
        check(path + ": entries", package.testzip(), None)
        for name in package.namelist():
            ElementTree.fromstring(package.read(name))
        types = package.read("[Content_Types].xml").decode()
        check(path + ": claims to be " + TYPES[ending], TYPES[ending] in types, True)


def check_openpyxl(path):
    try:
        import openpyxl
    except ImportError:
        return False
    book = openpyxl.load_workbook(path)
    check("openpyxl: sheets", book.sheetnames, ["Data"])
    rows = [list(row) for row in book["Data"].iter_rows(values_only=True)]
    moment = datetime.datetime
    check("openpyxl: " + path, rows,
          [TABLE[0],
           [TABLE[1][0], 3, 0.1, moment(2024, 2, 29), moment(2024, 2, 29, 13, 5), True, "007"],
           [TABLE[2][0], -12, 1e-7, moment(1999, 12, 31), moment(2001, 1, 1, 0, 0, 1), False, TABLE[2][6]],
           [TABLE[3][0], None, 2.5, None, None, None, " kept "]])
    check("openpyxl: creator", bool(book.properties.creator), True)
    return True


def check_libreoffice(path, scratch):
    if shutil.which("soffice") is None:
        return False
    out = os.path.join(scratch, "csv")
    result = run("soffice", "-env:UserInstallation=file://" + os.path.join(scratch, "profile"), "--headless",
                 "--convert-to", "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true", "--outdir", out, path)
    text = os.path.join(out, os.path.splitext(os.path.basename(path))[0] + ".csv")
    if not os.path.exists(text):
        failures.append("LibreOffice did not read %s: %s" % (path, result.stderr.strip()))
        return True
    with open(text, newline="", encoding="utf-8") as file:
        rows = list(csv.reader(file))
    check("LibreOffice: first column of " + path, [row[0] for row in rows], [row[0] for row in TABLE])
    check("LibreOffice: notes of " + path, [row[6] for row in rows], [row[6] for row in TABLE])
    check("LibreOffice: counts of " + path, [row[1] for row in rows], [row[1] for row in TABLE])
    return True


def check_sheetjs(path):
    result = run("node", "-e", SHEETJS, "--", path) if shutil.which("node") else None
    if result is None or "Cannot find module" in result.stderr:
        return False
    rows = json.loads(result.stdout)
    check("SheetJS: " + path, [row[0] for row in rows], [row[0] for row in TABLE])
    check("SheetJS: " + path, [row[2] for row in rows[1:]], [0.1, 1e-7, 2.5])
    check("SheetJS: " + path, [row[5] for row in rows[1:3]], [True, False])
    return True


def main():
    program = sys.argv[1]
    asked = set()
    with tempfile.TemporaryDirectory() as scratch:
        source = os.path.join(scratch, "table.csv")
        with open(source, "w", newline="", encoding="utf-8") as file:
            csv.writer(file).writerows(TABLE)
        for ending in TYPES:
            path = os.path.join(scratch, "book" + ending)
            made = run(program, "write", path, "-s", "Data", source)
            if made.returncode != 0:
                failures.append("zxsheet write: " + made.stderr.strip())
                continue
            check_package(path, ending)
            asked |= {name for name, there in (("openpyxl", check_openpyxl(path)), ("SheetJS", check_sheetjs(path)),
                                               ("LibreOffice", check_libreoffice(path, scratch))) if there}
    if not asked:
        print("skipped: neither openpyxl nor LibreOffice nor SheetJS is installed")
        sys.exit(SKIPPED)
    print("asked " + ", ".join(sorted(asked)))
    print("\n".join(failures))
    sys.exit(1 if failures else 0)


main()
