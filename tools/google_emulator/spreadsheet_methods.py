# SPDX-License-Identifier: Apache-2.0
"""The methods spreadsheets.create, get, getByDataFilter, batchUpdate and sheets.copyTo."""

from .batch import run_batch
from .batch_sheets import copied_sheet, new_sheet, set_book_properties
from .book_ranges import batch_range, find_for_reading
from .credentials import check_access
from .errors import BatchRefusal, ServiceError, bad_request, not_a_spreadsheet, not_served
from .masks import parse_mask
from .methods import Reply
from .rendering import sheet_properties, spreadsheet

_WITHOUT_GRID_DATA = {"spreadsheetId": {}, "properties": {"*": {}}, "namedRanges": {"*": {}}, "spreadsheetUrl": {},
                      "sheets": {"properties": {}, "merges": {}, "protectedRanges": {}}}


def book_of(drive, call, name="spreadsheetId", is_write=None):
    """The file of a spreadsheet that the caller may use; raises the service's refusals."""
    file_id = call.parts.get(name) or call.body.get(name)
    return book_with_id(drive, call, file_id, call.method.is_write if is_write is None else is_write)


def book_with_id(drive, call, file_id, is_write):
    entry = drive.files.get(file_id)
    if entry is None:
        raise ServiceError(404)
    check_access(entry, call.caller, is_write)
    if entry.book is None:
        raise not_a_spreadsheet()
    return entry


def create(drive, call):
    wanted = call.body
    for name in ("namedRanges", "sheets.data", "sheets.merges", "sheets.protectedRanges"):
        outer, _, inner = name.partition(".")
        if wanted.get(outer) and (not inner or any(inner in sheet for sheet in wanted[outer])):
            raise not_served(f"'{name}' when a spreadsheet is created")
    properties = {"title": "Untitled spreadsheet"} | {
        name: value for name, value in wanted.get("properties", {}).items() if value}
    entry, place = drive.add_book(properties["title"]), "properties"
    try:
        set_book_properties(entry.book, properties)
        for index, sheet in enumerate(wanted.get("sheets", ())):
            place = f"sheets[{index}]"
            new_sheet(entry.book, drive, {"sheetId": drive.new_sheet_id(entry.book)} | sheet.get("properties", {}))
    except Exception as refusal:
        del drive.files[entry.file_id]
        if isinstance(refusal, BatchRefusal):
            raise bad_request(f"Invalid {place}: {refusal}") from None
        raise
    if not entry.book.sheets:
        new_sheet(entry.book, drive, {})
    return Reply(body=spreadsheet(entry, None, _WITHOUT_GRID_DATA, drive.now()))


def get(drive, call):
    entry = book_of(drive, call)
    selection = [find_for_reading(entry.book, text) for text in call.query["ranges"]] if "ranges" in call.query \
        else None
    return _described(drive, call, entry, selection, call.query.get("includeGridData"))


def _described(drive, call, entry, selection, with_grid_data):
    if "fields" in call.query:
        mask = parse_mask(call.query["fields"], "Spreadsheet")
    else:
        mask = {"*": {}} if with_grid_data else _WITHOUT_GRID_DATA
    return Reply(body=spreadsheet(entry, selection, mask, drive.now()))


def get_by_data_filter(drive, call):
    entry = book_of(drive, call)
    return _described(drive, call, entry, filtered(entry.book, call), call.body.get("includeGridData"))


def filtered(book, call):
    """(sheet, Rect) of each data filter of a request."""
    filters = call.body.get("dataFilters", [])
    if not filters:
        raise bad_request("Must specify at least one dataFilter.")
    try:
        return [find_for_reading(book, wanted["a1Range"]) if "a1Range" in wanted
                else batch_range(book, wanted.get("gridRange"), "gridRange") for wanted in filters]
    except BatchRefusal as refusal:
        raise bad_request(f"Invalid dataFilters: {refusal}") from None


def batch_update(drive, call):
    entry = book_of(drive, call)
    replies = run_batch(entry.book, call.body.get("requests", []), drive)
    entry.name, entry.modified = entry.book.title, drive.now()
    body = {"spreadsheetId": entry.file_id, "replies": replies}
    if call.body.get("includeSpreadsheetInResponse"):
        ranges = call.body.get("responseRanges")
        selection = [find_for_reading(entry.book, text) for text in ranges] if ranges else None
        mask = {"*": {}} if call.body.get("responseIncludeGridData") else _WITHOUT_GRID_DATA
        body["updatedSpreadsheet"] = spreadsheet(entry, selection, mask, drive.now())
    return Reply(body=body)


def copy_to(drive, call):
    source = book_of(drive, call, is_write=False)
    number = call.parts["sheetId"]
    sheet = source.book.sheet_with_id(int(number)) if number.isdigit() else None
    if sheet is None:
        raise ServiceError(404) if number.isdigit() else bad_request(
            f"Invalid value at 'sheet_id' (TYPE_INT32), \"{number}\"",
            [("sheet_id", f"Invalid value at 'sheet_id' (TYPE_INT32), \"{number}\"")])
    target = book_with_id(drive, call, call.body.get("destinationSpreadsheetId"), is_write=True)
    try:
        twin = copied_sheet(target.book, sheet, drive.new_sheet_id(target.book), None)
    except BatchRefusal as refusal:
        raise bad_request(str(refusal)) from None
    target.book.sheets.append(twin)
    target.modified = drive.now()
    return Reply(body=sheet_properties(twin, len(target.book.sheets) - 1))
