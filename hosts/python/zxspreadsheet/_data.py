# SPDX-License-Identifier: Apache-2.0
"""Data of Python as columns of a table. What a workbook would store as something else is refused."""
from __future__ import annotations

import datetime
import math
import numbers
from typing import Any, Iterable, Sequence

import numpy as np
import numpy.typing as npt

from . import _zxspreadsheet as _core
from ._errors import refused
from ._table import _BOOLEAN, _DATE, _KIND_BOOLEAN, _KIND_DATE, _KIND_NUMBER, _KIND_TEXT, _MIXED, _NUMBER, _TEXT
from ._table import Array, Column, Parts, Table

Mask = npt.NDArray[np.bool_]

_MAX_INTEGER = 2**53
_EPOCH = datetime.datetime(1970, 1, 1)
_NO_DATE = np.iinfo(np.int64).min


def columns_of(data: Any, header: object = None) -> tuple[list[Parts], int]:
    """(list of column parts, number of rows) of an array, a dict of columns, records, rows, a `Table` or
    a data frame; `header` names the columns of what has no names."""
    if isinstance(data, Table):
        return [column._parts for column in map(data.column, data.names)], len(data)
    if hasattr(data, "columns") and hasattr(data, "iloc"):
        names = [name if isinstance(name, str) else str(name) for name in data.columns]
        return _build(names, [_plain(data.iloc[:, i]) for i in range(len(names))])
    if isinstance(data, np.ndarray):
        return _build(*_array_columns(data, header))
    if isinstance(data, dict):
        return _build([str(name) for name in data], list(data.values()))
    data = list(data)
    if data and all(isinstance(row, dict) for row in data):
        names = list(dict.fromkeys(name for row in data for name in row))
        return _build([str(name) for name in names], [[row.get(name) for row in data] for name in names])
    if data and all(isinstance(row, (list, tuple, np.ndarray)) for row in data):
        lengths = {len(row) for row in data}
        if len(lengths) > 1:
            raise ValueError(f"The rows have different lengths, from {min(lengths)} to {max(lengths)}.")
        return _build(_names(header, lengths.pop()), [list(column) for column in zip(*data)])
    return _build(_names(header, 1), [data])


def _names(header: object, count: int) -> list[str]:
    names = list(header) if isinstance(header, (list, tuple)) else [""] * count
    if len(names) != count:
        raise ValueError(f"There are {len(names)} names for {count} columns.")
    return [str(name) for name in names]


def _array_columns(array: Array, header: object) -> tuple[list[str], list[Array]]:
    if array.dtype.names:
        if array.ndim != 1:
            raise ValueError("A structured array must have one dimension.")
        return list(array.dtype.names), [array[name] for name in array.dtype.names]
    if array.ndim == 1:
        return _names(header, 1), [array]
    if array.ndim != 2:
        raise ValueError(f"The array has {array.ndim} dimensions; a sheet has two.")
    return _names(header, array.shape[1]), [array[:, i] for i in range(array.shape[1])]


def _plain(series: Any) -> Array:
    """A pandas.Series as an array, or as it is where it has types of its own."""
    values = series.array
    if type(values).__name__ == "Categorical":
        return series.astype(object).to_numpy(dtype=object)
    if isinstance(series.dtype, np.dtype):
        return series.to_numpy()
    if getattr(series.dtype, "tz", None) is not None:
        raise refused(f"Column {series.name!r} has dates with a time zone, which a workbook cannot store. "
                      "Use tz_localize(None) first.")
    return series.to_numpy(dtype=object)


def _build(names: list[str], columns: Sequence[Any]) -> tuple[list[Parts], int]:
    lengths = {name: len(column) for name, column in zip(names, columns)}
    if len(set(lengths.values())) > 1:
        longest, shortest = max(lengths, key=lengths.__getitem__), min(lengths, key=lengths.__getitem__)
        raise ValueError(f"The columns have different lengths: {longest!r} has {lengths[longest]} values, "
                         f"{shortest!r} {lengths[shortest]}.")
    rows = len(columns[0]) if columns else 0
    return [column_of(name, column) for name, column in zip(names, columns)], rows


