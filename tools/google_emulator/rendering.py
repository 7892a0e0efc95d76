# SPDX-License-Identifier: Apache-2.0
"""Turns the model into the messages of replies, with the service's omissions."""

from .a1 import Rect
from .cell_formats import DEFAULT_FORMAT, effective_format
from .formats import DATE_TYPES, effective_number_format, formatted_number
from .formulas import ERROR_TEXTS, Calculation
from .masks import covers
from .model import BLANK, DEFAULT_COLUMN_PIXELS

ROW_PIXELS = 21


def grid_range(rect, sheet_id):
    """A GridRange; the sheet identifier 0 is left out."""
    named = {"sheetId": sheet_id} if sheet_id else {}
    return named | {"startRowIndex": rect.top, "endRowIndex": rect.bottom, "startColumnIndex": rect.left,
                    "endColumnIndex": rect.right}


def without_zero_sheet(entry):
    """A named or protected range with its GridRange as replies have it."""
    shown = dict(entry)
    if "range" in shown:
        shown["range"] = {name: value for name, value in shown["range"].items() if name != "sheetId" or value}
    return shown


def sheet_properties(sheet, index):
    properties = {"sheetId": sheet.sheet_id, "title": sheet.title, "index": index, "sheetType": sheet.kind}
    if sheet.has_grid:
        properties["gridProperties"] = {"rowCount": sheet.row_count, "columnCount": sheet.column_count,
                                        **sheet.grid_extras}
    if sheet.hidden:
        properties["hidden"] = True
    properties.update(sheet.properties_extras)
    if sheet.kind == "DATA_SOURCE":
        properties["dataSourceSheetProperties"] = {"dataSourceId": str(sheet.sheet_id)}
    return properties


def book_properties(book):
    return {"title": book.title, "locale": book.locale, "autoRecalc": "ON_CHANGE", "timeZone": book.time_zone,
            "defaultFormat": DEFAULT_FORMAT}


def spreadsheet(file, selection, mask, now):
    """The Spreadsheet message. The selection is None or a list of (sheet, Rect); the mask tells whether grid data
    are wanted at all, its other wishes are applied later."""
    book = file.book
    sheets = []
    for index, sheet in enumerate(book.sheets):
        blocks = [rect for chosen, rect in selection if chosen is sheet] if selection is not None else [sheet.whole]
        if blocks:
            sheets.append(_sheet(book, sheet, index, blocks, mask, now))
    result = {"spreadsheetId": file.file_id, "properties": book_properties(book), "sheets": sheets}
    if book.named_ranges:
        result["namedRanges"] = [without_zero_sheet(entry) for entry in book.named_ranges]
    result["spreadsheetUrl"] = f"https://docs.google.com/spreadsheets/d/{file.file_id}/edit"
    return result


def _sheet(book, sheet, index, blocks, mask, now):
    result = {"properties": sheet_properties(sheet, index)}
    if sheet.has_grid and covers(mask, "sheets", "data"):
        calculation = Calculation(book, now)
        result["data"] = [_grid_data(calculation, sheet, rect, mask) for rect in blocks]
    if sheet.merges:
        result["merges"] = [grid_range(rect, sheet.sheet_id) for rect in sheet.merges]
    if sheet.protected_ranges:
        result["protectedRanges"] = [without_zero_sheet(entry) for entry in sheet.protected_ranges]
    return result


def _grid_data(calculation, sheet, rect, mask):
    result = {}
    if rect.top:
        result["startRow"] = rect.top
    if rect.left:
        result["startColumn"] = rect.left
    if covers(mask, "sheets", "data", "rowData"):
        rows = sheet.generated.row_data(rect) if sheet.generated else _row_data(calculation, sheet, rect)
        if rows:
            result["rowData"] = rows
    if covers(mask, "sheets", "data", "rowMetadata"):
        result["rowMetadata"] = [{"pixelSize": ROW_PIXELS} for _ in range(rect.rows)]
    if covers(mask, "sheets", "data", "columnMetadata"):
        result["columnMetadata"] = [{"pixelSize": sheet.column_pixels.get(column, DEFAULT_COLUMN_PIXELS)}
                                    for column in range(rect.left, rect.right)]
    return result


def _row_data(calculation, sheet, rect):
    """Rows up to the last one that holds something, each up to its last cell that does."""
    rows = []
    for row, column, cell in sheet.cells_in(rect):
        rows.extend({} for _ in range(rect.top + len(rows), row + 1))
        values = rows[-1].setdefault("values", [])
        values.extend({} for _ in range(rect.left + len(values), column))
        values.append(cell_data(cell, calculation.effective(sheet, row, column)))
    return rows


def cell_data(cell, effective):
    """A CellData; effective is what the cell computes to."""
    result = {}
    if cell == BLANK:
        return result
    if cell.value:
        result["userEnteredValue"] = cell.value
    if effective.value:
        result["effectiveValue"] = effective.value
        result["formattedValue"] = formatted_value(cell, effective)
    if cell.format:
        result["userEnteredFormat"] = cell.format
    if effective.value or cell.format:
        result["effectiveFormat"] = effective_format(cell.format, effective.value, effective.number_format)
    if cell.note:
        result["note"] = cell.note
    return result


def number_format_in_force(cell, effective):
    return effective_number_format((cell.format or {}).get("numberFormat")) or effective.number_format


def formatted_value(cell, effective):
    """The text that the cell shows."""
    kind, value = next(iter(effective.value.items()))
    if kind == "boolValue":
        return "TRUE" if value else "FALSE"
    if kind == "numberValue":
        return formatted_number(value, number_format_in_force(cell, effective))
    return ERROR_TEXTS[value["type"]] if kind == "errorValue" else value


def _plain_value(cell, effective, render, dates):
    """A cell as values requests show it; the empty text for a cell without value."""
    if not effective.value:
        return ""
    if render == "FORMULA" and "formulaValue" in (cell.value or {}):
        return cell.value["formulaValue"]
    kind, value = next(iter(effective.value.items()))
    number_format = number_format_in_force(cell, effective)
    is_date = kind == "numberValue" and number_format and number_format["type"] in DATE_TYPES
    if render == "FORMATTED_VALUE" or kind == "errorValue" or (is_date and dates == "FORMATTED_STRING"):
        return formatted_value(cell, effective)
    return value


def value_rows(book, sheet, rect, render, dates, major, now):
    """The values of a block as lists of rows (or of columns), cut after the last value."""
    if sheet.generated:
        return sheet.generated.value_lists(rect, render, major)
    calculation = Calculation(book, now)
    lines = []
    for row, column, cell in sheet.cells_in(rect):
        value = _plain_value(cell, calculation.effective(sheet, row, column), render, dates)
        if value == "":
            continue
        line, place = row - rect.top, column - rect.left
        if major == "COLUMNS":
            line, place = place, line
        lines.extend([] for _ in range(len(lines), line + 1))
        lines[line].extend("" for _ in range(len(lines[line]), place))
        lines[line].append(value)
    return lines


def clipped(rect, sheet):
    """The part of a block that lies in the sheet's grid."""
    return Rect(rect.top, rect.left, min(rect.bottom, sheet.row_count), min(rect.right, sheet.column_count))
