# SPDX-License-Identifier: Apache-2.0
"""The wire: kept connections, compression, large replies, ordered faults, starting and ending."""

import gzip
import http.client
import json
import os
import shutil
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import unittest

import google_emulator
from google_emulator.generated import number_at
from google_emulator.samples import DEMO_ID
from google_emulator.server import Emulator
from support import RunningEmulator

BOOK = f"/v4/spreadsheets/{DEMO_ID}"
READ = f"{BOOK}/values/Expenses!A4:C5"
CLEAR = f"{BOOK}/values/Expenses!A4:C5:clear"
FOLDER = os.path.dirname(google_emulator.__file__)


class Wire(unittest.TestCase):
    def setUp(self):
        self.emulator = RunningEmulator("demo")
        self.addCleanup(self.emulator.close)

    def read(self, **headers):
        status, reply_headers, body = self.emulator.exchange("GET", READ, **headers)
        return status, reply_headers, body

    def amounts(self):
        return json.loads(self.emulator.exchange("GET", READ)[2])["values"]

    def order(self, **fault):
        self.emulator.control("DELETE", "faults")
        self.emulator.control("POST", "faults", fault)

    def log(self):
        return self.emulator.control("GET", "log")


class PlainReplies(Wire):
    def test_are_spelled_as_the_service_does(self):
        status, headers, body = self.emulator.exchange("GET", f"{BOOK}?fields=sheets.properties(title,hidden)")
        self.assertEqual((status, headers["Content-Type"]), (200, "application/json; charset=UTF-8"))
        self.assertEqual(body.decode(), """{
  "sheets": [
    {
      "properties": {
        "title": "Expenses"
      }
    },
    {
      "properties": {
        "title": "Income"
      }
    }
  ]
}
""")

    def test_come_over_kept_connections_and_are_logged(self):
        self.emulator.control("DELETE", "log")
        self.read(User_Agent="first")
        self.emulator.exchange("POST", CLEAR, b"{}", Content_Type="application/json")
        self.emulator.exchange("DELETE", "/drive/v3/files/nosuch")
        entries = self.log()
        self.assertEqual([(entry["method"], entry["status"]) for entry in entries],
                         [("GET", 200), ("POST", 200), ("DELETE", 404)])
        self.assertEqual(len({entry["connection"] for entry in entries}), 1)
        self.assertEqual(entries[0]["headers"], {"Accept-Encoding": "identity", "User-Agent": "first",
                                                 "Authorization": "Bearer test-token"})
        self.assertEqual((entries[1]["target"], entries[1]["body"]), (CLEAR, "{}"))

    def test_answer_bodies_in_chunks(self):
        self.emulator.connection.request("POST", CLEAR, iter([b"{", b"}"]), {"Authorization": "Bearer test-token"},
                                         encode_chunked=True)
        self.assertEqual(self.emulator.connection.getresponse().read()[:1], b"{")
        self.assertEqual((self.log()[-1]["body"], self.log()[-1]["headers"]["Transfer-Encoding"]), ("{}", "chunked"))
        for size in ("-1", "zz", "fffffffff"):
            raw = f"POST {CLEAR} HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n{size}\r\n".encode()
            with socket.create_connection(("127.0.0.1", self.emulator.emulator.port), timeout=20) as connection:
                connection.sendall(raw)
                self.assertIn(b" 413 ", connection.recv(1 << 16))

    def test_are_compressed_on_demand(self):
        _, headers, body = self.read(Accept_Encoding="deflate, gzip")
        self.assertEqual(headers["Content-Encoding"], "gzip")
        self.assertEqual(gzip.decompress(body), self.read()[2])
        self.emulator.control("POST", "settings", {"gzip": False})
        self.assertNotIn("Content-Encoding", self.read(Accept_Encoding="gzip")[1])

    def test_of_generated_sheets_come_in_chunks(self):
        self.emulator.control("POST", "fill", {"file": DEMO_ID, "sheet": "Income", "rows": 5001, "columns": 3})
        expected = [[number_at(row, column) for column in range(3)] for row in range(5001)]
        cells = "sheets.data.rowData.values(userEnteredFormat/numberFormat,userEnteredValue,effectiveValue)"
        for encoding in ("identity", "gzip"):
            _, headers, body = self.emulator.exchange("GET", f"{BOOK}?ranges=Income!A1:D9999&fields={cells}",
                                                      Accept_Encoding=encoding)
            self.assertEqual(headers["Transfer-Encoding"], "chunked")
            text = (gzip.decompress(body) if encoding == "gzip" else body).decode()
            reply = json.loads(text)
            self.assertEqual(text, json.dumps(reply, indent=2) + "\n")
            rows = reply["sheets"][0]["data"][0]["rowData"]
            self.assertEqual([[cell["effectiveValue"]["numberValue"] for cell in row["values"]] for row in rows],
                             expected)
        options = "?valueRenderOption=UNFORMATTED_VALUE&fields=values&majorDimension="
        by_rows = json.loads(self.emulator.exchange("GET", f"{BOOK}/values/Income{options}ROWS")[2])["values"]
        by_columns = json.loads(self.emulator.exchange("GET", f"{BOOK}/values/Income{options}COLUMNS")[2])["values"]
        self.assertEqual(by_rows, expected)
        self.assertEqual([list(row) for row in zip(*by_columns)], expected)


