# SPDX-License-Identifier: Apache-2.0
"""Replays exchanges that were recorded against the real service and reports where the emulator answers otherwise.

PYTHONPATH=../../tools python3 replay.py FILE prints a report. Identifiers are mapped; times, editors and
spreadsheet-level properties other than the title are left out of the comparison."""

import collections
import http.client
import json
import re
import sys
import threading
from typing import NamedTuple
from urllib.parse import parse_qsl, urlsplit

from google_emulator.methods import find_method
from google_emulator.errors import NoSuchPath, ServiceError
from google_emulator.schema import MESSAGES, UNSERVED
from google_emulator.server import Emulator

ID_FIELDS = ("id", "spreadsheetId", "sheetId", "protectedRangeId", "namedRangeId", "destinationSpreadsheetId")
LEFT_OUT = ("createdTime", "modifiedTime", "editors")
# The recordings look at one spreadsheet of somebody else.
PRIVATE_STATUS = 403
NOT_ASKED_FOR = {"sheets.spreadsheets.values.append", "sheets.spreadsheets.values.batchGet",
                 "sheets.spreadsheets.values.batchClear", "sheets.spreadsheets.values.batchUpdate",
                 "drive.files.create", "insertDimension", "deleteNamedRange", "updateNamedRange",
                 "updateSpreadsheetProperties"}


class Outcome(NamedTuple):
    exchange: dict
    kind: str  # what was asked for
    verdict: str  # "same", "differs", or why it is out of scope
    answer: tuple = ()


def request_kinds(method, body):
    """The kinds of requests in a batch, or the method's name."""
    if method.name != "sheets.spreadsheets.batchUpdate":
        return [method.name]
    return sorted({kind for request in json.loads(body or "{}").get("requests", ()) for kind in request})


def reduced(value, inside_book=False):
    """A reply without what differs from day to day."""
    if isinstance(value, list):
        return [reduced(entry) for entry in value]
    if not isinstance(value, dict):
        return value
    result = {name: reduced(entry) for name, entry in value.items() if name not in LEFT_OUT}
    if "spreadsheetId" in result and "sheets" in result:
        result["properties"] = {"title": result["properties"]["title"]}
    return result


class Identifiers:
    """Recorded identifiers and the ones that stand for them here."""

    def __init__(self):
        self.ours = {}

    def learn(self, recorded, ours):
        """Pairs up identifiers that stand in the same places of two replies."""
        if isinstance(recorded, dict) and isinstance(ours, dict):
            for name in recorded.keys() & ours.keys():
                one, other = recorded[name], ours[name]
                if name in ID_FIELDS and isinstance(one, (int, str)) and one and one not in self.ours:
                    self.ours[one] = other
                self.learn(one, other)
        elif isinstance(recorded, list) and isinstance(ours, list):
            for one, other in zip(recorded, ours):
                self.learn(one, other)

    def translated(self, value):
        if isinstance(value, list):
            return [self.translated(entry) for entry in value]
        if not isinstance(value, dict):
            return value
        return {name: self.ours.get(entry, entry) if name in ID_FIELDS and isinstance(entry, (int, str))
                else self.translate_url(name, entry) for name, entry in value.items()}

    def translate_url(self, name, value):
        if name == "spreadsheetUrl":
            return self.translate_text(value)
        return self.translated(value)

    def translate_text(self, text):
        return re.sub(r"[-_A-Za-z0-9]{40,}", lambda match: str(self.ours.get(match.group(), match.group())), text)


def files_from_before(exchanges):
    """Descriptions of the spreadsheets that a case looks at without having created them: they lay on the drive
    already, so the emulator has to be given them first. Titles and sizes come from the first look."""
    files, created = {}, set()
    for exchange in exchanges:
        found = re.search(r"/(?:spreadsheets|files)/([-_A-Za-z0-9]{40,})$", urlsplit(exchange["url"]).path)
        if exchange["method"] == "POST" and exchange["url"].partition("?")[0].endswith("/files"):
            created.add(json.loads(exchange["body"])["id"])
        elif found and exchange["method"] == "GET" and found.group(1) not in created:
            number = found.group(1)
            if exchange["status"] == PRIVATE_STATUS:
                files[number] = {"id": number, "access": "none"}
            elif exchange["status"] == 200 and "sheets" not in files.get(number, {}):
                files[number] = files.get(number, {}) | _description(number, json.loads(exchange["body"]))
    return list(files.values())


def _description(number, reply):
    if "sheets" not in reply:
        return {"id": number, "title": reply.get("name", "")}
    sheets = [entry["properties"] for entry in reply["sheets"]]
    return {"id": number, "title": reply["properties"]["title"], "sheets": [
        {"title": sheet["title"], "sheetId": sheet["sheetId"], "type": sheet["sheetType"],
         "rows": sheet["gridProperties"]["rowCount"], "columns": sheet["gridProperties"]["columnCount"]}
        for sheet in sheets]}


