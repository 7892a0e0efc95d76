# SPDX-License-Identifier: Apache-2.0
"""Cell formats as the service gives them back: colours in steps of 1/255, styles beside colours, defaults filled in."""

import struct

from .formats import effective_number_format
from .schema import plain_number

_COLOR_FIELDS = ("backgroundColor", "foregroundColor", "tabColor", "color")
_WHITE = {"red": 1, "green": 1, "blue": 1}

DEFAULT_FORMAT = {
    "backgroundColor": _WHITE,
    "padding": {"top": 2, "right": 3, "bottom": 2, "left": 3},
    "verticalAlignment": "BOTTOM",
    "wrapStrategy": "OVERFLOW_CELL",
    "textFormat": {"foregroundColor": {}, "fontFamily": "arial,sans,sans-serif", "fontSize": 10, "bold": False,
                   "italic": False, "strikethrough": False, "underline": False,
                   "foregroundColorStyle": {"rgbColor": {}}},
    "backgroundColorStyle": {"rgbColor": _WHITE},
}
_ALIGNMENTS = {"numberValue": "RIGHT", "boolValue": "CENTER", "errorValue": "CENTER"}


def stored_color(color):
    """The colour as the service keeps it; parts that are zero are left out."""
    steps = {name: int(min(max(color.get(name, 0), 0), 1) * 255) for name in ("red", "green", "blue")}
    return {name: _shortest_float(step / 255) for name, step in steps.items() if step}


def _shortest_float(number):
    """The shortest text that gives the same single-precision number, as a double."""
    single = struct.unpack("f", struct.pack("f", number))[0]
    for digits in range(1, 10):
        short = float(f"{single:.{digits}g}")
        if struct.pack("f", short) == struct.pack("f", single):
            return plain_number(short)
    return single


def stored_styles(message):
    """A message with every colour given both directly and as a style, whichever of them was sent."""
    result = {}
    for name, value in message.items():
        if name in _COLOR_FIELDS:
            result[name] = stored_color(value)
            result.setdefault(name + "Style", {"rgbColor": result[name]})
        elif name.removesuffix("Style") in _COLOR_FIELDS:
            if "rgbColor" in value:
                result[name.removesuffix("Style")] = stored_color(value["rgbColor"])
                result[name] = {"rgbColor": stored_color(value["rgbColor"])}
            elif value:
                result[name] = value
        else:
            result[name] = stored_styles(value) if isinstance(value, dict) else value
    return result


def effective_format(cell_format, value, number_format):
    """What the cell looks like: the default, what was set, and the number format that is in force."""
    result = {}
    number_format = effective_number_format((cell_format or {}).get("numberFormat")) or number_format
    if number_format:
        result["numberFormat"] = number_format
    result.update(DEFAULT_FORMAT)
    result["horizontalAlignment"] = next((_ALIGNMENTS[kind] for kind in value or {} if kind in _ALIGNMENTS), "LEFT")
    result["hyperlinkDisplayType"] = "PLAIN_TEXT"
    for name, entry in (cell_format or {}).items():
        if name != "numberFormat":
            result[name] = result[name] | entry if isinstance(result.get(name), dict) else entry
    return result
