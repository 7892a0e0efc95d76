# SPDX-License-Identifier: Apache-2.0
"""Files as tests describe them and as dumps show them: short JSON objects in place of a series of requests.

A spreadsheet is {"id", "title", "access", "public", "sheets": [...], "namedRanges": {name: A1 text}}, a sheet
{"title", "sheetId", "type", "hidden", "rows", "columns", "values": [[...]], "cells": {"A1": ...}, "merges": ["A1:B2"],
"protectedRanges": [...], "gridProperties": {...}}. A cell is a value as it would be typed in, or {"value":
ExtendedValue, "format": CellFormat, "note": text}. Any other file has "name", "mimeType" and "content"."""

from . import a1
from .book_ranges import find_range
from .cell_formats import stored_styles
from .entered import entered_by_user
from .formulas import Calculation
from .model import Cell, Sheet
from .rendering import formatted_value
from .schema import check_body, normalised

ACCESSES = ("owner", "reader", "none")


class SpecError(Exception):
    """What is wrong with a description."""


def add_file(drive, spec):
    """Adds the file that a description gives and returns it."""
    known = {"id", "title", "name", "mimeType", "content", "quotaBytesUsed", "access", "public", "sheets",
             "namedRanges"}
    if unknown := set(spec) - known:
        raise SpecError(f"unknown: {sorted(unknown)}")
    if spec.get("access", "owner") not in ACCESSES:
        raise SpecError(f"access is one of {ACCESSES}")
    if spec.get("id") in drive.files:
        raise SpecError(f"there is a file {spec['id']} already")
    if "mimeType" in spec:
        entry = drive.add(spec.get("name", "Untitled"), spec["mimeType"], spec.get("id"))
        entry.content = spec.get("content", "").encode()
    else:
        entry = drive.add_book(spec.get("title", "Untitled spreadsheet"), spec.get("id"))
        for sheet in spec.get("sheets") or [{"title": "Sheet1"}]:
            entry.book.sheets.append(_sheet(drive, entry.book, sheet))
        for name, text in spec.get("namedRanges", {}).items():
            entry.book.named_ranges.append(_named_range(drive, entry.book, name, text))
    entry.quota_bytes = spec.get("quotaBytesUsed")
    entry.access, entry.public = spec.get("access", "owner"), spec.get("public", False)
    return entry


def _sheet(drive, book, spec):
    number = spec.get("sheetId", drive.new_sheet_id(book) if book.sheets else 0)
    sheet = Sheet(number, spec["title"], spec.get("type", "GRID"), spec.get("rows", 1000), spec.get("columns", 26))
    sheet.hidden = spec.get("hidden", False)
    sheet.grid_extras = dict(spec.get("gridProperties", {}))
    for row, values in enumerate(spec.get("values", ())):
        for column, value in enumerate(values):
            sheet.put(row, column, _cell(value))
    for text, value in spec.get("cells", {}).items():
        rect = _rect(sheet, text)
        sheet.put(rect.top, rect.left, _cell(value))
    sheet.merges = [_rect(sheet, text) for text in spec.get("merges", ())]
    for entry in spec.get("protectedRanges", ()):
        check_body("ProtectedRange", entry)
        numbered = {"protectedRangeId": drive.new_number(), "requestingUserCanEdit": True} | entry
        numbered["range"] = {"sheetId": sheet.sheet_id} | entry.get("range", {})
        sheet.protected_ranges.append(numbered)
    return sheet


def _rect(sheet, text):
    open_rect = a1.parse_cells(text)
    if not open_rect or not sheet.whole.contains(open_rect.within(sheet.row_count, sheet.column_count)):
        raise SpecError(f"{text} is no range of the sheet {sheet.title}")
    return open_rect.within(sheet.row_count, sheet.column_count)


def _cell(spec):
    if not isinstance(spec, dict):
        entered = entered_by_user(spec) if spec is not None else None
        if entered is None:
            return Cell()
        return Cell(entered.value, {"numberFormat": entered.number_format} if entered.number_format else None)
    if set(spec) - {"value", "format", "note", "shown"}:
        raise SpecError(f"a cell has value, format and note, not {sorted(spec)}")
    data = {"userEnteredValue": spec.get("value"), "userEnteredFormat": spec.get("format"), "note": spec.get("note")}
    check_body("CellData", data)
    data = normalised("CellData", data)
    return Cell(data.get("userEnteredValue"), stored_styles(data.get("userEnteredFormat", {})) or None,
                data.get("note"))


def _named_range(drive, book, name, text):
    sheet, rect = find_range(book, text)
    block = {"sheetId": sheet.sheet_id, "startRowIndex": rect.top, "endRowIndex": rect.bottom,
             "startColumnIndex": rect.left, "endColumnIndex": rect.right}
    return {"namedRangeId": str(drive.new_number()), "name": name, "range": block}


def dump_file(drive, entry):
    """The description of a file as it now is; "shown" is what each cell displays."""
    common = {"id": entry.file_id, "access": entry.access, "public": entry.public}
    if entry.book is None:
        return common | {"name": entry.name, "mimeType": entry.mime_type, "bytes": len(entry.content),
                         "content": entry.content.decode("utf-8", "replace")}
    book = entry.book
    calculation = Calculation(book, drive.now())
    return common | {"title": book.title, "sheets": [_dumped_sheet(calculation, sheet) for sheet in book.sheets],
                     "namedRanges": book.named_ranges}


def _dumped_sheet(calculation, sheet):
    result = {"title": sheet.title, "sheetId": sheet.sheet_id, "type": sheet.kind, "hidden": sheet.hidden,
              "rows": sheet.row_count, "columns": sheet.column_count, "gridProperties": sheet.grid_extras,
              "merges": [a1.cells_text(rect) for rect in sheet.merges], "protectedRanges": sheet.protected_ranges,
              "columnPixels": {a1.column_letters(column): size for column, size in sheet.column_pixels.items()}}
    if sheet.generated:
        return result | {"generated": a1.cells_text(sheet.generated.block)}
    cells = {}
    for row, column, cell in sheet.cells_in(sheet.whole):
        shown = {name: part for name, part in (("value", cell.value), ("format", cell.format), ("note", cell.note))
                 if part}
        effective = calculation.effective(sheet, row, column)
        if effective.value:
            shown["shown"] = formatted_value(cell, effective)
        cells[f"{a1.column_letters(column)}{row + 1}"] = shown
    return result | {"cells": cells}
