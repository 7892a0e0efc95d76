# SPDX-License-Identifier: Apache-2.0
"""What is refused before a method runs, who may do what, and what masks leave of replies."""

import unittest

from google_emulator.book_specs import add_file
from support import BOOK, Asker, message

BOOKS = "/v4/spreadsheets"
VALUES = f"{BOOKS}/{BOOK}/values/A1"
BATCH = f"{BOOKS}/{BOOK}:batchUpdate"


def request(kind, **body):
    return {"requests": [{kind: body}]}


REFUSED = [
    # verb, target, body, status, part of the message (None: a page for people)
    ("GET", "/v4/nothing", None, 404, None),
    ("GET", BOOKS, None, 404, None),
    ("POST", BOOKS + "/", {}, 404, None),
    ("POST", VALUES, {}, 404, None),
    ("PATCH", VALUES, {}, 404, None),
    ("GET", "/drive/v3/about", None, 501, "The emulator does not serve GET /drive/v3/about."),
    ("POST", f"{BOOKS}/{BOOK}/values:batchClearByDataFilter", {}, 501, "The emulator does not serve POST"),
    ("POST", BOOKS, {"properties": {"locale": "english"}}, 400, "Invalid properties: Unsupported locale: english"),
    ("POST", BOOKS, {"properties": {"autoRecalc": "HOUR"}}, 501, "the property 'autoRecalc'"),
    ("GET", f"{BOOKS}/nosuch", None, 404, "Requested entity was not found."),
    ("GET", f"{BOOKS}/word-document", None, 400, "This operation is not supported for this document"),
    ("GET", f"{BOOKS}/{BOOK}?range=A1", None, 400, "Unknown name \"range\": Cannot bind query parameter."),
    ("GET", f"{VALUES}?majorDimension=rows", None, 400, "Invalid value at 'major_dimension'"),
    ("GET", f"{BOOKS}/{BOOK}?includeGridData=maybe", None, 400, "Invalid value at 'include_grid_data' (TYPE_BOOL)"),
    ("GET", f"{BOOKS}/{BOOK}?fields=sheets.sheetProperties", None, 400, "Request contains an invalid argument."),
    ("GET", f"{BOOKS}/{BOOK}?fields=sheets(properties", None, 400, "Request contains an invalid argument."),
    ("GET", f"{VALUES}?fields=values.x", None, 400, "Request contains an invalid argument."),
    ("POST", BATCH, b"{", 400, "Invalid JSON payload received."),
    ("POST", BATCH, b"[]", 400, "Root element must be a message."),
    ("POST", BATCH, b'{"requests": NaN}', 400, "Invalid JSON payload received."),
    ("POST", BATCH, b"[" * 100_000, 400, "Invalid JSON payload received."),
    ("POST", BATCH, {"request": []}, 400, 'Unknown name "request": Cannot find field.'),
    ("POST", BATCH, request("addSheat"), 400, "Unknown name \"addSheat\" at 'requests[0]': Cannot find field."),
    ("POST", BATCH, request("addSheet", properties={"title": 5}), 400,
     "Invalid value at 'requests[0].add_sheet.properties.title' (TYPE_STRING), 5"),
    ("POST", BATCH, request("deleteSheet", sheetId="x"), 400,
     "Invalid value at 'requests[0].delete_sheet.sheet_id' (TYPE_INT32), \"x\""),
    ("POST", BATCH, request("deleteSheet", sheetId=1.5), 400, "(TYPE_INT32), 1.5"),
    ("POST", BATCH, request("deleteSheet", sheetId=2**31), 400, "(TYPE_INT32), 2147483648"),
    ("POST", BATCH, request("deleteSheet", sheetId=[1]), 400, "Proto field is not repeating, cannot start list."),
    ("POST", BATCH, request("mergeCells", mergeType="ALL"), 400, "Invalid value at 'requests[0].merge_cells.merge_type'"
     " (type.googleapis.com/google.apps.sheets.v4.MergeCellsRequest.MergeType), \"ALL\""),
    ("POST", BATCH, {"requests": [{"deleteSheet": {}, "addSheet": {}}]}, 400, "oneof field 'kind' is already set"),
    ("POST", BATCH, request("copyPaste"), 501, "Request.copyPaste"),
    ("POST", BATCH, request("updateCells", rows=[{"values": [{"userEnteredValue": {
        "numberValue": 1, "stringValue": "x"}}]}]), 400, "oneof field 'value' is already set"),
    ("PUT", f"{VALUES}?valueInputOption=RAW", {"values": "X", "majorDimension": None}, 400,
     "Invalid value at 'data.values' (type.googleapis.com/google.protobuf.ListValue), \"X\""),
    ("PUT", f"{VALUES}?valueInputOption=RAW", {"values": [[{"a": 1}]]}, 400, "data.values[0][0]"),
    ("PUT", f"{VALUES}?valueInputOption=RAW", b'{"values": [[1e999]]}', 400, "(TYPE_DOUBLE), \"inf\""),
    ("PUT", f"{VALUES}?valueInputOption=RAW", {"values": [[10**400]]}, 400, "(TYPE_DOUBLE)"),
    ("POST", BOOKS, {"properties": {"title": []}}, 400, "Invalid JSON payload received. Unknown name \"title\" at "
     "'spreadsheet.properties': Proto field is not repeating, cannot start list."),
    ("POST", BOOKS, {"sheets": [{"properties": {"title": "a"}}, {"properties": {"title": "A"}}]}, 400,
     "A sheet with the name \"A\" already exists."),
    ("GET", "/drive/v3/files/nosuch", None, 404, "File not found: nosuch."),
    ("GET", f"/drive/v3/files/{BOOK}?fields=bytes", None, 400, "Invalid field selection bytes"),
    ("DELETE", "/drive/v3/files/nosuch", None, 404, "File not found: nosuch."),
]

