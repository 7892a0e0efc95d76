# SPDX-License-Identifier: Apache-2.0
"""Reading: types, options, sources, errors."""
import datetime
import gc
import io
import os
import pickle
import shutil
import signal
import tempfile
import threading
import time

import numpy as np
import openpyxl
import pandas
import pytest

import zxspreadsheet as zx


@pytest.fixture
def book(tmp_path):
    """A book that another program wrote."""
    made = openpyxl.Workbook()
    sheet = made.active
    sheet.title = "Data"
    day = datetime.datetime(2024, 3, 1, 13, 5)
    for row in (["n", "b", "d", "t", "m", "n"], [1.5, True, day, "x", 1, 1], [None, None, None, None, "é\U0001F600", 2],
                [-2, False, day, "y", day, 3], [3, True, day, "x", True, 4]):
        sheet.append(row)
    made.create_sheet("Second").append(["only"])
    path = tmp_path / "büch.xlsx"
    made.save(path)
    return path


def test_columns_are_arrays_of_their_type(book):
    table = zx.read(book)
    assert table.names == ["n", "b", "d", "t", "m", "n.1"] and table.shape == (4, 6) and table.range == "A1:F5"
    np.testing.assert_array_equal(table["n"], [1.5, np.nan, -2, 3])
    assert table["b"].tolist() == [True, None, False, True] and isinstance(table["b"], np.ma.MaskedArray)
    assert table["d"].dtype == "datetime64[us]" and np.isnat(table["d"][1]) and table["d"][0] == np.datetime64("2024-03-01T13:05")
    assert table["t"].tolist() == ["x", None, "y", "x"] and table.column("t").codes.tolist() == [0, -1, 1, 0]
    assert table["m"].tolist() == [1.0, "é\U0001F600", datetime.datetime(2024, 3, 1, 13, 5), True]
    assert table.mask("n").tolist() == [False, True, False, False]
    assert table.records()[1] == {"n": None, "b": None, "d": None, "t": None, "m": "é\U0001F600", "n.1": 2.0}


def test_numbers_share_the_memory_of_the_table_and_outlive_it(book):
    table = zx.read(book)
    values, dates = table["n"], table["d"]
    assert np.shares_memory(values, table["n"]) and np.shares_memory(table.to_pandas()["n"].to_numpy(), values)
    with zx.open(book) as opened:
        array = opened.read_array(0, "A2:A5")
    del table, opened
    gc.collect()
    assert values[0] == 1.5 and array[2, 0] == -2 and dates[0] == np.datetime64("2024-03-01T13:05")


def test_data_frames_have_the_types_that_pandas_reads(book):
    frame = zx.read(book).to_pandas()
    expected = pandas.read_excel(book)
    for name in ("n", "d", "t"):
        pandas.testing.assert_series_equal(frame[name], expected[name].where(expected[name].notna(), None if name == "t" else expected[name]),
                                           check_dtype=False)
    assert frame["b"].dtype == "boolean" and frame["b"].isna().tolist() == [False, True, False, False]
    assert zx.read(book).to_pandas(categories=True)["t"].cat.categories.tolist() == ["x", "y"]


def test_dates_that_nanoseconds_cannot_count_stay_dates(tmp_path):
    path = tmp_path / "far.xlsx"
    zx.write(path, {"d": np.array(["2500-01-01", "NaT"], "datetime64[D]")})
    frame = zx.read(path).to_pandas()
    assert frame["d"][0] == datetime.datetime(2500, 1, 1)


@pytest.mark.parametrize("options, names, values", [
    ({"header": False}, ["column1"], ["n", 1.5, None, -2.0, 3.0]),
    ({"header": None}, ["column1"], ["n", 1.5, None, -2.0, 3.0]),
    ({"header": 1}, ["1.5"], [None, -2.0, 3.0]),
    ({"drop_blank_rows": True}, ["n"], [1.5, -2.0, 3.0]),
    ({"missing": ["-2"]}, ["n"], [1.5, None, None, 3.0]),
    ({"types": {"n": "text"}}, ["n"], ["1.5", None, "-2", "3"]),
])
def test_options_say_how_a_range_becomes_a_table(book, options, names, values):
    with np.testing.suppress_warnings() as warnings:
        warnings.filter(zx.CoercionWarning)
        table = zx.read(book, range="A1:A5", **options)
    assert table.names == names
    assert [record[names[0]] for record in table.records()] == values