def _parts(name: str, kind: int, mask: Mask, **arrays: Array) -> Parts:
    validity = np.packbits(~mask, bitorder="little")
    return {"name": name, "type": kind, "null_count": int(mask.sum()), "validity": validity, **arrays}


def column_of(name: str, values: Any) -> Parts:
    """The parts of one column."""
    if isinstance(values, Column):
        return {**values._parts, "name": name}
    if not isinstance(values, np.ndarray):
        if isinstance(values, str) or not hasattr(values, "__len__"):
            raise TypeError(f"Column {name!r} is a {type(values).__name__}; a column is an array or a list.")
        array = np.empty(len(values), object)
        array[:] = list(values)
        values = array
    if values.ndim != 1:
        raise ValueError(f"Column {name!r} has {values.ndim} dimensions; a column has one.")
    mask = np.ma.getmaskarray(values).copy()
    return _typed_column(name, np.ma.getdata(values), mask)


def _typed_column(name: str, values: Array, mask: Mask) -> Parts:
    kind = values.dtype.kind
    if kind == "f":
        if values.dtype.itemsize > 8:
            raise _wrong_type(name, values.dtype)
        numbers_ = np.ascontiguousarray(values, np.float64)
        if mask.any():
            numbers_ = np.where(mask, np.nan, numbers_)
        return _parts(name, _NUMBER, np.isnan(numbers_), numbers=numbers_)
    if kind in "iu":
        return _integers(name, values, mask)
    if kind == "b":
        return _parts(name, _BOOLEAN, mask, booleans=np.where(mask, False, values).view(np.uint8))
    if kind == "M":
        return _dates(name, values, mask)
    if kind in "UT":
        return text_column(name, [None if is_missing else text for is_missing, text in zip(mask, values.tolist())])
    if kind == "O":
        values = values.copy()
        values[mask] = None
        return _objects(name, values)
    raise _wrong_type(name, values.dtype)


def _wrong_type(name: str, dtype: np.dtype[Any]) -> TypeError:
    hint = " Write a duration as a number of days." if dtype.kind == "m" else ""
    return TypeError(f"Column {name!r} has the dtype {dtype}, which a workbook cannot store.{hint}")


def _integers(name: str, values: Array, mask: Mask) -> Parts:
    known = values[~mask]
    if len(known) and (int(known.max()) > _MAX_INTEGER or int(known.min()) < -_MAX_INTEGER):
        raise _too_large(name, known[np.abs(known.astype(object)) > _MAX_INTEGER][0])
    return _parts(name, _NUMBER, mask, numbers=np.where(mask, np.nan, values.astype(np.float64)))


def _too_large(name: str, value: object) -> Exception:
    return refused(f"Column {name!r} has the integer {value}. A workbook stores integers up to 2**53 exactly; "
                   "write it as text.")


def _dates(name: str, values: Array, mask: Mask) -> Parts:
    mask = mask | np.isnat(values)
    if np.datetime_data(values.dtype)[0] == "generic":
        raise _wrong_type(name, values.dtype)
    years = values[~mask].astype("datetime64[Y]").astype(np.int64) + 1970
    if len(years) and (years.max() > 9999 or years.min() < 1):
        raise refused(f"Column {name!r} has a date outside the years 1 to 9999.")
    values = values.copy()
    values[mask] = np.datetime64("NaT")
    return _parts(name, _DATE, mask, microseconds=values.astype("datetime64[us]").view(np.int64))


def text_column(name: str, texts: Sequence[Any]) -> Parts:
    """A text column of strings and None."""
    code_of: dict[str, int] = {}
    codes = np.fromiter((-1 if text is None else code_of.setdefault(str(text), len(code_of)) for text in texts),
                        np.int32, len(texts))
    return _parts(name, _TEXT, codes < 0, codes=codes, **_strings(name, code_of))


