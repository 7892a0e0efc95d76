# SPDX-License-Identifier: Apache-2.0
"""Writing: what Python has, what others read of it, what is refused."""
import datetime

import numpy as np
import openpyxl
import pandas
import pytest

import zxspreadsheet as zx

DAY = datetime.datetime(2024, 3, 1, 13, 5, 0, 250000)


@pytest.fixture
def path(tmp_path):
    return str(tmp_path / "out.xlsx")


def cells(path, sheet=None):
    """All values as openpyxl reads them."""
    book = openpyxl.load_workbook(path)
    return [list(row) for row in (book[sheet] if sheet else book.worksheets[0]).iter_rows(values_only=True)]


STRUCTURED = np.array([(1, "x"), (2, "y")], [("n", "i4"), ("t", "U3")])


@pytest.mark.parametrize("data, expected", [
    (np.array([[1.5, np.nan], [3, 4]]), [[1.5, None], [3, 4]]),
    (np.asfortranarray([[1.0, 2, 3], [4, 5, 6]]), [[1, 2, 3], [4, 5, 6]]),
    (np.arange(24.0).reshape(4, 6)[::2, 1::2], [[1, 3, 5], [13, 15, 17]]),
    (np.array([[1, 2]], ">f4"), [[1, 2]]),
    (np.array([True, False]), [[True], [False]]),
    (np.ma.MaskedArray([1, 2, 3], mask=[0, 1, 0]), [[1], [None], [3]]),
    (np.ma.MaskedArray([[1.5, 2.5]], mask=[[1, 0]]), [[None, 2.5]]),
    (STRUCTURED, [["n", "t"], [1, "x"], [2, "y"]]),
    ({"d": np.array(["2024-03-01", "NaT"], "datetime64[D]")}, [["d"], [datetime.datetime(2024, 3, 1)], [None]]),
    ({"a": [1, "x", None, True, DAY], "b": range(5)}, [["a", "b"], [1, 0], ["x", 1], [None, 2], [True, 3], [DAY, 4]]),
    ([{"a": 1}, {"a": 2, "b": "x"}], [["a", "b"], [1, None], [2, "x"]]),
    ([["x", 1], ["y", 2.5]], [["x", 1], ["y", 2.5]]),
    (pandas.DataFrame({"i": pandas.array([1, None], "Int64"), "c": pandas.Categorical(["u", "v"]), "d": [pandas.Timestamp(DAY), pandas.NaT]}),
     [["i", "c", "d"], [1, "u", DAY], [None, "v", None]]),
])
def test_every_shape_of_data_is_written(path, tmp_path, data, expected):
    zx.write(path, data)
    found = cells(path)
    assert found + [[None] * len(expected[0])] * (len(expected) - len(found)) == expected
    other = str(tmp_path / "out.xls")
    zx.write(other, data)
    assert zx.read(other, header=False).records() == zx.read(path, header=False).records()


def test_what_is_read_is_written_again(path, tmp_path):
    zx.write(path, {"n": [1.5, None], "t": ["é", ""], "b": [True, None], "m": [1, "x"], "d": [DAY, None]})
    table = zx.read(path)
    other = str(tmp_path / "other.xlsx")
    zx.write(other, table)
    assert zx.read(other).records() == table.records()
    zx.write(other, table.to_pandas(), replace=True)
    assert zx.read(other).records() == table.records()


def test_sheets_cells_append_and_replace(path):
    assert zx.write(path, {"a": [1], "b": ["x"]}, sheet="One", cell="B2") == "B2:C3"
    zx.write(path, {"a": [5]}, sheet="Two")
    assert zx.open(path).sheets == ["One", "Two"]
    assert zx.write(path, {"b": ["y"]}, sheet="one", append=True) == "B4:C4"
    assert zx.read(path, "One").records() == [{"a": 1.0, "b": "x"}, {"a": None, "b": "y"}]
    with pytest.raises(zx.Refused, match="no column 'c' to append to. Its columns are: a, b"):
        zx.write(path, {"c": [1]}, sheet="One", append=True)
    zx.write(path, np.array([[7.0]]), sheet="One", replace=True)
    assert zx.open(path)["One"].used_range == "A1"
    with pytest.raises(ValueError, match="exclude"):
        zx.write(path, {"a": [1]}, append=True, replace=True)


