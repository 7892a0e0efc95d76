# SPDX-License-Identifier: Apache-2.0
"""The methods of spreadsheets.values."""

from . import a1
from .batch_cells import refuse_generated
from .book_ranges import find_for_reading, find_for_writing, find_range
from .dimensions import append_dimension
from .entered import entered_by_user, entered_raw
from .errors import BatchRefusal, bad_request, too_long_for_a_cell
from .methods import Reply
from .model import MAX_CELL_CHARACTERS
from .rendering import value_rows
from .spreadsheet_methods import book_of, filtered


def _value_range(drive, book, text, options):
    sheet, rect = find_for_reading(book, text)
    return _values_at(drive, book, sheet, rect, options)


def _values_at(drive, book, sheet, rect, options):
    major = "COLUMNS" if options.get("majorDimension") == "COLUMNS" else "ROWS"
    rows = value_rows(book, sheet, rect, options.get("valueRenderOption", "FORMATTED_VALUE"),
                      options.get("dateTimeRenderOption", "SERIAL_NUMBER"), major, drive.now())
    body = {"range": a1.range_text(sheet.title, rect), "majorDimension": major}
    if rows:
        body["values"] = rows
    return body


def get(drive, call):
    entry = book_of(drive, call)
    return Reply(body=_value_range(drive, entry.book, call.parts["range"], call.query))


def batch_get(drive, call):
    entry = book_of(drive, call)
    body = {"spreadsheetId": entry.file_id}
    ranges = [_value_range(drive, entry.book, text, call.query) for text in call.query.get("ranges", ())]
    if ranges:
        body["valueRanges"] = ranges
    return Reply(body=body)


def batch_get_by_data_filter(drive, call):
    entry = book_of(drive, call)
    blocks = filtered(entry.book, call)
    return Reply(body={"spreadsheetId": entry.file_id, "valueRanges": [
        {"valueRange": _values_at(drive, entry.book, sheet, rect, call.body), "dataFilters": [_shown(wanted)]}
        for (sheet, rect), wanted in zip(blocks, call.body["dataFilters"])]})


def _shown(wanted):
    """A data filter as replies have it: the sheet identifier 0 is left out."""
    if "gridRange" not in wanted:
        return wanted
    return {"gridRange": {name: value for name, value in wanted["gridRange"].items() if name != "sheetId" or value}}


def _clear(book, text):
    sheet, rect = find_for_reading(book, text)
    _refuse_generated(sheet)
    for row, column, cell in list(sheet.cells_in(rect)):
        sheet.put(row, column, cell._replace(value=None))
    return a1.range_text(sheet.title, rect)


def clear(drive, call):
    entry = book_of(drive, call)
    cleared = _clear(entry.book, call.parts["range"])
    entry.modified = drive.now()
    return Reply(body={"spreadsheetId": entry.file_id, "clearedRange": cleared})


def batch_clear(drive, call):
    entry = book_of(drive, call)
    ranges = call.body.get("ranges", [])
    for text in ranges:
        find_for_reading(entry.book, text)
    entry.modified = drive.now()
    return Reply(body={"spreadsheetId": entry.file_id, "clearedRanges": [_clear(entry.book, text) for text in ranges]})


def _refuse_generated(sheet):
    try:
        refuse_generated(sheet)
    except BatchRefusal as refusal:
        raise bad_request(str(refusal)) from None


def _input_option(options):
    option = options.get("valueInputOption", "INPUT_VALUE_OPTION_UNSPECIFIED")
    if option == "INPUT_VALUE_OPTION_UNSPECIFIED":
        raise bad_request("'valueInputOption' is required but not specified")
    return option


class _Writing:
    """One range of values on its way into a sheet: checked as a whole before the first cell changes."""

    def __init__(self, book, text, data, option):
        self.text, self.option = text, option
        self.sheet, self.rect = find_for_writing(book, text)
        _refuse_generated(self.sheet)
        self._check_range(book, data.get("range"))
        by_columns = data.get("majorDimension") == "COLUMNS"
        self.cells = []
        self.rows_given, self.columns_given = 0, 0
        for line, values in enumerate(data.get("values", ())):
            for place, value in enumerate(values):
                row, column = (place, line) if by_columns else (line, place)
                self._add(self.rect.top + row, self.rect.left + column, value)

    def _check_range(self, book, text):
        if text is not None and find_range(book, text) != (self.sheet, self.rect):
            raise bad_request(f"Request range[{self.text}] does not match value's range[{text}]")

    def _add(self, row, column, value):
        if self.rect.rows * self.rect.columns > 1 and not (row < self.rect.bottom and column < self.rect.right):
            place = f"row [{row + 1}]" if row >= self.rect.bottom else f"column [{a1.column_letters(column)}]"
            raise bad_request(f"Requested writing within range [{a1.range_text(self.sheet.title, self.rect)}], but "
                              f"tried writing to {place}")
        if row >= self.sheet.row_count or column >= self.sheet.column_count:
            cell = a1.range_text(self.sheet.title, a1.Rect(row, column, row + 1, column + 1))
            raise bad_request(f"Range ({cell}) exceeds grid limits. Max rows: {self.sheet.row_count}, max columns: "
                              f"{self.sheet.column_count}")
        if isinstance(value, str) and len(value) > MAX_CELL_CHARACTERS:
            raise bad_request(too_long_for_a_cell(MAX_CELL_CHARACTERS))
        self.rows_given = max(self.rows_given, row + 1 - self.rect.top)
        self.columns_given = max(self.columns_given, column + 1 - self.rect.left)
        if value is not None:
            self.cells.append((row, column, value))

    def store(self):
        for row, column, value in self.cells:
            self.sheet.put(row, column, _changed(self.sheet.cell(row, column), value, self.option))

    @property
    def block(self):
        """What the values reach over, from the corner of the range on."""
        rect = self.rect
        return a1.Rect(rect.top, rect.left, rect.top + max(1, self.rows_given),
                       rect.left + max(1, self.columns_given))

    def reply(self, drive, entry, options):
        body = {"spreadsheetId": entry.file_id, "updatedRange": a1.range_text(self.sheet.title, self.block)}
        if self.cells:
            body.update(updatedRows=len({row for row, _, _ in self.cells}),
                        updatedColumns=len({column for _, column, _ in self.cells}), updatedCells=len(self.cells))
        if options.get("includeValuesInResponse"):
            body["updatedData"] = _values_at(drive, entry.book, self.sheet, self.block, {
                "valueRenderOption": options.get("responseValueRenderOption", "FORMATTED_VALUE"),
                "dateTimeRenderOption": options.get("responseDateTimeRenderOption", "SERIAL_NUMBER")})
        return body


