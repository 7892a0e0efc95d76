# SPDX-License-Identifier: Apache-2.0
"""A client that was made for the real service, built from the official documents with another root."""

import json
import unittest
import warnings

from support import RunningEmulator, shared_data

try:
    import google.oauth2.credentials
    from googleapiclient.discovery import build_from_document
    from googleapiclient.errors import HttpError
    from googleapiclient.http import MediaInMemoryUpload
    MISSING = None
except ImportError:
    MISSING = "Debian's package python3-googleapi is not installed"
PATHS = {"sheets": ("google", "sheets.v4.json"), "drive": ("google", "drive.v3.json")}
if not MISSING and not all(shared_data(*path) for path in PATHS.values()):
    MISSING = "the official documents are absent (ZX_SHARED)"


@unittest.skipIf(MISSING, MISSING)
class OtherClient(unittest.TestCase):
    def setUp(self):
        warnings.simplefilter("ignore", ResourceWarning)  # this client leaves its sockets to the collector
        self.emulator = RunningEmulator()
        self.addCleanup(self.emulator.close)
        self.root = f"http://127.0.0.1:{self.emulator.emulator.port}/"

    def service(self, name, token="test-token"):
        with open(shared_data(*PATHS[name]), encoding="utf-8") as file:
            document = json.load(file)
        document.update(rootUrl=self.root, baseUrl=self.root + document["servicePath"])
        document.pop("mtlsRootUrl", None)
        return build_from_document(json.dumps(document), credentials=google.oauth2.credentials.Credentials(token))

    def test_works_as_with_the_real_service(self):
        books = self.service("sheets").spreadsheets()
        book = books.create(body={"properties": {"title": "By another client"},
                                  "sheets": [{"properties": {"title": "Data"}}]}).execute()
        number, sheet = book["spreadsheetId"], book["sheets"][0]["properties"]["sheetId"]
        block = {"sheetId": sheet, "startRowIndex": 2, "endRowIndex": 3, "startColumnIndex": 0, "endColumnIndex": 2}

        def batch(*requests):
            return books.batchUpdate(spreadsheetId=number, body={"requests": list(requests)}).execute()["replies"]

        added = batch({"addSheet": {"properties": {"title": "More", "index": 0}}})[0]["addSheet"]["properties"]
        self.assertEqual((added["title"], added["index"]), ("More", 0))
        values = books.values()
        updated = values.update(spreadsheetId=number, range="Data!A1:B2", valueInputOption="USER_ENTERED",
                                body={"values": [["2024-03-01", "=1+1"], ["x", True]]}).execute()
        self.assertEqual(updated["updatedCells"], 4)
        shown = values.get(spreadsheetId=number, range="Data!A1:B2", valueRenderOption="UNFORMATTED_VALUE").execute()
        self.assertEqual(shown["values"], [[45352, 2], ["x", True]])
        cell = {"userEnteredValue": {"numberValue": 7}, "userEnteredFormat": {"numberFormat": {"type": "PERCENT"}}}
        batch({"updateCells": {"range": block, "rows": [{"values": [cell]}], "fields": "*"}},
              {"mergeCells": {"range": block, "mergeType": "MERGE_ALL"}})
        got = books.get(spreadsheetId=number, ranges=["Data!A3:B3"],
                        fields="sheets(merges,data.rowData.values(effectiveValue,formattedValue))").execute()
        self.assertEqual(got, {"sheets": [{"merges": [block], "data": [{"rowData": [{"values": [
            {"effectiveValue": {"numberValue": 7}, "formattedValue": "700.00%"}]}]}]}]})
        copy = books.sheets().copyTo(spreadsheetId=number, sheetId=sheet,
                                     body={"destinationSpreadsheetId": number}).execute()
        self.assertEqual((copy["title"], copy["index"]), ("Copy of Data", 2))
        values.clear(spreadsheetId=number, range="Data!A1:B2", body={}).execute()
        self.assertEqual(values.get(spreadsheetId=number, range="'Copy of Data'!B1").execute()["values"], [["2"]])
        self.check_drive(number)

    def check_drive(self, number):
        files = self.service("drive").files()
        self.assertEqual(files.get(fileId=number, fields="mimeType").execute(),
                         {"mimeType": "application/vnd.google-apps.spreadsheet"})
        uploaded = files.create(body={"name": "a.csv"}, fields="id,name,quotaBytesUsed", media_body=MediaInMemoryUpload(
            b"a,b\r\n1,2\r\n", "text/csv")).execute()
        self.assertEqual((uploaded["name"], uploaded["quotaBytesUsed"]), ("a.csv", "10"))
        self.assertEqual(files.delete(fileId=number).execute(), "")
        with self.assertRaises(HttpError) as caught:
            files.get(fileId=number).execute()
        self.check_refusal(caught.exception, 404, f"File not found: {number}.")

    def check_refusal(self, error, status, text):
        self.assertEqual((error.resp.status, json.loads(error.content)["error"]["message"]), (status, text))

    def test_understands_refusals(self):
        books = self.service("sheets").spreadsheets()
        number = books.create(body={}).execute()["spreadsheetId"]
        with self.assertRaises(HttpError) as caught:
            books.batchUpdate(spreadsheetId=number, body={"requests": [{"deleteSheet": {"sheetId": 0}}]}).execute()
        self.check_refusal(caught.exception, 400, "Invalid requests[0].deleteSheet: You can't remove all the sheets "
                                                  "in a document.")


if __name__ == "__main__":
    unittest.main()
