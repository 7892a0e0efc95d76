# SPDX-License-Identifier: Apache-2.0
"""Values: what typed-in texts become, what formulas compute, how all of it is shown."""

import unittest

from support import BOOK, Asker, message

TYPED_IN = [
    # typed in, FORMATTED_VALUE, UNFORMATTED_VALUE, FORMULA, number format
    (42, "42", 42, 42, None),
    ("-1.50", "-1.5", -1.5, -1.5, None),
    (".5", "0.5", 0.5, 0.5, None),
    ("2,000,000.01", "2,000,000.01", 2000000.01, 2000000.01, "#,##0.00"),
    ("1,23", "1,23", "1,23", "1,23", None),
    ("12.5%", "12.50%", 0.125, 0.125, "0.00%"),
    ("$3", "$3", 3, 3, '"$"#,##0'),
    ("-$3.5", "-$3.50", -3.5, -3.5, '"$"#,##0.00'),
    ("1e3", "1.00E+03", 1000, 1000, "0.00E+00"),
    ("true", "TRUE", True, True, None),
    ("'TRUE", "TRUE", "TRUE", "TRUE", None),
    ("'=1+1", "=1+1", "=1+1", "=1+1", None),
    ("2020-01-01", "2020-01-01", 43831, 43831, "yyyy-mm-dd"),
    ("1900-02-28", "1900-02-28", 60, 60, "yyyy-mm-dd"),
    ("2023-02-29", "2023-02-29", "2023-02-29", "2023-02-29", None),
    ("3/1/2024", "3/1/2024", 45352, 45352, "M/d/yyyy"),
    ("2024-03-01 13:30:00", "2024-03-01 13:30:00", 45352.5625, 45352.5625, "yyyy-mm-dd h:mm:ss"),
    ("6:00", "6:00", 0.25, 0.25, "h:mm"),
    ("24:00", "24:00", "24:00", "24:00", None),
    ("two\nlines", "two\nlines", "two\nlines", "two\nlines", None),
    ("=1180591620717411303424", "1.18059E+21", 2.0 ** 70, "=1180591620717411303424", None),
    ("=DATE(2024,3,1)", "3/1/2024", 45352, "=DATE(2024,3,1)", None),
    ("1e999", "1e999", "1e999", "1e999", None),
]

FORMULAS = [
    # A1 is 2, A2 is the text x, A3 is empty, A4 is TRUE, A5 is =A5
    ("=SUM(A1:A4)", "2"), ("=SUM(A1,3,\"4\")", "9"), ("=(1+2)*-3-4/2", "-11"), ("=A3", "0"), ("=A2=\"X\"", "TRUE"),
    ("=A1>=3", "FALSE"), ("=\"a\"&1+1", "a2"), ("='Other sheet'!B2", "7"), ("=A2+1", "#VALUE!"), ("=1/0", "#DIV/0!"),
    ("=NOSUCH(1)", "#NAME?"), ("=nosuch", "#NAME?"), ("=Z99", "#REF!"), ("=Nowhere!A1", "#REF!"), ("=1+", "#ERROR!"),
    ("=NA()", "#N/A"), ("=A5", "#REF!"), ("=(((1", "#ERROR!"), ("=1e308*10", "#NUM!"),
]


class TypedInValues(unittest.TestCase):
    def test_are_parsed_and_shown(self):
        asker = Asker()
        for typed, formatted, unformatted, formula, pattern in TYPED_IN:
            with self.subTest(typed):
                asker.batch({"repeatCell": {"range": {}, "cell": {}, "fields": "*"}})
                self.assertEqual(asker.put("A1", [[typed]])[0], 200)
                self.assertEqual(asker.values("A1"), [[formatted]])
                self.assertEqual(asker.values("A1", valueRenderOption="UNFORMATTED_VALUE"), [[unformatted]])
                self.assertEqual(type(asker.values("A1", valueRenderOption="UNFORMATTED_VALUE")[0][0]),
                                 type(unformatted))
                self.assertEqual(asker.values("A1", valueRenderOption="FORMULA"), [[formula]])
                number_format = asker.state()["sheets"][0]["cells"]["A1"].get("format", {}).get("numberFormat", {})
                self.assertEqual(number_format.get("pattern"), pattern)

    def test_stay_as_they_are_when_raw_or_in_text_cells(self):
        asker = Asker()
        asker.put("A1:B1", [["=1+1", "TRUE"]], "RAW")
        asker.batch({"repeatCell": {"range": {"startRowIndex": 1, "endRowIndex": 2},
                                    "cell": {"userEnteredFormat": {"numberFormat": {"type": "TEXT"}}},
                                    "fields": "userEnteredFormat.numberFormat"}})
        asker.put("A2:B2", [["0042", "=1+1"]])
        self.assertEqual(asker.values("A1:B2", valueRenderOption="UNFORMATTED_VALUE"),
                         [["=1+1", "TRUE"], ["0042", "=1+1"]])

    def test_keep_formats_and_skip_nulls(self):
        asker = Asker()
        asker.put("A1:C1", [["2020-01-01", "x", "y"]])
        asker.put("A1:C1", [[43832, None, ""]])
        self.assertEqual(asker.values("A1:C1"), [["2020-01-02", "x"]])


class Formulas(unittest.TestCase):
    def test_compute(self):
        asker = Asker({"title": "Sheet1", "rows": 20, "columns": 5, "cells": {
            "A1": 2, "A2": "x", "A4": True, "A5": "=A5"}}, {"title": "Other sheet", "cells": {"B2": "=3+4"}})
        for formula, shown in FORMULAS:
            with self.subTest(formula):
                asker.put("B1", [[formula]])
                self.assertEqual(asker.values("B1"), [[shown]])


class Blocks(unittest.TestCase):
    def test_are_cut_behind_the_last_value(self):
        asker = Asker()
        asker.put("B2:D4", [[1, "", ""], ["", "", ""], ["", 2, ""]])
        self.assertEqual(asker.values("A1:J100"), [[], ["", "1"], [], ["", "", "2"]])
        self.assertEqual(asker.values("A1:J100", majorDimension="COLUMNS"), [[], ["", "1"], ["", "", "", "2"]])
        self.assertNotIn("values", asker.get("/values/E5:F9")[1])

    def test_are_refused_where_they_do_not_fit(self):
        asker = Asker()
        target = f"/v4/spreadsheets/{BOOK}/values/A1:B2"
        refused = [
            ("?valueInputOption=RAW", {"values": [[1, 2, 3]]},
             "Requested writing within range [Sheet1!A1:B2], but tried writing to column [C]"),
            ("?valueInputOption=RAW", {"values": [[1], [2], [3]]},
             "Requested writing within range [Sheet1!A1:B2], but tried writing to row [3]"),
            ("?valueInputOption=RAW", {"range": "A1:B3", "values": [[1]]},
             "Request range[A1:B2] does not match value's range[A1:B3]"),
            ("?valueInputOption=RAW", {"values": [["x" * 50_001]]},
             "Your input contains more than the maximum of 50000 characters in a single cell."),
            ("", {"values": [[1]]}, "'valueInputOption' is required but not specified"),
            ("?valueInputOption=TYPED", {"values": [[1]]}, "Invalid value at 'value_input_option' (type.googleapis.com"
             "/google.apps.sheets.v4.ValueInputOption), \"TYPED\""),
        ]
        for query, body, expected in refused:
            with self.subTest(expected):
                status, reply = asker.ask("PUT", target + query, body)
                self.assertEqual((status, message(reply)), (400, expected))
        self.assertEqual(asker.values("A1:J100"), [])


if __name__ == "__main__":
    unittest.main()
