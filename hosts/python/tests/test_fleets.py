# SPDX-License-Identifier: Apache-2.0
"""Many workbooks: parts, failures, the corpus beside another reader, Dask."""
import os
import pickle
import warnings

import numpy as np
import openpyxl
import pytest

import zxspreadsheet as zx


@pytest.fixture
def fleet(tmp_path):
    """Forty books of two sheets, and one that is cut off in the middle."""
    for number in range(40):
        zx.write(tmp_path / f"{number:02}.xlsx", {"n": np.arange(100.0) + number, "t": ["x"] * 100}, sheet="A")
        zx.write(tmp_path / f"{number:02}.xlsx", {"n": [1.0]}, sheet="B")
    whole = (tmp_path / "00.xlsx").read_bytes()
    (tmp_path / "cut.xlsx").write_bytes(whole[:len(whole) // 2])
    return tmp_path


def test_a_scan_lists_sheets_and_failures_and_reads_later(fleet):
    found = zx.scan(fleet)
    assert len(found) == 80 and [failure.path for failure in found.failures] == [str(fleet / "cut.xlsx")]
    assert found.failures[0].kind in ("damaged", "not a workbook") and found.failures[0].cause
    part = pickle.loads(pickle.dumps(zx.scan(str(fleet / "0*.xlsx"), sheet="a", header=False).parts[3]))
    assert (part.sheet, part.index, len(part.read())) == ("A", 0, 101)
    os.unlink(part.path)
    table, failure = part.try_read()
    assert table is None and failure.kind == "file not found" and failure.sheet == "A"
    with pytest.raises(ValueError):
        zx.scan(fleet, types={"n": "none"})


def _sum(part):
    """A row of results, and a row of failures."""
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        table, failure = part.try_read()
    if failure:
        return None, failure
    return (part.path, part.sheet, sum(np.nansum(table[name]) for name in table if table.column(name).type == "number")), None


def _on_two_workers(parts):
    distributed = pytest.importorskip("distributed")
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        with distributed.Client(cluster) as client:
            return client.gather(client.map(_sum, parts))


def test_dask_reads_parts_on_two_processes(fleet):
    found = zx.scan(fleet, sheet="A")
    (fleet / "07.xlsx").write_bytes(b"PK damaged since")
    results = _on_two_workers(found.parts)
    sums = {os.path.basename(row[0]): row[2] for row, failure in results if row}
    assert len(sums) == 39 and sums["03.xlsx"] == 4950 + 300
    assert [failure.path for row, failure in results if failure] == [str(fleet / "07.xlsx")]


def test_dask_reads_the_corpus_as_one_process_does(corpus):
    found = zx.scan(corpus)
    assert len(found) > 300 and 0 < len(found.failures) < 40
    results = _on_two_workers(found.parts)
    assert [repr(result) for result in results] == [repr(_sum(part)) for part in found.parts]


def test_tables_of_the_corpus_have_the_cells_that_openpyxl_reads(corpus):
    compared = 0
    for name in sorted(os.listdir(corpus)):
        path = os.path.join(corpus, name)
        if not name.endswith(".xlsx") or os.path.getsize(path) > 300_000:
            continue
        try:
            with warnings.catch_warnings():
                warnings.simplefilter("ignore")
                other = openpyxl.load_workbook(path, data_only=True)
                numbers = {sheet.title: sheet for sheet in other.worksheets}
        except Exception:
            continue  # openpyxl is strict about what it does not need
        with zx.open(path) as book:
            for sheet in book:
                if sheet.is_chart or sheet.name not in numbers:
                    continue
                kinds = sheet.types("A1:T60")
                array = sheet.read_array("A1:T60")
                for row, column in zip(*np.nonzero(kinds == "number")):
                    value = numbers[sheet.name].cell(int(row) + 1, int(column) + 1).value
                    if isinstance(value, (int, float)) and not isinstance(value, bool):
                        assert array[row, column] == pytest.approx(value, rel=1e-15), (name, sheet.name, row, column)
                        compared += 1
    assert compared > 1000