EXPIRED, READ_ONLY, GOOD = "Bearer expired-token", "Bearer read-only-token", "Bearer test-token"
CREDENTIALS = [
    # authorization, query, status of a read, status of a write, part of the message of the write
    (GOOD, "", 200, 200, None),
    (GOOD, "?key=wrong", 200, 200, None),
    (EXPIRED, "", 401, 401, "Request had invalid authentication credentials."),
    ("Bearer nonsense", "", 401, 401, "Request had invalid authentication credentials."),
    ("Basic test-token", "", 401, 401, "Request had invalid authentication credentials."),
    (READ_ONLY, "", 200, 403, "Request had insufficient authentication scopes."),
    (None, "", 403, 403, "Method doesn't allow unregistered callers"),
    (None, "?key=", 403, 403, "Method doesn't allow unregistered callers"),
    (None, "?key=wrong", 400, 400, "API key not valid. Please pass a valid API key."),
    (None, "?key=test-key", 200, 401, "API keys are not supported by this API."),
]

SHARING = [
    # access, public, reads and writes with a token, reads with a key
    ("owner", False, 200, 200, 403),
    ("reader", False, 200, 403, 403),
    ("reader", True, 200, 403, 200),
    ("none", False, 403, 403, 403),
    ("none", True, 200, 403, 200),
]

MASKS = [
    ("spreadsheetId", {"spreadsheetId": BOOK}),
    ("properties(title),sheets.properties(title,sheetId,sheetType,index,hidden),sheets.protectedRanges", {
        "properties": {"title": "Book"}, "sheets": [{"properties": {
            "sheetId": 0, "title": "Sheet1", "index": 0, "sheetType": "GRID"}}]}),
    ("namedRanges", {}),
    ("sheets/data/rowData/values/note", {"sheets": [{"data": [{"rowData": [{"values": [{}, {"note": "n"}]}]}]}]}),
    ("sheets.data.rowData.values(userEnteredValue,effectiveFormat/numberFormat)", {"sheets": [{"data": [{"rowData": [
        {"values": [{"userEnteredValue": {"numberValue": 1}, "effectiveFormat": {}}, {}]}]}]}]}),
    ("sheets.properties.title,sheets.properties", None),
]