class Replay:
    """Replays cases one after the other against an emulator of its own."""

    def __init__(self):
        self.emulator = Emulator()
        self.thread = threading.Thread(target=self.emulator.run, daemon=True)
        self.thread.start()
        self.connection = http.client.HTTPConnection("127.0.0.1", self.emulator.port)

    def close(self):
        self.connection.close()
        self.emulator.stop()
        self.thread.join()
        self.emulator.server.server_close()

    def ask(self, method, target, body=None):
        headers = {"Authorization": "Bearer test-token", "Content-Type": "application/json"}
        self.connection.request(method, target, body.encode() if body else None, headers)
        reply = self.connection.getresponse()
        return reply.status, reply.read().decode()

    def case(self, exchanges):
        """The outcomes of one recorded case, from an empty drive on."""
        self.ask("POST", "/__emulator/reset", json.dumps({"files": files_from_before(exchanges)}))
        identifiers, changed_elsewhere = Identifiers(), set()
        return [self._exchange(exchange, identifiers, changed_elsewhere) for exchange in exchanges]

    def _exchange(self, exchange, identifiers, changed_elsewhere):
        url = urlsplit(exchange["url"])
        book = next(iter(re.findall(r"[-_A-Za-z0-9]{40,}", url.path)), None)
        try:
            method, _ = find_method(exchange["method"], url.path)
        except (NoSuchPath, ServiceError):
            if exchange["method"] != "GET" and not url.path.endswith("/copy"):
                changed_elsewhere.add(book)
            path = re.sub(r"[-_A-Za-z0-9]{40,}", "ID", url.path)
            kind = f"{exchange['method']} {path}"
            return Outcome(exchange, kind, "not served: " + kind)
        if method.name == "drive.files.list" and "name" not in dict(parse_qsl(url.query)).get("q", ""):
            return Outcome(exchange, method.name, "a list with files of others")
        kinds = request_kinds(method, exchange["req_body"])
        kind = "+".join(kinds)
        unserved = [name for name in kinds if name in MESSAGES["Request"]
                    and MESSAGES["Request"][name].type == UNSERVED]
        if unserved:
            changed_elsewhere.add(book)
            return Outcome(exchange, kind, "not served: " + "+".join(unserved))
        if book and book in changed_elsewhere and not method.is_drive:
            return Outcome(exchange, kind, "spreadsheet was changed before by a request that is not served")
        return self._compared(exchange, url, kind, identifiers)

    def _compared(self, exchange, url, kind, identifiers):
        target = identifiers.translate_text(url.path) + (f"?{url.query}" if url.query else "")
        body = exchange["req_body"]
        if body:
            body = json.dumps(identifiers.translated(json.loads(body)))
        status, text = self.ask(exchange["method"], target, body)
        recorded = exchange["body"]
        if status == exchange["status"] and recorded.startswith("{") and text.startswith("{"):
            identifiers.learn(json.loads(recorded), json.loads(text))
            same = reduced(identifiers.translated(json.loads(recorded))) == reduced(json.loads(text))
        else:
            same = status == exchange["status"] and recorded == text
        return Outcome(exchange, kind, "same" if same else "differs", (status, text))


def read_cases(path):
    cases = collections.defaultdict(list)
    with open(path, encoding="utf-8") as file:
        for line in file:
            exchange = json.loads(line)
            cases[exchange["case"]].append(exchange)
    return cases


def replay_file(path):
    replay = Replay()
    try:
        return [outcome for exchanges in read_cases(path).values() for outcome in replay.case(exchanges)]
    finally:
        replay.close()


def in_scope(outcome):
    return outcome.verdict in ("same", "differs")


def report(outcomes):
    """Counts: what was compared, by kind, and what was not, by reason."""
    compared = [outcome for outcome in outcomes if in_scope(outcome)]
    passed = sum(outcome.verdict == "same" for outcome in compared)
    extra = sum(any(name in NOT_ASKED_FOR for name in outcome.kind.split("+")) for outcome in compared)
    lines = [f"{len(outcomes)} exchanges, {len(compared)} compared ({extra} of them of methods that are served only so "
             f"that recordings run), {passed} the same, {len(compared) - passed} different, "
             f"{len(outcomes) - len(compared)} out of scope"]
    reasons = collections.Counter(outcome.verdict for outcome in outcomes if not in_scope(outcome))
    lines += [f"  out: {count:4} {reason}" for reason, count in reasons.most_common()]
    kinds = collections.Counter((outcome.kind, outcome.verdict) for outcome in compared)
    lines += [f"  {verdict:8} {count:4} {kind}" for (kind, verdict), count in sorted(kinds.items())]
    return "\n".join(lines)


def difference(outcome):
    exchange = outcome.exchange
    return (f"{exchange['case']} {exchange['n']}: {exchange['method']} {exchange['url']}\n  {exchange['req_body']}\n"
            f"  recorded {exchange['status']} {exchange['body'][-700:]}\n  emulator {outcome.answer[0]} "
            f"{outcome.answer[1][-700:]}")


if __name__ == "__main__":
    found = replay_file(sys.argv[1])
    print(report(found))
    for wrong in [outcome for outcome in found if outcome.verdict == "differs"][:5]:
        print(difference(wrong))
