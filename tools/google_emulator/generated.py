# SPDX-License-Identifier: Apache-2.0
"""A sheet full of numbers that nobody stored: large replies are written from a template of one row."""

import json

from .a1 import Rect
from .entered import Entered
from .formats import general_number
from .model import BLANK, Cell
from .rendering import cell_data

_NUMBER, _TEXT = "@number@", "@text@"
ROWS_A_CHUNK = 2000


def number_at(row, column):
    """Some numbers have a fraction, some have none; all are exact."""
    return (row * 7 + column * 13) % 1000 / 8


def _shown(number):
    return str(int(number)) if number.is_integer() else repr(number)


class RowTemplate(list):
    """Stands in a reply for the rows of a generated sheet; JsonText writes them one by one."""

    def __init__(self, row, count, fill):
        super().__init__([row] if count else [])
        self.count = count
        self.fill = fill  # index of the row -> the numbers of that row

    def texts(self, indent):
        """The rows as JSON, some thousand in each piece, for a place that deep."""
        text = json.dumps(self[0], indent=2, ensure_ascii=False).replace("\n", "\n" + indent)
        template = text.replace("%", "%%").replace(f'"{_NUMBER}"', "%s").replace(_TEXT, "%s")
        repeats = text.count(_NUMBER) + text.count(_TEXT)
        per_cell = repeats // max(1, len(self.fill(0)))
        for start in range(0, self.count, ROWS_A_CHUNK):
            rows = range(start, min(start + ROWS_A_CHUNK, self.count))
            yield (",\n" + indent).join(template % tuple(number for number in self.fill(row)
                                                         for _ in range(per_cell)) for row in rows)

    def masked(self, mask):
        return RowTemplate(mask(self[0]), self.count, self.fill) if self.count else self


class GeneratedNumbers:
    """The content of a filled sheet: number_at() in its first rows and columns."""

    def __init__(self, row_count, column_count):
        self.block = Rect(0, 0, row_count, column_count)

    def cell(self, row, column):
        if self.block.contains(Rect(row, column, row + 1, column + 1)):
            return Cell({"numberValue": number_at(row, column)})
        return BLANK

    def _part(self, rect):
        bottom, right = min(rect.bottom, self.block.bottom), min(rect.right, self.block.right)
        return Rect(rect.top, rect.left, max(rect.top, bottom), max(rect.left, right))

    def row_data(self, rect):
        """The rows of a spreadsheets.get reply, unmasked."""
        part = self._part(rect)
        value = {"numberValue": _NUMBER}
        data = cell_data(Cell(value), Entered({"numberValue": 0}))
        data.update(effectiveValue=value, formattedValue=_TEXT)
        count = part.rows if part.columns else 0
        return RowTemplate({"values": [data] * part.columns}, count, lambda row: [
            _shown(number_at(part.top + row, column)) for column in range(part.left, part.right)])

    def value_lists(self, rect, render, major):
        """The rows (or columns) of a values reply."""
        part = self._part(rect)
        mark = _TEXT if render == "FORMATTED_VALUE" else _NUMBER
        show = general_number if render == "FORMATTED_VALUE" else _shown
        if major == "COLUMNS":
            return [[_plain(show, number_at(row, column)) for row in range(part.top, part.bottom)]
                    for column in range(part.left, part.right)]
        count = part.rows if part.columns else 0
        return RowTemplate([mark] * part.columns, count, lambda row: [
            show(number_at(part.top + row, column)) for column in range(part.left, part.right)])


def _plain(show, number):
    return show(number) if show is general_number else int(number) if number.is_integer() else number
