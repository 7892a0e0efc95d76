# SPDX-License-Identifier: Apache-2.0
"""Walks request bodies and query parameters against the schema table and words refusals as the service does."""

import json
import math
import re
from typing import NamedTuple

from .errors import bad_request, not_served
from .schema_table import DRIVE_MESSAGES, ENUMS, ONE_OF, SHEETS_MESSAGES

UNSERVED = "-"
_SHEETS_PACKAGE = "type.googleapis.com/google.apps.sheets.v4."
_SCALARS = {"string": "TYPE_STRING", "time": "TYPE_STRING", "int32": "TYPE_INT32", "int64": "TYPE_INT64",
            "double": "TYPE_DOUBLE", "float": "TYPE_FLOAT", "bool": "TYPE_BOOL"}
_INTEGER_LIMITS = {"int32": 2**31, "int64": 2**63}
MAX_DEPTH = 100


class Field(NamedTuple):
    type: str
    repeated: bool
    output_only: bool

    @property
    def is_message(self):
        return self.type in MESSAGES


def _parse(table):
    messages = {}
    for name, text in table.items():
        fields = {}
        for entry in text.split():
            field, _, kind = entry.partition(":")
            output_only, kind = kind.endswith("*"), kind.rstrip("*")
            fields[field] = Field(kind.removesuffix("[]"), kind.endswith("[]"), output_only)
        messages[name] = fields
    return messages


MESSAGES = _parse(SHEETS_MESSAGES | DRIVE_MESSAGES)
ENUM_VALUES = {name: text.split() for name, text in ENUMS.items()}


def snake_case(name):
    return re.sub(r"(?<!^)([A-Z])", lambda match: "_" + match.group(1).lower(), name)


def type_url(kind):
    if kind == "list":
        return "type.googleapis.com/google.protobuf.ListValue"
    if kind == "mask":
        return "type.googleapis.com/google.protobuf.FieldMask"
    return _SCALARS.get(kind) or _SHEETS_PACKAGE + kind.removeprefix("enum!")


class _Walk:
    """Collects what is wrong with a body; the service names all of it in one reply."""

    def __init__(self):
        self.violations = []
        self.unserved = []

    def wrong_value(self, path, kind, value):
        text = f"Invalid value at '{path}' ({type_url(kind)}), {json.dumps(value, ensure_ascii=False)}"
        self.violations.append((path, text))

    def unknown_name(self, path, name):
        place = f" at '{path}'" if path else ""
        self.violations.append((path, f'Invalid JSON payload received. Unknown name "{name}"{place}: '
                                      "Cannot find field."))

    def message(self, name, value, path, depth=0):
        if not isinstance(value, dict) or depth > MAX_DEPTH:
            return self.wrong_value(path, name, value)
        fields = MESSAGES[name]
        given = None
        for key, entry in value.items():
            if key not in fields:
                self.unknown_name(path, key)
            elif fields[key].type == UNSERVED:
                self.unserved.append(f"{name}.{key}")
            elif entry is not None:
                if name in ONE_OF and given:
                    text = (f"Invalid value at '{path}' (oneof), oneof field '{ONE_OF[name]}' is already set. "
                            f"Cannot set '{key}'")
                    self.violations.append((path, text))
                given = key
                self.field(fields[key], entry, f"{path}.{snake_case(key)}" if path else snake_case(key), depth)
        return None

    def field(self, field, value, path, depth):
        if not field.repeated:
            if isinstance(value, list) and field.type != "list":
                name = path.rpartition(".")[2]
                text = (f'Invalid JSON payload received. Unknown name "{name}" at \'{path.rpartition(".")[0]}\': '
                        "Proto field is not repeating, cannot start list.")
                return self.violations.append((path, text))
            return self.value(field.type, value, path, depth)
        if not isinstance(value, list):
            return self.wrong_value(path, field.type, value)
        for index, entry in enumerate(value):
            self.value(field.type, entry, f"{path}[{index}]", depth)
        return None

    def cell_value(self, value, path):
        """Lists and objects are JSON values, but no values of cells."""
        if isinstance(value, (dict, list)):
            kind = "struct_value" if isinstance(value, dict) else "list_value"
            self.violations.append((path, f"Invalid {path}: {kind} {json.dumps(value, ensure_ascii=False)}"))
        elif isinstance(value, (int, float)) and not isinstance(value, bool) and _number(value) is None:
            self.wrong_value(path, "double", str(value))

    def value(self, kind, value, path, depth):
        if kind in MESSAGES:
            return self.message(kind, value, path, depth + 1)
        if not _fits(kind, value):
            self.wrong_value(path, kind, value)
        elif kind == "list":
            for index, entry in enumerate(value):
                self.cell_value(entry, f"{path}[{index}]")
        return None


