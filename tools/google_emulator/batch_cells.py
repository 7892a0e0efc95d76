# SPDX-License-Identifier: Apache-2.0
"""Batch requests about cells: contents, formats and merged regions."""

from .a1 import Rect
from .batch_sheets import required_mask
from .book_ranges import batch_range, batch_sheet
from .cell_formats import stored_styles
from .errors import BatchRefusal, too_long_for_a_cell
from .masks import replace_masked
from .model import BLANK, MAX_CELL_CHARACTERS, Cell

_PARTS_THAT_CAN_BE_SET = ("userEnteredValue", "userEnteredFormat", "note", "*")


def refuse_generated(sheet):
    if sheet.generated:
        raise BatchRefusal("The emulator does not change a sheet that is filled with generated numbers.")


def changed_cell(cell, data, mask):
    """The cell with those parts of a CellData that the mask names."""
    old = {"userEnteredValue": cell.value or {}, "userEnteredFormat": cell.format or {}, "note": cell.note or ""}
    new = replace_masked(old, data, mask)
    cell_format = stored_styles(new.get("userEnteredFormat") or {})
    return Cell(_stored_value(new.get("userEnteredValue")), cell_format or None, new.get("note") or None)


def _stored_value(value):
    if not value or value == {"stringValue": ""}:
        return None
    if len(value.get("stringValue") or value.get("formulaValue", "")) > MAX_CELL_CHARACTERS:
        raise BatchRefusal(too_long_for_a_cell(MAX_CELL_CHARACTERS))
    if not value.get("formulaValue", "=").startswith("="):
        raise BatchRefusal("Formula must start with '='.")
    return value


def _check_parts(mask):
    for name in mask:
        if name not in _PARTS_THAT_CAN_BE_SET:
            raise BatchRefusal(f"Invalid field: {name}")


def update_cells(book, request):
    mask = required_mask(request, "CellData")
    _check_parts(mask)
    rows = request.get("rows", [])
    if ("range" in request) == ("start" in request):
        raise BatchRefusal("Exactly one of start or range must be set.")
    if "range" in request:
        sheet, rect = batch_range(book, request["range"])
    else:
        sheet, rect = _block_from(book, request["start"], rows)
    refuse_generated(sheet)
    _refuse_overflow("row", rect.bottom, rect.top + len(rows))
    for row in rows:
        _refuse_overflow("column", rect.right, rect.left + len(row.get("values", ())))
    for row in range(rect.top, rect.bottom):
        values = rows[row - rect.top].get("values", ()) if row - rect.top < len(rows) else ()
        for column in range(rect.left, rect.right):
            data = values[column - rect.left] if column - rect.left < len(values) else {}
            sheet.put(row, column, changed_cell(sheet.cell(row, column), data, mask))


def _block_from(book, start, rows):
    """The block that the given rows fill from a corner on."""
    sheet_id = start.get("sheetId", 0)
    row, column = start.get("rowIndex", 0), start.get("columnIndex", 0)
    width = max((len(entry.get("values", ())) for entry in rows), default=0)
    if not width:
        return batch_sheet(book, sheet_id), Rect(row, column, row, column)
    return batch_range(book, {"sheetId": sheet_id, "startRowIndex": row, "endRowIndex": row + len(rows),
                              "startColumnIndex": column, "endColumnIndex": column + width}, "start")


def _refuse_overflow(name, end, needed):
    if needed > end:
        raise BatchRefusal(f"Attempting to write {name}: {end}, beyond the last requested {name} of: {end - 1}")


def repeat_cell(book, request):
    mask = required_mask(request, "CellData")
    _check_parts(mask)
    sheet, rect = batch_range(book, request.get("range"))
    refuse_generated(sheet)
    for row in range(rect.top, rect.bottom):
        for column in range(rect.left, rect.right):
            sheet.put(row, column, changed_cell(sheet.cell(row, column), request.get("cell", {}), mask))


def delete_range(book, request):
    """Takes cells away, and moves those below or to the right of them into their places."""
    sheet, rect = batch_range(book, request.get("range"))
    refuse_generated(sheet)
    is_up = request.get("shiftDimension") == "ROWS"
    if not is_up and request.get("shiftDimension") != "COLUMNS":
        raise BatchRefusal("shiftDimension must be ROWS or COLUMNS.")
    rest = Rect(rect.top, rect.left, sheet.row_count, rect.right) if is_up else Rect(
        rect.top, rect.left, rect.bottom, sheet.column_count)
    moved = list(sheet.cells_in(rest))
    for row, column, _ in moved:
        sheet.put(row, column, BLANK)
    for row, column, cell in moved:
        if row >= rect.bottom or column >= rect.right:
            sheet.put(row - rect.rows * is_up, column - rect.columns * (not is_up), cell)


def _merges_inside(sheet, rect):
    """The merged regions that a block holds; one that it cuts is refused."""
    touched = [merge for merge in sheet.merges if merge.overlaps(rect)]
    if not all(rect.contains(merge) for merge in touched):
        raise BatchRefusal("You must select all cells in a merged range to merge or unmerge them.")
    return touched


def merge_cells(book, request):
    sheet, rect = batch_range(book, request.get("range"))
    refuse_generated(sheet)
    touched = _merges_inside(sheet, rect)
    kind = request.get("mergeType", "MERGE_ALL")
    if kind == "MERGE_ROWS":
        regions = [Rect(row, rect.left, row + 1, rect.right) for row in range(rect.top, rect.bottom)]
    elif kind == "MERGE_COLUMNS":
        regions = [Rect(rect.top, column, rect.bottom, column + 1) for column in range(rect.left, rect.right)]
    else:
        regions = [rect]
    sheet.merges = [merge for merge in sheet.merges if merge not in touched]
    for region in regions:
        if region.rows * region.columns > 1:
            sheet.merges.append(region)
            _keep_first_cell(sheet, region)


def _keep_first_cell(sheet, region):
    for row, column, cell in list(sheet.cells_in(region)):
        if (row, column) != (region.top, region.left):
            sheet.put(row, column, cell._replace(value=None))


def unmerge_cells(book, request):
    sheet, rect = batch_range(book, request.get("range"))
    touched = _merges_inside(sheet, rect)
    sheet.merges = [merge for merge in sheet.merges if merge not in touched]
