# SPDX-License-Identifier: Apache-2.0
"""What a method of the service gets and gives, and the table of all methods that are served."""

from dataclasses import dataclass, field
from typing import Any, Callable, NamedTuple, Optional
from urllib.parse import unquote

from .errors import NoSuchPath

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
        return self.verb != "GET"

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
    Method("sheets.spreadsheets.values.batchClear", "POST", _VALUES + ":batchClear", {}, "BatchClearValuesRequest",
           "BatchClearValuesResponse"),
    Method("sheets.spreadsheets.values.batchUpdate", "POST", _VALUES + ":batchUpdate", {}, "BatchUpdateValuesRequest",
           "BatchUpdateValuesResponse"),
    Method("drive.files.create", "POST", "/drive/v3/files", _DRIVES, "File", "File"),
    Method("drive.files.create.upload", "POST", "/upload/drive/v3/files", _DRIVES, None, "File"),
    Method("drive.files.get", "GET", "/drive/v3/files/{fileId}", _DRIVES | {"acknowledgeAbuse": "bool"}, None, "File"),
    Method("drive.files.delete", "DELETE", "/drive/v3/files/{fileId}", _DRIVES),
)


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
    """(method, variable parts) of a path that is still percent-encoded; raises NoSuchPath."""
    for with_action in (True, False):
        for method in METHODS:
            if method.verb == verb and (":" in method.path.rpartition("/")[2]) == with_action:
                parts = _match(method.path, path)
                if parts is not None:
                    return method, parts
    raise NoSuchPath()


def _match(pattern, path):
    segments, wanted = path.split("/"), pattern.split("/")
    if pattern.endswith("/values/{range}") and segments[-1] == "":
        segments.pop()  # a slash behind the range is overlooked
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
