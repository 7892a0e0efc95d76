# SPDX-License-Identifier: Apache-2.0
"""Named states to start from."""

DEMO_ID = "demo-budget-0000000000000000000000000000001"
_BOLD = {"textFormat": {"bold": True}}
_DOLLARS = {"numberFormat": {"type": "CURRENCY", "pattern": '"$"#,##0.00'}}


def _headings(*texts):
    return {f"{chr(ord('A') + index)}3": {"value": {"stringValue": text}, "format": _BOLD}
            for index, text in enumerate(texts)}


def _money(row, column, amount):
    return {f"{column}{row}": {"value": {"numberValue": amount}, "format": _DOLLARS}}


_EXPENSES = [("Rent", "2024-03-01", 1250, True), ("Electricity", "2024-03-04", 83.4, True),
             ("Groceries", "2024-03-09", 312.75, True), ("Train tickets", "2024-03-12", 96.2, False),
             ("Books", "2024-03-20", 41.99, True), ("Theatre", "2024-03-23", 58, False)]


def _budget():
    cells = {"A1": {"value": {"stringValue": "Household budget, March 2024"}, "format": _BOLD}}
    cells |= _headings("Item", "Due", "Amount", "Paid")
    for row, (item, due, amount, paid) in enumerate(_EXPENSES, start=4):
        cells |= {f"A{row}": item, f"B{row}": due, f"D{row}": paid} | _money(row, "C", amount)
    cells |= {"A11": "Sum", "C11": {"value": {"formulaValue": "=SUM(C4:C9)"}, "format": _DOLLARS},
              "A12": "Left", "C12": {"value": {"formulaValue": "=Income!B5-C11"}, "format": _DOLLARS}}
    income = {"A1": "Source", "B1": "Amount", "A2": "Salary", "A3": "Lessons", "A5": "Sum",
              "B5": {"value": {"formulaValue": "=SUM(B2:B3)"}, "format": _DOLLARS}}
    income |= _money(2, "B", 2400) | _money(3, "B", 180.5)
    return {"id": DEMO_ID, "title": "Household budget", "public": True,
            "sheets": [{"title": "Expenses", "rows": 50, "columns": 8, "cells": cells, "merges": ["A1:D1"],
                        "gridProperties": {"frozenRowCount": 3}},
                       {"title": "Income", "sheetId": 1717, "rows": 20, "columns": 4, "cells": income}],
            "namedRanges": {"Amounts": "Expenses!C4:C9", "Income_by_source": "Income!A2:B3"}}


_KINDS = {
    "id": "sample-sheet-kinds", "title": "Kinds of sheets",
    "sheets": [{"title": "Grid", "rows": 20, "columns": 5, "values": [[1, 2], [3, 4]]},
               {"title": "Chart", "type": "OBJECT", "sheetId": 11},
               {"title": "Hidden", "hidden": True, "sheetId": 12, "rows": 5, "columns": 5},
               {"title": "D3", "sheetId": 13, "rows": 10, "columns": 10, "values": [["a title like a cell"]]},
               {"title": "Bob's data", "sheetId": 14, "rows": 10, "columns": 10, "values": [["a title with a quote"]]},
               {"title": "Tabelle \u00e4\u00f6\u00fc \U0001f335", "sheetId": 15, "rows": 10, "columns": 10,
                "values": [["a title beyond ASCII"]]},
               {"title": "Connected", "type": "DATA_SOURCE", "sheetId": 16, "rows": 10, "columns": 3}],
}

_TYPES = {
    "id": "sample-cell-types", "title": "Types of cells",
    "sheets": [{"title": "Types", "rows": 30, "columns": 6, "cells": {
        "A1": 1.5, "B1": "text", "C1": True, "D1": "2024-03-01", "E1": "13:05:09", "F1": "2024-03-01 13:05:09",
        "A2": "=A1*2", "B2": '="a"&"b"', "C2": "=A1>1", "D2": "=DATE(2024,3,1)", "E2": "=NOW()", "F2": "=A1/0",
        "A3": "=NA()", "B3": "=NOSUCH(1)", "C3": "=A99", "D3": "=A1+", "E3": '="x"+1', "F3": "=F3",
        "A4": {"format": {"textFormat": {"bold": True}}}, "B4": {"note": "only a note"},
        "C4": {"value": {"numberValue": 60}, "format": {"numberFormat": {"type": "DATE"}}},
        "D4": {"value": {"numberValue": 61}, "format": {"numberFormat": {"type": "DATE"}}},
        "E4": {"value": {"numberValue": 45352.5}, "format": {"numberFormat": {"type": "DATE_TIME"}}},
        "F4": {"value": {"formulaValue": "=A1"}, "format": {"numberFormat": {"type": "DATE_TIME"}}},
        "A5": "12.5%", "B5": "$3.50", "C5": "1,234.5", "D5": "1e21", "E5": {"value": {"numberValue": 1 / 3}},
        "F5": {"value": {"stringValue": "=not a formula"}},
        "A6": "two\nlines", "B6": {"value": {"stringValue": "quote \" backslash \\ \u00fcmlaut \U0001f335"}},
        "C6": {"value": {"numberValue": 0}}, "D6": False, "E6": {"value": {"numberValue": -2.5e-7}}}}],
}

_PROTECTED = {
    "id": "sample-protection", "title": "Protected",
    "sheets": [{"title": "Whole", "rows": 10, "columns": 5, "protectedRanges": [
                    {"protectedRangeId": 501, "range": {}, "unprotectedRanges": [
                        {"startRowIndex": 1, "endRowIndex": 3, "startColumnIndex": 1, "endColumnIndex": 3}]}]},
               {"title": "Part", "sheetId": 21, "rows": 10, "columns": 5, "protectedRanges": [
                   {"protectedRangeId": 502, "range": {"startRowIndex": 2, "endRowIndex": 5}}]}],
}

_FILES = [
    {"id": "sample-workbook-file", "name": "report.xlsx", "content": "not really a workbook",
     "mimeType": "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
    {"id": "sample-large-file", "title": "Three thousand million bytes", "quotaBytesUsed": 3_000_000_000},
    {"id": "sample-odd-size", "title": "A size that is no number", "quotaBytesUsed": "a lot"},
    {"id": "sample-private", "title": "Not shared", "access": "none"},
    {"id": "sample-read-only", "title": "Shared for reading", "access": "reader"},
    {"id": "sample-public", "title": "Readable by everybody", "access": "reader", "public": True,
     "sheets": [{"title": "Data", "rows": 10, "columns": 5, "values": [["a", 1], ["b", 2]]}]},
]

STATES = {
    "empty": lambda: [],
    "demo": lambda: [_budget()],
    "samples": lambda: [_budget(), _KINDS, _TYPES, _PROTECTED, *_FILES],
}
