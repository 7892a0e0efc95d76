#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
#
# Writes weather.xlsx beside this script, the workbook of the examples. Needs the standard library only
# and always gives the same bytes.
import pathlib
import zipfile

MAIN = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
DOCUMENT = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
HEAD = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
PLAIN, DATE, DATE_TIME = 0, 1, 2

# station, day (serial number of the 1900 system), temperature, rain in mm, snow
READINGS = [
    ("Harbour", 45352, 7.5, 0, False),
    ("Harbour", 45353, 6.25, 4.2, False),
    ("Summit", 45352, -11.75, 0.3, True),
    ("Summit", 45353.25, -9, 2.1, True),
    ("Valley", 45352, 3.125, None, False),
]


def text(reference, value):
    return f'<c r="{reference}" t="inlineStr"><is><t>{value}</t></is></c>'


def number(reference, value, style=PLAIN):
    return f'<c r="{reference}" s="{style}"><v>{value}</v></c>'


def readings_rows():
    heads = ("Station", "Day", "Temperature", "Rain", "Snow", "Rain per degree")
    yield 1, "".join(text(f"{c}1", h) for c, h in zip("ABCDEF", heads))
    for row, (station, day, degrees, rain, snow) in enumerate(READINGS, start=2):
        cells = text(f"A{row}", station)
        cells += number(f"B{row}", day, DATE if day == int(day) else DATE_TIME)
        cells += number(f"C{row}", degrees)
        cells += "" if rain is None else number(f"D{row}", rain)
        cells += f'<c r="E{row}" t="b"><v>{int(snow)}</v></c>'
        yield row, cells + ratio(row, degrees, rain)


def ratio(row, degrees, rain):
    formula = f"<f>C{row}/D{row}</f>"
    if not rain:
        return f'<c r="F{row}" t="e">{formula}<v>#DIV/0!</v></c>'
    return f'<c r="F{row}">{formula}<v>{degrees / rain!r}</v></c>'


def summary_rows():
    yield 1, text("A1", "Rain by station")
    for row, station in enumerate(("Harbour", "Summit", "Valley"), start=2):
        total = sum(r[3] or 0 for r in READINGS if r[0] == station)
        formula = f"<f>SUMIF(Readings!A:A,A{row},Readings!D:D)</f>"
        yield row, text(f"A{row}", station) + f'<c r="B{row}">{formula}<v>{total!r}</v></c>'


def worksheet(rows, after=""):
    body = "".join(f'<row r="{index}">{cells}</row>' for index, cells in rows)
    return f'{HEAD}<worksheet xmlns="{MAIN}"><sheetData>{body}</sheetData>{after}</worksheet>'


def parts():
    sheet_type = "application/vnd.openxmlformats-officedocument.spreadsheetml"
    yield "[Content_Types].xml", (
        f'{HEAD}<Types xmlns="{PACKAGE}/content-types">'
        '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>'
        f'<Default Extension="xml" ContentType="{sheet_type}.worksheet+xml"/>'
        f'<Override PartName="/xl/workbook.xml" ContentType="{sheet_type}.sheet.main+xml"/>'
        f'<Override PartName="/xl/styles.xml" ContentType="{sheet_type}.styles+xml"/></Types>')
    yield "_rels/.rels", relationships(("officeDocument", "xl/workbook.xml"))
    yield "xl/workbook.xml", (
        f'{HEAD}<workbook xmlns="{MAIN}" xmlns:r="{DOCUMENT}"><sheets>'
        '<sheet name="Readings" sheetId="1" r:id="rId1"/>'
        '<sheet name="Summary" sheetId="2" r:id="rId2"/></sheets>'
        '<definedNames><definedName name="RainByStation">Summary!$A$2:$B$4</definedName></definedNames>'
        '</workbook>')
    yield "xl/_rels/workbook.xml.rels", relationships(
        ("worksheet", "worksheets/sheet1.xml"), ("worksheet", "worksheets/sheet2.xml"),
        ("styles", "styles.xml"))
    yield "xl/styles.xml", (
        f'{HEAD}<styleSheet xmlns="{MAIN}"><fonts count="1"><font/></fonts>'
        '<fills count="1"><fill><patternFill patternType="none"/></fill></fills><borders count="1"><border/></borders>'
        '<cellStyleXfs count="1"><xf/></cellStyleXfs><cellXfs count="3"><xf/>'
        '<xf numFmtId="14" applyNumberFormat="1"/><xf numFmtId="22" applyNumberFormat="1"/>'
        '</cellXfs></styleSheet>')
    yield "xl/worksheets/sheet1.xml", worksheet(readings_rows())
    merged = '<mergeCells count="1"><mergeCell ref="A1:B1"/></mergeCells>'
    yield "xl/worksheets/sheet2.xml", worksheet(summary_rows(), merged)


def relationships(*targets):
    entries = "".join(
        f'<Relationship Id="rId{i}" Type="{DOCUMENT}/{kind}" Target="{target}"/>'
        for i, (kind, target) in enumerate(targets, start=1))
    return f'{HEAD}<Relationships xmlns="{PACKAGE}/relationships">{entries}</Relationships>'


def main():
    path = pathlib.Path(__file__).with_name("weather.xlsx")
    with zipfile.ZipFile(path, "w") as package:
        for name, content in parts():
            entry = zipfile.ZipInfo(name, (2024, 3, 1, 12, 0, 0))
            entry.compress_type = zipfile.ZIP_DEFLATED
            package.writestr(entry, content)


if __name__ == "__main__":
    main()
