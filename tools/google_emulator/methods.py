# SPDX-License-Identifier: Apache-2.0
"""What a method of the service gets and gives, and the tables of methods that are served and of those that are not."""

import re
from dataclasses import dataclass, field
from typing import Any, Callable, NamedTuple, Optional
from urllib.parse import unquote

from .errors import NoSuchPath, not_served

_RENDER = {"majorDimension": "enum!Dimension", "valueRenderOption": "enum!ValueRenderOption",
           "dateTimeRenderOption": "enum!DateTimeRenderOption"}
_UPDATE = {"valueInputOption": "enum!ValueInputOption", "includeValuesInResponse": "bool",
           "responseValueRenderOption": "enum!ValueRenderOption",
           "responseDateTimeRenderOption": "enum!DateTimeRenderOption"}
_DRIVES = {"supportsAllDrives": "bool", "supportsTeamDrives": "bool"}

# Query parameters that every method knows.
COMMON_QUERY = {"$.xgafv": "string", "access_token": "string", "alt": "string", "callback": "string",
                "fields": "string", "key": "string", "oauth_token": "string", "prettyPrint": "bool",
                "quotaUser": "string", "uploadType": "string", "upload_protocol": "string"}


class Method(NamedTuple):
    """One method: its name in the official documents, verb, path, query parameters and messages."""

    name: str
    verb: str
    path: str
    query: dict
    request: Optional[str] = None
    reply: Optional[str] = None
    body_name: str = ""  # how refusals name the body, where it is not the request itself

    @property
    def is_write(self):
        return self.verb != "GET" and not self.name.endswith("ByDataFilter")

    @property
    def is_drive(self):
        return self.name.startswith("drive.")


_BOOK = "/v4/spreadsheets/{spreadsheetId}"
_VALUES = _BOOK + "/values"

METHODS = (
    Method("sheets.spreadsheets.create", "POST", "/v4/spreadsheets", {}, "Spreadsheet", "Spreadsheet", "spreadsheet"),
    Method("sheets.spreadsheets.get", "GET", _BOOK,
           {"ranges": "string[]", "includeGridData": "bool", "excludeTablesInBandedRanges": "bool"}, None,
           "Spreadsheet"),
    Method("sheets.spreadsheets.getByDataFilter", "POST", _BOOK + ":getByDataFilter", {},
           "GetSpreadsheetByDataFilterRequest", "Spreadsheet"),
    Method("sheets.spreadsheets.batchUpdate", "POST", _BOOK + ":batchUpdate", {}, "BatchUpdateSpreadsheetRequest",
           "BatchUpdateSpreadsheetResponse"),
    Method("sheets.spreadsheets.sheets.copyTo", "POST", _BOOK + "/sheets/{sheetId}:copyTo", {},
           "CopySheetToAnotherSpreadsheetRequest", "SheetProperties"),
    Method("sheets.spreadsheets.values.get", "GET", _VALUES + "/{range}", _RENDER, None, "ValueRange"),
    Method("sheets.spreadsheets.values.update", "PUT", _VALUES + "/{range}", _UPDATE, "ValueRange",
           "UpdateValuesResponse", "data"),
    Method("sheets.spreadsheets.values.clear", "POST", _VALUES + "/{range}:clear", {}, "ClearValuesRequest",
           "ClearValuesResponse"),
    Method("sheets.spreadsheets.values.append", "POST", _VALUES + "/{range}:append",
           _UPDATE | {"insertDataOption": "enum!InsertDataOption"}, "ValueRange", "AppendValuesResponse", "data"),
    Method("sheets.spreadsheets.values.batchGet", "GET", _VALUES + ":batchGet", _RENDER | {"ranges": "string[]"},
           None, "BatchGetValuesResponse"),
    Method("sheets.spreadsheets.values.batchGetByDataFilter", "POST", _VALUES + ":batchGetByDataFilter", {},
           "BatchGetValuesByDataFilterRequest", "BatchGetValuesByDataFilterResponse"),
    Method("sheets.spreadsheets.values.batchClear", "POST", _VALUES + ":batchClear", {}, "BatchClearValuesRequest",
           "BatchClearValuesResponse"),
    Method("sheets.spreadsheets.values.batchUpdate", "POST", _VALUES + ":batchUpdate", {}, "BatchUpdateValuesRequest",
           "BatchUpdateValuesResponse"),
    Method("drive.files.list", "GET", "/drive/v3/files", {
        "q": "string", "orderBy": "string", "corpora": "string", "includeItemsFromAllDrives": "bool",
        "supportsAllDrives": "bool", "pageSize": "int32", "spaces": "string"}, None, "FileList"),
    Method("drive.files.create", "POST", "/drive/v3/files", _DRIVES, "File", "File"),
    Method("drive.files.create.upload", "POST", "/upload/drive/v3/files", _DRIVES, None, "File"),
    Method("drive.files.get", "GET", "/drive/v3/files/{fileId}", _DRIVES | {"acknowledgeAbuse": "bool"}, None, "File"),
    Method("drive.files.delete", "DELETE", "/drive/v3/files/{fileId}", _DRIVES),
)


