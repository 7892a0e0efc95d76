# SPDX-License-Identifier: Apache-2.0
"""Batches: what they change, what they refuse, and that a refused one changes nothing."""

import unittest

from support import Asker, message

SHEETS = ({"title": "One", "rows": 10, "columns": 5, "values": [["a1", "b1"], ["a2", "b2"]], "merges": ["C3:D4"]},
          {"title": "Two", "sheetId": 2, "rows": 10, "columns": 5, "protectedRanges": [{"range": {}}]},
          {"title": "Hidden", "sheetId": 3, "hidden": True, "rows": 10, "columns": 5},
          {"title": "Chart", "sheetId": 4, "type": "OBJECT"})


def block(top, bottom, left, right, sheet=0):
    return {"sheetId": sheet, "startRowIndex": top, "endRowIndex": bottom, "startColumnIndex": left,
            "endColumnIndex": right}


def cells(*rows):
    return [{"values": [{"userEnteredValue": value} if value else {} for value in row]} for row in rows]


def properties(fields, **wanted):
    return {"updateSheetProperties": {"properties": wanted, "fields": fields}}


def dimension(kind, dimension, start, end, sheet=0):
    return {kind: {"range": {"sheetId": sheet, "dimension": dimension, "startIndex": start, "endIndex": end}}}


REFUSED = [
    ({}, "Invalid requests[1]: No request set."),
    ({"deleteSheet": {"sheetId": 99}}, "Invalid requests[1].deleteSheet: No sheet with id: 99"),
    ({"addSheet": {"properties": {"title": "ONE"}}}, "Invalid requests[1].addSheet: A sheet with the name \"ONE\" "
     "already exists. Please enter another name."),
    ({"addSheet": {"properties": {"title": "x" * 101}}}, "longer than 100 characters"),
    ({"duplicateSheet": {"sourceSheetId": 4, "newSheetName": "two"}}, 'A sheet with the name "two" already exists.'),
    ({"addSheet": {"properties": {"sheetId": 2}}}, "A sheet with the ID 2 already exists."),
    ({"addSheet": {"properties": {"gridProperties": {"rowCount": 1_000_000, "columnCount": 10}}}},
     "above the limit of 10000000 cells"),
    ({"addSheet": {"properties": {"index": 5}}}, "The index 5 is not within"),
    (properties("title", title=""), "cannot be empty"),
    (properties("title", title="two"), 'A sheet with the name "two" already exists.'),
    (properties("", title="New"), "At least one field must be listed in 'fields'."),
    (properties("titel", title="New"), "Invalid field: titel"),
    (properties("gridProperties", sheetId=4), "Only grid sheets have grid properties."),
    (properties("gridProperties.rowCount", gridProperties={"rowCount": 0}), "You can't delete all the rows"),
    ({"appendDimension": {"sheetId": 0, "dimension": "ROWS", "length": 2_000_000}}, "limit of 10000000 cells"),
    ({"appendDimension": {"sheetId": 0, "dimension": "ROWS", "length": 0}}, "length must be greater than 0"),
    ({"appendDimension": {"sheetId": 0, "length": 1}}, "No dimension specified."),
    (dimension("deleteDimension", "ROWS", 8, 11), "Tried to delete row index 10 but there are only 10 rows."),
    (dimension("deleteDimension", "COLUMNS", 0, 5), "You can't delete all the columns on the sheet."),
    (dimension("deleteDimension", "ROWS", 0, 1, sheet=4), "is not a grid sheet"),
    ({"updateCells": {"range": block(9, 11, 0, 1), "rows": cells([{"numberValue": 1}]), "fields": "*"}},
     "Range (One!A10:A11) exceeds grid limits. Max rows: 10, max columns: 5"),
    ({"updateCells": {"range": block(0, 1, 0, 1), "rows": cells([None, None]), "fields": "*"}},
     "Attempting to write column: 1, beyond the last requested column of: 0"),
    ({"updateCells": {"range": block(0, 1, 0, 1), "rows": cells([None], [None]), "fields": "*"}},
     "Attempting to write row: 1, beyond the last requested row of: 0"),
    ({"updateCells": {"rows": cells([None]), "fields": "*"}}, "Exactly one of start or range must be set."),
    ({"updateCells": {"range": block(0, 1, 0, 1), "rows": cells([{"formulaValue": "1+1"}]), "fields": "*"}},
     "Formula must start with '='."),
    ({"updateCells": {"range": block(0, 1, 0, 1), "rows": cells([{"stringValue": "x" * 50_001}]), "fields": "*"}},
     "more than the maximum of 50000 characters"),
    ({"repeatCell": {"range": block(0, 1, 0, 1), "cell": {}, "fields": "effectiveValue"}},
     "Invalid field: effectiveValue"),
    ({"mergeCells": {"range": block(3, 5, 2, 4)}}, "You must select all cells in a merged range"),
    ({"unmergeCells": {"range": block(2, 3, 2, 4)}}, "You must select all cells in a merged range"),
    ({"addProtectedRange": {"protectedRange": {"range": {"sheetId": 2}}}},
     'Sheet "Two" already has sheet protection.'),
    ({"deleteProtectedRange": {"protectedRangeId": 7}}, "No protected range with ID: 7"),
    ({"addNamedRange": {"namedRange": {"name": "A1", "range": block(0, 1, 0, 1)}}}, "Invalid name"),
    ({"addNamedRange": {"namedRange": {"name": "amount", "range": block(0, 1, 0, 1)}}},
     'A named range with the name "amount" already exists.'),
]