def test_what_was_coerced_is_a_warning_at_the_callers_line(data, book):
    with pytest.warns(zx.CoercionWarning, match="2 values that could not become number read as missing, first in D2|first in D2") as caught:
        zx.read(book, range="D1:D5", types={"t": "number"})
    assert caught[0].filename == __file__
    with pytest.warns(zx.CoercionWarning, match="1 error cell read as missing, first in A2"):
        zx.read(data("booleans_errors_formulas.xlsx"), range="A1:A3", header=False)


@pytest.mark.parametrize("order", ["F", "C"])
def test_matrices_lie_in_the_order_asked_for(book, order):
    array = zx.read_array(book, "data", "A2:C3", order=order)
    serial = (datetime.datetime(2024, 3, 1, 13, 5) - datetime.datetime(1899, 12, 30)) / datetime.timedelta(days=1)
    np.testing.assert_array_equal(array, [[1.5, 1, serial], [np.nan] * 3])
    assert array.flags.f_contiguous == (order == "F") and array.flags.c_contiguous == (order == "C")


def test_sources_are_paths_bytes_and_file_objects(book, tmp_path, monkeypatch):
    content = book.read_bytes()
    (tmp_path / "temporary").mkdir()
    monkeypatch.setattr(tempfile, "tempdir", str(tmp_path / "temporary"))
    for source in (book, str(book), content, bytearray(content), io.BytesIO(content), open(book, "rb")):
        assert zx.read(source, "Second", header=False)["column1"].tolist() == ["only"]
    with zx.open(io.BytesIO(content)) as opened:
        opened["Second"].name = "Third"
        target = io.BytesIO()
        opened.save(target)
        with pytest.raises(ValueError, match="save it to a path"):
            opened.save()
    assert zx.open(target.getvalue()).sheets == ["Data", "Third"]
    with pytest.raises(TypeError, match="binary mode"):
        zx.read(io.StringIO("text"))

    class Broken(io.BytesIO):
        def read(self, *_):
            raise OSError("the connection is gone")
    with pytest.raises(OSError, match="the connection is gone"):
        zx.read(Broken())
    gc.collect()
    assert os.listdir(tmp_path / "temporary") == []


@pytest.mark.parametrize("call, error, builtin, cause", [
    (lambda book, data: zx.read("no such.xlsx"), zx.FileMissing, FileNotFoundError, "no such.xlsx"),
    (lambda book, data: zx.read(b"text"), zx.NotAWorkbook, ValueError, "<bytes>: "),
    (lambda book, data: zx.open(data("bad/" + sorted(os.listdir(data("bad")))[0])), zx.Error, Exception, "bad/"),
    (lambda book, data: zx.read(book, "none"), zx.Missing, LookupError, "There is no sheet 'none'. The sheets are: Data, Second."),
    (lambda book, data: zx.read(book, 7), zx.Missing, LookupError, "There is no sheet 7; the book has 2"),
    (lambda book, data: zx.read(book, range="none"), zx.Missing, LookupError, ""),
    (lambda book, data: zx.read(book, range="A1:ZZZZ9"), zx.Error, Exception, ""),
    (lambda book, data: zx.read(book)["none"], zx.Missing, LookupError, "There is no column 'none'"),
    (lambda book, data: zx.read(book, types={"none": "text"}), zx.Error, Exception, "column 'none'"),
    (lambda book, data: zx.read(book, types={"n": "float"}), ValueError, ValueError, "not 'float'"),
    (lambda book, data: zx.read(book, header="n"), TypeError, TypeError, "header is"),
    (lambda book, data: zx.read(book, merged="some"), ValueError, ValueError, "'repeat'"),
    (lambda book, data: zx.read(book, sheet=1.5), TypeError, TypeError, "a float"),
    (lambda book, data: zx.read_array(book, order="A"), ValueError, ValueError, "order"),
    (lambda book, data: zx.read("a\0b"), ValueError, ValueError, "null"),
    (lambda book, data: zx.open(data("chart_and_dialog_sheets.xlsm")).read(0) if zx.open(data("chart_and_dialog_sheets.xlsm"))[0].is_chart
     else zx.open(data("chart_and_dialog_sheets.xlsm")).read(1), zx.Unsupported, NotImplementedError, ""),
])
def test_errors_have_a_class_and_a_sentence(book, data, call, error, builtin, cause):
    with pytest.raises(error) as caught:
        call(book, data)
    assert isinstance(caught.value, builtin) and cause in str(caught.value) and str(caught.value)
    if isinstance(caught.value, zx.Error):
        again = pickle.loads(pickle.dumps(caught.value))
        assert type(again) is type(caught.value) and str(again) == str(caught.value)


