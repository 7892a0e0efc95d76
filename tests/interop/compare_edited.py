#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Writes one number into a free cell of every workbook of a folder with zxsheet and asks other programs whether
all the rest is as it was: openpyxl (values, formulas, formats, merged cells, rules, links) and LibreOffice (the
values that it shows). Formulas are left to openpyxl: LibreOffice computes them anew when a file asks for it.

usage: compare_edited.py ZXSHEET FOLDER [PATTERN]      exit code 77 when a program or the folder is missing"""
import csv
import fnmatch
import glob
import os
import shutil
import subprocess
import sys
import tempfile
import warnings
import zipfile
from xml.etree import ElementTree

SKIPPED = 77
WRITTEN = 42.5
ENDINGS = (".xlsx", ".xlsm", ".xltx", ".xltm")
CSV_OF_ALL_SHEETS = "csv:Text - txt - csv (StarCalc):44,34,76,1,,0,false,true,false,false,false,-1"


def skip(reason):
    print("skipped: " + reason)
    sys.exit(SKIPPED)


try:
    import openpyxl
except ImportError:
    skip("openpyxl is not installed for " + sys.executable)


warnings.simplefilter("ignore")  # what openpyxl would drop when it saved


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, encoding="utf-8", errors="replace")


def first_free_cell(sheet):
    """The first cell of the first column, going down, that openpyxl does not know."""
    row = 1
    while (row, 1) in sheet._cells:
        row += 1
    return row


def picture(path):
    """What openpyxl finds in a workbook, as plain values."""
    book = openpyxl.load_workbook(path, keep_vba=True)
    found = {"names": sorted(book.defined_names), "sheets": book.sheetnames, "active": book.active and book.active.title}
    for sheet in book.worksheets:
        cells = {}
        for place, cell in sheet._cells.items():
            value = cell.value
            if hasattr(value, "text"):  # an array or shared formula
                value = (type(value).__name__, getattr(value, "ref", None), value.text)
            cells[place] = (repr(value), cell.number_format, cell.font.b, cell.fill.fgColor.rgb,
                            cell.hyperlink and (cell.hyperlink.target, cell.hyperlink.location),
                            cell.comment and cell.comment.text)
        found[sheet.title] = {
            "cells": cells,
            "merged": sorted(str(r) for r in sheet.merged_cells.ranges),
            "widths": {k: (d.width, d.hidden, d.min, d.max) for k, d in sheet.column_dimensions.items()},
            "heights": {k: (d.height, d.hidden) for k, d in sheet.row_dimensions.items() if d.height or d.hidden},
            "rules": sorted(str(r.sqref) for r in sheet.conditional_formatting),
            "validations": sorted(str(v.sqref) for v in sheet.data_validations.dataValidation),
            "filter": sheet.auto_filter.ref, "tables": sorted((t.name, t.ref) for t in sheet.tables.values()),
            "charts": len(sheet._charts), "images": len(sheet._images), "state": sheet.sheet_state,
            "frozen": sheet.freeze_panes, "protected": sheet.protection.sheet,
            "print": (sheet.print_area, sheet.print_title_rows, sheet.page_setup.orientation)}
    return found


def differences(before, after, title, place):
    """Paths at which two pictures differ; the written cell is expected."""
    written = after[title]["cells"].pop(place, None)
    before[title]["cells"].pop(place, None)
    found = [] if written and written[0] == repr(WRITTEN) else ["the written cell reads %r" % (written,)]
    after[title]["heights"].pop(place[0], None), before[title]["heights"].pop(place[0], None)

    def walk(a, b, where):
        if isinstance(a, dict) and isinstance(b, dict):
            for key in sorted(set(a) | set(b), key=repr):
                walk(a.get(key), b.get(key), where + [str(key)])
        elif a != b:
            found.append("%s: %r became %r" % ("/".join(where), a, b))

    walk(before, after, [])
    return found


def shown_by_libreoffice(paths, folder):
    """Per file, its sheets' texts as LibreOffice writes them to CSV."""
    profile = "-env:UserInstallation=file://" + os.path.join(folder, "profile")
    shown = {}
    for path in paths:
        name = os.path.splitext(os.path.basename(path))[0]
        out = os.path.join(folder, "csv-" + os.path.basename(os.path.dirname(path)))
        os.makedirs(out, exist_ok=True)
    by_folder = {}
    for path in paths:
        by_folder.setdefault(os.path.dirname(path), []).append(path)
    for source, group in by_folder.items():
        out = os.path.join(folder, "csv-" + os.path.basename(source))
        run("soffice", profile, "--headless", "--convert-to", CSV_OF_ALL_SHEETS, "--outdir", out, *group)
        for path in group:
            name = os.path.splitext(os.path.basename(path))[0]
            for text in glob.glob(os.path.join(glob.escape(out), glob.escape(name) + "-*.csv")):
                with open(text, newline="", encoding="utf-8", errors="replace") as file:
                    shown.setdefault(path, {})[os.path.basename(text)[len(name) + 1:-4]] = list(csv.reader(file))
    return shown


