# SPDX-License-Identifier: Apache-2.0
"""What the emulated services hold: files, spreadsheets, sheets, cells. Knows nothing of HTTP and JSON texts.

Cells are never changed in place but replaced, so that a copy of a book's containers is a snapshot of the book."""

import datetime
import random
from typing import NamedTuple, Optional

from .a1 import Rect

MAX_WORKBOOK_CELLS = 10_000_000
MAX_COLUMNS = 18_278
MAX_CELL_CHARACTERS = 50_000
DEFAULT_ROWS, DEFAULT_COLUMNS = 1000, 26
DEFAULT_COLUMN_PIXELS = 100
SPREADSHEET_MIME_TYPE = "application/vnd.google-apps.spreadsheet"
_ID_LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"
_FIRST_MOMENT = datetime.datetime(2024, 3, 1, 12, 0, 0)


class Cell(NamedTuple):
    """What was entered: an ExtendedValue, a CellFormat (both as JSON objects) and a note."""

    value: Optional[dict] = None
    format: Optional[dict] = None
    note: Optional[str] = None


BLANK = Cell()


class Sheet:
    """One sheet; only sheets of kind GRID have cells."""

    def __init__(self, sheet_id, title, kind="GRID", row_count=DEFAULT_ROWS, column_count=DEFAULT_COLUMNS):
        self.sheet_id = sheet_id
        self.title = title
        self.kind = kind
        self.hidden = False
        self.row_count = row_count
        self.column_count = column_count
        self.grid_extras = {}  # frozenRowCount, hideGridlines, ...
        self.properties_extras = {}  # tabColorStyle, rightToLeft, ...
        self.rows = {}  # row -> {column -> Cell}
        self.merges = []  # of Rect
        self.protected_ranges = []  # of ProtectedRange objects
        self.column_pixels = {}
        self.generated = None  # a GeneratedNumbers in place of cells

    @property
    def has_grid(self):
        return self.kind != "OBJECT"

    @property
    def cell_count(self):
        return self.row_count * self.column_count if self.has_grid else 0

    @property
    def whole(self):
        return Rect(0, 0, self.row_count, self.column_count)

    def cell(self, row, column):
        if self.generated:
            return self.generated.cell(row, column)
        return self.rows.get(row, {}).get(column, BLANK)

    def put(self, row, column, cell):
        """Replaces a cell; a blank one leaves no trace."""
        if cell != BLANK:
            self.rows.setdefault(row, {})[column] = cell
        elif row in self.rows:
            self.rows[row].pop(column, None)
            if not self.rows[row]:
                del self.rows[row]

    def cells_in(self, rect):
        """(row, column, cell) of the cells that hold something, row by row."""
        for row in sorted(row for row in self.rows if rect.top <= row < rect.bottom):
            columns = self.rows[row]
            for column in sorted(column for column in columns if rect.left <= column < rect.right):
                yield row, column, columns[column]

    def copy(self):
        twin = Sheet(self.sheet_id, self.title, self.kind, self.row_count, self.column_count)
        twin.hidden = self.hidden
        twin.grid_extras = dict(self.grid_extras)
        twin.properties_extras = dict(self.properties_extras)
        twin.rows = {row: dict(columns) for row, columns in self.rows.items()}
        twin.merges = list(self.merges)
        twin.protected_ranges = [dict(entry) for entry in self.protected_ranges]
        twin.column_pixels = dict(self.column_pixels)
        twin.generated = self.generated
        return twin


class Book:
    """One spreadsheet."""

    def __init__(self, title):
        self.title = title
        self.locale, self.time_zone = "en_US", "Etc/GMT"
        self.sheets = []
        self.named_ranges = []  # of NamedRange objects

    def sheet_with_id(self, sheet_id):
        return next((sheet for sheet in self.sheets if sheet.sheet_id == sheet_id), None)

    def sheet_with_title(self, title):
        """Titles are told apart without regard to case."""
        folded = title.casefold()
        return next((sheet for sheet in self.sheets if sheet.title.casefold() == folded), None)

    def named_range(self, name):
        folded = name.casefold()
        return next((entry for entry in self.named_ranges if entry["name"].casefold() == folded), None)

    @property
    def cell_count(self):
        return sum(sheet.cell_count for sheet in self.sheets)

    def snapshot(self):
        return (self.title, self.locale, self.time_zone, [sheet.copy() for sheet in self.sheets],
                [dict(entry) for entry in self.named_ranges])

    def restore(self, snapshot):
        self.title, self.locale, self.time_zone, self.sheets, self.named_ranges = snapshot


class DriveFile:
    """An entry of the drive; a spreadsheet has a book, everything else has content."""

    def __init__(self, file_id, name, mime_type, moment):
        self.file_id = file_id
        self.name = name
        self.mime_type = mime_type
        self.created = self.modified = moment
        self.book = None
        self.content = b""
        self.parents = []  # identifiers of folders
        self.quota_bytes = None  # what quotaBytesUsed shall say, where it is not to be counted
        self.access = "owner"  # of everyone with a token: owner, reader or none
        self.public = False  # readable with an API key

    @property
    def quota_bytes_used(self):
        if self.quota_bytes is not None:
            return self.quota_bytes
        return 1024 if self.book else len(self.content)


class Drive:
    """All files, and the source of identifiers and times; both repeat from run to run."""

    def __init__(self):
        self.files = {}
        self._random = random.Random(4)
        self._ticks = 0

    def now(self):
        self._ticks += 1
        return _FIRST_MOMENT + datetime.timedelta(seconds=self._ticks)

    def new_file_id(self):
        return "1" + "".join(self._random.choice(_ID_LETTERS) for _ in range(43))

    def new_number(self, taken=()):
        """An identifier of a sheet or range."""
        while True:
            number = self._random.randrange(100_000, 2**31 - 1)
            if number not in taken:
                return number

    def add(self, name, mime_type, file_id=None):
        entry = DriveFile(file_id or self.new_file_id(), name, mime_type, self.now())
        self.files[entry.file_id] = entry
        return entry

    def add_book(self, title, file_id=None):
        """A spreadsheet without sheets."""
        entry = self.add(title, SPREADSHEET_MIME_TYPE, file_id)
        entry.book = Book(title)
        return entry

    def new_sheet_id(self, book):
        return self.new_number({sheet.sheet_id for sheet in book.sheets})
