# SPDX-License-Identifier: Apache-2.0
"""A few formulas, for cells that are computed: operators, references, and the functions at the end of this file."""

import math
import operator
import re

from . import a1
from .entered import Entered, entered_by_user, serial_of
from .formats import formatted_number
from .schema import plain_number

MAX_FORMULA_DEPTH = 64
MAX_CELLS_IN_A_RANGE = 1_000_000
_TOKEN = re.compile(r"""\s*(?:(?P<number>\d+\.?\d*(?:[eE][-+]?\d+)?|\.\d+)
    |(?P<text>"(?:[^"]|"")*")
    |(?P<reference>(?:'(?:[^']|'')+'!|[A-Za-z_]\w*!)?\$?[A-Za-z]{1,3}\$?\d+(?::\$?[A-Za-z]{1,3}\$?\d+)?(?![\w(]))
    |(?P<name>[A-Za-z_][\w.]*)
    |(?P<operator><>|<=|>=|[-+*/&=<>(),]))""", re.VERBOSE)
_COMPARISONS = {"=": operator.eq, "<>": operator.ne, "<": operator.lt, ">": operator.gt, "<=": operator.le,
                ">=": operator.ge}
_PRECEDENCE = {**dict.fromkeys(_COMPARISONS, 1), "&": 2, "+": 3, "-": 3, "*": 4, "/": 4}

ERROR_TEXTS = {"DIVIDE_BY_ZERO": "#DIV/0!", "N_A": "#N/A", "NAME": "#NAME?", "REF": "#REF!", "VALUE": "#VALUE!",
               "NUM": "#NUM!", "NULL_VALUE": "#NULL!", "ERROR": "#ERROR!", "LOADING": "Loading..."}


class FormulaError(Exception):
    def __init__(self, kind, message):
        super().__init__(message)
        self.value = {"errorValue": {"type": kind, "message": message}}


def _parse_failure():
    return FormulaError("ERROR", "Formula parse error.")


class Calculation:
    """Computes the cells of a book on demand; nothing is kept, so nothing is ever stale."""

    def __init__(self, book, now):
        self.book = book
        self.now = now
        self._under_way = set()

    def effective(self, sheet, row, column):
        """The ExtendedValue that a cell computes to, with the number format that its formula brings along."""
        cell = sheet.cell(row, column)
        if not cell.value or "formulaValue" not in cell.value:
            return Entered(cell.value)
        place = (sheet.sheet_id, row, column)
        if place in self._under_way or len(self._under_way) >= MAX_FORMULA_DEPTH:
            return Entered({"errorValue": {"type": "REF", "message": "Circular dependency detected. To resolve with "
                                           "iterative calculation, see File > Settings."}})
        self._under_way.add(place)
        try:
            evaluation = _Evaluation(self, sheet, cell.value["formulaValue"][1:])
            return Entered(_extended(_scalar(evaluation.whole())), evaluation.number_format)
        except FormulaError as error:
            return Entered(error.value)
        except RecursionError:
            return Entered(_parse_failure().value)
        finally:
            self._under_way.discard(place)

    def values_in(self, sheet, rect):
        if rect.rows * rect.columns > MAX_CELLS_IN_A_RANGE:
            raise FormulaError("ERROR", "The range is too large to be computed.")
        return [self._plain(sheet, row, column) for row in range(rect.top, rect.bottom)
                for column in range(rect.left, rect.right)]

    def _plain(self, sheet, row, column):
        value = self.effective(sheet, row, column).value
        if value and "errorValue" in value:
            raise FormulaError(value["errorValue"]["type"], value["errorValue"]["message"])
        return next(iter(value.values())) if value else None