class RefusedBatches(unittest.TestCase):
    def test_say_why_and_change_nothing(self):
        asker = Asker(*SHEETS, namedRanges={"Amount": "One!A1:B2"})
        before = asker.state()
        for request, expected in REFUSED:
            with self.subTest(expected):
                first = {"updateCells": {"range": block(0, 1, 0, 2, 2), "rows": cells([{"numberValue": 1}]),
                                         "fields": "userEnteredValue"}}
                status, body = asker.batch(first, request)
                self.assertEqual(status, 400, body)
                self.assertIn(expected, message(body))
                self.assertEqual(asker.state(), before)

    def test_keep_one_visible_sheet(self):
        asker = Asker(*SHEETS[:1], SHEETS[2])
        for request, expected in ((properties("hidden", hidden=True), "You can't hide all the sheets"),
                                  ({"deleteSheet": {"sheetId": 0}}, "You can't remove all the visible sheets")):
            self.assertIn(expected, message(asker.batch(request)[1]))
        self.assertEqual(asker.batch({"deleteSheet": {"sheetId": 3}})[0], 200)
        self.assertEqual(message(asker.batch({"deleteSheet": {}})[1]),
                         "Invalid requests[0].deleteSheet: You can't remove all the sheets in a document.")

    def test_are_not_empty(self):
        self.assertEqual(message(Asker().batch()[1]), "Must specify at least one request.")


