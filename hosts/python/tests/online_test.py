# SPDX-License-Identifier: Apache-2.0
"""Spreadsheets online, served by the project's emulator. A program of its own, since a process keeps its service."""
import json
import os
import subprocess
import sys
import urllib.request

import numpy as np
import pytest

EMULATOR = os.path.join(os.environ["ZX_SOURCE_FOLDER"], "tools", "google_emulator")
DAY = np.datetime64("2024-03-01T00:00:00.000000")
FILE = {"id": "book", "title": "Book", "sheets": [
    {"title": "Data", "rows": 20, "columns": 5, "values": [["Station", "Rain", "Day", "Wet"], ["Harbour", 4.2, "2024-03-01", True],
                                                         ["Hill", "=1/0", "2024-03-02", False]]},
    {"title": "Other", "sheetId": 7, "rows": 5, "columns": 2}], "namedRanges": {"Rain": "Data!B1:B3"}}


@pytest.fixture(scope="module")
def service():
    """Sends an instruction to the emulator."""
    child = subprocess.Popen([sys.executable, EMULATOR, "--exit-with-stdin"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
    root = f"http://127.0.0.1:{child.stdout.readline().split()[1]}"
    for name in [name for name in os.environ if name.lower().endswith("_proxy") or name in
                 ("ZX_API_KEY", "ZX_TOKEN_COMMAND", "GOOGLE_APPLICATION_CREDENTIALS", "GOOGLE_CLOUD_QUOTA_PROJECT")]:
        del os.environ[name]
    os.environ.update(ZX_GOOGLE_ROOT=root, ZX_ACCESS_TOKEN="test-token")

    def instruct(instruction, body):
        request = urllib.request.Request(f"{root}/__emulator/{instruction}", json.dumps(body).encode(),
                                         {"Content-Type": "application/json"}, method="POST")
        with urllib.request.urlopen(request) as reply:
            return json.load(reply)
    yield instruct
    child.stdin.close()
    child.wait()


@pytest.fixture
def zx(service):
    service("reset", {"state": "empty", "files": [FILE]})
    import zxspreadsheet
    return zxspreadsheet


def test_reads_as_files_do(zx):
    with pytest.warns(zx.CoercionWarning, match="1 error cell read as missing, first in B3"):
        table = zx.read("gsheet:book")
    assert table.records() == [{"Station": "Harbour", "Rain": 4.2, "Day": DAY.item(), "Wet": True},
                               {"Station": "Hill", "Rain": None, "Day": DAY.item().replace(day=2), "Wet": False}]
    np.testing.assert_array_equal(zx.read_array("gsheet:book", "Data", "B2:B3"), [[4.2], [np.nan]])
    assert zx.read("gsheet:book", range="Data!A1:A2").records() == [{"Station": "Harbour"}]
    with pytest.warns(zx.CoercionWarning):
        assert zx.read("gsheet:book", range="Rain")["Rain"][0] == 4.2
    with zx.open("gsheet:book") as book:
        assert (book.format, book.sheets, book["Data"].used_range) == ("GSHEET", ["Data", "Other"], "A1:D3")
        with pytest.raises(zx.Unsupported, match="not listed"):
            book.names


def test_writes_and_reads_back(zx):
    data = {"n": [1.5, None], "t": ["x", ""], "d": np.array(["2024-03-01", "NaT"], "M8[D]"), "b": [True, False]}
    assert zx.write("gsheet:book", data, sheet="Other", cell="A2") == "A2:D4"
    assert zx.read("gsheet:book", "Other").records()[0] == {"n": 1.5, "t": "x", "d": DAY.item(), "b": True}
    assert zx.write("gsheet:book", [{"d": None, "n": 7}], sheet="Other", append=True) == "A5:D5"
    np.testing.assert_array_equal(zx.read("gsheet:book", "Other", "A2:A5")["n"], [1.5, np.nan, 7])
    assert zx.write("gsheet:book", np.eye(3), sheet="New") == "A1:C3"
    np.testing.assert_array_equal(zx.read_array("gsheet:book", "New"), np.eye(3))
    with zx.open("gsheet:book") as book:
        book.rename("New", "Newer")
        book.remove("Other")
    assert zx.open("gsheet:book").sheets == ["Data", "Newer"]


@pytest.mark.parametrize("fault, error, http_status, sentence", [
    (404, "FileMissing", 404, "gsheet:none: "),
    (403, "ServiceError", 403, "gsheet:book: "),
    (401, "ServiceError", 401, "gsheet:book: "),
    (400, "ServiceError", 400, "gsheet:book: "),
])
def test_what_the_service_refuses_has_a_class(zx, service, fault, error, http_status, sentence):
    if fault != 404:
        service("faults", {"fault": "status", "status": fault, "times": 9})
    with pytest.raises(getattr(zx, error)) as caught:
        zx.read("gsheet:book" if fault != 404 else "gsheet:none")
    assert caught.value.http_status == http_status and str(caught.value).startswith(sentence)
    assert "test-token" not in str(caught.value)
