# SPDX-License-Identifier: Apache-2.0
"""Ranges: how they are read, cut, refused and printed."""

import unittest

from support import Asker

SHEETS = ({"title": "Sheet1", "rows": 100, "columns": 10}, {"title": "D3", "rows": 20, "columns": 30},
          {"title": "Bob's data", "rows": 5, "columns": 5}, {"title": "R1C1", "rows": 5, "columns": 5},
          {"title": "Größe", "rows": 5, "columns": 5}, {"title": "Chart", "type": "OBJECT"})

READ = [
    # asked, range in the reply
    ("B2", "Sheet1!B2"),
    ("b2:$A$1", "Sheet1!A1:B2"),
    ("D4:A1", "Sheet1!A1:D4"),
    ("B4:A9", "Sheet1!A4:B9"),
    ("A:C", "Sheet1!A1:C100"),
    ("5:3", "Sheet1!A3:J5"),
    ("A2:2", "Sheet1!A2:J2"),
    ("A1:C", "Sheet1!A1:C100"),
    ("B2:ZZ999", "Sheet1!B2:J100"),
    ("D3", "Sheet1!D3"),
    ("'D3'", "'D3'!A1:AD20"),
    ("'D3'!D3", "'D3'!D3"),
    ("d3!AA1:AD2", "'D3'!AA1:AD2"),
    ("Sheet1", "Sheet1!A1:J100"),
    ("sheet1!A1", "Sheet1!A1"),
    ("'Bob''s data'!A1:B2", "'Bob''s data'!A1:B2"),
    ("Bob's data!A1", "'Bob''s data'!A1"),
    ("R1C1!A1", "'R1C1'!A1"),
    ("Größe!A1", "'Größe'!A1"),
    ("Totals", "'D3'!B2:C3"),
    ("totals", "'D3'!B2:C3"),
    ("'Sheet1'!Totals", "'D3'!B2:C3"),
]

REFUSED = [
    ("Nope!A1", "Unable to parse range: Nope!A1"),
    ("nosuchname", "Unable to parse range: nosuchname"),
    ("Sheet1!A0", "Unable to parse range: Sheet1!A0"),
    ("Sheet1!A", "Unable to parse range: Sheet1!A"),
    ("Sheet1!A1:B2:C3", "Unable to parse range: Sheet1!A1:B2:C3"),
    ("'Bob's data'!A1", "Unable to parse range: 'Bob's data'!A1"),
    ("Chart!A1", "Unable to parse range: Chart!A1"),
    ("A101", "Range (Sheet1!A101) exceeds grid limits. Max rows: 100, max columns: 10"),
    ("K1:L2", "Range (Sheet1!K1:L2) exceeds grid limits. Max rows: 100, max columns: 10"),
]


class Ranges(unittest.TestCase):
    def setUp(self):
        self.asker = Asker(*SHEETS, namedRanges={"Totals": "'D3'!B2:C3"})

    def test_are_printed_as_the_service_does(self):
        for asked, expected in READ:
            with self.subTest(asked):
                _, body = self.asker.get(f"/values/{asked.replace(' ', '%20')}")
                self.assertEqual(body.get("range"), expected, body)

    def test_are_refused_with_the_services_words(self):
        for asked, expected in REFUSED:
            with self.subTest(asked):
                self.assertEqual(self.asker.values(asked), expected)

    def test_are_not_cut_for_writing(self):
        status, _ = self.asker.put("Sheet1!J100:K101", [[1]])
        self.assertEqual(status, 400)
        self.assertEqual(self.asker.put("Sheet1!J100", [[1]])[0], 200)
        self.assertEqual(self.asker.put("Sheet1!J100", [[1, 2]])[0], 400)


if __name__ == "__main__":
    unittest.main()
