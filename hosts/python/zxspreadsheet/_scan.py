# SPDX-License-Identifier: Apache-2.0
"""Many workbooks as parts that pickle, for engines that read them in parallel."""
import glob as _glob
import os
from dataclasses import dataclass, field

from . import _zxspreadsheet as _core
from ._book import table_options
from ._errors import Error
from ._files import Location
from ._shortcuts import read


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
    options: dict = field(default_factory=dict)

    def read(self):
        """The sheet as a `Table`; raises what `zx.read` raises."""
        return read(self.path, sheet=self.index, **self.options)

    def try_read(self):
        """(table, None), or (None, `Failure`) where the sheet cannot be read."""
        try:
            return self.read(), None
        except (Error, OSError) as error:
            return None, _failure(self.path, self.sheet, error)


@dataclass(frozen=True)
class Scan:
    """What `scan` found: the parts, and the workbooks whose sheets could not be listed."""
    parts: list
    failures: list

    def __len__(self):
        return len(self.parts)

    def __iter__(self):
        return iter(self.parts)


def _failure(path, sheet, error):
    return Failure(path, sheet, getattr(error, "kind", "unknown"), getattr(error, "cause", "") or str(error))


def scan(paths, sheet=None, **options):
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
    parts, failures = [], []
    for path in _paths_of(paths):
        try:
            parts += [Part(path, name, index, options) for index, name in _worksheets(path)
                      if sheet is None or sheet == index or _same_name(sheet, name)]
        except (Error, OSError) as error:
            failures.append(_failure(path, "", error))
    return Scan(parts, failures)


def _same_name(sheet, name):
    return isinstance(sheet, str) and sheet.casefold() == name.casefold()


def _paths_of(paths):
    if not isinstance(paths, (str, os.PathLike)):
        return [os.fspath(path) for path in paths]
    paths = os.fspath(paths)
    if os.path.isdir(paths):
        paths = os.path.join(_glob.escape(paths), "**", "*.xl[st]*")
    elif not _glob.has_magic(paths):
        return [paths]
    return sorted(path for path in _glob.glob(paths, recursive=True) if os.path.isfile(path))


def _worksheets(path):
    location = Location(path)
    names = location.load(_core.Book.load_names)
    return [(index, name) for index, name in enumerate(names.sheet_names()) if not names.is_chart(index)]
