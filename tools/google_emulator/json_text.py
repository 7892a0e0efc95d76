# SPDX-License-Identifier: Apache-2.0
"""Replies as the service spells them: two blanks a level, one behind colons, plain UTF-8, a line feed at the end."""

import json

from .errors import not_served
from .generated import RowTemplate

_MARK = "@@rows@@"


def json_bytes(value):
    """A whole reply. Lone surrogates, which JSON can spell and UTF-8 cannot, become question marks."""
    text = json.dumps(value, indent=2, ensure_ascii=False)
    return (text + "\n").encode("utf-8", "replace")


def _templates(value, path=()):
    """Where rows are to be generated: the way to each template, and the template."""
    if isinstance(value, RowTemplate):
        yield path, value
    else:
        entries = value.items() if isinstance(value, dict) else enumerate(value) if isinstance(value, list) else ()
        for key, entry in entries:
            if isinstance(entry, (dict, list)):
                yield from _templates(entry, path + (key,))


def json_pieces(value):
    """A reply that is too large to be held, in pieces of bytes; None where it is an ordinary one."""
    found = list(_templates(value))
    if len(found) > 1:
        raise not_served("several ranges of generated sheets in one reply")
    return _pieces(value, *found[0]) if found else None


def _pieces(value, path, template):
    holder = value
    for key in path[:-1]:
        holder = holder[key]
    holder[path[-1]] = [_MARK]
    before, _, after = json.dumps(value, indent=2, ensure_ascii=False).partition(f'"{_MARK}"')
    indent = before[before.rindex("\n") + 1:]
    yield before.encode()
    for index, piece in enumerate(template.texts(indent)):
        yield ((",\n" + indent if index else "") + piece).encode()
    yield (after + "\n").encode()
