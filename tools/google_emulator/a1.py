# SPDX-License-Identifier: Apache-2.0
"""A1 notation as the service reads and prints it. Rows and columns are zero-based, ends are exclusive."""

import re
from typing import NamedTuple, Optional

_CORNER = r"\$?([A-Za-z]{1,3})?\$?([1-9][0-9]{0,8})?"
_CELLS = re.compile(f"{_CORNER}(?::{_CORNER})?")
_BARE_TITLE = re.compile(r"[A-Za-z_][A-Za-z0-9_]*")
_LOOKS_LIKE_A_CELL = re.compile(r"[A-Za-z]{1,3}[0-9]+|[Rr][0-9]*([Cc][0-9]*)?|[Cc][0-9]*")


class Rect(NamedTuple):
    """A block of cells."""

    top: int
    left: int
    bottom: int
    right: int

    @property
    def rows(self) -> int:
        return self.bottom - self.top

    @property
    def columns(self) -> int:
        return self.right - self.left

    def contains(self, other: "Rect") -> bool:
        return (self.top <= other.top and self.left <= other.left
                and self.bottom >= other.bottom and self.right >= other.right)

    def overlaps(self, other: "Rect") -> bool:
        return (self.top < other.bottom and other.top < self.bottom
                and self.left < other.right and other.left < self.right)


class OpenRect(NamedTuple):
    """A block as it was written: None where a side was left out."""

    top: Optional[int]
    left: Optional[int]
    bottom: Optional[int]
    right: Optional[int]

    def within(self, row_count: int, column_count: int) -> Rect:
        """The block with its open sides closed by a grid of that size; it may still stick out."""
        return Rect(self.top or 0, self.left or 0,
                    row_count if self.bottom is None else self.bottom,
                    column_count if self.right is None else self.right)


def column_index(letters: str) -> int:
    index = 0
    for letter in letters.upper():
        index = index * 26 + ord(letter) - ord("A") + 1
    return index - 1


def column_letters(index: int) -> str:
    letters = ""
    index += 1
    while index:
        index, rest = divmod(index - 1, 26)
        letters = chr(ord("A") + rest) + letters
    return letters


def parse_cells(text: str) -> Optional[OpenRect]:
    """Reads A1, A1:B2, A:B, 1:2, A1:B or A1:2, in any order of corners; None where the text is something else."""
    match = _CELLS.fullmatch(text)
    if not match or not text:
        return None
    one = _corner(match.group(1), match.group(2))
    if ":" not in text:
        return None if None in one else OpenRect(one[0], one[1], one[0] + 1, one[1] + 1)
    two = _corner(match.group(3), match.group(4))
    if one == (None, None) or two == (None, None):
        return None
    if (one[0] is None and two[1] is None) or (one[1] is None and two[0] is None):
        return None
    top, bottom = _ordered(one[0], two[0])
    left, right = _ordered(one[1], two[1])
    return OpenRect(top, left, bottom, right)


def _corner(letters: Optional[str], digits: Optional[str]) -> tuple:
    return int(digits) - 1 if digits else None, column_index(letters) if letters else None


def _ordered(one: Optional[int], two: Optional[int]) -> tuple:
    """Start and exclusive end from two corners; a side that one corner leaves out is open."""
    if one is None or two is None:
        return (one if two is None else two), None
    return min(one, two), max(one, two) + 1


def split_title(text: str) -> tuple:
    """(title, rest): title is None where the text names no sheet, rest is None where it names nothing else."""
    if text.startswith("'"):
        match = re.fullmatch(r"'((?:[^']|'')+)'(?:!(.+))?", text, re.DOTALL)
        return (match.group(1).replace("''", "'"), match.group(2)) if match else (None, text)
    title, mark, rest = text.partition("!")
    return (title, rest) if mark and title and rest else (None, text)


def quoted_title(title: str) -> str:
    """The title as the service prints it before an exclamation mark."""
    if _BARE_TITLE.fullmatch(title) and not _LOOKS_LIKE_A_CELL.fullmatch(title):
        return title
    return "'" + title.replace("'", "''") + "'"


def cells_text(rect: Rect) -> str:
    first = f"{column_letters(rect.left)}{rect.top + 1}"
    last = f"{column_letters(rect.right - 1)}{rect.bottom}"
    return first if first == last else f"{first}:{last}"


def range_text(title: str, rect: Rect) -> str:
    return f"{quoted_title(title)}!{cells_text(rect)}"