def test_the_rest_of_a_book_is_kept(path):
    book = openpyxl.Workbook()
    book.active["A1"], book.active["B1"] = 1.5, "=A1*2"
    book.active["A1"].number_format = "0.000"
    book.save(path)
    zx.write(path, np.array([[2.5]]), keep_format=True, header=False)
    sheet = openpyxl.load_workbook(path).active
    assert (sheet["A1"].value, sheet["A1"].number_format, sheet["B1"].value) == (2.5, "0.000", "=A1*2")


@pytest.mark.parametrize("data, error, cause", [
    (np.array([[1.0, np.inf]]), zx.Refused, "row 0, column 1 is infinite"),
    ({"a": [1.0, -np.inf]}, zx.Refused, "cell A3 is infinite"),
    ({"a": [2**53 + 1]}, zx.Refused, "9007199254740993"),
    ({"a": np.array([2**60])}, zx.Refused, "up to 2**53"),
    ({"a": np.array([2**64 - 1], np.uint64)}, zx.Refused, "18446744073709551615"),
    ({"a": [1, 2], "b": [1]}, ValueError, "'a' has 2 values, 'b' 1"),
    ([[1, 2], [1]], ValueError, "from 1 to 2"),
    ({"a": np.array([1j])}, TypeError, "complex128"),
    ({"a": np.array([1], "m8[s]")}, TypeError, "number of days"),
    ({"a": [object()]}, TypeError, "a object in row 0"),
    ({"a": [b"x"]}, TypeError, "a bytes in row 0"),
    ({"a": "text"}, TypeError, "a column is an array or a list"),
    (np.zeros((2, 2, 2)), ValueError, "3 dimensions"),
    ({"a": np.zeros((2, 2))}, ValueError, "'a' has 2 dimensions"),
    ({"a": ["x" * 32768]}, zx.Refused, "cell A2 is a text of more than 32767"),
    ({"a": ["\ud800"]}, zx.Refused, "lone surrogate"),
    ({"a": [datetime.datetime(1899, 12, 31)]}, zx.Refused, "before 1900-01-01"),
    ({"a": np.array(["10000-01-01"], "M8[D]")}, zx.Refused, "years 1 to 9999"),
    ({"a": [datetime.datetime(2024, 1, 1, tzinfo=datetime.timezone.utc)]}, zx.Refused, "time zone"),
    (pandas.DataFrame({"a": pandas.to_datetime(["2024-01-01"], utc=True)}), zx.Refused, "tz_localize"),
    (np.zeros((2, 20000)), zx.LimitExceeded, ""),
])
def test_what_a_workbook_would_change_is_refused(path, data, error, cause):
    zx.write(path, {"kept": [1.0]})
    with pytest.raises(error) as caught:
        zx.write(path, data)
    assert cause in str(caught.value)
    with pytest.raises(error):
        zx.write(path, data, replace=True)
    assert zx.read(path).records() == [{"kept": 1.0}]


@pytest.mark.parametrize("data", [np.zeros((0, 3)), np.zeros((3, 0)), {}, [], {"a": []}, np.zeros(0)])
def test_nothing_is_written_of_what_is_empty(path, data):
    cells_written = zx.write(path, data)
    assert cells_written == ("A1" if isinstance(data, dict) and data else "")


def test_books_change_as_a_whole(path):
    zx.write(path, {"a": [1.0]}, sheet="One")
    with zx.open(path) as book:
        two = book.add("Two", at=0, copy_of="One")
        assert book.sheets == ["Two", "One"] and two.read().records() == [{"a": 1.0}]
        book.move("Two", 1)
        with pytest.raises(zx.Refused, match="ask the book again"):
            two.read()
        book["Two"].hidden = True
        book["Two"].protected = True
        book.rename("One", "First")
        book.save()
        with pytest.raises(zx.Refused):
            book.rename("First", "a/b")
        with pytest.raises(zx.Error):
            book.add("first")
    with zx.open(path) as book:
        assert book.sheets == ["First", "Two"] and book["Two"].hidden == "hidden" and book["Two"].protected
        book.remove("Two")
        assert book.sheets == ["First"] and len(book) == 1
        assert [sheet.name for sheet in book] == ["First"]
