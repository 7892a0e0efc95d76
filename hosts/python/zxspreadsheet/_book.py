# SPDX-License-Identifier: Apache-2.0
"""Books and their sheets."""
from __future__ import annotations

import os
import re
import shutil
import warnings as _warnings
from dataclasses import dataclass
from types import FrameType
from typing import IO, Any, Iterator, Mapping, Sequence, Union

import numpy as np
import numpy.typing as npt

from . import _zxspreadsheet as _core
from ._data import columns_of
from ._errors import CoercionWarning, missing as _missing, refused, unsupported
from ._files import Location, Source
from ._table import TYPES, Array, Corners, Note, Table, range_text

_COERCIONS = ("{count} error cell{s} read as missing", "{count} value{s} converted to {type}",
              "{count} value{s} that could not become {type} read as missing",
              "{count} date{s} of the day 1900-02-29, which never was, read as 1900-02-28",
              "{count} date{s} outside the years 1 to 9999 read as missing")
_RULES = ("first", "last", "repeat", "error", "omit")
_VISIBILITIES = ("visible", "hidden", "very hidden")
CELL_TYPES = ("empty", "number", "text", "date", "boolean", "other", "error")
_MAX_CELLS = 2**28
CoreBook = _core.Book
#: A sheet by its name or its index from 0.
SheetKey = Union[str, int, np.integer[Any]]


def _header_row(header: object) -> int:
    if header is True:
        return 0
    if header is None or header is False:
        return -1
    if isinstance(header, (int, np.integer)) and header >= 0:
        return int(header)
    raise TypeError("header is True, False or the row of the range that has the names, counted from 0.")


def _choice(value: Any, choices: Sequence[str], what: str) -> int:
    if value in choices:
        return choices.index(value)
    raise ValueError(f"{what} is one of {', '.join(map(repr, choices))}, not {value!r}.")


def table_options(header: bool | int | None = True, types: Mapping[str, str] | None = None,
                  missing: str | Sequence[str] = (), drop_blank_rows: bool = False, drop_blank_columns: bool = False,
                  merged: str | tuple[str, str] | None = None, max_cells: int = _MAX_CELLS) -> dict[str, Any]:
    """The options of `read` as the library takes them."""
    if isinstance(missing, str):
        missing = [missing]
    rules = None
    if merged is not None:
        columns, rows = (merged, merged) if isinstance(merged, str) else merged
        rules = _choice(columns, _RULES, "merged"), _choice(rows, _RULES, "merged")
    return {"header_row": _header_row(header), "drop_blank_rows": bool(drop_blank_rows),
            "drop_blank_columns": bool(drop_blank_columns), "missing": [str(text) for text in missing],
            "types": {name: _choice(kind, TYPES, "A type") for name, kind in (types or {}).items()},
            "merged": rules, "max_cells": max_cells}


@dataclass(frozen=True)
class Name:
    """A defined name, or a table, whose cells are one rectangle. `sheet` is the sheet with the cells, `scope`
    the sheet whose name it is; None for a name of the whole book.

    >>> zx.open(example("weather.xlsx")).names
    [Name(name='RainByStation', sheet='Summary', range='A2:B4', scope=None, is_table=False)]
    """
    name: str
    sheet: str
    range: str
    scope: str | None = None
    is_table: bool = False


