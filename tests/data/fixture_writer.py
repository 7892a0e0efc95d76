# SPDX-License-Identifier: Apache-2.0
#
# Writes ZIP containers and Open XML parts for the fixtures. Every byte is decided here, time stamps
# included, so that a run on any machine writes the same files.
import struct
import zlib

MAIN = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
REL = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
STRICT_MAIN = "http://purl.oclc.org/ooxml/spreadsheetml/main"
STRICT_REL = "http://purl.oclc.org/ooxml/officeDocument/relationships"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
SHEETML = "application/vnd.openxmlformats-officedocument.spreadsheetml."
DECLARATION = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'

MAIN_TYPES = {
    "xlsx": SHEETML + "sheet.main+xml",
    "xltx": SHEETML + "template.main+xml",
    "xlsm": "application/vnd.ms-excel.sheet.macroEnabled.main+xml",
    "xltm": "application/vnd.ms-excel.template.macroEnabled.main+xml",
}


def zip_bytes(parts, stored=False, descriptors=False, zip64=False, sizes=None):
    """The container of parts [(name, bytes)]; `sizes` overrides the stated unpacked sizes."""
    body, directory = b"", b""
    for name, data in parts:
        packed = data
        if not stored:
            deflate = zlib.compressobj(9, zlib.DEFLATED, -15)
            packed = deflate.compress(data) + deflate.flush()
        size = (sizes or {}).get(name, len(data))
        crc, label = zlib.crc32(data), name.encode()
        flags = 0x0800 | (8 if descriptors else 0)
        fields = (45 if zip64 else 20, flags, 0 if stored else 8, 0, 0x21)
        small = (0xFFFFFFFF, 0xFFFFFFFF) if zip64 else (len(packed), size)
        local = (0, 0, 0) if descriptors else (crc, *small)
        extra = struct.pack("<HHQQ", 1, 16, size, len(packed)) if zip64 else b""
        position = len(body)
        body += struct.pack("<IHHHHHIIIHH", 0x04034B50, *fields, *local, len(label), len(extra))
        body += label + extra + packed
        if descriptors:
            body += struct.pack("<IIII", 0x08074B50, crc, len(packed), size)
        if zip64:
            extra = struct.pack("<HHQQQ", 1, 24, size, len(packed), position)
        directory += struct.pack("<IHHHHHHIIIHHHHHII", 0x02014B50, 45, *fields, crc, *small,
                                 len(label), len(extra), 0, 0, 0, 0,
                                 0xFFFFFFFF if zip64 else position)
        directory += label + extra
    end = struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, len(parts), len(parts),
                      len(directory), len(body), 0)
    if zip64:
        count = len(parts)
        end = (struct.pack("<IQHHIIQQQQ", 0x06064B50, 44, 45, 45, 0, 0, count, count,
                           len(directory), len(body))
               + struct.pack("<IIQI", 0x07064B50, 0, len(body) + len(directory), 1)
               + struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, 0xFFFF, 0xFFFF, 0xFFFFFFFF,
                             0xFFFFFFFF, 0))
    return body + directory + end


