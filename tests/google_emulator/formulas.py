# SPDX-License-Identifier: Apache-2.0
"""A small table of formulas: arithmetic, comparisons, references and the functions at the end of this file."""

import math
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
    |(?P<operator><>|<=|>=|[-+*/^&=<>(),%]))""", re.VERBOSE)

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
        for row in range(rect.top, rect.bottom):
            for column in range(rect.left, rect.right):
                yield self._plain(sheet, row, column)

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
        self.tokens, self.position = list(_tokens(text)), 0

    def whole(self):
        value = self.comparison()
        if self.position != len(self.tokens):
            raise _parse_failure()
        return value

    def taken(self, *operators):
        if self.position < len(self.tokens):
            kind, text = self.tokens[self.position]
            if kind == "operator" and text in operators:
                self.position += 1
                return text
        return None

    def expect(self, operator):
        if not self.taken(operator):
            raise _parse_failure()

    def comparison(self):
        value = self.joined()
        while operator := self.taken("=", "<>", "<", ">", "<=", ">="):
            value = _compared(operator, _scalar(value), _scalar(self.joined()))
        return value

    def joined(self):
        value = self.sum()
        while self.taken("&"):
            value = _text(_scalar(value)) + _text(_scalar(self.sum()))
        return value

    def sum(self):
        value = self.product()
        while operator := self.taken("+", "-"):
            right = _number(self.product())
            value = _number(value) + (right if operator == "+" else -right)
        return value

    def product(self):
        value = self.power()
        while operator := self.taken("*", "/"):
            right = _number(self.power())
            if operator == "/" and right == 0:
                raise FormulaError("DIVIDE_BY_ZERO", "Function DIVIDE parameter 2 cannot be zero.")
            value = _number(value) * right if operator == "*" else _number(value) / right
        return value

    def power(self):
        value = self.signed()
        while self.taken("^"):
            try:
                value = float(_number(value) ** _number(self.signed()))
            except (ZeroDivisionError, OverflowError, TypeError):
                raise FormulaError("NUM", "Function POWER result is not a number.") from None
        return value

    def signed(self):
        if operator := self.taken("+", "-"):
            return _number(self.signed()) * (1 if operator == "+" else -1)
        value = self.primary()
        while self.taken("%"):
            value = _number(value) / 100
        return value

    def primary(self):
        if self.taken("("):
            value = self.comparison()
            self.expect(")")
            return value
        if self.position == len(self.tokens):
            raise _parse_failure()
        kind, text = self.tokens[self.position]
        self.position += 1
        if kind == "number":
            return float(text)
        if kind == "text":
            return text[1:-1].replace('""', '"')
        if kind == "reference":
            return self.reference(text)
        if kind == "name":
            return self.call(text.upper()) if self.taken("(") else self.named(text)
        raise _parse_failure()

    def call(self, name):
        arguments = []
        if not self.taken(")"):
            arguments.append(self.comparison())
            while self.taken(","):
                arguments.append(self.comparison())
            self.expect(")")
        if name not in FUNCTIONS:
            raise FormulaError("NAME", f"Unknown function: '{name}'.")
        if name in _RESULT_FORMATS:
            self.number_format = _RESULT_FORMATS[name]
        try:
            return FUNCTIONS[name](self.calculation, arguments)
        except IndexError:
            raise FormulaError("N_A", f"Wrong number of arguments to {name}.") from None
        except (OverflowError, ValueError):
            raise FormulaError("NUM", f"An argument of {name} is out of its range.") from None

    def named(self, name):
        if name.upper() in ("TRUE", "FALSE"):
            return name.upper() == "TRUE"
        entry = self.calculation.book.named_range(name)
        if not entry:
            raise FormulaError("NAME", f"Unknown range name: '{name.upper()}'.")
        block, sheet = entry["range"], self.calculation.book.sheet_with_id(entry["range"].get("sheetId", 0))
        rect = a1.OpenRect(block.get("startRowIndex"), block.get("startColumnIndex"), block.get("endRowIndex"),
                           block.get("endColumnIndex")).within(sheet.row_count, sheet.column_count)
        return list(self.calculation.values_in(sheet, rect))

    def reference(self, text):
        title, rest = a1.split_title(text)
        sheet = self.calculation.book.sheet_with_title(title) if title else self.sheet
        if not sheet or not sheet.has_grid:
            raise FormulaError("REF", f"Unresolved sheet name '{title}'.")
        rect = a1.parse_cells(rest).within(sheet.row_count, sheet.column_count)
        if not sheet.whole.contains(rect):
            raise FormulaError("REF", "Reference does not exist.")
        values = list(self.calculation.values_in(sheet, rect))
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
    if value is None:
        return {"numberValue": 0}
    if isinstance(value, bool):
        return {"boolValue": value}
    if isinstance(value, str):
        return {"stringValue": value}
    if not math.isfinite(value):
        raise FormulaError("NUM", "The result is not a number.")
    return {"numberValue": plain_number(value)}


def _scalar(value):
    """Of a whole range the first cell stands for it."""
    return value[0] if isinstance(value, list) else value


def _number(value):
    value = _scalar(value)
    if value is None:
        return 0
    if isinstance(value, str):
        entered = entered_by_user(value).value or {}
        if "numberValue" not in entered:
            raise FormulaError("VALUE", f"'{value}' is a text and cannot be coerced to a number.")
        return entered["numberValue"]
    return int(value) if isinstance(value, bool) else value


def _text(value):
    if isinstance(value, bool):
        return "TRUE" if value else "FALSE"
    return "" if value is None else value if isinstance(value, str) else formatted_number(value)


def _compared(operator, left, right):
    if isinstance(left, str) and isinstance(right, str):
        left, right = left.casefold(), right.casefold()
    elif isinstance(left, str) or isinstance(right, str):
        return operator == "<>"
    left, right = left or 0, right or 0
    return {"=": left == right, "<>": left != right, "<": left < right, ">": left > right, "<=": left <= right,
            ">=": left >= right}[operator]


def _numbers(arguments):
    """What SUM and its like take: all numbers of ranges, and numbers that were given directly."""
    for argument in arguments:
        if not isinstance(argument, list):
            yield _number(argument)
        else:
            yield from (value for value in argument if isinstance(value, (int, float)) and not isinstance(value, bool))


def _average(numbers):
    numbers = list(numbers)
    if not numbers:
        raise FormulaError("DIVIDE_BY_ZERO", "Evaluation of function AVERAGE caused a divide by zero error.")
    return sum(numbers) / len(numbers)


def _if(arguments):
    return arguments[1] if _number(arguments[0]) else (arguments[2] if len(arguments) > 2 else False)


def _date(arguments):
    year, month, day = (int(_number(arguments[index])) for index in range(3))
    value = entered_by_user(f"{year:04d}-{month}-{day}").value
    if not value or "numberValue" not in value:
        raise FormulaError("NUM", "Function DATE got no valid date.")
    return value["numberValue"]


def _not_available(_calculation, _arguments):
    raise FormulaError("N_A", "")


_RESULT_FORMATS = {"DATE": {"type": "DATE", "pattern": "M/d/yyyy"}, "TODAY": {"type": "DATE", "pattern": "M/d/yyyy"},
                   "NOW": {"type": "DATE_TIME", "pattern": "M/d/yyyy H:mm:ss"}}

FUNCTIONS = {
    "SUM": lambda _, arguments: sum(_numbers(arguments)),
    "AVERAGE": lambda _, arguments: _average(_numbers(arguments)),
    "MIN": lambda _, arguments: min(_numbers(arguments), default=0),
    "MAX": lambda _, arguments: max(_numbers(arguments), default=0),
    "COUNT": lambda _, arguments: len(list(_numbers(arguments))),
    "ROUND": lambda _, arguments: round(_number(arguments[0]), int(_number(arguments[1])) if arguments[1:] else 0),
    "CONCATENATE": lambda _, arguments: "".join(_text(_scalar(argument)) for argument in arguments),
    "IF": lambda _, arguments: _if(arguments),
    "DATE": lambda _, arguments: _date(arguments),
    "TODAY": lambda calculation, _: int(serial_of(calculation.now)),
    "NOW": lambda calculation, _: serial_of(calculation.now),
    "TRUE": lambda _calculation, _arguments: True,
    "FALSE": lambda _calculation, _arguments: False,
    "NA": _not_available,
}
