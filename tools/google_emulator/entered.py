# SPDX-License-Identifier: Apache-2.0
"""What becomes of a value that somebody types into a cell: numbers, booleans, dates, times, texts, formulas."""

import datetime
import re
from typing import NamedTuple, Optional

from .schema import plain_number

_EPOCH = datetime.datetime(1899, 12, 30)
_NUMBER = re.compile(r"([-+]?)(\$?)((?:\d{1,3}(?:,\d{3})+|\d+)(\.\d*)?|\.\d+)(?:[eE]([-+]?\d{1,3}))?(%?)")
_DATE = r"(?P<year>\d{4})[-/](?P<month>\d{1,2})[-/](?P<day>\d{1,2})"
_US_DATE = r"(?P<us_month>\d{1,2})/(?P<us_day>\d{1,2})/(?P<us_year>\d{4})"
_TIME = r"(?P<hour>\d{1,2}):(?P<minute>\d{2})(?::(?P<second>\d{2})(?P<fraction>\.\d{1,6})?)?"
_MOMENT = re.compile(rf"(?:{_DATE}|{_US_DATE})?(?:(?:(?<=\d)[ T])?{_TIME})?")
_ONLY_MINUTES = re.compile(r"\d{1,2}:\d{2}")


class Entered(NamedTuple):
    """An ExtendedValue and the number format that comes with the way it was written."""

    value: Optional[dict]
    number_format: Optional[dict] = None


def serial_of(moment):
    """The day number of the service: days since 30 December 1899."""
    span = moment - _EPOCH
    return plain_number(span.total_seconds() / 86400)


def moment_of(serial):
    return _EPOCH + datetime.timedelta(days=serial)


def entered_raw(value):
    """A value that is stored as it is; an empty text clears the cell."""
    if isinstance(value, bool):
        return Entered({"boolValue": value})
    if isinstance(value, (int, float)):
        return Entered({"numberValue": plain_number(value)})
    return Entered({"stringValue": value} if value else None)


def entered_by_user(value, is_text_cell=False):
    """A value that is read as if it had been typed in; cells with the text format keep texts as they are."""
    if not isinstance(value, str) or not value or is_text_cell:
        return entered_raw(value)
    if value.startswith("'"):
        return entered_raw(value[1:])
    if value.startswith("=") and len(value) > 1:
        return Entered({"formulaValue": value})
    text = value.strip()
    if text.upper() in ("TRUE", "FALSE"):
        return Entered({"boolValue": text.upper() == "TRUE"})
    return _number(text) or _moment(text) or Entered({"stringValue": value})


def _number(text):
    match = _NUMBER.fullmatch(text)
    if not match:
        return None
    sign, currency, digits, decimals, exponent, percent = match.groups()
    number = float(digits.replace(",", "") + (f"e{exponent}" if exponent else ""))
    if number == float("inf"):
        return None
    number = -number if sign == "-" else number
    value = {"numberValue": plain_number(round(number / 100, 15) if percent else number)}
    return Entered(value, _number_format(digits, decimals, currency, exponent, percent))


def _number_format(digits, decimals, currency, exponent, percent):
    places = ".00" if decimals else ""
    if percent:
        return {"type": "PERCENT", "pattern": f"0{places}%"}
    if exponent:
        return {"type": "SCIENTIFIC", "pattern": "0.00E+00"}
    if currency:
        return {"type": "CURRENCY", "pattern": f'"$"#,##0{places}'}
    return {"type": "NUMBER", "pattern": f"#,##0{places}"} if "," in digits else None


def _moment(text):
    match = _MOMENT.fullmatch(text)
    if not match or not text:
        return None
    part = match.groupdict()
    has_date, has_time = part["day"] or part["us_day"], part["hour"]
    try:
        moment = _EPOCH
        if has_date:
            moment = datetime.datetime(int(part["year"] or part["us_year"]), int(part["month"] or part["us_month"]),
                                       int(part["day"] or part["us_day"]))
        if has_time:
            moment = moment.replace(hour=int(part["hour"]), minute=int(part["minute"]),
                                    second=int(part["second"] or 0),
                                    microsecond=round(float(part["fraction"] or 0) * 1_000_000))
    except ValueError:
        return None
    date = "yyyy-mm-dd" if part["day"] else "M/d/yyyy"
    time = "h:mm" if has_time and _ONLY_MINUTES.search(text) and not part["second"] else "h:mm:ss"
    if has_date and has_time:
        kind = {"type": "DATE_TIME", "pattern": f"{date} {time}"}
    else:
        kind = {"type": "DATE", "pattern": date} if has_date else {"type": "TIME", "pattern": time}
    return Entered({"numberValue": serial_of(moment)}, kind)
