# SPDX-License-Identifier: Apache-2.0
"""Batch requests about whole sheets and the spreadsheet itself."""

import re

from .book_ranges import batch_sheet
from .cell_formats import stored_styles
from .dimensions import refuse_too_many_cells, resize
from .errors import BatchRefusal, not_served
from .masks import MaskError, parse_mask, replace_masked
from .model import DEFAULT_COLUMNS, DEFAULT_ROWS, Sheet
from .rendering import sheet_properties

MAX_TITLE_LENGTH = 100
_GRID_EXTRAS = ("frozenRowCount", "frozenColumnCount", "hideGridlines", "rowGroupControlAfter",
                "columnGroupControlAfter")
_PROPERTIES_EXTRAS = ("tabColor", "tabColorStyle", "rightToLeft")
_BOOK_PROPERTIES = {"title": "title", "locale": "locale", "timeZone": "time_zone"}
_LOCALE = re.compile("[a-z]{2,3}(_[A-Z]{2})?")


def required_mask(request, message):
    """The tree of the field "fields" that update requests must have."""
    text = request.get("fields", "").strip()
    if not text:
        raise BatchRefusal("At least one field must be listed in 'fields'. (Use '*' to indicate all fields.)")
    try:
        return parse_mask(text, message)
    except MaskError as wrong:
        raise BatchRefusal(f"Invalid field: {wrong}") from None


def new_sheet(book, drive, properties):
    """Makes a sheet from the properties that were asked for and puts it in its place."""
    kind = properties.get("sheetType", "GRID")
    if kind not in ("GRID", "SHEET_TYPE_UNSPECIFIED"):
        raise BatchRefusal(f"Sheets of type {kind} cannot be added.")
    sheet_id = properties.get("sheetId", drive.new_sheet_id(book) if book.sheets else 0)
    if sheet_id < 0 or book.sheet_with_id(sheet_id):
        raise BatchRefusal(f"A sheet with the ID {sheet_id} already exists." if sheet_id >= 0
                           else "sheetId must not be negative.")
    title = properties.get("title") or unused_title(book)
    check_title(book, title, None)
    grid = properties.get("gridProperties", {})
    row_count, column_count = grid.get("rowCount", DEFAULT_ROWS), grid.get("columnCount", DEFAULT_COLUMNS)
    if row_count < 1 or column_count < 1:
        raise BatchRefusal("gridProperties.rowCount and gridProperties.columnCount must be greater than 0.")
    refuse_too_many_cells(book, row_count * column_count)
    sheet = Sheet(sheet_id, title, "GRID", row_count, column_count)
    sheet.hidden = properties.get("hidden", False)
    _set_extras(sheet, properties)
    index = properties.get("index", len(book.sheets))
    if not 0 <= index <= len(book.sheets):
        raise BatchRefusal(f"The index {index} is not within the sheets of the document.")
    book.sheets.insert(index, sheet)
    return sheet


def unused_title(book):
    number = len(book.sheets) + 1
    while book.sheet_with_title(f"Sheet{number}"):
        number += 1
    return f"Sheet{number}"


def check_title(book, title, sheet):
    if not 1 <= len(title) <= MAX_TITLE_LENGTH:
        raise BatchRefusal("Sheet name cannot be empty." if not title else
                           f"Sheet name cannot be longer than {MAX_TITLE_LENGTH} characters.")
    other = book.sheet_with_title(title)
    if other is not None and other is not sheet:
        raise BatchRefusal(f'A sheet with the name "{title}" already exists. Please enter another name.')


def _set_extras(sheet, properties):
    grid = properties.get("gridProperties", {})
    sheet.grid_extras = {name: grid[name] for name in _GRID_EXTRAS if grid.get(name)}
    extras = {name: properties[name] for name in _PROPERTIES_EXTRAS if properties.get(name)}
    sheet.properties_extras = stored_styles(extras)


def add_sheet(book, request, drive):
    sheet = new_sheet(book, drive, request.get("properties", {}))
    return {"properties": sheet_properties(sheet, book.sheets.index(sheet))}


