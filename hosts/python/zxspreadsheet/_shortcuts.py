# SPDX-License-Identifier: Apache-2.0
"""One thing to one sheet: reading loads no more of a file than that sheet."""
from __future__ import annotations

import re
from typing import Any, Mapping, Sequence

import numpy as np
import numpy.typing as npt

from . import _zxspreadsheet as _core
from ._book import Book, Sheet, SheetKey, locate, open as open_book
from ._files import Location, Source
from ._table import Table

_ROWS = re.compile(r"\s*\$?[A-Za-z]{1,3}\$?([1-9]\d{0,6})\s*(?::\s*\$?[A-Za-z]{1,3}\$?([1-9]\d{0,6})\s*)?")


def _rows_of(range: str | None) -> list[int] | None:
    """The first and the last row that the text of a range says, or None."""
    found = _ROWS.fullmatch(range or "")
    if not found:
        return None
    rows = sorted(int(number) - 1 for number in (found[1], found[2] or found[1]))
    return rows if rows[1] < 1_048_576 else None


class _OneSheet:
    """A book of which one sheet, or some rows of it, is loaded, for the time of a with block."""

    def __init__(self, source: Source, sheet: SheetKey | None, range: str | None, application: bool) -> None:
        self._location = Location(source, application)
        try:
            self.sheet, self.range = self._load(sheet, range)
        except BaseException:
            self._location.close()
            raise

    def _load(self, sheet: SheetKey | None, range: str | None) -> tuple[Sheet, str | None]:
        location = self._location
        if not location.is_file:
            core = location.load(_core.Book.load)
            book = Book(location, core)
            index, range = locate(core, sheet, range, location.name)
            return Sheet(book, index), range
        names = location.load(_core.Book.load_names)
        index, range = locate(names, sheet, range, location.name)
        rows = _rows_of(range)
        if rows is None:
            core = location.load(_core.Book.load_sheet, index)
        else:
            core = location.load(_core.Book.load_rows, index, *rows)
        return Sheet(Book(location, core), index), range

    def __enter__(self) -> _OneSheet:
        return self

    def __exit__(self, *_: object) -> None:
        self.sheet._book.close()


def read(source: Source, sheet: SheetKey | None = None, range: str | None = None, header: bool | int | None = True,
         types: Mapping[str, str] | None = None, missing: str | Sequence[str] = (), drop_blank_rows: bool = False,
         drop_blank_columns: bool = False, merged: str | tuple[str, str] | None = None,
         application: bool = False) -> Table:
    """Reads a range of a sheet as a `Table`.

    source   a path, bytes, a binary file object, or "gsheet:ID"
    sheet    a name or an index from 0; the first worksheet by default
    range    A1 text such as "A1:D20", "A:C" or "Data!A1:D20", or a defined name; all cells with a value by
             default. A name without a `sheet` is read from the sheet that it refers to
    header   True: the first row has the names; False: there are none; n: row n of the range, from 0
    types    {"name": "number" | "boolean" | "date" | "text" | "mixed"}; other columns get the type that
             all their values have, or "mixed"
    missing  texts that stand for a missing value; "-999" stands for that number too
    drop_blank_rows, drop_blank_columns   leave out what has no value at all
    merged   "first", "last", "repeat", "error" or "omit" for merged cells, or a pair of them for cells
             merged across columns and across rows

    A `CoercionWarning` says which cells could not be taken as they are. Columns without a name are
    called "column1" ..., a name that comes again gets ".1" ...

    >>> table = zx.read(example("weather.xlsx"), sheet="Readings", range="A1:E6")
    >>> table["Station"]
    array(['Harbour', 'Harbour', 'Summit', 'Summit', 'Valley'], dtype=object)
    >>> zx.read(example("weather.xlsx"), range="D1:D6", missing="0")["Rain"]
    array([nan, 4.2, 0.3, 2.1, nan])
    """
    with _OneSheet(source, sheet, range, application) as found:
        return found.sheet.read(found.range, header=header, types=types, missing=missing,
                                drop_blank_rows=drop_blank_rows, drop_blank_columns=drop_blank_columns, merged=merged)


def read_array(source: Source, sheet: SheetKey | None = None, range: str | None = None, order: str = "F",
               application: bool = False) -> npt.NDArray[np.float64]:
    """Reads a range of a sheet as a 2-D float64 array, in memory column after column ("F") or row after
    row ("C"). Dates are serial numbers of the 1900 system, booleans 0 and 1; every other cell is NaN.

    >>> zx.read_array(example("weather.xlsx"), range="C2:E3")
    array([[7.5 , 0.  , 0.  ],
           [6.25, 4.2 , 0.  ]])
    """
    with _OneSheet(source, sheet, range, application) as found:
        return found.sheet.read_array(found.range, order)


def write(target: Source, data: Any, sheet: SheetKey | None = None, cell: str = "A1",
          header: bool | Sequence[str] | None = None, append: bool = False, replace: bool = False,
          keep_format: bool = False, application: bool = False) -> str:
    """Writes data into a sheet of a new or an existing workbook and returns the cells as A1 text.

    target   a path, or "gsheet:ID"; everything else that a workbook holds is kept
    data     a 1-D or 2-D array, a structured array, a dict of columns, a list of records (dicts) or of
             rows, a `Table`, or a pandas.DataFrame
    sheet    a name, made where there is no such sheet, or an index; the first worksheet by default
    cell     where the first value, or the first name, goes
    header   whether names are written: by default where there are any; or a list of names for an array
    append   below the last row with a value, each column below its name
    replace  empties the sheet first
    keep_format  cells that are there keep their formats

    NaN, NaT, None and masked values leave a cell without a value. What a workbook would store as
    something else is refused before anything is written: infinities, integers beyond 2**53, dates
    before 1900 (1904) or with a time zone, texts longer than a cell can hold.

    >>> zx.write(scratch("rain.xlsx"), {"Station": ["Harbour", "Hill"], "Rain": [4.2, 0.0]})
    'A1:B3'
    >>> zx.write(scratch("rain.xlsx"), {"Station": ["Valley"], "Rain": [7.5]}, append=True)
    'A4:B4'
    >>> zx.read(scratch("rain.xlsx"))["Rain"]
    array([4.2, 0. , 7.5])
    """
    with open_book(target, application) as book:
        cells = book.write(data, sheet, cell, header=header, append=append, replace=replace, keep_format=keep_format)
        if book.format != "GSHEET":
            book.save()
        return cells
