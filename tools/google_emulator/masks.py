# SPDX-License-Identifier: Apache-2.0
"""Masks of fields, as the query parameter "fields" and the field "fields" of requests have them.

A mask is a tree: {name: subtree}; the name * takes everything that is there."""

import re

from .errors import bad_request, drive_error
from .schema import MESSAGES

_NAME = re.compile(r"\s*(\*|[A-Za-z_][A-Za-z0-9_]*)\s*")


class MaskError(Exception):
    """Which part of a mask is wrong."""


class _Parser:
    """Reads a.b/c(d,e),f: points and slashes both go down a level, blanks around names mean nothing."""

    def __init__(self, text):
        self.text = text
        self.position = 0

    def whole(self):
        tree = {}
        self.entries(tree)
        if self.position != len(self.text):
            raise MaskError(self.text)
        return tree

    def at(self, characters):
        return self.position < len(self.text) and self.text[self.position] in characters

    def entries(self, tree):
        while True:
            self.entry(tree)
            if not self.at(","):
                return
            self.position += 1

    def entry(self, tree):
        branch, name = tree, self.name()
        while self.at("./"):
            self.position += 1
            branch = _descend(branch, name)
            name = self.name()
        if self.at("("):
            self.position += 1
            self.entries(_descend(branch, name))
            if not self.at(")"):
                raise MaskError(self.text)
            self.position += 1
        elif name == "*":
            branch["*"] = {}
        else:
            _descend(branch, name)["*"] = {}

    def name(self):
        match = _NAME.match(self.text, self.position)
        if not match:
            raise MaskError(self.text)
        self.position = match.end()
        return match.group(1)


def _descend(branch, name):
    return branch.setdefault(name, {})


def parse_mask(text, message):
    """The tree of a mask, with its names held against the message; raises MaskError."""
    tree = _Parser(text).whole()
    _check(tree, message, ())
    return tree


def _check(tree, message, above):
    for name, subtree in tree.items():
        path = above + (name,)
        if name == "*":
            continue
        field = MESSAGES.get(message, {}).get(name)
        if field is None or (subtree.keys() - {"*"} and not field.is_message):
            raise MaskError(".".join(path))
        _check(subtree, field.type, path)


def reply_mask(text, message):
    """The mask of a reply; a wrong one is answered as each of the two services does."""
    try:
        return parse_mask(text, message)
    except MaskError as wrong:
        if message == "File":
            raise drive_error(400, f"Invalid field selection {wrong}", "invalidParameter", "fields",
                              "parameter") from None
        text = f"Error expanding 'fields' parameter. Cannot find matching fields for path '{wrong}'."
        raise bad_request("Request contains an invalid argument.", [(str(wrong), text)]) from None


def masked(value, tree):
    """What a mask leaves of a reply."""
    if "*" in tree:
        return value
    if hasattr(value, "masked"):  # rows that are yet to be generated
        return value.masked(lambda row: masked(row, tree))
    if isinstance(value, list):
        return [masked(entry, tree) for entry in value]
    if not isinstance(value, dict):
        return value
    return {name: masked(entry, tree[name]) for name, entry in value.items() if name in tree}


def covers(tree, *path):
    """Whether the mask wants anything of that path."""
    for name in path:
        if "*" in tree:
            return True
        if name not in tree:
            return False
        tree = tree[name]
    return True


def replace_masked(old, new, tree):
    """What becomes of a message when the fields of the mask are taken from another one."""
    if "*" in tree:
        return dict(new)
    result = dict(old)
    for name, subtree in tree.items():
        if (twin := _other_spelling(name)) not in tree:
            result.pop(twin, None)
        if "*" in subtree:
            value = new.get(name)
        else:
            value = replace_masked(old.get(name) or {}, new.get(name) or {}, subtree)
        if value is None or value == {}:
            result.pop(name, None)
        else:
            result[name] = value
    return result


def _other_spelling(name):
    """Colours stand in two fields, of which the one that is set replaces the other."""
    return name.removesuffix("Style") if name.endswith("Style") else name + "Style"
