# SPDX-License-Identifier: Apache-2.0
"""The errors of the package, one class for each kind of cause."""
from __future__ import annotations

from typing import Any


class Error(Exception):
    """A failure of the library. `cause` is a sentence, `file` the workbook's path (empty where no
    file is concerned), `id` the number of the operation that failed; `http_status`, `status` and
    `reason` are what an online service replied."""

    id = 0
    kind = "unknown"
    cause = ""
    file = ""
    http_status = 0
    status = ""
    reason = ""

    def __str__(self) -> str:
        return f"{self.file}: {self.cause}" if self.file else self.cause

    def __reduce__(self) -> tuple[Any, ...]:
        return make_error, (self.id, _KINDS.index(type(self)) if type(self) in _KINDS else 0, self.cause, self.file,
                            self.http_status, self.status, self.reason)


class FileMissing(Error, FileNotFoundError):
    """There is no such file, or no such spreadsheet online."""
    kind = "file not found"


class NotReadable(Error, OSError):
    """The file is there, but cannot be opened or read."""
    kind = "file not readable"


class NotAWorkbook(Error, ValueError):
    """The file is readable, but not a workbook of a format that is known."""
    kind = "not a workbook"


class Encrypted(Error, ValueError):
    """The workbook is protected by a password."""
    kind = "encrypted"


class Damaged(Error, ValueError):
    """The workbook breaks the rules of its format."""
    kind = "damaged"


class LimitExceeded(Error, ValueError):
    """More than the library or the format accepts; the cause names the limit."""
    kind = "limit"


class OutOfMemory(Error, MemoryError):
    """Not enough memory."""
    kind = "out of memory"


class Missing(Error, LookupError):
    """A sheet, range, name or column that does not exist."""
    kind = "missing"


class Refused(Error, ValueError):
    """A value or change that a workbook cannot take."""
    kind = "refused"


class NotWritten(Error, OSError):
    """The file cannot be written."""
    kind = "file not written"


class ServiceError(Error, ConnectionError):
    """The online service refused or failed."""
    kind = "service"


class ApplicationMissing(Error, RuntimeError):
    """No spreadsheet application is available."""
    kind = "no application"


class Unsupported(Error, NotImplementedError):
    """A format or an operation that is not served."""
    kind = "unsupported"


class CoercionWarning(UserWarning):
    """Cells that could not be taken as they are; the message names column, number and first cell."""


_KINDS: tuple[type[Error], ...] = (Error, FileMissing, NotReadable, NotAWorkbook, Encrypted, Damaged, LimitExceeded,
          OutOfMemory, Missing, Refused, NotWritten, ServiceError, ApplicationMissing, Unsupported)

#: Operations whose failures carry no kind, but whose numbers say it.
_CLASS_OF_ID = {3: Missing, 6: Missing, 20: Refused, 21: Missing, 22: Missing, 23: Missing,
                24: LimitExceeded, 25: Missing, 26: Refused, 28: Refused, 29: Unsupported,
                30: Unsupported, 31: Unsupported, 38: Refused, 39: Refused, 40: Unsupported,
                41: Refused, 42: Missing, 43: Unsupported, 52: LimitExceeded, 53: Missing, 54: Missing}


def make_error(error_id: int, kind: int, cause: str, file: str = "", http_status: int = 0, status: str = "",
               reason: str = "") -> Error:
    """The error of the class for `kind`, the number of a kind of cause in the library."""
    error_class = _KINDS[kind] if kind < len(_KINDS) else Error
    if error_class is ServiceError and http_status == 404:
        error_class = FileMissing
    if error_class is Error:
        error_class = _CLASS_OF_ID.get(error_id, Error)
    error = error_class(cause)
    error.id, error.cause, error.file = error_id, cause.replace("[spreadsheet_err]: ", ""), file
    error.http_status, error.status, error.reason = http_status, status, reason
    return error


def missing(cause: str, file: str = "") -> Error:
    """The error for a sheet or column that does not exist."""
    return make_error(6, _KINDS.index(Missing), cause, file)


def unsupported(cause: str, file: str = "") -> Error:
    """The error for an operation that a back-end does not serve."""
    return make_error(40, _KINDS.index(Unsupported), cause, file)


def refused(cause: str) -> Error:
    """The error for data that a workbook cannot take."""
    return make_error(28, _KINDS.index(Refused), cause)