class Sheet:
    """One sheet of a book.

    >>> with zx.open(example("weather.xlsx")) as book:
    ...     sheet = book["Readings"]
    ...     sheet.name, sheet.used_range, sheet.hidden
    ('Readings', 'A1:F6', 'visible')
    """

    def __init__(self, book: Book, index: int) -> None:
        self._book = book
        self._index = index
        self._generation = book._generation

    def _core(self) -> CoreBook:
        core = self._book._core()
        if self._generation != self._book._generation:
            raise refused("Sheets were added, removed or moved since this one was asked for; ask the book again.")
        return core

    def __repr__(self) -> str:
        return f"Sheet {self.name!r} of {self._book!r}"

    @property
    def index(self) -> int:
        return self._index

    @property
    def name(self) -> str:
        return self._core().sheet_names()[self._index]

    @name.setter
    def name(self, name: str) -> None:
        self._core().rename_sheet(self._index, name)

    @property
    def is_chart(self) -> bool:
        """True for a chart sheet, which has no cells."""
        return self._core().is_chart(self._index)

    @property
    def used_range(self) -> str:
        """The rectangle of all cells, formatted blanks among them, as A1 text; empty without cells."""
        return range_text(self._core().used_range(self._index))

    @property
    def value_range(self) -> str:
        """The rectangle of the cells that have a value as A1 text; empty when none has."""
        return range_text(self._core().resolve(self._index, ""))

    @property
    def hidden(self) -> str:
        """"visible", "hidden" or "very hidden"; can be set, also to True and False."""
        return _VISIBILITIES[self._core().visibility(self._index)]

    @hidden.setter
    def hidden(self, state: str | bool) -> None:
        state = ("hidden" if state else "visible") if isinstance(state, bool) else state
        self._core().set_visibility(self._index, _choice(state, _VISIBILITIES, "hidden"))

    @property
    def protected(self) -> bool:
        return self._core().is_protected(self._index)

    @protected.setter
    def protected(self, on: bool) -> None:
        self._core().set_protected(self._index, bool(on))

    def types(self, range: str | None = None) -> Array:
        """The type of each cell of a range as an array of strings: "empty", "number", "text", "date",
        "boolean", "other" (a formatted blank) or "error".

        >>> zx.open(example("weather.xlsx"))[0].types("A2:D2").tolist()
        [['text', 'date', 'number', 'number']]
        """
        core = self._core()
        kinds = core.cell_types(self._index, core.resolve(self._index, range or ""))
        names: Array = np.array(CELL_TYPES, object)
        return names[kinds]

    def read(self, range: str | None = None, **options: Any) -> Table:
        """A range, or a name that refers to this sheet, as a `Table`; see `zx.read` for the options.

        >>> zx.open(example("weather.xlsx"))["Summary"].read("RainByStation", header=False)["column2"]
        array([4.2, 2.4, 0. ])
        """
        core = self._core()
        return self._read_table(core, core.resolve(self._index, range or ""), options)

    def read_array(self, range: str | None = None, order: str = "F") -> npt.NDArray[np.float64]:
        """A range as a 2-D float64 array; see `zx.read_array`.

        >>> zx.open(example("weather.xlsx"))[0].read_array("C2:D2")
        array([[7.5, 0. ]])
        """
        core = self._core()
        by_columns = _choice(order, ("C", "F"), "order") == 1
        return core.read_numbers(self._index, core.resolve(self._index, range or ""), by_columns)

    def write(self, data: Any, cell: str = "A1", header: bool | Sequence[str] | None = None, append: bool = False,
              replace: bool = False, keep_format: bool = False) -> str:
        """Writes data with its first cell at `cell`; see `zx.write`. Returns the cells as A1 text.

        >>> zx.open(example("weather.xlsx"))["Summary"].write({"Total": [6.6]}, "D1")
        'D1:D2'
        """
        core = self._core()
        first_row, first_column, *_ = core.resolve(self._index, cell)
        if append and replace:
            raise ValueError("append and replace exclude each other.")
        if append:
            return self._append(core, data, header, keep_format)
        is_matrix = isinstance(data, np.ndarray) and data.dtype.kind == "f" and data.dtype.itemsize <= 8 \
            and data.ndim == 2 and not isinstance(data, np.ma.MaskedArray)
        if is_matrix and not header and not keep_format:
            data = np.asarray(data, np.float64)
            self._check_numbers(data)
            self._clear_if(core, replace)
            core.write_numbers(self._index, first_row, first_column, data)
            rows, columns = data.shape
            return range_text((first_row, first_column, first_row + rows - 1, first_column + columns - 1))
        parts, rows = columns_of(data, header)
        has_names = any(column["name"] for column in parts)
        header = has_names if header is None else bool(header)
        if replace and parts:
            # Once to see whether it can be written at all.
            core.write_table(self._index, first_row, first_column, parts, rows, header, keep_format)
            self._clear_if(core, replace)
        return range_text(core.write_table(self._index, first_row, first_column, parts, rows, header, keep_format))

    def clear(self, range: str | None = None) -> None:
        """Empties the cells of a range, or of the whole sheet.

        >>> book = zx.open(example("weather.xlsx"))
        >>> book[0].clear("A1:F2")
        >>> book[0].value_range
        'A3:F6'
        """
        core = self._core()
        core.clear(self._index, core.resolve(self._index, range) if range else core.used_range(self._index))

    def _check_numbers(self, data: Array) -> None:
        if np.isinf(data).any():
            row, column = np.argwhere(np.isinf(data))[0]
            raise refused(f"The value in row {row}, column {column} is infinite, which a cell cannot be. Replace it, "
                          "for example by NaN for a cell without a value.")

    def _clear_if(self, core: CoreBook, replace: bool) -> None:
        if replace:
            core.clear(self._index, core.used_range(self._index))

    def _append(self, core: CoreBook, data: Any, header: object, keep_format: bool) -> str:
        """Below the last row with a value; columns go below the names that they have in the first."""
        filled = core.resolve(self._index, "")
        parts, rows = columns_of(data, header)
        if filled[2] < 0:
            has_names = any(column["name"] for column in parts)
            return range_text(core.write_table(self._index, 0, 0, parts, rows, has_names, keep_format))
        first_row, first_column, last_row, last_column = filled
        if any(column["name"] for column in parts):
            header_row = (first_row, first_column, first_row, last_column)
            columns = core.read_table(self._index, header_row, table_options())["columns"]
            names = [column["name"] for column in columns]
            given = [column["name"] for column in parts]
            unknown = [name for name in given if name not in names]
            if unknown or len(set(given)) != len(given):
                raise refused(f"The sheet has no column {unknown[0]!r} to append to. Its columns are: {', '.join(names)}."
                              if unknown else "Two columns to append have the same name.")
            by_name = {column["name"]: column for column in parts}
            empty = columns_of({"": np.full(rows, np.nan)})[0][0]
            parts = [by_name.get(name, empty) for name in names]
        return range_text(core.write_table(self._index, last_row + 1, first_column, parts, rows, False, keep_format))

    def _read_table(self, core: CoreBook, corners: Corners, options: Mapping[str, Any]) -> Table:
        table = core.read_table(self._index, corners, table_options(**options))
        coerced = [(name, TYPES[_type_of(table, name)], kind, count, _core.range_text((row, column, row, column)))
                   for name, kind, count, row, column in table["coerced"]]
        notes: list[Note] = []
        for name, kind, coercion, count, cell in coerced:
            what = _COERCIONS[coercion].format(count=count, s="s" * (count != 1), type=kind)
            notes.append((name, what, count, cell))
            _warnings.warn(f"{self._book.name}: column {name!r}: {what}, first in {cell}.", CoercionWarning,
                           stacklevel=_user_level())
        return Table(table["columns"], table["rows"], table["range"], self._book.name, self.name, notes)


