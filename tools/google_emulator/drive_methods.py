# SPDX-License-Identifier: Apache-2.0
"""The methods of Drive files: create, upload, get, list, delete."""

import json
import re

from .batch_sheets import new_sheet
from .credentials import check_access
from .errors import BatchRefusal, ServiceError, drive_error, no_such_file
from .methods import Reply
from .model import DEFAULT_COLUMNS, DEFAULT_ROWS, SPREADSHEET_MIME_TYPE, Book
from .schema import check_body, normalised
from .workbook_file import NotConvertible, converted_sheets

_SHOWN_WITHOUT_MASK = ("kind", "id", "name", "mimeType")
MAX_PARTS = 16


def _file_of(drive, call):
    """The file; one that the caller must not see is not found, as the service has it."""
    file_id = call.parts["fileId"]
    entry = drive.files.get(file_id)
    if entry is None:
        raise no_such_file(file_id)
    try:
        check_access(entry, call.caller, call.method.is_write)
    except ServiceError:
        if call.method.is_write and entry.access == "reader":
            raise drive_error(403, "The user does not have sufficient permissions for this file.",
                              "insufficientFilePermissions") from None
        raise no_such_file(file_id) from None
    return entry


def _resource(entry, call):
    """The File message: four fields unless the mask asks for others."""
    resource = {"kind": "drive#file", "id": entry.file_id, "name": entry.name, "mimeType": entry.mime_type,
                "createdTime": _time(entry.created), "modifiedTime": _time(entry.modified), "trashed": False,
                "quotaBytesUsed": str(entry.quota_bytes_used)}
    if entry.book is None:
        resource["size"] = str(len(entry.content))
    if entry.parents:
        resource["parents"] = entry.parents
    if "fields" not in call.query:
        resource = {name: resource[name] for name in _SHOWN_WITHOUT_MASK}
    return resource


def _time(moment):
    return moment.strftime("%Y-%m-%dT%H:%M:%S.") + f"{moment.microsecond // 1000:03d}Z"


_CLAUSE = re.compile(r"""\s*(name|mimeType|trashed)\s*=\s*"""
                     r"""(?:'((?:[^'\\]|\\.)*)'|"((?:[^"\\]|\\.)*)"|(true|false))\s*(?:and|$)""")


def list_files(drive, call):
    """The files that the caller can see; searches know equations that are joined by "and"."""
    query, position, wanted = call.query.get("q", ""), 0, {}
    while position < len(query):
        clause = _CLAUSE.match(query, position)
        if not clause:
            raise drive_error(400, "Invalid Value", "invalid", "q", "parameter")
        text = clause.group(2) if clause.group(2) is not None else clause.group(3)
        wanted[clause.group(1)] = clause.group(4) if text is None else re.sub(r"\\(.)", r"\1", text)
        position = clause.end()
    found = [entry for entry in drive.files.values() if _is_visible(entry, call)
             and wanted.get("name") in (None, entry.name) and wanted.get("mimeType") in (None, entry.mime_type)
             and wanted.get("trashed") != "true"]
    if call.query.get("orderBy") == "modifiedTime desc":
        found.sort(key=lambda entry: entry.modified, reverse=True)
    return Reply(body={"kind": "drive#fileList", "incompleteSearch": False,
                       "files": [_resource(entry, call) for entry in found[:int(call.query.get("pageSize", 100))]]})


def _is_visible(entry, call):
    try:
        check_access(entry, call.caller, False)
    except ServiceError:
        return False
    return True


def get(drive, call):
    entry = _file_of(drive, call)
    if call.query.get("alt", "json") == "json":
        return Reply(body=_resource(entry, call))
    if entry.book or call.query["alt"] != "media":
        raise drive_error(403, "Only files with binary content can be downloaded. Use Export with Docs Editors files.",
                          "fileNotDownloadable", "alt", "parameter")
    return Reply(body=entry.content, content_type=entry.mime_type)


def delete(drive, call):
    del drive.files[_file_of(drive, call).file_id]
    return Reply(status=204, body=b"", content_type="text/html")


def create(drive, call):
    return Reply(body=_resource(_added(drive, call.body, b"", "application/octet-stream"), call))


def _added(drive, metadata, content, content_type):
    name = metadata.get("name") or "Untitled"
    mime_type = metadata.get("mimeType") or content_type
    if mime_type == SPREADSHEET_MIME_TYPE:
        try:
            entry = _converted(drive, name, converted_sheets(content_type, content) or [("Sheet1", {})])
        except (NotConvertible, BatchRefusal):
            raise drive_error(400, "Bad Request", "badRequest") from None
    else:
        entry = drive.add(name, mime_type)
        entry.content = content
    return entry


def upload(drive, call):
    """A new file from a body of two parts, metadata and content. Where the metadata ask for a spreadsheet, CSV and
    workbooks in Open XML are converted; what has another type becomes an empty one here."""
    if call.query.get("uploadType") != "multipart":
        raise drive_error(400, "Only multipart uploads are served.", "badRequest", "uploadType", "parameter")
    (_, metadata), (content_type, content) = _two_parts(call.headers.get("Content-Type", ""), call.raw_body)
    try:
        wanted = json.loads(metadata)
    except ValueError:
        raise drive_error(400, "Parse Error", "parseError") from None
    if not isinstance(wanted, dict):
        raise drive_error(400, "Parse Error", "parseError")
    check_body("File", wanted)
    wanted = normalised("File", wanted)
    for folder in wanted.get("parents", ()):
        if folder not in drive.files:
            raise no_such_file(folder)
    entry = _added(drive, wanted, content, content_type)
    entry.parents = wanted.get("parents", [])
    return Reply(body=_resource(entry, call))


def _converted(drive, name, sheets):
    book = Book(name)
    for title, cells in sheets:
        rows, columns = (max((place[axis] + 1 for place in cells), default=0) for axis in (0, 1))
        sheet = new_sheet(book, drive, {"title": title, "gridProperties": {
            "rowCount": max(rows, DEFAULT_ROWS), "columnCount": max(columns, DEFAULT_COLUMNS)}})
        for (row, column), cell in cells.items():
            sheet.put(row, column, cell)
    entry = drive.add_book(name)
    entry.book = book
    return entry


def _two_parts(content_type, body):
    """(type, bytes) of both parts of a multipart/related body. Lines may end with a bare line feed, as some clients
    of the service have it."""
    malformed = drive_error(400, "Malformed multipart body.", "badContent")
    match = re.fullmatch(r'multipart/related;\s*boundary=(?:"([^"]{1,70})"|([^\s;"]{1,70}))', content_type.strip(),
                         re.IGNORECASE)
    if not match:
        raise malformed
    boundary = b"--" + re.escape((match.group(1) or match.group(2)).encode())
    pieces = re.split(rb"(?:^|\r?\n)" + boundary, body, MAX_PARTS)
    if len(pieces) != 4 or pieces[0].strip() or not re.fullmatch(rb"--\s*", pieces[3]):
        raise malformed
    parts = []
    for piece in pieces[1:3]:
        found = re.fullmatch(rb"\r?\n(.*?)\r?\n\r?\n(.*)", piece, re.DOTALL)
        kind = re.search(rb"^content-type:[ \t]*([^\r\n]+)", found.group(1), re.I | re.M) if found else None
        if not kind:
            raise malformed
        parts.append((kind.group(1).strip().decode("latin-1"), found.group(2)))
    return parts
