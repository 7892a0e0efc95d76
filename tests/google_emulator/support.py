# SPDX-License-Identifier: Apache-2.0
"""What the tests share: asking the service without and with a wire, finding the shared data."""

import http.client
import json
import os
import threading
from urllib.parse import quote

from google_emulator.book_specs import add_file, dump_file
from google_emulator.server import Emulator
from google_emulator.service import Service

BOOK = "book"


def shared_data(*parts):
    """A file of the optional shared data, or None."""
    folder = os.environ.get("ZX_SHARED", "")
    path = os.path.join(folder, *parts)
    return path if folder and os.path.exists(path) else None


class Asker:
    """A service with one spreadsheet, asked by function calls."""

    def __init__(self, *sheets, **more):
        self.service = Service()
        add_file(self.service.drive, {"id": BOOK, "title": "Book", "sheets": list(sheets) or [
            {"title": "Sheet1", "rows": 100, "columns": 10}]} | more)

    def ask(self, verb, target, body=None, authorization="Bearer test-token"):
        headers = {"Authorization": authorization} if authorization else {}
        raw = body if isinstance(body, bytes) else b"" if body is None else json.dumps(body).encode()
        reply = self.service.answer(verb, target, headers, raw)
        return reply.status, reply.body

    def get(self, suffix=""):
        return self.ask("GET", f"/v4/spreadsheets/{BOOK}{suffix}")

    def values(self, text, **options):
        query = "&".join(f"{name}={value}" for name, value in options.items())
        status, body = self.get(f"/values/{quote(text)}?{query}")
        return body.get("values", []) if status == 200 else message(body)

    def put(self, text, values, option="USER_ENTERED"):
        return self.ask("PUT", f"/v4/spreadsheets/{BOOK}/values/{quote(text)}?valueInputOption={option}",
                        {"values": values})

    def batch(self, *requests):
        return self.ask("POST", f"/v4/spreadsheets/{BOOK}:batchUpdate", {"requests": list(requests)})

    def state(self):
        return dump_file(self.service.drive, self.service.drive.files[BOOK])


def message(body):
    return body["error"]["message"] if isinstance(body, dict) and "error" in body else None


class RunningEmulator:
    """An emulator on a port, with a kept connection to it."""

    def __init__(self, state="empty"):
        self.emulator = Emulator()
        self.thread = threading.Thread(target=self.emulator.run, daemon=True)
        self.thread.start()
        self.connection = http.client.HTTPConnection("127.0.0.1", self.emulator.port, timeout=20)
        self.control("POST", "reset", {"state": state})

    def close(self):
        self.connection.close()
        self.emulator.stop()
        self.thread.join()
        self.emulator.server.server_close()

    def exchange(self, verb, target, body=None, **headers):
        """(status, headers, bytes); a broken connection is opened anew by the next call."""
        headers = {"Authorization": "Bearer test-token"} | {name.replace("_", "-"): value
                                                            for name, value in headers.items()}
        try:
            self.connection.request(verb, target, body, headers)
            reply = self.connection.getresponse()
            return reply.status, reply.headers, reply.read()
        except (OSError, http.client.HTTPException):
            self.connection.close()
            raise

    def control(self, verb, name, body=None):
        status, _, text = self.exchange(verb, f"/__emulator/{name}", None if body is None else json.dumps(body))
        assert status == 200, text
        return json.loads(text)
