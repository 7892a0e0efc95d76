# SPDX-License-Identifier: Apache-2.0
"""Finds what ranges mean in a book: A1 texts of the values methods, GridRange objects of batch requests."""

from . import a1
from .errors import BatchRefusal, bad_request, beyond_grid, unparsable_range
from .rendering import clipped


def find_range(book, text):
    """(sheet, Rect) of an A1 text, a sheet's title or a named range; the Rect may stick out of the grid."""
    title, rest = a1.split_title(text)
    if title is None:
        open_rect = a1.parse_cells(rest)
        if open_rect:
            return _on_sheet(book.sheets[0], open_rect, text)
        named = book.named_range(rest)
        if named:
            return _named(book, named, text)
        sheet = book.sheet_with_title(rest)
        return _on_sheet(sheet, a1.OpenRect(None, None, None, None), text)
    sheet = book.sheet_with_title(title)
    if rest is None:
        return _on_sheet(sheet, a1.OpenRect(None, None, None, None), text)
    open_rect = a1.parse_cells(rest)
    if sheet and not open_rect and (named := book.named_range(rest)):
        return _named(book, named, text)
    return _on_sheet(sheet if open_rect else None, open_rect, text)


def _named(book, named, text):
    block = named["range"]
    sheet = book.sheet_with_id(block.get("sheetId", 0))
    return _on_sheet(sheet, open_rect_of(block), text)


def _on_sheet(sheet, open_rect, text):
    if sheet is None:
        raise unparsable_range(text)
    if not sheet.has_grid:
        raise bad_request(f"Unable to parse range: {text}")
    return sheet, open_rect.within(sheet.row_count, sheet.column_count)


def find_for_reading(book, text):
    """The range cut to the grid; refused where it starts outside."""
    sheet, rect = find_range(book, text)
    if rect.top >= sheet.row_count or rect.left >= sheet.column_count:
        raise bad_request(_beyond(sheet, rect))
    return sheet, clipped(rect, sheet)


def find_for_writing(book, text):
    """The range, refused where any of it lies outside the grid."""
    sheet, rect = find_range(book, text)
    if not sheet.whole.contains(rect):
        raise bad_request(_beyond(sheet, rect))
    return sheet, rect


def _beyond(sheet, rect):
    return beyond_grid(a1.range_text(sheet.title, rect), sheet.row_count, sheet.column_count)


def open_rect_of(block):
    """The sides of a GridRange; absent ones are open."""
    return a1.OpenRect(block.get("startRowIndex"), block.get("startColumnIndex"), block.get("endRowIndex"),
                       block.get("endColumnIndex"))


def batch_sheet(book, sheet_id, needs_grid=True):
    """The sheet that a batch request names; 0 stands for an absent identifier."""
    sheet = book.sheet_with_id(sheet_id or 0)
    if sheet is None:
        raise BatchRefusal(f"No {'grid' if needs_grid else 'sheet'} with id: {sheet_id or 0}")
    if needs_grid and not sheet.has_grid:
        raise BatchRefusal(f"Sheet {sheet.sheet_id} is not a grid sheet.")
    return sheet


def batch_range(book, block, what="range"):
    """(sheet, Rect) of a GridRange that has to lie in the grid."""
    if block is None:
        raise BatchRefusal(f"{what} is required.")
    sheet = batch_sheet(book, block.get("sheetId"))
    rect = open_rect_of(block).within(sheet.row_count, sheet.column_count)
    if min(rect.top, rect.left) < 0:
        raise BatchRefusal(f"{what} indexes must not be negative.")
    if rect.rows <= 0 or rect.columns <= 0:
        raise BatchRefusal(f"{what} must not be empty.")
    if not sheet.whole.contains(rect):
        raise BatchRefusal(_beyond(sheet, rect))
    return sheet, rect


def batch_dimension(book, block):
    """(sheet, is_rows, start, end) of a DimensionRange; what it leaves out is unbounded."""
    if block is None:
        raise BatchRefusal("range is required.")
    sheet = batch_sheet(book, block.get("sheetId"))
    is_rows = dimension_is_rows(block.get("dimension"))
    start = block.get("startIndex", 0)
    end = block.get("endIndex", sheet.row_count if is_rows else sheet.column_count)
    if start < 0 or end <= start:
        raise BatchRefusal("range.endIndex must be greater than range.startIndex.")
    return sheet, is_rows, start, end


def dimension_is_rows(dimension):
    if dimension not in ("ROWS", "COLUMNS"):
        raise BatchRefusal("No dimension specified.")
    return dimension == "ROWS"