class Book:
    """The parts of a small workbook; every method returns the book."""

    def __init__(self, kind="xlsx", strict=False, folder="xl/"):
        self.folder = folder
        self.main = STRICT_MAIN if strict else MAIN
        self.rel = STRICT_REL if strict else REL
        self.main_type = MAIN_TYPES[kind]
        self.sheets = []  # (name, attributes, relationship id)
        self.relations = []  # (id, type, target)
        self.overrides = []  # (part name, content type)
        self.parts = {}
        self.properties = self.names = ""

    def part(self, name, text, content_type=None):
        self.parts[name] = text if isinstance(text, bytes) else text.encode()
        if content_type:
            self.overrides.append(("/" + name, content_type))
        return self

    def sheet(self, name, data="", tail="", head="", attributes="", kind="worksheet", root=None):
        """`data` is what stands in sheetData, `tail` behind it, `head` before it."""
        number = len(self.sheets) + 1
        types = {"xlMacrosheet": "application/vnd.ms-excel.macrosheet+xml"}
        root = root or {"xlMacrosheet": "macrosheet"}.get(kind, kind)
        target = f"{kind}s/sheet{number}.xml"
        relation = ("http://schemas.microsoft.com/office/2006/relationships/xlMacrosheet"
                    if kind == "xlMacrosheet" else f"{self.rel}/{kind}")
        self.relation(relation, target, f"rId{number}")
        self.sheets.append((name, attributes, f"rId{number}"))
        inside = "" if kind == "chartsheet" else f"{head}<sheetData>{data}</sheetData>{tail}"
        return self.part(self.folder + target,
                         f'{DECLARATION}<{root} xmlns="{self.main}" xmlns:r="{self.rel}">'
                         f"{inside}</{root}>", types.get(kind, SHEETML + kind + "+xml"))

    def relation(self, kind, target, identifier=None):
        kind = kind if "/" in kind else f"{self.rel}/{kind}"
        identifier = identifier or f"rIdX{len(self.relations) + 1}"
        self.relations.append((identifier, kind, target))
        return self

    def strings(self, *items, attributes=""):
        """`items` are the contents of si elements."""
        text = "".join(f"<si>{item}</si>" if item is not None else "<si/>" for item in items)
        self.relation("sharedStrings", "sharedStrings.xml")
        return self.part(self.folder + "sharedStrings.xml",
                         f'{DECLARATION}<sst xmlns="{self.main}" {attributes}>{text}</sst>',
                         SHEETML + "sharedStrings+xml")

    def styles(self, formats, codes=()):
        """`formats` are number format identifiers of cell formats, `codes` (identifier, code)."""
        own = "".join(f'<numFmt numFmtId="{i}" formatCode="{quoted(c)}"/>' for i, c in codes)
        cells = "".join(f'<xf numFmtId="{i}" fontId="0" fillId="0" borderId="0" xfId="0"/>'
                        for i in formats)
        self.relation("styles", "styles.xml")
        return self.part(self.folder + "styles.xml",
                         f'{DECLARATION}<styleSheet xmlns="{self.main}"><numFmts>{own}</numFmts>'
                         f'<cellXfs count="{len(formats)}">{cells}</cellXfs></styleSheet>',
                         SHEETML + "styles+xml")

    def workbook_xml(self):
        sheets = "".join(f'<sheet name="{quoted(name)}" sheetId="{i + 1}" {attributes} r:id="{rid}"/>'
                         for i, (name, attributes, rid) in enumerate(self.sheets))
        names = f"<definedNames>{self.names}</definedNames>" if self.names else ""
        return (f'{DECLARATION}<workbook xmlns="{self.main}" xmlns:r="{self.rel}">'
                f"<workbookPr {self.properties}/><sheets>{sheets}</sheets>{names}</workbook>")

    def all_parts(self):
        """All parts in the usual order: content types and relationships first."""
        main = self.folder + "workbook.xml"
        self.parts.setdefault(main, self.workbook_xml().encode())
        overrides = [("/" + main, self.main_type)] + self.overrides
        types = "".join(f'<Override PartName="{name}" ContentType="{kind}"/>'
                        for name, kind in overrides)
        fixed = {
            "[Content_Types].xml":
                f'{DECLARATION}<Types xmlns="{PACKAGE}/content-types">'
                '<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.'
                'relationships+xml"/><Default Extension="xml" ContentType="application/xml"/>'
                f"{types}</Types>",
            "_rels/.rels": relationships([("rId1", f"{self.rel}/officeDocument", main)]),
            f"{self.folder}_rels/workbook.xml.rels": relationships(self.relations),
        }
        wanted = {name: text.encode() for name, text in fixed.items()}
        wanted.update(self.parts)
        return list(wanted.items())

    def bytes(self, **shape):
        return zip_bytes(self.all_parts(), **shape)


def relationships(items):
    text = "".join(f'<Relationship Id="{i}" Type="{kind}" Target="{target}"/>'
                   for i, kind, target in items)
    return f'{DECLARATION}<Relationships xmlns="{PACKAGE}/relationships">{text}</Relationships>'


def quoted(text):
    return text.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