class RefusedRequests(unittest.TestCase):
    def test_are_worded_as_the_service_does(self):
        asker = Asker()
        add_file(asker.service.drive, {"id": "word-document", "name": "a.docx", "mimeType": "application/msword"})
        before = asker.state()
        for verb, target, body, status, expected in REFUSED:
            with self.subTest(f"{verb} {target} {str(body)[:60]}"):
                answered, reply = asker.ask(verb, target, body)
                self.assertEqual(answered, status, reply)
                if expected is None:
                    self.assertIn(b"<!DOCTYPE html>", reply)
                else:
                    self.assertIn(expected, message(reply))
                self.assertEqual(asker.state(), before)


class Paths(unittest.TestCase):
    def test_may_have_slashes_that_some_clients_put_there(self):
        asker = Asker()
        named = {"updateSpreadsheetProperties": {"properties": {"title": "New", "locale": "de_DE"},
                                                 "fields": "title,locale"}}
        self.assertEqual(asker.ask("POST", f"{BOOKS}/{BOOK}/:batchUpdate", {"requests": [named]})[0], 200)
        self.assertEqual(asker.get("/?fields=properties(title,locale)"),
                         (200, {"properties": {"title": "New", "locale": "de_DE"}}))
        self.assertEqual(asker.ask("PUT", VALUES + "/?valueInputOption=RAW", {"values": [[345]]})[0], 200)
        _, body = asker.ask("POST", f"{BOOKS}/{BOOK}:getByDataFilter?fields=sheets.data.rowData.values.formattedValue",
                            {"dataFilters": [{"a1Range": "A1:B2"}]})
        self.assertEqual(body, {"sheets": [{"data": [{"rowData": [{"values": [{"formattedValue": "345"}]}]}]}]})


class Callers(unittest.TestCase):
    def test_need_good_credentials(self):
        for authorization, query, read, write, expected in CREDENTIALS:
            with self.subTest(f"{authorization} {query}"):
                asker = Asker(public=True)
                self.assertEqual(asker.ask("GET", VALUES + query, None, authorization)[0], read)
                status, body = asker.ask("POST", VALUES + ":clear" + query, None, authorization)
                self.assertEqual(status, write)
                self.assertIn(expected or "", message(body) or "")

    def test_see_what_is_shared_with_them(self):
        for access, public, read, write, key in SHARING:
            with self.subTest(f"{access} {public}"):
                asker = Asker(access=access, public=public)
                self.assertEqual(asker.ask("GET", VALUES)[0], read)
                self.assertEqual(asker.ask("POST", VALUES + ":clear")[0], write)
                self.assertEqual(asker.ask("GET", VALUES + "?key=test-key", None, None)[0], key)
                self.assertEqual(asker.ask("GET", f"/drive/v3/files/{BOOK}")[0], 200 if read == 200 else 404)


class Masks(unittest.TestCase):
    def test_leave_what_they_name(self):
        asker = Asker({"title": "Sheet1", "rows": 5, "columns": 5, "cells": {"A1": 1, "B1": {"note": "n"}}})
        for mask, expected in MASKS:
            with self.subTest(mask):
                status, body = asker.get(f"?fields={mask}")
                if expected is None:
                    self.assertIn("gridProperties", body["sheets"][0]["properties"])
                else:
                    self.assertEqual((status, body), (200, expected))

    def test_of_a_range_start_where_it_starts(self):
        asker = Asker({"title": "Sheet1", "rows": 5, "columns": 5, "cells": {"C3": 1}}, {"title": "Other"})
        _, body = asker.get("?ranges=Sheet1!B2:E5&fields=sheets(properties.title,data(startRow,startColumn,rowData"
                            ".values.userEnteredValue))")
        self.assertEqual(body, {"sheets": [{"properties": {"title": "Sheet1"}, "data": [{
            "startRow": 1, "startColumn": 1,
            "rowData": [{}, {"values": [{}, {"userEnteredValue": {"numberValue": 1}}]}]}]}]})


if __name__ == "__main__":
    unittest.main()