def _strings(name: str, texts: Iterable[str]) -> dict[str, Array]:
    try:
        encoded = [text.encode() for text in texts]
    except UnicodeEncodeError as error:
        raise refused(f"Column {name!r} has a text with a lone surrogate, U+{ord(error.object[error.start]):04X}, "
                      "which is no character.") from None
    offsets = np.zeros(len(encoded) + 1, np.int64)
    np.cumsum([len(text) for text in encoded], out=offsets[1:])
    if offsets[-1] > np.iinfo(np.int32).max:
        raise refused(f"Column {name!r} has more than 2 GiB of text.")
    return {"offsets": offsets.astype(np.int32), "bytes": np.frombuffer(b"".join(encoded), np.uint8)}


def _objects(name: str, values: Array) -> Parts:
    """A column of objects: one type where all have it, else mixed."""
    count = len(values)
    kinds = np.zeros(count, np.uint8)
    numbers_ = np.full(count, np.nan)
    codes = np.full(count, -1, np.int32)
    code_of: dict[str, int] = {}
    for row, value in enumerate(values.tolist()):
        kind, stored = _classify(name, row, value)
        kinds[row] = kind
        if kind == _KIND_TEXT:
            codes[row] = code_of.setdefault(stored, len(code_of))
        elif kind:
            numbers_[row] = stored
    mask = kinds == 0
    present = set(np.unique(kinds[~mask]).tolist())
    if present <= {_KIND_NUMBER}:
        return _parts(name, _NUMBER, mask, numbers=numbers_)
    if present == {_KIND_TEXT}:
        return _parts(name, _TEXT, mask, codes=codes, **_strings(name, code_of))
    if present == {_KIND_BOOLEAN}:
        return _parts(name, _BOOLEAN, mask, booleans=np.nan_to_num(numbers_).astype(np.uint8))
    return _parts(name, _MIXED, mask, kinds=kinds, numbers=numbers_, codes=codes, **_strings(name, code_of))


def _classify(name: str, row: int, value: Any) -> tuple[int, Any]:
    """(kind, number or text) of an object; kind 0 for a missing one."""
    if value is None or value is np.ma.masked or type(value).__name__ in ("NaTType", "NAType"):
        return 0, None
    if isinstance(value, str):
        return _KIND_TEXT, str(value)
    if isinstance(value, (bool, np.bool_)):
        return _KIND_BOOLEAN, float(value)
    if isinstance(value, np.datetime64):
        if np.isnat(value):
            return 0, None
        return _KIND_DATE, _core.serial_from_microseconds(int(value.astype("datetime64[us]").astype(np.int64)))
    if isinstance(value, datetime.datetime):
        if value.tzinfo is not None:
            raise refused(f"Column {name!r} has a date with a time zone in row {row}, which a workbook cannot "
                          "store. Use replace(tzinfo=None) first.")
        return _KIND_DATE, _serial(value)
    if isinstance(value, datetime.date):
        return _KIND_DATE, _serial(datetime.datetime(value.year, value.month, value.day))
    if isinstance(value, numbers.Integral):
        if abs(int(value)) > _MAX_INTEGER:
            raise _too_large(name, value)
        return _KIND_NUMBER, float(value)
    if isinstance(value, (float, np.floating)) and not isinstance(value, np.longdouble):
        return (0, None) if math.isnan(value) else (_KIND_NUMBER, float(value))
    raise TypeError(f"Column {name!r} has a {type(value).__name__} in row {row}, which a workbook cannot store. "
                    "Convert it to a number, a text, a date or a boolean.")


def _serial(value: datetime.datetime) -> float:
    return _core.serial_from_microseconds((value - _EPOCH) // datetime.timedelta(microseconds=1))