class Uploads(Wire):
    def upload(self, body, content_type="multipart/related; boundary=foo_bar_baz"):
        return self.emulator.exchange("POST", "/upload/drive/v3/files?uploadType=multipart", body,
                                      Content_Type=content_type)

    def body(self, metadata, content):
        return (b"--foo_bar_baz\r\nContent-Type: application/json; charset=UTF-8\r\n\r\n" + metadata
                + b"\r\n--foo_bar_baz\r\nContent-Type: text/csv\r\n\r\n" + content + b"\r\n--foo_bar_baz--")

    def test_keep_the_bytes(self):
        content = "a,ü\r\n--foo\r\n\r\n1,2\r\n".encode()
        status, _, text = self.upload(self.body(b'{\n"name": "a.csv",\n"mimeType": "text/csv"\n}', content))
        reply = json.loads(text)
        self.assertEqual((status, reply["name"], reply["mimeType"]), (200, "a.csv", "text/csv"))
        self.assertEqual(self.emulator.control("GET", "files/" + reply["id"])["content"], content.decode())
        _, _, text = self.emulator.exchange("GET", f"/drive/v3/files/{reply['id']}?fields=quotaBytesUsed")
        self.assertEqual(json.loads(text), {"quotaBytesUsed": str(len(content))})
        self.assertEqual(self.emulator.exchange("DELETE", "/drive/v3/files/" + reply["id"])[0::2], (204, b""))

    def test_are_refused_when_malformed(self):
        good = self.body(b'{"name": "a"}', b"x")
        for about, body, content_type in (
                ("no end", good[:-2], None), ("one part", b"--foo_bar_baz\r\n\r\n{}\r\n--foo_bar_baz--", None),
                ("other boundary", good, "multipart/related; boundary=other"), ("no type", good, "text/plain"),
                ("bad metadata", self.body(b'{"name": "a"b"}', b"x"), None),
                ("unknown field", self.body(b'{"title": "a"}', b"x"), None)):
            with self.subTest(about):
                status, _, _ = self.upload(body, *([content_type] if content_type else []))
                self.assertEqual(status, 400)
        self.assertEqual(len(self.emulator.control("GET", "files")), 1)


SPOILT = [
    # fault, status, what the body has to look like
    ({"fault": "status", "status": 429}, 429, lambda body: b"Quota exceeded" in body and b'"reason": "RATE_' in body),
    ({"fault": "status", "status": 503, "message": "Busy"}, 503, lambda body: b'"message": "Busy"' in body),
    ({"fault": "status", "status": 201}, 201, lambda body: b'"clearedRange"' in body),
    ({"fault": "status", "status": 204}, 204, lambda body: body == b""),
    ({"fault": "html-page", "status": 502}, 502, lambda body: body.startswith(b"<html>")),
    ({"fault": "malformed-json"}, 200, lambda body: not is_json(body) and body.startswith(b"{")),
    ({"fault": "trailing-garbage"}, 200, lambda body: body.endswith(b"}garbage\n")),
    ({"fault": "not-an-object"}, 200, lambda body: isinstance(json.loads(body), list)),
    ({"fault": "plain-rate-limit"}, 200, lambda body: body == b"RATE_LIMIT_EXCEEDED"),
    ({"fault": "empty-body"}, 200, lambda body: body == b""),
    ({"fault": "line-feeds"}, 200, lambda body: not is_json(body) and b'"clearedRange"' in body.replace(b"\n", b"")),
    ({"fault": "deep-nesting", "depth": 5000}, 200, lambda body: body.count(b"{") == 5000),
    ({"fault": "huge-reply", "bytes": 3_000_000}, 200, lambda body: len(body) > 2_900_000 and is_json(body)),
]


def is_json(body):
    try:
        return json.loads(body) is not None
    except ValueError:
        return False


