# SPDX-License-Identifier: Apache-2.0
"""Rows and columns that come and go, with everything that is tied to their positions."""

from .a1 import Rect
from .book_ranges import batch_dimension, batch_sheet, dimension_is_rows
from .errors import BatchRefusal
from .model import DEFAULT_COLUMN_PIXELS, MAX_COLUMNS, MAX_WORKBOOK_CELLS

# Of an automatic width: pixels for an em of text, pixels around it. Both were fitted to one measured column.
_PIXELS_AN_EM, _PIXELS_AROUND = 12.7, 17
_EMS = {**dict.fromkeys("ABEKPSVXY&", 0.667), **dict.fromkeys("CDHNRUw", 0.722), **dict.fromkeys("GOQ", 0.778),
        **dict.fromkeys("FTZ", 0.611), **dict.fromkeys("ijl'", 0.222), **dict.fromkeys("ft,. /:;!I", 0.278),
        **dict.fromkeys("cksvxyzJ", 0.5), **dict.fromkeys("mM", 0.833), "W": 0.944, "r": 0.333, "-": 0.333}
_EMS_OF_OTHERS = 0.556


def append_dimension(book, request):
    sheet = batch_sheet(book, request.get("sheetId"))
    length = request.get("length", 0)
    if length <= 0:
        raise BatchRefusal("length must be greater than 0.")
    _refuse_generated(sheet)
    is_rows = dimension_is_rows(request.get("dimension"))
    resize(book, sheet, sheet.row_count + length * is_rows, sheet.column_count + length * (not is_rows))


def resize(book, sheet, row_count, column_count):
    """Gives the grid another size; cells outside it are lost."""
    if row_count < 1 or column_count < 1:
        raise BatchRefusal("You can't delete all the {} on the sheet.".format("rows" if row_count < 1 else "columns"))
    if column_count > MAX_COLUMNS:
        raise BatchRefusal(f"This action would increase the number of columns in the sheet above the limit of "
                           f"{MAX_COLUMNS} columns.")
    refuse_too_many_cells(book, row_count * column_count - sheet.cell_count)
    if row_count < sheet.row_count:
        _remove(book, sheet, True, row_count, sheet.row_count)
    if column_count < sheet.column_count:
        _remove(book, sheet, False, column_count, sheet.column_count)
    sheet.row_count, sheet.column_count = row_count, column_count


def refuse_too_many_cells(book, added):
    if book.cell_count + added > MAX_WORKBOOK_CELLS:
        raise BatchRefusal("This action would increase the number of cells in the workbook above the limit of "
                           f"{MAX_WORKBOOK_CELLS} cells.")


def delete_dimension(book, request):
    sheet, is_rows, start, end = batch_dimension(book, request.get("range"))
    count = sheet.row_count if is_rows else sheet.column_count
    name = "row" if is_rows else "column"
    if end > count:
        raise BatchRefusal(f"Cannot delete a {name} that doesn't exist. Tried to delete {name} index {end - 1} but "
                           f"there are only {count} {name}s.")
    if end - start == count:
        raise BatchRefusal(f"You can't delete all the {name}s on the sheet.")
    _refuse_generated(sheet)
    _remove(book, sheet, is_rows, start, end)


def insert_dimension(book, request):
    sheet, is_rows, start, end = batch_dimension(book, request.get("range"))
    _refuse_generated(sheet)
    count = sheet.row_count if is_rows else sheet.column_count
    if start > count:
        raise BatchRefusal(f"range.startIndex[{start}] is too large for the grid.")
    length = end - start
    refuse_too_many_cells(book, length * (sheet.column_count if is_rows else sheet.row_count))
    sheet.row_count += length * is_rows
    sheet.column_count += length * (not is_rows)
    _shift(book, sheet, is_rows, lambda index: index if index < start else index + length,
           lambda index, is_end: index if index < start + is_end else index + length)


def _refuse_generated(sheet):
    if sheet.generated:
        raise BatchRefusal("The emulator does not change a sheet that is filled with generated numbers.")


def _remove(book, sheet, is_rows, start, end):
    _refuse_generated(sheet)
    length = end - start
    sheet.row_count -= length * is_rows
    sheet.column_count -= length * (not is_rows)
    _shift(book, sheet, is_rows, lambda index: None if start <= index < end else index - length * (index >= end),
           lambda index, _: index - min(max(index - start, 0), length))


def _shift(book, sheet, is_rows, moved, moved_edge):
    """Renumbers: moved() gives the new index of a row or column, or None; moved_edge() that of a block's start or
    end."""
    if is_rows:
        sheet.rows = {new: columns for row, columns in sheet.rows.items() if (new := moved(row)) is not None}
    else:
        shifted = {row: {new: cell for column, cell in columns.items() if (new := moved(column)) is not None}
                   for row, columns in sheet.rows.items()}
        sheet.rows = {row: columns for row, columns in shifted.items() if columns}
        sheet.column_pixels = {new: size for column, size in sheet.column_pixels.items()
                               if (new := moved(column)) is not None}
    merges = (_shifted_rect(rect, is_rows, moved_edge) for rect in sheet.merges)
    sheet.merges = [rect for rect in merges if rect.rows > 0 and rect.columns > 0 and rect.rows * rect.columns > 1]
    sheet.protected_ranges = _shifted_entries(sheet, sheet.protected_ranges, is_rows, moved_edge)
    book.named_ranges = _shifted_entries(sheet, book.named_ranges, is_rows, moved_edge)


def _shifted_rect(rect, is_rows, moved_edge):
    if is_rows:
        return Rect(moved_edge(rect.top, False), rect.left, moved_edge(rect.bottom, True), rect.right)
    return Rect(rect.top, moved_edge(rect.left, False), rect.bottom, moved_edge(rect.right, True))


def _shifted_entries(sheet, entries, is_rows, moved_edge):
    """Named or protected ranges; one that has lost all its rows or columns is dropped."""
    names = ("startRowIndex", "endRowIndex") if is_rows else ("startColumnIndex", "endColumnIndex")
    result = []
    for entry in entries:
        block = entry.get("range", {})
        if block.get("sheetId", 0) == sheet.sheet_id and "range" in entry:
            block = {name: moved_edge(value, name == names[1]) if name in names else value
                     for name, value in block.items()}
            entry = entry | {"range": block}
        if block.get(names[1], 1) > block.get(names[0], 0):
            result.append(entry)
    return result


def auto_resize_dimensions(book, request, calculate):
    """Fits columns to the longest text in them; calculate gives the text of a cell."""
    sheet, is_rows, start, end = batch_dimension(book, request.get("dimensions"))
    if is_rows:
        return
    if end > sheet.column_count:
        raise BatchRefusal(f"dimensions.endIndex[{end}] is beyond the grid of {sheet.column_count} columns.")
    for column in range(start, end):
        block = Rect(0, column, sheet.row_count, column + 1)
        widths = [_text_pixels(calculate(sheet, row, column)) for row, _, cell in sheet.cells_in(block) if cell.value]
        sheet.column_pixels[column] = max(widths, default=DEFAULT_COLUMN_PIXELS)


def _text_pixels(text):
    longest = max(sum(_EMS.get(letter, _EMS_OF_OTHERS) for letter in line) for line in text.split("\n"))
    return round(longest * _PIXELS_AN_EM) + _PIXELS_AROUND
