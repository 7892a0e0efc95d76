# SPDX-License-Identifier: Apache-2.0
"""Remembers the requests that came in, for tests to look at."""

from urllib.parse import unquote

_HEADERS = ("Accept", "Accept-Encoding", "Authorization", "Connection", "Content-Encoding", "Content-Length",
            "Content-Type", "Expect", "Transfer-Encoding", "User-Agent", "X-Goog-User-Project")
MAX_LOGGED_BODY = 1 << 20


class RequestLog:
    def __init__(self):
        self.entries = []

    def clear(self):
        self.entries = []

    def add(self, connection, method, target, headers, body):
        """The new entry; what becomes of the request is filled in later."""
        entry = {"number": len(self.entries) + 1, "connection": connection, "method": method, "target": target,
                 "decoded": unquote(target),
                 "headers": {name: headers[name] for name in _HEADERS if name in headers},
                 "bodyBytes": len(body), "body": body[:MAX_LOGGED_BODY].decode("utf-8", "replace"),
                 "fault": None, "status": None}
        self.entries.append(entry)
        return entry
