# SPDX-License-Identifier: Apache-2.0
"""What a type checker has to accept, and, on the lines that ask for it, to refuse. Never run."""
import io
from pathlib import Path

import numpy as np
import numpy.typing as npt

import zxspreadsheet as zx

table: zx.Table = zx.read(Path("a.xlsx"), sheet=0, range="A1:B2", types={"Rain": "number"}, missing=["NA"], header=None)
codes: npt.NDArray[np.int32] = table.column("Station").codes
total: float = table["Rain"].sum()
rows: list[dict[str, object]] = table.records()
with zx.open(io.BytesIO(), application=True) as book:
    used: list[str] = [sheet.used_range for sheet in book if not sheet.is_chart]
    scopes: list[str | None] = [name.scope for name in book.names]
    cells: str = book.add("Data", at=0).write({"a": [1]}, append=False)
    book[0].hidden = "very hidden"
    book.save(io.BytesIO())
matrix: npt.NDArray[np.float64] = zx.read_array(b"", order="C")
try:
    zx.write("gsheet:1AbC", matrix, sheet=np.int64(0))
except zx.Refused as error:
    cause: str = error.cause
for part in zx.scan([Path("a.xlsx")], header=False):
    maybe: zx.Table | None = part.try_read()[0]

zx.read(7)  # type: ignore[arg-type]
zx.read("a.xlsx", rnage="A1")  # type: ignore[call-arg]
zx.read("a.xlsx", types=["number"])  # type: ignore[arg-type]
book.names = []  # type: ignore[misc]
wrong: int = book[0].name  # type: ignore[assignment]