def _user_level() -> int:
    """How many calls from here to the first outside the package, for warnings."""
    import sys
    here = os.path.dirname(__file__)
    level = 2
    frame: FrameType | None = sys._getframe(2)
    while frame is not None and os.path.dirname(frame.f_code.co_filename) == here:
        level, frame = level + 1, frame.f_back
    return level


def _type_of(table: Mapping[str, Any], name: str) -> int:
    return next(column["type"] for column in table["columns"] if column["name"] == name)


class Book:
    """A workbook; `zx.open` makes one. A context manager, which closes it without saving.

    >>> with zx.open(example("weather.xlsx")) as book:
    ...     book.sheets
    ['Readings', 'Summary']

    Books do not pickle; `zx.scan` hands out what does.
    """

    def __init__(self, location: Location, core: CoreBook) -> None:
        self._location = location
        self._book: CoreBook | None = core
        self._generation = 0
        self._is_untouched = False

    def __repr__(self) -> str:
        return f"Book {self.name!r}"

    def __enter__(self) -> Book:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def __del__(self) -> None:
        self.close()

    def __reduce__(self) -> Any:
        raise TypeError("A book does not pickle. Pass its path on, or parts of zx.scan, and open it there.")

    def __len__(self) -> int:
        return len(self.sheets)

    def __iter__(self) -> Iterator[Sheet]:
        return (Sheet(self, index) for index in range(len(self)))

    def __getitem__(self, sheet: SheetKey | None) -> Sheet:
        return Sheet(self, self._find(sheet))

    def _core(self) -> CoreBook:
        if self._book is None:
            raise ValueError("The book is closed.")
        return self._book

    def _find(self, sheet: SheetKey | None) -> int:
        return find_sheet(self._core(), sheet, self.name)

    @property
    def name(self) -> str:
        """The path, or what stands for it."""
        return self._location.name

    @property
    def format(self) -> str:
        """"XLSX", "XLS", "GSHEET" ..."""
        return self._core().format()

    @property
    def dates_1904(self) -> bool:
        """Whether the workbook counts dates from 1904. Dates are read and written as dates all the same."""
        return self._core().are_dates_1904()

    @property
    def sheets(self) -> list[str]:
        """The names of the sheets in their order."""
        return self._core().sheet_names()

    @property
    def names(self) -> list[Name]:
        """The defined names and the tables whose cells are one rectangle, hidden names excepted. Raises
        `Unsupported` for spreadsheets online and in an application, where names can be read all the same."""
        core = self._core()
        known = core.names()
        if known is None:
            raise unsupported("The names of a book that is not a file are not listed; a range can be one.", self.name)
        sheets = core.sheet_names()
        return [Name(name, sheets[sheet], range_text(corners), None if scope is None else sheets[scope], is_table)
                for name, sheet, scope, is_table, corners in known]

    def read(self, sheet: SheetKey | None = None, range: str | None = None, **options: Any) -> Table:
        """A range of a sheet as a `Table`; see `zx.read`.

        >>> zx.open(example("weather.xlsx")).read(range="RainByStation", header=False).sheet
        'Summary'
        """
        index, range = locate(self._core(), sheet, range, self.name)
        return Sheet(self, index).read(range, **options)

    def read_array(self, sheet: SheetKey | None = None, range: str | None = None,
                   order: str = "F") -> npt.NDArray[np.float64]:
        """A range of a sheet as a 2-D array; see `zx.read_array`.

        >>> zx.open(example("weather.xlsx")).read_array(range="Readings!C2:D2")
        array([[7.5, 0. ]])
        """
        index, range = locate(self._core(), sheet, range, self.name)
        return Sheet(self, index).read_array(range, order)

    def write(self, data: Any, sheet: SheetKey | None = None, cell: str = "A1", **options: Any) -> str:
        """Writes data into a sheet, which is made where there is no sheet of that name; see `zx.write`.
        Returns the cells as A1 text.

        >>> zx.open(example("weather.xlsx")).write(np.eye(2), "Matrix", "B2")
        'B2:C3'
        """
        if isinstance(sheet, str) and not _has_name(self.sheets, sheet):
            if self._is_untouched:
                # The one sheet that an application gives a new book.
                self.rename(0, sheet)
                self._is_untouched = False
                return self[0].write(data, cell, **options)
            return self.add(sheet).write(data, cell, **options)
        if sheet is None and not self.sheets:
            return self.add("Sheet1").write(data, cell, **options)
        return self[sheet].write(data, cell, **options)

    def add(self, name: str, at: int | None = None, copy_of: SheetKey | None = None) -> Sheet:
        """Adds a sheet, at the end or at an index, a copy of another one where `copy_of` says which.

        >>> book = zx.open(example("weather.xlsx"))
        >>> book.add("Copy", at=0, copy_of="Summary").value_range
        'A1:B4'
        """
        self._is_untouched = False
        copied = self.sheets[self._find(copy_of)] if copy_of is not None else ""
        index = len(self) if at is None else at
        if not 0 <= index <= len(self):
            raise _missing(f"A sheet cannot be added at {index}; the book has {len(self)}.", self.name)
        self._core().add_sheet(index, name, copied)
        self._generation += 1
        return Sheet(self, index)

    def remove(self, sheet: SheetKey) -> None:
        """Removes a sheet.

        >>> book = zx.open(example("weather.xlsx"))
        >>> book.remove("Summary")
        >>> book.sheets
        ['Readings']
        """
        self._core().remove_sheet(self._find(sheet))
        self._generation += 1

    def move(self, sheet: SheetKey, to: int) -> None:
        """Moves a sheet to an index.

        >>> book = zx.open(example("weather.xlsx"))
        >>> book.move("Summary", 0)
        >>> book.sheets
        ['Summary', 'Readings']
        """
        core, index = self._core(), self._find(sheet)
        if not self._location.is_file:
            raise unsupported("Only the sheets of a file can be moved.", self.name)
        core.move_sheet(index, self._find(int(to)))
        self._generation += 1

    def rename(self, sheet: SheetKey, name: str) -> None:
        """Gives a sheet another name; what refers to it follows.

        >>> book = zx.open(example("weather.xlsx"))
        >>> book.rename(0, "Measured")
        >>> book.sheets
        ['Measured', 'Summary']
        """
        self[sheet].name = name

    def save(self, target: str | os.PathLike[str] | IO[bytes] | None = None) -> None:
        """Saves the book under its own path, another path or into a binary file object. The file is
        replaced in one step once the new one is complete.

        >>> book = zx.open(example("weather.xlsx"))
        >>> book.save(scratch("copy.xlsx"))
        >>> book.save(io.BytesIO())
        """
        core = self._core()
        if target is None:
            if self._location.is_temporary:
                raise ValueError("The book came from bytes or a file object; save it to a path or a file object.")
            core.save(self._location.path)
        elif isinstance(target, (str, os.PathLike)):
            core.save(os.fsdecode(os.fspath(target)))
        else:
            self._save_into(core, target)

    def _save_into(self, core: CoreBook, target: IO[bytes]) -> None:
        import tempfile
        with tempfile.TemporaryDirectory(prefix="zxspreadsheet-") as folder:
            path = os.path.join(folder, "book." + self.format.lower())
            core.save(path)
            with _open_file(path, "rb") as file:
                shutil.copyfileobj(file, target)

    def close(self) -> None:
        """Lets the book go. Arrays and tables that were read stay as they are."""
        self._book = None
        self._location.close()


