# SPDX-License-Identifier: Apache-2.0
"""Many workbooks as parts that pickle, for engines that read them in parallel."""
from __future__ import annotations

import glob as _glob
import os
from dataclasses import dataclass, field
from typing import Any, Iterable, Iterator, Union

from . import _zxspreadsheet as _core
from ._book import table_options
from ._errors import Error
from ._files import Location
from ._shortcuts import read
from ._table import Table

#: A glob pattern, a folder, or paths.
Paths = Union[str, "os.PathLike[str]", Iterable[Union[str, "os.PathLike[str]"]]]


@dataclass(frozen=True)
class Failure:
    """A workbook or a sheet that could not be read: a row of a table of failures."""
    path: str
    sheet: str
    kind: str
    cause: str


@dataclass(frozen=True)
class Part:
    """One sheet of one workbook, to be read later and elsewhere. Pickles in some hundred bytes."""
    path: str
    sheet: str
    index: int
    options: dict[str, Any] = field(default_factory=dict)

    def read(self) -> Table:
        """The sheet as a `Table`; raises what `zx.read` raises.

        >>> zx.Part(example("weather.xlsx"), "Summary", 1, {"header": False}).read().shape
        (4, 2)
        """
        return read(self.path, sheet=self.index, **self.options)

    def try_read(self) -> tuple[Table | None, Failure | None]:
        """(table, None), or (None, `Failure`) where the sheet cannot be read.

        >>> table, failure = zx.Part("none.xlsx", "Data", 0).try_read()
        >>> failure.kind, failure.cause
        ('file not found', 'There is no such file.')
        """
        try:
            return self.read(), None
        except (Error, OSError) as error:
            return None, _failure(self.path, self.sheet, error)


@dataclass(frozen=True)
class Scan:
    """What `scan` found: the parts, and the workbooks whose sheets could not be listed."""
    parts: list[Part]
    failures: list[Failure]

    def __len__(self) -> int:
        return len(self.parts)

    def __iter__(self) -> Iterator[Part]:
        return iter(self.parts)


def _failure(path: str, sheet: str, error: Exception) -> Failure:
    return Failure(path, sheet, getattr(error, "kind", "unknown"), getattr(error, "cause", "") or str(error))


def scan(paths: Paths, sheet: str | int | None = None, **options: Any) -> Scan:
    """Lists the worksheets of many workbooks without reading a cell. `paths` is a glob pattern, a folder
    or an iterable of paths; `sheet` picks one sheet of each by name or index; the options are those of
    `zx.read`, for each part.

    >>> found = zx.scan(example("*.xlsx"), range="A1:E6")
    >>> [part.sheet for part in found]
    ['Readings', 'Summary']
    >>> found.parts[0].read().shape
    (5, 5)
    >>> found.failures
    []
    """
    checked = {name: value for name, value in options.items() if name not in ("range", "application")}
    table_options(**checked)  # an option that is wrong is so now and not on a worker
    parts: list[Part] = []
    failures: list[Failure] = []
    for path in _paths_of(paths):
        try:
            parts += [Part(path, name, index, options) for index, name in _worksheets(path)
                      if sheet is None or sheet == index or _same_name(sheet, name)]
        except (Error, OSError) as error:
            failures.append(_failure(path, "", error))
    return Scan(parts, failures)


def _same_name(sheet: object, name: str) -> bool:
    return isinstance(sheet, str) and sheet.casefold() == name.casefold()


def _paths_of(paths: Paths) -> list[str]:
    if not isinstance(paths, (str, os.PathLike)):
        return [os.fspath(path) for path in paths]
    pattern = os.fspath(paths)
    if os.path.isdir(pattern):
        pattern = os.path.join(_glob.escape(pattern), "**", "*.xl[st]*")
    elif not _glob.has_magic(pattern):
        return [pattern]
    return sorted(path for path in _glob.glob(pattern, recursive=True) if os.path.isfile(path))


def _worksheets(path: str) -> list[tuple[int, str]]:
    location = Location(path)
    names = location.load(_core.Book.load_names)
    return [(index, name) for index, name in enumerate(names.sheet_names()) if not names.is_chart(index)]