class _Evaluation:
    """Recursive descent over one formula; computes as it reads."""

    def __init__(self, calculation, sheet, text):
        self.calculation, self.sheet = calculation, sheet
        self.number_format = None
        self.tokens = list(_tokens(text)) + [("end", "")]
        self.position = 0

    def whole(self):
        value = self.expression()
        if self.next()[0] != "end":
            raise _parse_failure()
        return value

    def next(self):
        self.position += 1
        return self.tokens[self.position - 1]

    def take(self, text):
        is_there = self.tokens[self.position] == ("operator", text)
        self.position += is_there
        return is_there

    def expression(self, least=1):
        value = self.operand()
        while _PRECEDENCE.get(self.tokens[self.position][1], 0) >= least:
            sign = self.next()[1]
            value = _combined(sign, _scalar(value), _scalar(self.expression(_PRECEDENCE[sign] + 1)))
        return value

    def operand(self):
        kind, text = self.next()
        if kind == "number":
            return float(text)
        if kind == "text":
            return text[1:-1].replace('""', '"')
        if kind == "reference":
            return self.reference(text)
        if kind == "name":
            return self.call(text.upper())
        if text in ("+", "-"):
            return _number(self.operand()) * (1 if text == "+" else -1)
        if text != "(":
            raise _parse_failure()
        value = self.expression()
        if not self.take(")"):
            raise _parse_failure()
        return value

    def call(self, name):
        if not self.take("("):
            raise FormulaError("NAME", f"Unknown range name: '{name}'.")
        arguments = []
        while not self.take(")"):
            if arguments and not self.take(","):
                raise _parse_failure()
            arguments.append(self.expression())
        if name not in FUNCTIONS:
            raise FormulaError("NAME", f"Unknown function: '{name}'.")
        function, self.number_format = FUNCTIONS[name]
        return function(self.calculation, arguments)

    def reference(self, text):
        title, rest = a1.split_title(text)
        sheet = self.calculation.book.sheet_with_title(title) if title else self.sheet
        if not sheet or not sheet.has_grid:
            raise FormulaError("REF", f"Unresolved sheet name '{title}'.")
        rect = a1.parse_cells(rest).within(sheet.row_count, sheet.column_count)
        if not sheet.whole.contains(rect):
            raise FormulaError("REF", "Reference does not exist.")
        values = self.calculation.values_in(sheet, rect)
        return values if ":" in rest else values[0]


def _tokens(text):
    position = 0
    text = text.rstrip()
    while position < len(text):
        match = _TOKEN.match(text, position)
        if not match:
            raise _parse_failure()
        position = match.end()
        yield match.lastgroup, match.group(match.lastgroup)


def _extended(value):
    if isinstance(value, bool):
        return {"boolValue": value}
    if isinstance(value, str):
        return {"stringValue": value}
    if not math.isfinite(value or 0):
        raise FormulaError("NUM", "The result is not a number.")
    return {"numberValue": plain_number(value or 0)}


def _scalar(value):
    """Of a whole range the first cell stands for it."""
    return value[0] if isinstance(value, list) else value


def _number(value):
    value = _scalar(value)
    if isinstance(value, str):
        entered = entered_by_user(value).value or {}
        if "numberValue" not in entered:
            raise FormulaError("VALUE", f"'{value}' is a text and cannot be coerced to a number.")
        return entered["numberValue"]
    return value or 0


def _text(value):
    if isinstance(value, bool):
        return "TRUE" if value else "FALSE"
    return "" if value is None else value if isinstance(value, str) else formatted_number(value)


def _combined(sign, left, right):
    if sign in _COMPARISONS:
        if isinstance(left, str) != isinstance(right, str):
            return sign == "<>"
        fold = str.casefold if isinstance(left, str) else lambda value: value or 0
        return _COMPARISONS[sign](fold(left), fold(right))
    if sign == "&":
        return _text(left) + _text(right)
    left, right = _number(left), _number(right)
    if sign == "/":
        if right == 0:
            raise FormulaError("DIVIDE_BY_ZERO", "Function DIVIDE parameter 2 cannot be zero.")
        return left / right
    return left * right if sign == "*" else left + (right if sign == "+" else -right)


def _sum(_calculation, arguments):
    """Numbers that were given directly, and those among the cells of ranges."""
    return sum(_number(value) for argument in arguments
               for value in (argument if isinstance(argument, list) else [argument])
               if not isinstance(argument, list) or type(value) in (int, float))


def _date(_calculation, arguments):
    parts = "-".join(str(int(_number(argument))) for argument in arguments)
    value = entered_by_user(parts).value
    if len(arguments) != 3 or "numberValue" not in value:
        raise FormulaError("NUM", "Function DATE got no valid date.")
    return value["numberValue"]


def _not_available(_calculation, _arguments):
    raise FormulaError("N_A", "")


# What computes a function, and the number format that it brings along.
FUNCTIONS = {
    "SUM": (_sum, None),
    "DATE": (_date, {"type": "DATE", "pattern": "M/d/yyyy"}),
    "NOW": (lambda calculation, _: serial_of(calculation.now), {"type": "DATE_TIME", "pattern": "M/d/yyyy H:mm:ss"}),
    "NA": (_not_available, None),
}
