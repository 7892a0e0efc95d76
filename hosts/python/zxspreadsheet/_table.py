# SPDX-License-Identifier: Apache-2.0
"""Tables: named columns, each with one type, as NumPy arrays that share the library's memory."""
from __future__ import annotations

import datetime
from typing import TYPE_CHECKING, Any, Callable, Iterable, Iterator, Mapping

import numpy as np
import numpy.typing as npt

from . import _zxspreadsheet as _core
from ._errors import missing

if TYPE_CHECKING:
    import pandas

Array = npt.NDArray[Any]
#: The parts of a column as the compiled module has them.
Parts = Mapping[str, Any]
#: First row, first column, last row, last column; from 0, inclusive.
Corners = tuple[int, int, int, int]
#: What was changed: (column, what, count, first cell).
Note = tuple[str, str, int, str]

TYPES = ("number", "boolean", "date", "text", "mixed")
_NUMBER, _BOOLEAN, _DATE, _TEXT, _MIXED = range(5)
# What a cell of a mixed column is.
_KIND_NUMBER, _KIND_TEXT, _KIND_DATE, _KIND_BOOLEAN = 1, 2, 3, 4


class Column:
    """One column of a table.

    >>> column = zx.read(example("weather.xlsx"), range="A1:E6").column("Station")
    >>> column.name, column.type, len(column)
    ('Station', 'text', 5)
    >>> column.codes
    array([0, 0, 1, 1, 2], dtype=int32)
    >>> column.categories
    array(['Harbour', 'Summit', 'Valley'], dtype=object)
    """

    def __init__(self, parts: Parts, rows: int) -> None:
        self._parts = parts
        self._rows = rows
        self._values: Array | None = None

    def __len__(self) -> int:
        return self._rows

    def __repr__(self) -> str:
        return f"Column {self.name!r} of {self._rows} row{'s' * (self._rows != 1)}: {self.type}"

    @property
    def name(self) -> str:
        return str(self._parts["name"])

    @property
    def type(self) -> str:
        """"number", "boolean", "date", "text" or "mixed"."""
        return TYPES[self._parts["type"]]

    @property
    def null_count(self) -> int:
        """How many values are missing."""
        return int(self._parts["null_count"])

    @property
    def mask(self) -> npt.NDArray[np.bool_]:
        """A boolean array, True where a value is missing, as in numpy.ma."""
        bits = self._parts.get("validity", np.zeros(0, np.uint8))
        return np.unpackbits(bits, count=self._rows, bitorder="little") == 0

    @property
    def values(self) -> Array:
        """The values: float64 with NaN where one is missing, datetime64[us] with NaT, bool (a masked
        array where one is missing), or an object array with None for text and mixed types."""
        if self._values is None:
            self._values = self._make_values()
        return self._values

    @property
    def codes(self) -> npt.NDArray[np.int32]:
        """Of a text column, int32 indices into `categories`; -1 where the text is missing."""
        return self._part("codes", np.int32)

    @property
    def categories(self) -> Array:
        """Of a text column, its distinct texts in the order of their first cell."""
        return self._strings()

    def to_masked(self) -> np.ma.MaskedArray[Any, Any]:
        """The values as a numpy.ma array.

        >>> zx.read(example("weather.xlsx"), range="D1:D6").column("Rain").to_masked().max()
        4.2
        """
        return np.ma.MaskedArray(np.ma.getdata(self.values), mask=self.mask)

    def _part(self, name: str, dtype: npt.DTypeLike) -> Array:
        part = self._parts.get(name)
        return np.zeros(0, dtype) if part is None else part

    def _strings(self) -> Array:
        offsets = self._part("offsets", np.int32)
        count = max(len(offsets) - 1, 0)
        strings = np.empty(count, object)
        encoded = self._part("bytes", np.uint8).tobytes()
        ends = offsets.tolist()
        if encoded.isascii():
            text = encoded.decode("ascii")
            strings[:] = [text[ends[i]:ends[i + 1]] for i in range(count)]
        else:
            strings[:] = [encoded[ends[i]:ends[i + 1]].decode() for i in range(count)]
        return strings

    def _texts(self) -> Array:
        # The code -1 is the last element.
        texts: Array = np.append(self._strings(), np.array([None], object))
        return texts[self._part("codes", np.int32)]

    def _make_values(self) -> Array:
        kind = self._parts["type"]
        if kind == _NUMBER:
            return self._part("numbers", np.float64)
        if kind == _DATE:
            return self._part("microseconds", np.int64).view("datetime64[us]")
        if kind == _BOOLEAN:
            values = self._part("booleans", np.bool_)
            return np.ma.MaskedArray(values, mask=self.mask) if self.null_count else values
        if kind == _TEXT:
            return self._texts()
        return self._mixed_values()

    def _mixed_values(self) -> Array:
        kinds, numbers = self._part("kinds", np.uint8), self._part("numbers", np.float64)
        values = self._texts()
        converters: tuple[tuple[int, Callable[[float], object]], ...] = (
            (_KIND_NUMBER, float), (_KIND_BOOLEAN, bool), (_KIND_DATE, _date_of_serial))
        for kind, convert in converters:
            rows = np.flatnonzero(kinds == kind)
            converted = np.empty(len(rows), object)
            converted[:] = [convert(number) for number in numbers[rows].tolist()]
            values[rows] = converted
        return values

    def _for_arrow(self) -> Parts:
        parts = self._parts
        if parts["type"] == _BOOLEAN:
            return {**parts, "packed": np.packbits(self._part("booleans", np.bool_), bitorder="little")}
        if parts["type"] != _MIXED:
            return parts
        # Arrow has no plain type for a column of several: its values as text.
        from ._data import text_column
        return text_column(self.name, [None if value is None else text_of(value) for value in self.values.tolist()])


