# SPDX-License-Identifier: Apache-2.0
"""The service without its wire: takes a request apart, checks it against the tables, calls the method."""

from urllib.parse import parse_qsl

from . import drive_methods, sign_in, spreadsheet_methods, value_methods
from .credentials import Credentials
from .errors import NoSuchPath, ServiceError, not_found_page
from .masks import masked, reply_mask
from .methods import COMMON_QUERY, METHODS, Call, Reply, find_method
from .model import Drive
from .schema import check_body, check_query, normalised, parse_json

HANDLERS = {
    "sheets.spreadsheets.create": spreadsheet_methods.create,
    "sheets.spreadsheets.get": spreadsheet_methods.get,
    "sheets.spreadsheets.getByDataFilter": spreadsheet_methods.get_by_data_filter,
    "sheets.spreadsheets.batchUpdate": spreadsheet_methods.batch_update,
    "sheets.spreadsheets.sheets.copyTo": spreadsheet_methods.copy_to,
    "sheets.spreadsheets.values.get": value_methods.get,
    "sheets.spreadsheets.values.update": value_methods.update,
    "sheets.spreadsheets.values.clear": value_methods.clear,
    "sheets.spreadsheets.values.append": value_methods.append,
    "sheets.spreadsheets.values.batchGet": value_methods.batch_get,
    "sheets.spreadsheets.values.batchGetByDataFilter": value_methods.batch_get_by_data_filter,
    "sheets.spreadsheets.values.batchClear": value_methods.batch_clear,
    "sheets.spreadsheets.values.batchUpdate": value_methods.batch_update,
    "drive.files.create": drive_methods.create,
    "drive.files.create.upload": drive_methods.upload,
    "drive.files.get": drive_methods.get,
    "drive.files.list": drive_methods.list_files,
    "drive.files.delete": drive_methods.delete,
}
assert {method.name for method in METHODS} == set(HANDLERS)


class Service:
    """All state, and the one way to ask for something. Not thread-safe: callers hold a lock."""

    def __init__(self):
        self.reset()

    def reset(self):
        self.drive = Drive()
        self.credentials = Credentials()

    def answer(self, verb, target, headers, raw_body):
        """The reply to a request; target is the path with the query as they were sent."""
        path, _, query_text = target.partition("?")
        if verb == "POST" and path in sign_in.PATHS:
            return sign_in.answer(self.credentials, path, headers, raw_body)
        try:
            return self._answer(verb, path, query_text, headers, raw_body)
        except NoSuchPath:
            return Reply(404, not_found_page(path).encode(), "text/html; charset=UTF-8")
        except ServiceError as error:
            return Reply(error.code, error.body, headers=error.headers)

    def _answer(self, verb, path, query_text, headers, raw_body):
        method, parts = find_method(verb, path)
        query = {}
        for name, value in parse_qsl(query_text, keep_blank_values=True):
            query.setdefault(name, []).append(value)
        caller = self.credentials.check(headers.get("Authorization"), query.get("key", [""])[-1], method.is_write,
                                        method.is_drive)
        body = self._body(method, headers, raw_body)
        call = Call(method, parts, self._query(method, query), body, raw_body, headers, caller)
        mask = reply_mask(call.query["fields"], method.reply) if call.query.get("fields") and method.reply else None
        if not mask:
            call.query.pop("fields", None)
        reply = HANDLERS[method.name](self.drive, call)
        if mask:
            reply.body = masked(reply.body, mask)
        return reply

    @staticmethod
    def _query(method, query):
        known = COMMON_QUERY | method.query
        if method.is_drive:  # which overlooks names that it does not know
            query = {name: values for name, values in query.items() if name in known}
        return check_query(known, query)

    @staticmethod
    def _body(method, headers, raw_body):
        """The checked message; the service takes anything that is JSON, whatever the content type says."""
        if not method.request:
            return {}
        body = parse_json(raw_body.decode("utf-8", "replace"))
        check_body(method.request, body, method.body_name)
        return normalised(method.request, body)
