# SPDX-License-Identifier: Apache-2.0
"""Batch requests about named and protected ranges."""

import re

from .a1 import parse_cells
from .batch_sheets import required_mask
from .book_ranges import batch_range, batch_sheet, open_rect_of
from .errors import BatchRefusal
from .masks import replace_masked
from .rendering import without_zero_sheet

_NAME = re.compile(r"[^\W\d]\w*")
MAX_NAME_LENGTH = 250


def _check_name(book, name, own_id=None):
    if not name or len(name) > MAX_NAME_LENGTH or not _NAME.fullmatch(name) or parse_cells(name):
        raise BatchRefusal("Invalid name: names may have letters, digits and underscores only, and must not look "
                           "like a range.")
    other = book.named_range(name)
    if other and other["namedRangeId"] != own_id:
        raise BatchRefusal(f'A named range with the name "{name}" already exists. Please select a different name.')


def add_named_range(book, request, drive):
    wanted = request.get("namedRange", {})
    _check_name(book, wanted.get("name"))
    batch_range(book, wanted.get("range"))
    number = wanted.get("namedRangeId") or str(drive.new_number())
    if any(entry["namedRangeId"] == number for entry in book.named_ranges):
        raise BatchRefusal(f"A named range with ID {number} already exists.")
    entry = {"namedRangeId": number, "name": wanted["name"], "range": wanted["range"]}
    book.named_ranges.append(entry)
    return {"namedRange": without_zero_sheet(entry)}


def _named_range_index(book, number):
    for index, entry in enumerate(book.named_ranges):
        if entry["namedRangeId"] == number:
            return index
    raise BatchRefusal(f"Cannot find named range with ID: {number}")


def delete_named_range(book, request):
    del book.named_ranges[_named_range_index(book, request.get("namedRangeId"))]


def update_named_range(book, request):
    mask = required_mask(request, "NamedRange")
    wanted = request.get("namedRange", {})
    index = _named_range_index(book, wanted.get("namedRangeId"))
    entry = replace_masked(book.named_ranges[index], wanted, mask)
    _check_name(book, entry.get("name"), wanted["namedRangeId"])
    batch_range(book, entry.get("range"))
    book.named_ranges[index] = entry


def add_protected_range(book, request, drive):
    wanted = request.get("protectedRange", {})
    if ("range" in wanted) == ("namedRangeId" in wanted):
        raise BatchRefusal("Exactly one of range or namedRangeId must be set.")
    if "namedRangeId" in wanted:
        block = book.named_ranges[_named_range_index(book, wanted["namedRangeId"])]["range"]
    else:
        block = wanted["range"]
    sheet = batch_sheet(book, block.get("sheetId"))
    if set(open_rect_of(block)) == {None}:
        _refuse_second_protection(sheet)
    else:
        batch_range(book, block, "protectedRange.range")
    for inner in wanted.get("unprotectedRanges", ()):
        batch_range(book, inner, "protectedRange.unprotectedRanges")
    taken = {entry["protectedRangeId"] for other in book.sheets for entry in other.protected_ranges}
    number = wanted.get("protectedRangeId") or drive.new_number(taken)
    if number in taken:
        raise BatchRefusal(f"A protected range with ID {number} already exists.")
    entry = {"protectedRangeId": number, "range": block}
    for name in ("namedRangeId", "description", "warningOnly"):
        if wanted.get(name):
            entry[name] = wanted[name]
    entry["requestingUserCanEdit"] = True
    if wanted.get("unprotectedRanges"):
        entry["unprotectedRanges"] = wanted["unprotectedRanges"]
    entry["editors"] = {name: value for name, value in wanted.get("editors", {}).items() if value}
    sheet.protected_ranges.append(entry)
    return {"protectedRange": without_zero_sheet(entry)}


def _refuse_second_protection(sheet):
    if any(set(open_rect_of(entry["range"])) == {None} for entry in sheet.protected_ranges):
        raise BatchRefusal(f'Sheet "{sheet.title}" already has sheet protection.')


def delete_protected_range(book, request):
    number = request.get("protectedRangeId", 0)
    for sheet in book.sheets:
        for entry in sheet.protected_ranges:
            if entry["protectedRangeId"] == number:
                sheet.protected_ranges.remove(entry)
                return
    raise BatchRefusal(f"No protected range with ID: {number}")