# What the service has beside them: verb -> paths below the roots, {} for what varies.
UNSERVED_METHODS = {
    "/v4/spreadsheets/{}": {
        "GET": "/developerMetadata/{}",
        "POST": "/developerMetadata:search /values:batchClearByDataFilter"
                " /values:batchUpdateByDataFilter"},
    "/drive/v3": {
        "GET": "/about /apps /apps/{} /changes /changes/startPageToken /drives /drives/{} /files/generateIds"
               " /files/{}/accessproposals /files/{}/accessproposals/{} /files/{}/comments /files/{}/comments/{}"
               " /files/{}/comments/{}/replies /files/{}/comments/{}/replies/{} /files/{}/export"
               " /files/{}/listLabels /files/{}/permissions /files/{}/permissions/{} /files/{}/revisions"
               " /files/{}/revisions/{} /operations/{} /teamdrives /teamdrives/{}",
        "POST": "/changes/watch /channels/stop /drives /drives/{}/hide /drives/{}/unhide"
                " /files/{}/accessproposals/{}:resolve /files/{}/comments /files/{}/comments/{}/replies"
                " /files/{}/copy /files/{}/download /files/{}/modifyLabels /files/{}/permissions /files/{}/watch"
                " /teamdrives",
        "PATCH": "/drives/{} /files/{} /files/{}/comments/{} /files/{}/comments/{}/replies/{}"
                 " /files/{}/permissions/{} /files/{}/revisions/{} /teamdrives/{}",
        "DELETE": "/drives/{} /files/trash /files/{}/comments/{} /files/{}/comments/{}/replies/{}"
                  " /files/{}/permissions/{} /files/{}/revisions/{} /teamdrives/{}"},
    "/upload/drive/v3": {"PATCH": "/files/{}"},
}


def unserved_methods():
    """(verb, path) of each of them."""
    return [(verb, root + path) for root, verbs in UNSERVED_METHODS.items() for verb, paths in verbs.items()
            for path in paths.split()]


_UNSERVED = [(verb, path, re.compile(re.escape(path).replace(r"\{\}", "[^/]+"))) for verb, path in unserved_methods()]


@dataclass
class Call:
    """One request to a method, checked as far as that can be done without looking at the state."""

    method: Method
    parts: dict  # the variable parts of the path
    query: dict
    body: dict
    raw_body: bytes
    headers: Any
    caller: str


@dataclass
class Reply:
    status: int = 200
    body: Any = None  # a message, or bytes
    content_type: str = "application/json; charset=UTF-8"
    headers: dict = field(default_factory=dict)


Handler = Callable[[Call], Reply]


def find_method(verb, path):
    """(method, variable parts) of a path that is still percent-encoded; raises NoSuchPath, or the 501 of a method
    that the service has and the emulator has not. Some clients put a slash before an action or after a last part."""
    path = re.sub(r"/:(?=[A-Za-z]+$)", ":", path)
    if path.count("/") > 3:
        path = path.removesuffix("/")
    for unserved_verb, name, pattern in _UNSERVED:
        if verb == unserved_verb and pattern.fullmatch(path):
            raise not_served(f"{verb} {name}")
    for with_action in (True, False):
        for method in METHODS:
            if method.verb == verb and (":" in method.path.rpartition("/")[2]) == with_action:
                parts = _match(method.path, path)
                if parts is not None:
                    return method, parts
    raise NoSuchPath()


def _match(pattern, path):
    segments, wanted = path.split("/"), pattern.split("/")
    if len(segments) != len(wanted):
        return None
    last, mark, action = wanted[-1].partition(":")
    if mark:
        if not segments[-1].endswith(":" + action):
            return None
        segments[-1] = segments[-1][:-len(action) - 1]
        wanted[-1] = last
    parts = {}
    for segment, name in zip(segments, wanted):
        if name.startswith("{"):
            if not segment:
                return None
            parts[name[1:-1]] = unquote(segment)
        elif segment != name:
            return None
    return parts