def duplicate_sheet(book, request, drive):
    source = batch_sheet(book, request.get("sourceSheetId"), needs_grid=False)
    twin = copied_sheet(book, source, request.get("newSheetId", drive.new_sheet_id(book)), request.get("newSheetName"))
    index = request.get("insertSheetIndex", 0)
    if not 0 <= index <= len(book.sheets):
        raise BatchRefusal(f"The index {index} is not within the sheets of the document.")
    book.sheets.insert(index, twin)
    return {"properties": sheet_properties(twin, index)}


def copied_sheet(book, source, sheet_id, title):
    """A copy of a sheet, of this spreadsheet or another, that is not in the spreadsheet yet."""
    if book.sheet_with_id(sheet_id):
        raise BatchRefusal(f"A sheet with the ID {sheet_id} already exists.")
    twin = source.copy()
    twin.sheet_id, twin.title = sheet_id, title or _copy_title(book, source.title)
    twin.hidden, twin.protected_ranges = False, []
    check_title(book, twin.title, None)
    refuse_too_many_cells(book, twin.cell_count)
    return twin


def _copy_title(book, title):
    wanted = f"Copy of {title}"
    number = 1
    while book.sheet_with_title(wanted):
        number += 1
        wanted = f"Copy of {title} {number}"
    return wanted


def delete_sheet(book, request):
    sheet = batch_sheet(book, request.get("sheetId"), needs_grid=False)
    if len(book.sheets) == 1:
        raise BatchRefusal("You can't remove all the sheets in a document.")
    if all(other.hidden for other in book.sheets if other is not sheet):
        raise BatchRefusal("You can't remove all the visible sheets in a document.")
    book.sheets.remove(sheet)
    book.named_ranges = [entry for entry in book.named_ranges
                         if entry["range"].get("sheetId", 0) != sheet.sheet_id]


def update_sheet_properties(book, request):
    mask = required_mask(request, "SheetProperties")
    wanted = request.get("properties", {})
    sheet = batch_sheet(book, wanted.get("sheetId"), needs_grid=False)
    if "gridProperties" in mask and not sheet.has_grid:
        raise BatchRefusal("Only grid sheets have grid properties.")
    index = book.sheets.index(sheet)
    now = replace_masked(sheet_properties(sheet, index), wanted, mask)
    if "title" in mask or "*" in mask:
        check_title(book, now.get("title", ""), sheet)
        sheet.title = now["title"]
    _hide(book, sheet, now.get("hidden", False))
    grid = now.get("gridProperties", {})
    if sheet.has_grid:
        resize(book, sheet, grid.get("rowCount", 0), grid.get("columnCount", 0))
        _check_frozen(sheet, grid)
    _set_extras(sheet, now)
    if "index" in mask or "*" in mask:
        _move(book, sheet, now.get("index", 0))


def _hide(book, sheet, hidden):
    if hidden and all(other.hidden for other in book.sheets if other is not sheet):
        raise BatchRefusal("You can't hide all the sheets in a document.")
    sheet.hidden = hidden


def _check_frozen(sheet, grid):
    for name, count in (("Row", sheet.row_count), ("Column", sheet.column_count)):
        if grid.get(f"frozen{name}Count", 0) >= count:
            raise BatchRefusal(f"You can't freeze all visible {name.lower()}s on the sheet.")


def _move(book, sheet, index):
    """The index counts positions before the move: one more than the final one for a move to the right."""
    if not 0 <= index <= len(book.sheets):
        raise BatchRefusal(f"The index {index} is not within the sheets of the document.")
    current = book.sheets.index(sheet)
    book.sheets.pop(current)
    book.sheets.insert(index - 1 if index > current else index, sheet)


def update_spreadsheet_properties(book, request):
    mask = required_mask(request, "SpreadsheetProperties")
    wanted = request.get("properties", {})
    names = _BOOK_PROPERTIES if "*" in mask else mask
    for name in names:
        if not wanted.get(name):
            raise BatchRefusal(f"{name} must not be empty.")
    set_book_properties(book, {name: wanted[name] for name in names})


def set_book_properties(book, wanted):
    """Sets the given properties, none of which is empty; what cells show is always in the locale en_US."""
    for name, value in wanted.items():
        if name not in _BOOK_PROPERTIES:
            raise not_served(f"the property '{name}' of spreadsheets")
        if name == "locale" and not _LOCALE.fullmatch(value):
            raise BatchRefusal(f"Unsupported locale: {value}")
        setattr(book, _BOOK_PROPERTIES[name], value)
