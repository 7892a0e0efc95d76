# SPDX-License-Identifier: Apache-2.0
"""Where a workbook is: a path, bytes, a file object, a spreadsheet online or in an application."""
import os
import tempfile

from . import _zxspreadsheet as _core
from ._errors import Error

_ONLINE = "gsheet:"


class Location:
    """The path that the library opens. Bytes and file objects become a temporary file, which `close`
    removes."""

    def __init__(self, source, application=False):
        self._temporary = None
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
            path = os.fspath(source)
            self.path = os.fsdecode(path) if isinstance(path, bytes) else path
            self.name = self.path
            if "\0" in self.path:
                raise ValueError("A path cannot have a null character.")
            if self.path.startswith(_ONLINE):
                self.path = self.path[len(_ONLINE):]
                self.place = _core.Place.Google

    def _keep(self, content):
        # The content decides about the format, so the name does not matter.
        handle, self.path = tempfile.mkstemp(suffix=".xlsx", prefix="zxspreadsheet-")
        self._temporary = self.path
        with os.fdopen(handle, "wb") as file:
            file.write(content)

    @property
    def is_file(self):
        return self.place == _core.Place.File

    @property
    def is_temporary(self):
        return self._temporary is not None

    def is_there(self):
        """Whether a book can be loaded from here rather than made."""
        return not self.is_file or os.path.lexists(self.path)

    def close(self):
        if self._temporary is not None:
            os.unlink(self._temporary)
            self._temporary = None

    def load(self, load, *arguments):
        """Calls a function of the library that takes the path and the place; its error names the source."""
        try:
            return load(self.path, self.place, *arguments)
        except Error as error:
            error.file = self.name if self.is_temporary else error.file
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()
