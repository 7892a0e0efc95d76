# SPDX-License-Identifier: Apache-2.0
#
# Files that must end in an error, each with a piece of the error's text.
import struct

from fixture_writer import REL, Book, relationships, zip_bytes
from fixtures_packages import plain


def compound_file(stream_names):
    """A compound file (MS-CFB) whose directory lists empty streams: header, FAT, directory."""
    free, end, fat = 0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFD
    header = b"\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1" + bytes(16)
    header += struct.pack("<HHHHH6xIIIIIIIIII", 0x3E, 3, 0xFFFE, 9, 6, 0, 1, 1, 0, 4096, end, 0, end,
                          0, 0)
    header += struct.pack("<I", free) * 108
    table = struct.pack("<II", fat, end) + struct.pack("<I", free) * 126
    directory = b""
    for i, name in enumerate(["Root Entry"] + stream_names):
        label = name.encode("utf-16-le")
        child = 1 if i == 0 else free
        after = i + 1 if 0 < i < len(stream_names) else free
        directory += label.ljust(64, b"\0")
        directory += struct.pack("<HBBIII36xIQ", len(label) + 2, 5 if i == 0 else 2, 1, free, after,
                                 child, end, 0)
    return header + table + directory.ljust(512, b"\0")


def part_replaced(name, text, **shape):
    parts = dict(plain().all_parts())
    if text is None:
        del parts[name]
    else:
        parts[name] = text if isinstance(text, bytes) else text.encode()
    return zip_bytes(list(parts.items()), **shape)


def sheet_with(data):
    return Book().sheet("Data", data).bytes()


def fixtures():
    yield "empty_file.xlsx", b"", "it is empty"
    yield "text.xlsx", b"name,value\nline,1\n", "text file"
    yield "truncated.xlsx", plain().bytes()[:-300], "truncated"
    yield "encrypted.xlsx", compound_file(["EncryptionInfo", "EncryptedPackage"]), "encrypted"
    yield "compound_file.xlsx", compound_file(["WordDocument"]), "compound file"
    yield "empty_stream.xls", compound_file(["Workbook"]), "it is empty"
    yield "binary_workbook.xlsx", zip_bytes([
        ("_rels/.rels", relationships([("r", REL + "/officeDocument", "xl/workbook.bin")]).encode()),
        ("xl/workbook.bin", b"\x83\x01\x00")]), "XLSB"
    yield "open_document.xlsx", zip_bytes([
        ("mimetype", b"application/vnd.oasis.opendocument.spreadsheet")], stored=True), "ODS"
    yield "text_document.xlsx", zip_bytes([
        ("[Content_Types].xml", b'<Types><Override PartName="/word/document.xml" ContentType="application/'
         b'vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"/></Types>'),
        ("_rels/.rels", relationships([("r", REL + "/officeDocument", "word/document.xml")]).encode()),
        ("word/document.xml", b"<document/>")]), "DOCX"
    yield "no_workbook_part.xlsx", part_replaced("xl/workbook.xml", None), "xl/workbook.xml"
    yield "workbook_not_well_formed.xlsx", part_replaced(
        "xl/workbook.xml", "<workbook><sheets></workbook>"), "xl/workbook.xml is damaged"
    yield "workbook_of_another_root.xlsx", part_replaced("xl/workbook.xml", "<html/>"), "root element"
    for name, root in (("sheet_is_html", "<html/>"), ("sheet_is_content_types", "<Types/>")):
        yield f"{name}.xlsx", part_replaced("xl/worksheets/sheet1.xml", root), (
            'sheet "Data": xl/worksheets/sheet1.xml is damaged')
    rows = b'<row r="1"/>' * 1_700_000
    yield "zip_bomb.xlsx", part_replaced(
        "xl/worksheets/sheet1.xml", b"<worksheet><sheetData>" + rows + b"</sheetData></worksheet>"
    ), "times its packed size"
    yield "lying_sizes.xlsx", plain().bytes(sizes={"xl/worksheets/sheet1.xml": 20}), "20 bytes"
    yield "sheet_cut.xlsx", part_replaced(
        "xl/worksheets/sheet1.xml", '<worksheet><sheetData><row r="1"><c r="A1"><v>1'), 'sheet "Data"'
    yield "deep_nesting.xlsx", part_replaced(
        "xl/worksheets/sheet1.xml", "<worksheet>" + "<a>" * 50_000), 'sheet "Data"'
    yield "entity_bomb.xlsx", part_replaced("xl/worksheets/sheet1.xml", (
        '<!DOCTYPE worksheet [<!ENTITY a "aaaaaaaaaa">' + "".join(
            f'<!ENTITY {b} "{("&" + a + ";") * 10}">' for a, b in zip("abcdefgh", "bcdefghi")) +
        ']><worksheet><sheetData><row r="1"><c r="A1" t="inlineStr"><is><t>&i;</t></is></c></row>'
        "</sheetData></worksheet>")), 'sheet "Data"'
    yield "string_index_out_of_range.xlsx", Book().sheet(
        "Data", '<row r="3"><c r="B3" t="s"><v>7</v></c></row>').strings("<t>only</t>").bytes(), (
        'sheet "Data": cell B3')
    yield "no_shared_strings.xlsx", sheet_with(
        '<row r="1"><c r="A1" t="s"><v>0</v></c></row>'), 'sheet "Data": cell A1'
    yield "cyclic_relationships.xlsx", part_replaced(
        "xl/_rels/workbook.xml.rels", relationships(
            [("rId1", REL + "/worksheet", "workbook.xml")])), "refers back to the workbook"
    book = plain()
    book.sheets.append(("Twin", "", "rId1"))
    yield "two_sheets_of_one_part.xlsx", book.bytes(), "a part of another sheet"
