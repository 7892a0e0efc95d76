# SPDX-License-Identifier: Apache-2.0
#
# Fixtures about books as a whole: sheets, names, encodings, namespaces, containers.
from fixture_writer import DECLARATION, MAIN, REL, Book, relationships, zip_bytes

ONE_CELL = '<row r="1"><c r="A1"><v>1.5</v></c><c r="B1" t="s"><v>0</v></c></row>'
ONE_CELL_FACTS = """
    sheet worksheet visible Data
    A1 number 1.5
    B1 text word"""


def plain(kind="xlsx", **options):
    return Book(kind, **options).sheet("Data", ONE_CELL).strings("<t>word</t>")


def sheets():
    one = '<row r="1"><c r="A1"><v>1</v></c></row>'
    yield "hidden_and_very_hidden.xlsx", Book().sheet("Shown", one).sheet(
        "Hidden", one, attributes='state="hidden"').sheet(
        "Deep", one, attributes='state="veryHidden"').sheet(
        "A & B <\"\u00e9\u65e5'>", one, attributes='state="visible"').bytes(), r"""
        sheet worksheet visible Shown
        A1 number 1
        sheet worksheet hidden Hidden
        A1 number 1
        sheet worksheet veryhidden Deep
        A1 number 1
        sheet worksheet visible A & B <"\u00e9\u65e5'>
        A1 number 1"""
    book = Book("xlsm").sheet("First", one).sheet("Chart", kind="chartsheet").sheet(
        "Dialog", kind="dialogsheet").sheet("Macro", one, kind="xlMacrosheet").sheet("Last", one)
    book.sheets.append(("Lost", "", "rId99"))
    book.sheets.append(("No target", "", "rId98"))
    book.relation("worksheet", "worksheets/absent.xml", "rId98")
    yield "chart_and_dialog_sheets.xlsm", book.bytes(), """
        sheet worksheet visible First
        A1 number 1
        sheet chart - Chart
        sheet worksheet visible Dialog
        sheet worksheet visible Macro
        A1 number 1
        sheet worksheet visible Last
        A1 number 1
        sheet worksheet visible Lost
        sheet worksheet visible No target"""
    yield "empty_sheet.xlsx", Book().sheet("Nothing").sheet("Rows only", "<row r=\"3\"/>").bytes(), """
        sheet worksheet visible Nothing
        bounds none
        sheet worksheet visible Rows only
        bounds none"""
    yield "merged_regions.xlsx", Book().sheet(
        "Open", one, tail='<mergeCells count="3"><mergeCell ref="A1:C1"/><mergeCell ref="D5:D2"/>'
        '<mergeCell ref="$F$1:$G$4"/></mergeCells>').sheet(
        "Locked", one, tail='<sheetProtection sheet="1" objects="1"/><mergeCells>'
        '<mergeCell ref="A1:XFD1048576"/></mergeCells>').sheet(
        "Not locked", one, tail='<sheetProtection sheet="0"/>').bytes(), """
        sheet worksheet visible Open
        merge A1:C1
        merge D2:D5
        merge F1:G4
        A1 number 1
        sheet worksheet visible Locked
        protected
        merge A1:XFD1048576
        A1 number 1
        sheet worksheet visible Not locked
        A1 number 1"""
    book = Book().sheet("One", one).sheet("It's two", one)
    book.names = ("<definedName name=\"Area\">One!$B$2:$C$4</definedName>"
                  "<definedName name=\"Cell\">'It''s two'!$D$5</definedName>"
                  "<definedName name=\"Columns\">One!$A:$C</definedName>"
                  "<definedName name=\"Rows\">One!$2:$3</definedName>"
                  "<definedName name=\"Local\" localSheetId=\"1\" hidden=\"1\">'It''s two'!$A$1</definedName>"
                  "<definedName name=\"local\">One!$Z$1</definedName>"
                  "<definedName name=\"Union\">One!$A$1,One!$B$2</definedName>"
                  "<definedName name=\"Broken\">#REF!</definedName>"
                  "<definedName name=\"Formula\">SUM(One!$A$1:$A$9)</definedName>"
                  "<definedName name=\"Other\">[1]Sheet1!$A$1</definedName>")
    yield "defined_names.xlsx", book.bytes(), """
        sheet worksheet visible One
        name Area B2:C4
        name AREA B2:C4
        name Cell none
        name Columns A1:C1048576
        name Rows A2:XFD3
        name Local Z1:Z1
        name Union none
        name Broken none
        name Formula none
        name Other none
        name Absent none
        A1 number 1
        sheet worksheet visible It's two
        name Area none
        name Cell D5:D5
        name LOCAL A1:A1
        A1 number 1"""