_open_file = open  # the built-in function; this module has one of its own


def _has_name(names: Sequence[str], name: str) -> bool:
    return any(other.casefold() == name.casefold() for other in names)


def find_sheet(core: CoreBook, sheet: object, name: str) -> int:
    """The index of a sheet by its name or index; of the first worksheet for None."""
    names = core.sheet_names()
    if sheet is None:
        for index in range(len(names)):
            if not core.is_chart(index):
                return index
        raise _missing("The book has no worksheet.", name)
    if isinstance(sheet, (int, np.integer)) and not isinstance(sheet, bool):
        index = int(sheet) + len(names) if sheet < 0 else int(sheet)
        if 0 <= index < len(names):
            return index
        raise _missing(f"There is no sheet {sheet}; the book has {len(names)}, counted from 0.", name)
    if not isinstance(sheet, str):
        raise TypeError(f"A sheet is a name or an index, not a {type(sheet).__name__}.")
    for index, other in enumerate(names):
        if other.casefold() == sheet.casefold():
            return index
    raise _missing(f"There is no sheet {sheet!r}. The sheets are: {', '.join(names)}.", name)


def split_reference(text: str) -> tuple[str | None, str]:
    """(sheet, range) of "Sheet!A1:B2" or "'My sheet'!A1:B2"; (None, text) where no sheet is named."""
    quoted = re.match(r"'((?:[^']|'')+)'!", text)
    if quoted:
        return quoted[1].replace("''", "'"), text[quoted.end():]
    sheet, mark, cells = text.rpartition("!")
    return (sheet, cells) if mark and sheet else (None, text)