def test_a_closed_book_says_so(book):
    opened = zx.open(book)
    sheet = opened[0]
    opened.close()
    for call in (lambda: opened.sheets, lambda: sheet.read(), opened.save):
        with pytest.raises(ValueError, match="closed"):
            call()
    with pytest.raises(TypeError, match="does not pickle"):
        pickle.dumps(opened)


def test_tables_pickle(book):
    table = zx.read(book)
    again = pickle.loads(pickle.dumps(table))
    assert again.records() == table.records() and again.range == table.range and repr(again) == repr(table)


def test_threads_take_turns_with_a_book_and_read_at_once_without(book):
    with zx.open(book) as opened:
        found = []
        threads = [threading.Thread(target=lambda: found.append(opened.read(0).records())) for _ in range(8)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
    assert len(found) == 8 and all(records == found[0] for records in found)


def test_an_interrupt_ends_a_read(tmp_path):
    path = tmp_path / "large.xlsx"
    zx.write(path, np.arange(1_500_000.0).reshape(-1, 15))
    begin = time.monotonic()
    zx.read_array(path)
    whole = time.monotonic() - begin
    timer = threading.Timer(whole / 4, os.kill, (os.getpid(), signal.SIGINT))
    begin = time.monotonic()
    with pytest.raises(KeyboardInterrupt):
        timer.start()
        while True:  # a machine that got faster must not end this
            zx.read_array(path)
    assert time.monotonic() - begin < whole + 5
    shutil.rmtree(tmp_path)


def test_names_have_ranges_and_scopes_and_are_read(tmp_path):
    made = openpyxl.Workbook()
    first, second = made.active, made.create_sheet("It's 2")
    first.append(["a", 1])
    for row in (["x", "y"], [1, 2], [3, 4]):
        second.append(row)
    second.add_table(openpyxl.worksheet.table.Table(displayName="Points", ref="A1:B3"))
    made.defined_names.append(openpyxl.workbook.defined_name.DefinedName("Total", attr_text="'It''s 2'!$B$2:$B$3"))
    made.defined_names.append(openpyxl.workbook.defined_name.DefinedName("Total", attr_text="Sheet!$B$1", localSheetId=0))
    made.save(tmp_path / "names.xlsx")
    with zx.open(tmp_path / "names.xlsx") as book:
        assert sorted(book.names, key=repr) == [zx.Name("Points", "It's 2", "A1:B3", None, True), zx.Name("Total", "It's 2", "B2:B3"),
                                                zx.Name("Total", "Sheet", "B1", "Sheet")]
        assert book.read(range="POINTS")["y"].tolist() == [2, 4] and book.read_array(0, "Total").tolist() == [[1]]
    for range, expected in [("total", [[2], [4]]), ("'It''s 2'!A2:A3", [[1], [3]]), ("Sheet!B1", [[1]]), ("It's 2!Total", [[2], [4]])]:
        assert zx.read_array(tmp_path / "names.xlsx", range=range).tolist() == expected
    for range in ("None!A1", "Nothing"):
        with pytest.raises(zx.Missing):
            zx.read(tmp_path / "names.xlsx", range=range)
