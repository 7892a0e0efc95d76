# SPDX-License-Identifier: Apache-2.0
"""Batches of requests: all of a batch is done, or nothing of it."""

from . import batch_cells, batch_ranges, batch_sheets, dimensions
from .errors import BatchRefusal, bad_request
from .formulas import Calculation
from .rendering import formatted_value


def _auto_resize(book, request, drive):
    calculation = Calculation(book, drive.now())

    def shown(sheet, row, column):
        effective = calculation.effective(sheet, row, column)
        return formatted_value(sheet.cell(row, column), effective) if effective.value else ""

    dimensions.auto_resize_dimensions(book, request, shown)


def _without_drive(function):
    return lambda book, request, drive: function(book, request)


# Each takes the book, the request and the drive, and gives the reply or None.
HANDLERS = {
    "addSheet": batch_sheets.add_sheet,
    "duplicateSheet": batch_sheets.duplicate_sheet,
    "deleteSheet": _without_drive(batch_sheets.delete_sheet),
    "updateSheetProperties": _without_drive(batch_sheets.update_sheet_properties),
    "updateSpreadsheetProperties": _without_drive(batch_sheets.update_spreadsheet_properties),
    "appendDimension": _without_drive(dimensions.append_dimension),
    "deleteDimension": _without_drive(dimensions.delete_dimension),
    "insertDimension": _without_drive(dimensions.insert_dimension),
    "autoResizeDimensions": _auto_resize,
    "updateCells": _without_drive(batch_cells.update_cells),
    "repeatCell": _without_drive(batch_cells.repeat_cell),
    "deleteRange": _without_drive(batch_cells.delete_range),
    "mergeCells": _without_drive(batch_cells.merge_cells),
    "unmergeCells": _without_drive(batch_cells.unmerge_cells),
    "addNamedRange": batch_ranges.add_named_range,
    "updateNamedRange": _without_drive(batch_ranges.update_named_range),
    "deleteNamedRange": _without_drive(batch_ranges.delete_named_range),
    "addProtectedRange": batch_ranges.add_protected_range,
    "deleteProtectedRange": _without_drive(batch_ranges.delete_protected_range),
}


def run_batch(book, requests, drive):
    """The replies, one for each request; after a refusal the book is as it was."""
    if not requests:
        raise bad_request("Must specify at least one request.")
    before = book.snapshot()
    replies = []
    for index, request in enumerate(requests):
        kind = next(iter(request), None)
        try:
            if kind is None:
                raise BatchRefusal("No request set.")
            reply = HANDLERS[kind](book, request[kind], drive)
        except BatchRefusal as refusal:
            book.restore(before)
            place = f"requests[{index}].{kind}" if kind else f"requests[{index}]"
            raise bad_request(f"Invalid {place}: {refusal}") from None
        except BaseException:
            book.restore(before)
            raise
        replies.append({} if reply is None else {kind: reply})
    return replies