def _date_of_serial(serial: float) -> datetime.datetime | float:
    microseconds = _core.microseconds_from_serial(serial)
    if microseconds < -2**62:
        return serial
    return datetime.datetime(1970, 1, 1) + datetime.timedelta(microseconds=microseconds)


def text_of(value: Any) -> str:
    """A value of a mixed column as text."""
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, datetime.datetime):
        text = value.isoformat()
        return text[:10] if text.endswith("T00:00:00") else text
    if isinstance(value, float) and value.is_integer() and abs(value) < 2**53:
        return str(int(value))
    return str(value)


class Table:
    """Named columns of equal length, as `read` returns them.

    >>> table = zx.read(example("weather.xlsx"), range="A1:E6")
    >>> table
    Table of 5 rows: Station text, Day date, Temperature number, Rain number, Snow boolean
    >>> table["Day"][0]
    numpy.datetime64('2024-03-01T00:00:00.000000')
    >>> table.mask("Rain")
    array([False, False, False, False,  True])

    Tables pickle; so do the arrays that they give.
    """

    def __init__(self, columns: Iterable[Parts], rows: int, range: Corners = (0, 0, -1, -1), source: str = "",
                 sheet: str = "", coerced: Iterable[Note] = ()) -> None:
        self._columns = {parts["name"]: Column(parts, rows) for parts in columns}
        self._rows = rows
        self._range = range
        #: The workbook and the sheet that it was read from.
        self.source, self.sheet = source, sheet
        #: What was changed.
        self.coerced: list[Note] = list(coerced)

    def __reduce__(self) -> tuple[Any, ...]:
        columns = [dict(column._parts) for column in self._columns.values()]
        return Table, (columns, self._rows, self._range, self.source, self.sheet, self.coerced)

    def __len__(self) -> int:
        """The number of rows."""
        return self._rows

    def __iter__(self) -> Iterator[str]:
        return iter(self._columns)

    def __contains__(self, name: object) -> bool:
        return name in self._columns

    def __getitem__(self, name: str | int) -> Array:
        return self.column(name).values

    def __repr__(self) -> str:
        columns = ", ".join(f"{column.name} {column.type}" for column in self._columns.values())
        return f"Table of {self._rows} row{'s' * (self._rows != 1)}: {columns or 'no columns'}"

    @property
    def names(self) -> list[str]:
        return list(self._columns)

    @property
    def shape(self) -> tuple[int, int]:
        return self._rows, len(self._columns)

    @property
    def range(self) -> str:
        """The cells that were read as A1 text, the header among them; empty when there were none."""
        return range_text(self._range)

    def column(self, name: str | int) -> Column:
        """The `Column` of that name, or at that place.

        >>> zx.read(example("weather.xlsx"), range="A1:E6").column(-1)
        Column 'Snow' of 5 rows: boolean
        """
        if isinstance(name, (int, np.integer)) and not isinstance(name, bool):
            return list(self._columns.values())[name]
        try:
            return self._columns[str(name)]
        except KeyError:
            raise missing(f"There is no column {name!r}. The columns are: {', '.join(self._columns) or 'none'}.",
                          self.source) from None

    def mask(self, name: str | int) -> npt.NDArray[np.bool_]:
        """A boolean array, True where the column's value is missing."""
        return self.column(name).mask

    def to_dict(self) -> dict[str, Array]:
        """A dict of the columns' arrays.

        >>> zx.read(example("weather.xlsx"), range="C1:D3").to_dict()
        {'Temperature': array([7.5 , 6.25]), 'Rain': array([0. , 4.2])}
        """
        return {name: column.values for name, column in self._columns.items()}

    def records(self) -> list[dict[str, Any]]:
        """The rows as dicts; missing values are None.

        >>> zx.read(example("weather.xlsx"), range="C1:D3").records()
        [{'Temperature': 7.5, 'Rain': 0.0}, {'Temperature': 6.25, 'Rain': 4.2}]
        """
        columns = []
        for column in self._columns.values():
            values = np.ma.getdata(column.values).astype(object)
            values[column.mask] = None
            columns.append(values)
        return [dict(zip(self._columns, row)) for row in zip(*columns)]

    def to_pandas(self, categories: bool = False) -> pandas.DataFrame:
        """A pandas.DataFrame. Numbers are not copied where pandas allows it; booleans with missing
        values have the dtype "boolean". With `categories` text columns are categorical.

        >>> frame = zx.read(example("weather.xlsx"), range="A1:E6").to_pandas()
        >>> frame.groupby("Station")["Rain"].max()
        Station
        Harbour    4.2
        Summit     2.1
        Valley     NaN
        Name: Rain, dtype: float64
        """
        import pandas
        series = {name: _to_pandas(pandas, column, categories) for name, column in self._columns.items()}
        return pandas.DataFrame(series, index=pandas.RangeIndex(self._rows), copy=False)

    def __arrow_c_stream__(self, requested_schema: object = None) -> object:
        """The table by the Arrow C stream interface, for any library that takes it: numbers float64,
        dates timestamp[us], booleans, text and mixed columns dictionaries of strings."""
        return _core.arrow_stream([column._for_arrow() for column in self._columns.values()], self._rows)


def _to_pandas(pandas: Any, column: Column, categories: bool) -> Any:
    values = column.values
    if column.type == "boolean" and column.null_count:
        return pandas.array(pandas.arrays.BooleanArray(np.ma.getdata(values).copy(), column.mask))
    if column.type == "text" and categories:
        return pandas.Categorical.from_codes(column.codes, column.categories)
    if column.type == "date" and int(pandas.__version__.partition(".")[0]) < 2:
        # Nanoseconds alone, which reach from 1677 to 2262.
        known = values[~np.isnat(values)]
        if len(known) and (known.min() < np.datetime64("1677-09-22") or known.max() > np.datetime64("2262-04-11")):
            return values.astype(object)
        return values.astype("datetime64[ns]")
    return values


def range_text(corners: Corners) -> str:
    """A1 text; empty for an empty rectangle."""
    first_row, first_column, last_row, last_column = corners
    return _core.range_text(corners) if last_row >= first_row and last_column >= first_column else ""