def dresses():
    for kind in ("xlsm", "xltx", "xltm"):
        yield f"plain_{kind}.{kind}", plain(kind).bytes(), ONE_CELL_FACTS
    yield "macro_book_named_xlsx.xlsx", plain("xlsm").bytes(), ONE_CELL_FACTS
    yield "strict_namespaces.xlsx", plain(strict=True).bytes(), ONE_CELL_FACTS

    book = plain()
    prefixed = {}
    for name, data in book.all_parts():
        text = data.decode()
        for tag in ("workbook", "workbookPr", "sheets", "sheet", "worksheet", "sheetData", "row", "c",
                    "v", "sst", "si", "t", "Types", "Default", "Override", "Relationships",
                    "Relationship"):
            for end in " >/":
                text = text.replace(f"<{tag}{end}", f"<q:{tag}{end}")
            text = text.replace(f"</{tag}>", f"</q:{tag}>")
        prefixed[name] = text.replace(' xmlns="', ' xmlns:q="').encode()
    yield "namespace_prefixes.xlsx", zip_bytes(list(prefixed.items())), ONE_CELL_FACTS

    encodings = ["utf-16-le", "utf-16-be"]
    wide = []
    for i, (name, data) in enumerate(plain().all_parts()):
        text = data.decode().replace("UTF-8", "UTF-16")
        wide.append((name, ("\ufeff" + text).encode(encodings[i % 2])))
    yield "utf16_parts.xlsx", zip_bytes(wide), ONE_CELL_FACTS
    yield "utf8_bom.xlsx", zip_bytes(
        [(name, b"\xef\xbb\xbf" + data) for name, data in plain().all_parts()]), ONE_CELL_FACTS
    yield "no_declarations.xlsx", zip_bytes(
        [(name, data.replace(DECLARATION.encode(), b"")) for name, data in plain().all_parts()]), ONE_CELL_FACTS

    book = plain()
    sheet = '<sheet name="Data" sheetId="1" r:id="rId1"/>'
    book.part("xl/workbook.xml", f"""<workbook xmlns="{MAIN}" xmlns:r="{REL}"
        xmlns:mc="http://schemas.openxmlformats.org/markup-compatibility/2006"><sheets>
        <mc:AlternateContent><mc:Choice Requires="new"><sheet name="Newer" sheetId="9" r:id="rId9"/>
        </mc:Choice><mc:Fallback>{sheet}</mc:Fallback></mc:AlternateContent></sheets></workbook>""")
    yield "alternate_content.xlsx", book.bytes(), ONE_CELL_FACTS


def containers():
    yield "stored_entries.xlsx", plain().bytes(stored=True), ONE_CELL_FACTS
    yield "data_descriptors.xlsx", plain().bytes(descriptors=True), ONE_CELL_FACTS
    yield "zip64.xlsx", plain().bytes(zip64=True), ONE_CELL_FACTS
    yield "bytes_around.xlsx", b"MZ garbage" * 9 + plain().bytes() + b"\r\n" * 20, ONE_CELL_FACTS
    parts = plain().all_parts()
    yield "duplicated_parts.xlsx", zip_bytes(
        parts + [("xl/worksheets/sheet1.xml", b"<worksheet/>")]), ONE_CELL_FACTS

    def disguised(name):
        return {"_rels/.rels": "_rels\\.rels", "xl/sharedStrings.xml": "/xl/sharedStrings.xml",
                "[Content_Types].xml": "[content_types].XML"}.get(
                    name, name.replace("/", "\\").upper())
    yield "absolute_and_backslashed_names.xlsx", zip_bytes(
        [(disguised(name), data) for name, data in parts]), ONE_CELL_FACTS

    book = Book(folder="odd folder/deep/")
    book.sheet("Data", ONE_CELL).strings("<t>word</t>")
    moved = dict(book.all_parts())
    moved["elsewhere/s 1.xml"] = moved.pop("odd folder/deep/worksheets/sheet1.xml")
    moved["texts.xml"] = moved.pop("odd folder/deep/sharedStrings.xml")
    moved["odd folder/deep/_rels/workbook.xml.rels"] = relationships([
        ("rId1", REL + "/worksheet", "../../elsewhere/s%201.xml"),
        ("rId2", REL + "/sharedStrings", "\\texts.xml"),
        ("rId3", REL + "/theme", "nowhere.xml")]).encode()
    yield "parts_in_other_folders.xlsx", zip_bytes(list(moved.items())), ONE_CELL_FACTS

    without = dict(plain().all_parts())
    del without["_rels/.rels"]
    yield "found_by_content_type.xlsx", zip_bytes(list(without.items())), ONE_CELL_FACTS


def fixtures():
    for group in (sheets, dresses, containers):
        yield from group()