class Batches(unittest.TestCase):
    def setUp(self):
        self.asker = Asker(*SHEETS, namedRanges={"Amount": "One!A1:B2"})

    def done(self, *requests):
        status, body = self.asker.batch(*requests)
        self.assertEqual(status, 200, body)
        return body["replies"]

    def shown(self, sheet=0):
        return {place: cell.get("shown") for place, cell in self.asker.state()["sheets"][sheet]["cells"].items()}

    def test_close_the_gap_of_a_deleted_range(self):
        self.done({"updateCells": {"range": block(0, 3, 0, 2), "fields": "*", "rows": cells(*(
            [{"numberValue": 10 * row + column} for column in (1, 2)] for row in (1, 2, 3)))}})
        self.done({"deleteRange": {"range": block(1, 2, 0, 1), "shiftDimension": "ROWS"}},
                  {"deleteRange": {"range": block(0, 1, 0, 1), "shiftDimension": "COLUMNS"}})
        self.assertEqual({place: text for place, text in self.shown().items() if place in ("A1", "A2", "B1", "B2", "A3", "B3")},
                         {"A1": "12", "A2": "31", "B2": "22", "B3": "32"})

    def test_move_sheets_by_positions_before_the_move(self):
        for sheet_id, index, titles in ((0, 2, ["Two", "One", "Hidden", "Chart"]),
                                        (0, 1, ["Two", "One", "Hidden", "Chart"]),
                                        (0, 4, ["Two", "Hidden", "Chart", "One"]),
                                        (4, 0, ["Chart", "Two", "Hidden", "One"])):
            self.done(properties("index", sheetId=sheet_id, index=index))
            self.assertEqual([sheet["title"] for sheet in self.asker.state()["sheets"]], titles)

    def test_replies_show_what_was_added(self):
        replies = self.done({"addSheet": {"properties": {"title": "New", "index": 0}}},
                            properties("title", title="Uno"),
                            {"addProtectedRange": {"protectedRange": {"range": block(0, 2, 0, 1)}}})
        added = replies[0]["addSheet"]["properties"]
        self.assertEqual((added["title"], added["index"], added["gridProperties"]),
                         ("New", 0, {"rowCount": 1000, "columnCount": 26}))
        self.assertEqual(replies[1], {})
        protected = replies[2]["addProtectedRange"]["protectedRange"]
        self.assertNotIn("sheetId", protected["range"])
        self.done({"deleteProtectedRange": {"protectedRangeId": protected["protectedRangeId"]}})
        self.assertEqual(self.asker.state()["sheets"][1]["protectedRanges"], [])

    def test_cells_change_only_in_the_masked_fields(self):
        bold = {"userEnteredFormat": {"textFormat": {"bold": True}}}
        date = {"userEnteredFormat": {"numberFormat": {"type": "DATE_TIME"}}}
        first = block(0, 1, 0, 1)
        self.done({"repeatCell": {"range": first, "cell": bold, "fields": "userEnteredFormat"}},
                  {"repeatCell": {"range": first, "cell": date, "fields": "userEnteredFormat.numberFormat"}},
                  {"updateCells": {"range": first, "rows": cells([{"numberValue": 45352.5}]),
                                   "fields": "userEnteredValue"}})
        cell = self.asker.state()["sheets"][0]["cells"]["A1"]
        self.assertEqual(cell, {"value": {"numberValue": 45352.5}, "shown": "3/1/2024 12:00:00", "format": {
            "textFormat": {"bold": True}, "numberFormat": {"type": "DATE_TIME"}}})
        self.done({"updateCells": {"range": block(0, 2, 0, 2), "rows": cells([None, {"stringValue": "new"}]),
                                   "fields": "userEnteredFormat, userEnteredValue"}})
        self.assertEqual(self.shown(), {"B1": "new"})

    def test_merging_keeps_the_first_value(self):
        self.done({"mergeCells": {"range": block(0, 2, 0, 2), "mergeType": "MERGE_ROWS"}})
        self.assertEqual(self.shown(), {"A1": "a1", "A2": "a2"})
        self.assertEqual(self.asker.state()["sheets"][0]["merges"], ["C3:D4", "A1:B1", "A2:B2"])
        self.done({"mergeCells": {"range": block(0, 4, 0, 4), "mergeType": "MERGE_ALL"}},
                  {"unmergeCells": {"range": block(0, 10, 0, 5)}})
        self.assertEqual((self.shown(), self.asker.state()["sheets"][0]["merges"]), ({"A1": "a1"}, []))

    def test_dimensions_carry_everything_along(self):
        self.done(dimension("deleteDimension", "ROWS", 0, 1))
        state = self.asker.state()
        self.assertEqual((self.shown(), state["sheets"][0]["rows"], state["sheets"][0]["merges"]),
                         ({"A1": "a2", "B1": "b2"}, 9, ["C2:D3"]))
        self.assertEqual(state["namedRanges"][0]["range"], block(0, 1, 0, 2))
        self.done(dimension("insertDimension", "COLUMNS", 0, 2))
        self.assertEqual((self.shown(), self.asker.state()["sheets"][0]["merges"]),
                         ({"C1": "a2", "D1": "b2"}, ["E2:F3"]))
        self.done(dimension("deleteDimension", "COLUMNS", 4, 6))
        self.assertEqual(self.asker.state()["sheets"][0]["merges"], [])
        self.done({"appendDimension": {"sheetId": 0, "dimension": "ROWS", "length": 5}},
                  properties("gridProperties.columnCount", gridProperties={"columnCount": 3}))
        self.assertEqual((self.shown(), self.asker.state()["sheets"][0]["rows"]), ({"C1": "a2"}, 14))

    def test_colours_come_back_in_both_spellings(self):
        self.done(properties("tabColorStyle", tabColorStyle={"rgbColor": {"red": 1.0, "green": 0, "blue": 0.5}}))
        _, body = self.asker.get("?fields=sheets.properties(tabColor,tabColorStyle)")
        color = {"red": 1, "blue": 0.49803922}
        self.assertEqual(body["sheets"][0]["properties"], {"tabColor": color, "tabColorStyle": {"rgbColor": color}})
        self.done(properties("tabColor", tabColor=None))
        _, body = self.asker.get("?fields=sheets.properties.tabColorStyle")
        self.assertEqual(body["sheets"][0]["properties"], {})


if __name__ == "__main__":
    unittest.main()