def _changed(cell, value, option):
    """The cell with another value; typed-in dates and the like bring a format where the cell has none."""
    if option == "RAW":
        return cell._replace(value=entered_raw(value).value)
    number_format = (cell.format or {}).get("numberFormat")
    entered = entered_by_user(value, (number_format or {}).get("type") == "TEXT")
    if entered.number_format and not number_format:
        cell = cell._replace(format=(cell.format or {}) | {"numberFormat": entered.number_format})
    return cell._replace(value=entered.value)


def update(drive, call):
    entry = book_of(drive, call)
    writing = _Writing(entry.book, call.parts["range"], call.body, _input_option(call.query))
    writing.store()
    entry.modified = drive.now()
    return Reply(body=writing.reply(drive, entry, call.query))


def batch_update(drive, call):
    entry = book_of(drive, call)
    option = _input_option(call.body)
    writings = [_Writing(entry.book, data.get("range", ""), data, option) for data in call.body.get("data", ())]
    for writing in writings:
        writing.store()
    entry.modified = drive.now()
    touched = {(writing.sheet.sheet_id, row, column) for writing in writings for row, column, _ in writing.cells}
    totals = {"totalUpdatedRows": len({(sheet, row) for sheet, row, _ in touched}),
              "totalUpdatedColumns": len({(sheet, column) for sheet, _, column in touched}),
              "totalUpdatedCells": len(touched), "totalUpdatedSheets": len({sheet for sheet, _, _ in touched})}
    return Reply(body={"spreadsheetId": entry.file_id, **{name: total for name, total in totals.items() if total},
                       "responses": [writing.reply(drive, entry, call.body) for writing in writings]})


def append(drive, call):
    """Puts rows below the table that the range touches, or at the range where there is none."""
    entry = book_of(drive, call)
    option = _input_option(call.query)
    sheet, rect = find_for_reading(entry.book, call.parts["range"])
    _refuse_generated(sheet)
    table = _table_at(sheet, rect)
    top, left = (table.bottom, table.left) if table else (rect.top, rect.left)
    values = call.body.get("values", ())
    count = max((len(line) for line in values), default=0) if call.body.get("majorDimension") == "COLUMNS" \
        else len(values)
    missing = top + count - sheet.row_count
    if missing > 0:
        try:
            append_dimension(entry.book, {"sheetId": sheet.sheet_id, "dimension": "ROWS", "length": missing})
        except BatchRefusal as refusal:
            raise bad_request(str(refusal)) from None
    corner = a1.range_text(sheet.title, a1.Rect(top, left, top + 1, left + 1))
    data = {name: value for name, value in call.body.items() if name != "range"}
    writing = _Writing(entry.book, corner, data, option)
    writing.store()
    entry.modified = drive.now()
    body = {"spreadsheetId": entry.file_id}
    if table:
        body["tableRange"] = a1.range_text(sheet.title, table)
    return Reply(body=body | {"updates": writing.reply(drive, entry, call.query)})


def _table_at(sheet, rect):
    """The block of values without an empty row or column inside that touches the range's first filled cell."""
    filled = {(row, column) for row, column, cell in sheet.cells_in(sheet.whole) if cell.value}
    inside = sorted(place for place in filled if rect.top <= place[0] < rect.bottom
                    and rect.left <= place[1] < rect.right)
    if not inside:
        return None
    row, column = inside[-1] if rect.rows > 1 else inside[0]
    table = a1.Rect(row, column, row + 1, column + 1)
    while True:
        near = [place for place in filled if table.top - 1 <= place[0] <= table.bottom
                and table.left - 1 <= place[1] <= table.right]
        grown = a1.Rect(min(place[0] for place in near), min(place[1] for place in near),
                        max(place[0] for place in near) + 1, max(place[1] for place in near) + 1)
        if grown == table:
            return table
        table = grown