def locate(core: CoreBook, sheet: SheetKey | None, range: str | None, name: str) -> tuple[int, str | None]:
    """The index of the sheet to read and the range on it. Where no sheet is asked for, the range says it: by
    the sheet before "!", or as a name of any sheet; a name of the book comes before one of a sheet."""
    if sheet is not None or not range:
        return find_sheet(core, sheet, name), range
    sheet, range = split_reference(range)
    if sheet is None:
        wanted = range.casefold()
        found = [one for one in core.names() or () if one[0].casefold() == wanted]
        if found:
            _, index, _, _, corners = min(found, key=lambda one: one[2] is not None)
            return index, range_text(corners)
    return find_sheet(core, sheet, name), range


def open(source: Source, application: bool = False) -> Book:
    """Opens a workbook: a path, bytes, a binary file object, or "gsheet:ID" for a spreadsheet online.
    With `application` a spreadsheet application opens the path. A path that is not there becomes a
    new book, without sheets unless an application makes it; `save` makes the file.

    >>> book = zx.open(example("weather.xlsx"))
    >>> book.format
    'XLSX'
    >>> book.close()
    """
    location = Location(source, application)
    try:
        if location.is_there():
            return Book(location, location.load(_core.Book.load))
        book = Book(location, location.load(_core.Book.create))
        book._is_untouched = application
        return book
    except BaseException:
        location.close()
        raise
