# SPDX-License-Identifier: Apache-2.0
"""Workbooks as NumPy arrays and data frames, and back.

>>> import zxspreadsheet as zx
>>> table = zx.read(example("weather.xlsx"), range="A1:E6")
>>> table.names
['Station', 'Day', 'Temperature', 'Rain', 'Snow']
>>> table["Rain"]
array([0. , 4.2, 0.3, 2.1, nan])

`read`, `read_array` and `write` do one thing to one sheet; `open` gives a book for everything
else; `scan` hands out many books in parts. Rows, columns and sheets count from 0.
"""
from ._book import Book, Name, Sheet, open
from ._errors import (ApplicationMissing, CoercionWarning, Damaged, Encrypted, Error, FileMissing,
                      LimitExceeded, Missing, NotAWorkbook, NotReadable, NotWritten, OutOfMemory,
                      Refused, ServiceError, Unsupported)
from ._scan import Failure, Part, Scan, scan
from ._shortcuts import read, read_array, write
from ._table import Column, Table
from ._zxspreadsheet import version as __version__

__all__ = ["ApplicationMissing", "Book", "CoercionWarning", "Column", "Damaged", "Encrypted", "Error",
           "Failure", "FileMissing", "LimitExceeded", "Missing", "Name", "NotAWorkbook", "NotReadable",
           "NotWritten", "OutOfMemory", "Part", "Refused", "Scan", "ServiceError", "Sheet", "Table",
           "Unsupported", "open", "read", "read_array", "scan", "write", "__version__"]