def _fits(kind, value):
    if kind == "list":
        return isinstance(value, list)
    if kind == "bool":
        return isinstance(value, bool)
    if kind in ("string", "time", "mask"):
        return isinstance(value, str)
    if kind.startswith("enum!"):
        return isinstance(value, str) and value in ENUM_VALUES[kind.removeprefix("enum!")]
    number = _number(value)
    if number is None:
        return False
    limit = _INTEGER_LIMITS.get(kind)
    return limit is None or (float(number).is_integer() and -limit <= number < limit)


def _number(value):
    """A finite number, which may also come as a text; None for everything else, booleans included."""
    if isinstance(value, bool) or not isinstance(value, (int, float, str)):
        return None
    try:
        if not math.isfinite(float(value)):
            return None
    except (ValueError, OverflowError):
        return None
    if isinstance(value, str):
        return int(value) if re.fullmatch(r"-?\d{1,19}", value) else float(value)
    return value


def check_body(name, value, path=""):
    """Raises the service's 400 where the body does not fit the message; path is what the body is bound to."""
    walk = _Walk()
    walk.message(name, value, path)
    if walk.violations:
        raise bad_request("\n".join(text for _, text in walk.violations), walk.violations)
    if walk.unserved:
        raise not_served(", ".join(walk.unserved))


def normalised(name, value):
    """The body without nulls and output-only fields, with numbers where texts stood for them."""
    fields = MESSAGES[name]
    return {key: _normalised_field(fields[key], entry) for key, entry in value.items()
            if entry is not None and not fields[key].output_only}


def _normalised_field(field, value):
    if field.repeated and field.type != "list":
        return [_normalised_value(field.type, entry) for entry in value]
    return value if field.type == "list" else _normalised_value(field.type, value)


def _normalised_value(kind, value):
    if kind in MESSAGES:
        return normalised(kind, value)
    if kind == "int32":
        return int(_number(value))
    if kind in ("double", "float"):
        return plain_number(_number(value))
    return value


def plain_number(number):
    """A double that JSON shows without a fraction where it has none."""
    number = float(number)
    return int(number) if number.is_integer() and abs(number) < 1e15 else number


def parse_json(text):
    """The object in a body; an empty body is an empty object."""
    if not text.strip():
        return {}
    try:
        value = json.loads(text, parse_constant=_refuse_constant)
    except (ValueError, RecursionError):
        raise bad_request("Invalid JSON payload received. Unexpected token.\n" + text[:60],
                          [("", "Invalid JSON payload received. Unexpected token.\n" + text[:60])]) from None
    if not isinstance(value, dict):
        raise bad_request("Invalid JSON payload received. Unknown name \"\": Root element must be a message.",
                          [("", "Invalid JSON payload received. Unknown name \"\": Root element must be a message.")])
    return value


def _refuse_constant(text):
    raise ValueError(text)


def check_query(allowed, query):
    """Query values by name, typed as the method's table says; unknown names and wrong values are refused."""
    values, violations = {}, []
    for name, texts in query.items():
        if name not in allowed:
            text = (f'Invalid JSON payload received. Unknown name "{name}": Cannot bind query parameter. Field '
                    f"'{name}' could not be found in request message.")
            violations.append(("", text))
            continue
        kind = allowed[name]
        typed = [_query_value(kind.removesuffix("[]"), text) for text in texts]
        if None in typed:
            path = snake_case(name)
            text = f"Invalid value at '{path}' ({type_url(kind)}), \"{texts[typed.index(None)]}\""
            violations.append((path, text))
        values[name] = typed if kind.endswith("[]") else typed[-1]
    if violations:
        raise bad_request("\n".join(text for _, text in violations), violations)
    return values


def _query_value(kind, text):
    if kind == "bool":
        return {"true": True, "1": True, "false": False, "0": False}.get(text.lower())
    return text if _fits(kind, text) else None
