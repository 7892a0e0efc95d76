# SPDX-License-Identifier: Apache-2.0
"""Where a workbook is: a path, bytes, a file object, a spreadsheet online or in an application."""
from __future__ import annotations

import functools
import os
import tempfile
from typing import IO, Any, Callable, Union

from . import _zxspreadsheet as _core
from ._errors import Error

_ONLINE = "gsheet:"
#: What a workbook is read from.
Source = Union[str, bytes, bytearray, memoryview, "os.PathLike[str]", IO[bytes]]


@functools.lru_cache(maxsize=None)
def _prepare_google() -> None:
    """Credentials are searched for as `zxsheet` does; ZX_GOOGLE_ROOT is a service in Google's place."""
    root = os.environ.get("ZX_GOOGLE_ROOT", "")
    try:
        _core.use_google(root)
    except ValueError:
        raise ValueError(f"ZX_GOOGLE_ROOT is {root}; it must be https://HOST, or http:// and this machine, "
                         "without a path.") from None


class Location:
    """The path that the library opens. Bytes and file objects become a temporary file, which `close`
    removes."""

    def __init__(self, source: Source, application: bool = False) -> None:
        self._temporary: str | None = None
        self.place = _core.Place.Application if application else _core.Place.File
        if isinstance(source, (bytes, bytearray, memoryview)):
            self._keep(source)
            self.name = "<bytes>"
        elif hasattr(source, "read"):
            content = source.read()
            if not isinstance(content, (bytes, bytearray, memoryview)):
                raise TypeError("The file object gives text; open it in binary mode.")
            self._keep(content)
            self.name = getattr(source, "name", "") or "<file object>"
        else:
            self.path = os.fsdecode(os.fspath(source))
            self.name = self.path
            if "\0" in self.path:
                raise ValueError("A path cannot have a null character.")
            if self.path.startswith(_ONLINE):
                self.path = self.path[len(_ONLINE):]
                self.place = _core.Place.Google
                _prepare_google()

    def _keep(self, content: bytes | bytearray | memoryview) -> None:
        # The content decides about the format, so the name does not matter.
        handle, self.path = tempfile.mkstemp(suffix=".xlsx", prefix="zxspreadsheet-")
        self._temporary = self.path
        with os.fdopen(handle, "wb") as file:
            file.write(content)

    @property
    def is_file(self) -> bool:
        return self.place == _core.Place.File

    @property
    def is_temporary(self) -> bool:
        return self._temporary is not None

    def is_there(self) -> bool:
        """Whether a book can be loaded from here rather than made."""
        return self.place == _core.Place.Google or os.path.lexists(self.path)

    def close(self) -> None:
        if self._temporary is not None:
            os.unlink(self._temporary)
            self._temporary = None

    def load(self, load: Callable[..., _core.Book], *arguments: Any) -> _core.Book:
        """Calls a function of the library that takes the path and the place; its error names the source."""
        try:
            return load(self.path, self.place, *arguments)
        except Error as error:
            error.file = self.name if self.is_temporary or not error.file else error.file
            raise

    def __enter__(self) -> Location:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()
