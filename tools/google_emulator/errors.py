# SPDX-License-Identifier: Apache-2.0
"""The error replies of both services: statuses, reasons, bodies and the texts that clients look for."""

REASONS = {
    200: "OK", 201: "Created", 204: "No Content", 400: "Bad Request", 401: "Unauthorized", 403: "Forbidden",
    404: "Not Found", 405: "Method Not Allowed", 408: "Request Timeout", 409: "Conflict", 429: "Too Many Requests",
    500: "Internal Server Error", 501: "Not Implemented", 502: "Bad Gateway", 503: "Service Unavailable",
    504: "Gateway Timeout",
}

STATUS_NAMES = {
    400: "INVALID_ARGUMENT", 401: "UNAUTHENTICATED", 403: "PERMISSION_DENIED", 404: "NOT_FOUND",
    408: "DEADLINE_EXCEEDED", 409: "ABORTED", 429: "RESOURCE_EXHAUSTED", 500: "INTERNAL", 501: "UNIMPLEMENTED",
    502: "UNAVAILABLE", 503: "UNAVAILABLE", 504: "DEADLINE_EXCEEDED",
}

# What the service says when nothing more is known.
STANDARD_MESSAGES = {
    400: "Request contains an invalid argument.",
    401: "Request had invalid authentication credentials. Expected OAuth 2 access token, login cookie or other valid "
         "authentication credential. See https://developers.google.com/identity/sign-in/web/devconsole-project.",
    403: "The caller does not have permission",
    404: "Requested entity was not found.",
    408: "The request timed out.",
    409: "The operation was aborted.",
    429: "Quota exceeded for quota metric 'Read requests' and limit 'Read requests per minute per user' of service "
         "'sheets.googleapis.com' for consumer 'project_number:123456789012'.",
    500: "Internal error encountered.",
    502: "Bad gateway.",
    503: "The service is currently unavailable.",
    504: "The request could not be completed in time.",
}

_PACKAGE = "type.googleapis.com/google.rpc."


class ServiceError(Exception):
    """A request that the service refuses. The body is what the service would send."""

    def __init__(self, code, message=None, *, status=None, details=None, errors=None, headers=None):
        super().__init__(message)
        self.code = code
        self.message = STANDARD_MESSAGES.get(code, "") if message is None else message
        self.headers = dict(headers or {})
        self.body = {"error": {"code": code, "message": self.message}}
        if errors:
            self.body["error"]["errors"] = errors
        else:
            self.body["error"]["status"] = status or STATUS_NAMES.get(code, "UNKNOWN")
        if details:
            self.body["error"]["details"] = details


class BatchRefusal(Exception):
    """Why one request of a batch cannot be done; the batch adds which one it was."""


class NoSuchPath(Exception):
    """No method of the service has that path; answered by a page for people, not by JSON."""


def bad_request(message, violations=()):
    """400, with the fields that were wrong as (field, description) pairs."""
    entries = [{"field": field, "description": text} if field else {"description": text} for field, text in violations]
    details = [{"@type": _PACKAGE + "BadRequest", "fieldViolations": entries}] if entries else None
    return ServiceError(400, message, details=details)


def error_info(reason, **metadata):
    info = {"@type": _PACKAGE + "ErrorInfo", "reason": reason, "domain": "googleapis.com"}
    if metadata:
        info["metadata"] = metadata
    return info


def unparsable_range(text):
    return bad_request(f"Unable to parse range: {text}")


def beyond_grid(text, row_count, column_count):
    return f"Range ({text}) exceeds grid limits. Max rows: {row_count}, max columns: {column_count}"


def too_long_for_a_cell(limit):
    return f"Your input contains more than the maximum of {limit} characters in a single cell."


def not_a_spreadsheet():
    return ServiceError(400, "This operation is not supported for this document", status="FAILED_PRECONDITION")


def not_served(what):
    """For what the real service does and this one does not, so that nobody takes it for the service's refusal."""
    return ServiceError(501, f"The emulator does not serve {what}.")


def drive_error(code, message, reason, location=None, location_type=None):
    entry = {"message": message, "domain": "global", "reason": reason}
    if location:
        entry.update(location=location, locationType=location_type)
    return ServiceError(code, message, errors=[entry])


def no_such_file(file_id):
    return drive_error(404, f"File not found: {file_id}.", "notFound", "fileId", "parameter")


def quota_details():
    """What a 429 of the service carries besides its message."""
    return [error_info("RATE_LIMIT_EXCEEDED", quota_limit_value="60", service="sheets.googleapis.com",
                       consumer="projects/123456789012", quota_unit="1/min/{project}/{user}", quota_location="global",
                       quota_metric="sheets.googleapis.com/read_requests",
                       quota_limit="ReadRequestsPerMinutePerUser")]


def standard_error(code, message=None):
    """An error reply of that status as the service words it."""
    return ServiceError(code, message, details=quota_details() if code == 429 else None)


def not_found_page(path):
    """The page behind a path that belongs to no method."""
    return ("<!DOCTYPE html>\n<html lang=en>\n  <meta charset=utf-8>\n  <title>Error 404 (Not Found)!!1</title>\n"
            f"  <p><b>404.</b> <ins>That\u2019s an error.</ins>\n  <p>The requested URL <code>{path}</code> was not "
            "found on this server.  <ins>That\u2019s all we know.</ins>\n")