class Faults(Wire):
    def test_spoil_replies_and_keep_the_request_from_being_done(self):
        before = self.amounts()
        for fault, status, looks_right in SPOILT:
            with self.subTest(fault["fault"]):
                self.order(**fault, method="POST")
                answered, _, body = self.emulator.exchange("POST", CLEAR, b"{}")
                self.assertEqual(answered, status)
                self.assertTrue(looks_right(body), body[:300])
                self.assertEqual(self.amounts(), before)

    def test_cut_connections(self):
        before = self.amounts()
        for fault in ({"fault": "cut-before-reply"}, {"fault": "cut-in-body"}, {"fault": "cut-in-body", "bytes": 0},
                      {"fault": "length-too-large"}):
            with self.subTest(fault):
                self.order(**fault)
                with self.assertRaises((OSError, http.client.HTTPException)):
                    self.emulator.exchange("POST", CLEAR, b"{}")
                self.assertEqual(self.amounts(), before)

    def test_may_strike_after_the_request_was_done(self):
        self.order(fault="taken-then-status")
        self.assertEqual(self.emulator.exchange("POST", CLEAR, b"{}")[0], 503)
        self.assertNotIn("values", json.loads(self.emulator.exchange("GET", READ)[2]))
        self.order(fault="taken-then-cut", path=":clear")
        with self.assertRaises((OSError, http.client.HTTPException)):
            self.emulator.exchange("POST", CLEAR.replace("A4:C5", "A6"), b"{}")
        self.assertNotIn("values", json.loads(self.emulator.exchange("GET", BOOK + "/values/A6")[2]))

    def test_slow_replies_wait_until_they_are_released(self):
        for fault in ({"fault": "slow-first-byte", "seconds": 600},
                      {"fault": "slow-trickle", "seconds": 600, "steps": 1}):
            with self.subTest(fault):
                self.order(**fault)
                other = http.client.HTTPConnection("127.0.0.1", self.emulator.emulator.port, timeout=20)
                other.request("GET", READ, headers={"Authorization": "Bearer test-token"})
                while not any(entry["fault"] == fault["fault"] for entry in self.log()):
                    pass
                replies = []
                reader = threading.Thread(target=lambda: replies.append(other.getresponse().read()))
                reader.start()
                while reader.is_alive():
                    self.emulator.control("POST", "release")
                reader.join()
                other.close()
                self.assertEqual(replies, [self.read()[2]])

    def test_strike_where_they_are_told_to(self):
        self.emulator.control("POST", "faults", [
            {"fault": "status", "method": "GET", "path": "A4:C5", "nth": 2, "times": 2},
            {"fault": "status", "status": 500, "method": "PUT", "times": 0}])
        self.assertEqual([self.read()[0] for _ in range(5)], [200, 503, 503, 200, 200])
        self.assertEqual([self.emulator.exchange("PUT", READ)[0] for _ in range(3)], [500, 500, 500])
        self.assertEqual([order["fired"] for order in self.emulator.control("GET", "faults")], [2, 3])
        self.emulator.control("POST", "reset", {"state": "demo"})
        self.assertEqual(self.read()[0], 200)

    def test_are_refused_when_misspelled(self):
        for fault in ({"fault": "nosuch"}, {"fault": "status", "code": 500}, {"fault": "status", "path": "("}):
            status, _, body = self.emulator.exchange("POST", "/__emulator/faults", json.dumps(fault))
            self.assertEqual(status, 400, body)


class Program(unittest.TestCase):
    @unittest.skipUnless(shutil.which("openssl"), "openssl is not installed")
    def test_speaks_https(self):
        with tempfile.TemporaryDirectory() as folder:
            certificate, key = os.path.join(folder, "certificate.pem"), os.path.join(folder, "key.pem")
            subprocess.run(["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj",
                            "/CN=emulator", "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out",
                            certificate], check=True, capture_output=True)
            with open(certificate, encoding="ascii") as file:
                certificate_text = file.read()
            emulator = Emulator(0, certificate, key)
        thread = threading.Thread(target=emulator.run, daemon=True)
        thread.start()
        for context, trusted in ((ssl.create_default_context(cadata=certificate_text), True),
                                 (ssl.create_default_context(), False)):
            connection = http.client.HTTPSConnection("127.0.0.1", emulator.port, timeout=20, context=context)
            if trusted:
                connection.request("GET", "/__emulator/help")
                self.assertEqual(connection.getresponse().status, 200)
            else:
                with self.assertRaises(ssl.SSLCertVerificationError):
                    connection.request("GET", "/__emulator/help")
            connection.close()
        emulator.stop()
        thread.join()
        emulator.server.server_close()

    def test_tells_its_port_and_ends_with_standard_input(self):
        with tempfile.TemporaryDirectory() as folder:
            port_file = os.path.join(folder, "port")
            child = subprocess.Popen([sys.executable, FOLDER, "--port-file", port_file, "--state", "samples",
                                      "--exit-with-stdin"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
            with child:
                word, port = child.stdout.readline().split()
                with open(port_file, encoding="ascii") as file:
                    self.assertEqual((word, port), ("PORT", file.read().strip()))
                connection = http.client.HTTPConnection("127.0.0.1", int(port), timeout=20)
                connection.request("GET", READ + "?key=test-key")
                self.assertEqual(connection.getresponse().status, 200)
                connection.close()
                child.stdin.close()
                self.assertEqual(child.wait(timeout=20), 0)


if __name__ == "__main__":
    unittest.main()
