# SPDX-License-Identifier: Apache-2.0
"""Books in a spreadsheet application, where LibreOffice is. A program of its own: it shares one process of it."""
import shutil

import numpy as np
import openpyxl
import pytest

import zxspreadsheet as zx

pytestmark = pytest.mark.skipif(not shutil.which("soffice"), reason="LibreOffice is not here")


@pytest.fixture(scope="module", autouse=True)
def session(tmp_path_factory):
    """Keeps the application from ending between the tests."""
    path = tmp_path_factory.mktemp("kept") / "kept.xlsx"
    zx.write(path, {"n": [1.0]})
    with zx.open(path, application=True) as book:
        yield book


def test_books_of_other_formats_are_read_and_written(tmp_path):
    path = tmp_path / "table.ods"
    data = {"n": [1.5, None], "t": ["x", "é"], "d": np.array(["2024-03-01", "2024-03-02T13:05"], "M8[s]"), "b": [True, False]}
    assert zx.write(path, data, sheet="Data", application=True) == "A1:D3"
    assert zx.open(path, application=True).sheets == ["Data"]
    table = zx.read(path, "Data", application=True)
    assert table["d"].astype("M8[s]").tolist() == data["d"].tolist() and table["t"].tolist() == data["t"]
    assert table["b"].tolist() == data["b"]
    np.testing.assert_array_equal(table["n"], [1.5, np.nan])
    np.testing.assert_array_equal(zx.read_array(path, "Data", "A2:A3", application=True), [[1.5], [np.nan]])


def test_formulas_are_computed_and_sheets_changed(tmp_path):
    path = tmp_path / "sums.xlsx"
    book = openpyxl.Workbook()
    book.active.append([1, "=A1*2"])
    book.save(path)
    with zx.open(path, application=True) as book:
        assert book[0].read_array().tolist() == [[1, 2]]
        book[0].write(np.array([[5.0]]))
        assert book[0].read_array().tolist() == [[5, 10]]
        book.add("Second").write({"x": ["y"]})
        with pytest.raises(zx.Unsupported, match="Only the sheets of a file"):
            book.move("Second", 0)
        book.save()
    assert zx.read_array(path).tolist() == [[5, 10]] and zx.read(path, "Second").records() == [{"x": "y"}]
    with pytest.raises(zx.Error) as caught:
        zx.read(tmp_path / "none.ods", application=True)
    assert "none.ods" in str(caught.value)
