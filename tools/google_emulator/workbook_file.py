# SPDX-License-Identifier: Apache-2.0
"""The cells of an uploaded file that is converted into a spreadsheet: of CSV, and of workbooks in Open XML (ECMA-376)
titles, numbers, dates, booleans, texts and errors. Of formulas the values."""

import csv
import io
import re
import zipfile
from xml.etree import ElementTree

from .a1 import column_index
from .entered import entered_by_user
from .model import Cell
from .schema import plain_number

OPEN_XML = "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"
MAX_UNPACKED_BYTES = 256 << 20
_PLACE = re.compile(r"([A-Z]{1,3})([1-9][0-9]{0,6})")
_FORMATS_OF_DATES = {**dict.fromkeys(range(14, 18), "DATE"), **dict.fromkeys((18, 19, 20, 21, 45, 46, 47), "TIME"),
                     22: "DATE_TIME"}  # part 1, 18.8.30


class NotConvertible(Exception):
    """The file is none of that kind."""


def converted_sheets(content_type, content):
    """List of (title, {(row, column): Cell}); empty for a type that cannot be converted here."""
    if content_type == "text/csv":
        return [("Sheet1", dict(_cells_of_csv(content.decode("utf-8", "replace"))))]
    if content_type != OPEN_XML:
        return []
    try:
        with zipfile.ZipFile(io.BytesIO(content)) as package:
            if sum(entry.file_size for entry in package.infolist()) > MAX_UNPACKED_BYTES:
                raise NotConvertible("too large")
            return list(_sheets_of(package))
    except (zipfile.BadZipFile, ElementTree.ParseError, KeyError, IndexError, ValueError, TypeError) as problem:
        raise NotConvertible(str(problem)) from None


def _cells_of_csv(text):
    for row, values in enumerate(csv.reader(io.StringIO(text))):
        for column, value in enumerate(values):
            entered = entered_by_user(value)
            if value:
                yield (row, column), Cell(entered.value, {"numberFormat": entered.number_format}
                                          if entered.number_format else None)


def _part(package, name):
    return ElementTree.fromstring(package.read(name))


def _sheets_of(package):
    names = set(package.namelist())
    strings = [_text(entry) for entry in _part(package, "xl/sharedStrings.xml")] \
        if "xl/sharedStrings.xml" in names else []
    kinds = _kinds_of_styles(_part(package, "xl/styles.xml")) if "xl/styles.xml" in names else []
    targets = {entry.get("Id"): entry.get("Target") for entry in _part(package, "xl/_rels/workbook.xml.rels")}
    for sheet in _part(package, "xl/workbook.xml").findall(".//{*}sheet"):
        target = next(targets[value] for name, value in sheet.items() if name.endswith("}id"))
        part = target.lstrip("/") if target.startswith("/") else "xl/" + target
        yield sheet.get("name"), dict(_cells_of(_part(package, part), strings, kinds))


def _text(entry):
    """Runs of text, without those that say how it is read aloud."""
    return "".join(run.text or "" for child in entry for run in
                   ([child] if child.tag.endswith("}t") else child.findall("{*}t") if child.tag.endswith("}r") else []))


def _kinds_of_styles(styles):
    """For each cell format the service's type of date, or None."""
    codes = {entry.get("numFmtId"): entry.get("formatCode") for entry in styles.findall(".//{*}numFmt")}
    formats = styles.find("{*}cellXfs")
    return [_kind_of(entry.get("numFmtId", "0"), codes) for entry in (formats if formats is not None else ())]


def _kind_of(number, codes):
    code = re.sub(r'"[^"]*"|\\.|\[[^\]]*\]', "", codes.get(number, "")).lower()
    if not code:
        return _FORMATS_OF_DATES.get(int(number))
    has_day, has_hour = re.search("[yd]", code), re.search("[hs]", code)
    return "DATE_TIME" if has_day and has_hour else "DATE" if has_day else "TIME" if has_hour else None


def _cells_of(sheet, strings, kinds):
    for cell in sheet.findall(".//{*}c"):
        place = _PLACE.fullmatch(cell.get("r", ""))
        value = _value_of(cell, strings)
        if place and value is not None:
            style = int(cell.get("s", "0"))
            kind = kinds[style] if "numberValue" in value and style < len(kinds) else None
            yield ((int(place.group(2)) - 1, column_index(place.group(1))),
                   Cell(value, {"numberFormat": {"type": kind}} if kind else None))


def _value_of(cell, strings):
    kind, inline, value = cell.get("t", "n"), cell.find("{*}is"), cell.findtext("{*}v")
    if inline is not None:
        return {"stringValue": _text(inline)}
    if value is None:
        return None
    if kind == "n":
        return {"numberValue": plain_number(float(value))}
    if kind == "b":
        return {"boolValue": value in ("1", "true")}
    return {"stringValue": strings[int(value)] if kind == "s" else value} if kind != "e" else {"formulaValue": "=" + value}
