# SPDX-License-Identifier: Apache-2.0
"""Numbers, dates and booleans as a cell shows them."""

import re
from decimal import ROUND_HALF_UP, Context, Decimal

from .entered import moment_of
from .schema import plain_number

# The patterns of a format that has a type and no pattern of its own, in the locale en_US.
DEFAULT_PATTERNS = {
    "NUMBER": "#,##0.00", "PERCENT": "0.00%", "CURRENCY": '"$"#,##0.00', "DATE": "M/d/yyyy", "TIME": "h:mm:ss am/pm",
    "DATE_TIME": "M/d/yyyy H:mm:ss", "SCIENTIFIC": "0.00E+00", "TEXT": "@",
}
DATE_TYPES = ("DATE", "TIME", "DATE_TIME")
_MONTHS = ("January February March April May June July August September October November December").split()
_DAYS = "Monday Tuesday Wednesday Thursday Friday Saturday Sunday".split()
_ANY_DOUBLE = Context(prec=400)  # digits enough for the largest number
_DATE_TOKEN = re.compile(r'"[^"]*"|\\.|y+|m+|d+|h+|s+|am/pm|a/p|\.0+|.', re.IGNORECASE | re.DOTALL)
_NUMBER_PART = re.compile(r"[#0,?]*[0#](?:\.[0#]+)?(?:[eE]\+?0+)?")


def effective_number_format(number_format):
    """The format with the pattern that the service fills in."""
    if not number_format or number_format.get("type") not in DEFAULT_PATTERNS:
        return None
    pattern = number_format.get("pattern") or DEFAULT_PATTERNS[number_format["type"]]
    return {"type": number_format["type"], "pattern": pattern}


def formatted_number(number, number_format=None):
    number_format = effective_number_format(number_format)
    if number_format is None or number_format["type"] == "TEXT":
        return general_number(number)
    if number_format["type"] in DATE_TYPES:
        return _formatted_moment(number, number_format["pattern"])
    return _patterned_number(number, number_format["pattern"])


def general_number(number):
    """A number in a cell without a format: ten digits, no exponent where it can be helped."""
    number = plain_number(number)
    if isinstance(number, int):
        return str(number)
    size = abs(number)
    if 1e-10 <= size < 1e15:
        digits = 10 if size < 1e10 else 15
        text = f"{number:.{digits}g}"
        if "e" not in text:
            return text
        return f"{Decimal(text):f}"
    mantissa, _, exponent = f"{number:.5E}".partition("E")
    return f"{mantissa.rstrip('0').rstrip('.')}E{exponent[0]}{exponent[1:].zfill(2)}"


def _patterned_number(number, pattern):
    sections = pattern.split(";")
    if number < 0 and len(sections) > 1 and sections[1]:
        number, pattern = -number, sections[1]
    else:
        pattern = sections[0]
    if "%" in pattern:
        number *= 100
    match = _NUMBER_PART.search(re.sub(r'"[^"]*"', lambda text: " " * len(text.group()), pattern))
    if not match:
        return general_number(number)
    text = _digits(abs(number), match.group())
    around = pattern[:match.start()], pattern[match.end():]
    before, after = (re.sub(r'"([^"]*)"|\\(.)|_.', lambda m: m.group(1) or m.group(2) or "", part) for part in around)
    sign = "-" if number < 0 and any(digit in "123456789" for digit in text) else ""
    return sign + before + text + after


def _digits(number, part):
    mantissa, exponent_mark, exponent_digits = part.upper().partition("E")
    whole, _, fraction = mantissa.partition(".")
    if exponent_mark:
        text = f"{number:.{len(fraction)}E}"
        base, _, exponent = text.partition("E")
        return f"{base}E{exponent[0]}{exponent[1:].zfill(exponent_digits.count('0'))}"
    rounded = Decimal(repr(number)).quantize(Decimal(1).scaleb(-len(fraction)), ROUND_HALF_UP, _ANY_DOUBLE)
    text = f"{rounded:{',' if ',' in whole else ''}f}"
    optional = len(fraction) - len(fraction.rstrip("#"))
    for _ in range(optional):
        if not text.endswith("0"):
            break
        text = text[:-1]
    text = text.rstrip(".")
    integer, point, rest = text.partition(".")
    return integer.rjust(whole.count("0"), "0") + point + rest


def _formatted_moment(serial, pattern):
    try:
        moment = moment_of(serial)
    except OverflowError:
        return general_number(serial)
    if moment.microsecond >= 500_000 and ".0" not in pattern:
        moment = moment_of(round(serial * 86400) / 86400)
    tokens = _DATE_TOKEN.findall(pattern)
    twelve_hours = any(token.lower() in ("am/pm", "a/p") for token in tokens)
    shown, before = [], ""
    for index, token in enumerate(tokens):
        following = next((other[0].lower() for other in tokens[index + 1:] if other[0].lower() in "ymdhs"), "")
        shown.append(_date_part(moment, token, before, following, twelve_hours))
        if token[0].lower() in "ymdhs":
            before = token[0].lower()
    return "".join(shown)


def _date_part(moment, token, before, following, twelve_hours):
    kind, length = token[0].lower(), len(token)
    if token.lower() in ("am/pm", "a/p"):
        text = "AM" if moment.hour < 12 else "PM"
        return text if length > 3 else text[0]
    if kind == "y":
        return f"{moment.year:04d}" if length > 2 else f"{moment.year % 100:02d}"
    if kind == "m" and length < 3 and (before == "h" or following == "s"):
        return f"{moment.minute:0{length}d}"
    if kind == "m":
        name = _MONTHS[moment.month - 1]
        return name if length > 3 else name[:3] if length == 3 else f"{moment.month:0{length}d}"
    if kind == "d":
        name = _DAYS[moment.weekday()]
        return name if length > 3 else name[:3] if length == 3 else f"{moment.day:0{length}d}"
    if kind == "h":
        hour = (moment.hour + 11) % 12 + 1 if twelve_hours else moment.hour
        return f"{hour:0{min(length, 2)}d}"
    if kind == "s":
        return f"{moment.second:0{min(length, 2)}d}"
    if kind == "." and length > 1:
        return f".{moment.microsecond:06d}"[:length]
    return token.strip('"') if kind == '"' else token[-1]
