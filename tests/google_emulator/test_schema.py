# SPDX-License-Identifier: Apache-2.0
"""The tables against the official documents: messages, fields, types, enumerations, methods, query parameters."""

import json
import re
import unittest

from google_emulator.methods import COMMON_QUERY, METHODS, unserved_methods
from google_emulator.schema import ENUM_VALUES, MESSAGES, UNSERVED
from google_emulator.schema_table import DRIVE_MESSAGES
from support import shared_data

_SCALARS = {("string", None): "string", ("integer", "int32"): "int32", ("number", "double"): "double",
            ("number", "float"): "float", ("boolean", None): "bool", ("string", "google-fieldmask"): "mask",
            ("string", "int64"): "int64", ("string", "date-time"): "time", ("array", None): "list"}
PATHS = ("google", "sheets.v4.json"), ("google", "drive.v3.json")


def official_type(entry):
    """An official type in the table's shorthand; enumerations give their values."""
    if entry.get("type") == "array" and entry["items"].get("type") != "any":
        return official_type(entry["items"]) + "[]"
    if "$ref" in entry:
        return entry["$ref"]
    if "enum" in entry:
        return "enum " + " ".join(entry["enum"])
    return _SCALARS.get((entry["type"], entry.get("format")), entry["type"])


def our_type(field):
    kind = field.type
    if kind.startswith("enum!"):
        kind = "enum " + " ".join(ENUM_VALUES[kind.removeprefix("enum!")])
    return kind + ("[]" if field.repeated else "")


def methods_of(document):
    found = {}

    def walk(resource):
        for method in resource.get("methods", {}).values():
            found[method["id"]] = method
        for inner in resource.get("resources", {}).values():
            walk(inner)

    walk(document)
    return found


@unittest.skipUnless(all(shared_data(*path) for path in PATHS), "the official documents are absent (ZX_SHARED)")
class Tables(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.sheets, cls.drive = (cls.load(path) for path in PATHS)

    @staticmethod
    def load(path):
        with open(shared_data(*path), encoding="utf-8") as file:
            return json.load(file)

    def test_messages_agree(self):
        for name, fields in MESSAGES.items():
            document = self.drive if name in DRIVE_MESSAGES else self.sheets
            official = document["schemas"][name]["properties"]
            for field, ours in fields.items():
                with self.subTest(f"{name}.{field}"):
                    self.assertIn(field, official)
                    if ours.type == UNSERVED:
                        continue
                    self.assertEqual(our_type(ours), official_type(official[field]))
                    if document is self.sheets and official[field].get("readOnly"):
                        self.assertTrue(ours.output_only)

    def test_no_field_of_a_sheets_message_is_missing(self):
        for name, fields in MESSAGES.items():
            if name not in DRIVE_MESSAGES and name != "Response":
                self.assertEqual(set(self.sheets["schemas"][name]["properties"]) - set(fields), set(), name)

    def test_messages_are_closed(self):
        known = set(_SCALARS.values()) | set(MESSAGES) | {f"enum!{name}" for name in ENUM_VALUES} | {UNSERVED}
        for name, fields in MESSAGES.items():
            self.assertEqual({field.type for field in fields.values()} - known, set(), name)

    def test_methods_agree(self):
        official = methods_of(self.sheets) | methods_of(self.drive)
        for method in METHODS:
            with self.subTest(method.name):
                theirs = official[method.name.removesuffix(".upload")]
                path = theirs["path"] if not method.is_drive else self.drive["servicePath"] + theirs["path"]
                if method.name.endswith(".upload"):
                    path = theirs["mediaUpload"]["protocols"]["simple"]["path"].lstrip("/")
                self.assertEqual((method.verb, method.path.lstrip("/")), (theirs["httpMethod"], path))
                if method.name != "drive.files.create.upload":
                    self.assertEqual(method.request, theirs.get("request", {}).get("$ref"))
                self.assertEqual(method.reply, theirs.get("response", {}).get("$ref"))
                self.check_query(method, theirs["parameters"])

    def test_every_other_method_is_known_as_not_served(self):
        served, others = {method.name for method in METHODS}, set()
        for document in (self.sheets, self.drive):
            for name, method in methods_of(document).items():
                path = "/" + document["servicePath"] + method["path"]
                upload = method.get("mediaUpload", {}).get("protocols", {}).get("simple", {}).get("path")
                others |= {(method["httpMethod"], re.sub(r"{\w+}", "{}", found)) for found, known in (
                    (path, name), (upload, f"{name}.upload")) if found and known not in served}
        self.assertEqual(set(unserved_methods()), others)

    def check_query(self, method, official):
        for name, kind in method.query.items():
            theirs = official_type(official[name]) + ("[]" if official[name].get("repeated") else "")
            ours = kind
            if kind.startswith("enum!"):
                ours = "enum " + " ".join(ENUM_VALUES[kind.removeprefix("enum!")])
            self.assertEqual(ours, theirs, name)
        if not method.is_drive:
            in_query = {name for name, entry in official.items() if entry["location"] == "query"}
            self.assertEqual(set(method.query), in_query)

    def test_common_parameters_agree(self):
        self.assertEqual(set(COMMON_QUERY), set(self.sheets["parameters"]))


if __name__ == "__main__":
    unittest.main()