def formula_cells(path):
    book = openpyxl.load_workbook(path)
    return {s.title: {p for p, c in s._cells.items() if c.data_type == "f"} for s in book.worksheets}


def compare_shown(before, after, formulas, title, place):
    found = []
    for sheet in sorted(set(before) | set(after)):
        a, b = before.get(sheet), after.get(sheet)
        if a is None or b is None:
            found.append("LibreOffice: sheet %r is missing" % sheet)
            continue
        at = lambda rows, r, c: rows[r][c] if r < len(rows) and c < len(rows[r]) else ""
        for r in range(max(len(a), len(b))):
            for c in range(max(len(rows[r]) if r < len(rows) else 0 for rows in (a, b))):
                if (r + 1, c + 1) in formulas.get(sheet, ()) or (sheet == title and (r + 1, c + 1) == place):
                    continue
                if at(a, r, c) != at(b, r, c):
                    found.append("LibreOffice: %s row %d column %d: %r became %r" % (sheet, r + 1, c + 1, at(a, r, c),
                                                                                     at(b, r, c)))
    return found


def ill_formed_parts(path):
    bad = []
    with zipfile.ZipFile(path) as package:
        for name in package.namelist():
            if name.lower().endswith((".xml", ".rels", ".vml")):
                try:
                    ElementTree.fromstring(package.read(name))
                except ElementTree.ParseError as error:
                    bad.append("%s is not well-formed: %s" % (name, error))
    return bad


def main():
    program, folder = sys.argv[1:3]
    pattern = sys.argv[3] if len(sys.argv) > 3 else "*"
    files = [f for f in sorted(glob.glob(os.path.join(folder, "*"))) if f.lower().endswith(ENDINGS)
             and fnmatch.fnmatch(os.path.basename(f), pattern)]
    if not files:
        skip("no workbooks in " + folder)
    has_office = shutil.which("soffice") is not None
    with tempfile.TemporaryDirectory() as scratch:
        old, new = os.path.join(scratch, "old"), os.path.join(scratch, "new")
        os.makedirs(old), os.makedirs(new)
        edited, failed, unread, protected = [], {}, [], []
        for source in files:
            name = os.path.basename(source)
            try:
                before = picture(source)
                title = openpyxl.load_workbook(source, read_only=False).worksheets[0].title
            except Exception:  # openpyxl cannot read it, so it has no opinion
                unread.append(name)
                continue
            before_path, after_path = os.path.join(old, name), os.path.join(new, name)
            shutil.copy(source, before_path), shutil.copy(source, after_path)
            row = first_free_cell(openpyxl.load_workbook(source)[title])
            with open(os.path.join(scratch, "value.csv"), "w") as file:
                file.write("%r\n" % WRITTEN)
            written = run(program, "write", after_path, "--plain", "-s", title, "-r", "A%d" % row,
                          os.path.join(scratch, "value.csv"))
            if written.returncode != 0:
                if "is protected" in written.stderr:
                    protected.append(name)
                elif run(program, "info", before_path).returncode != 0:
                    unread.append(name)
                else:
                    failed[name] = [written.stderr.strip()]
                continue
            try:
                problems = differences(before, picture(after_path), title, (row, 1))
            except Exception as error:
                problems = ["openpyxl cannot read what was saved: %s" % error]
            problems += ill_formed_parts(after_path) if not ill_formed_parts(before_path) else []
            edited.append((name, before_path, after_path, title, (row, 1)))
            if problems:
                failed[name] = problems
        if has_office:
            shown = shown_by_libreoffice([p for e in edited for p in e[1:3]], scratch)
            for name, before_path, after_path, title, place in edited:
                problems = compare_shown(shown.get(before_path, {}), shown.get(after_path, {}),
                                         formula_cells(before_path), title, place)
                if problems:
                    failed.setdefault(name, []).extend(problems)
    print("%d workbooks edited and compared%s, %d protected, %d not read by openpyxl or zxsheet" %
          (len(edited), "" if has_office else " (without LibreOffice)", len(protected), len(unread)))
    for name, problems in failed.items():
        print("%s: %d differences" % (name, len(problems)))
        for problem in problems[:5]:
            print("    " + problem[:300])
    sys.exit(1 if failed or not edited else 0)


main()
