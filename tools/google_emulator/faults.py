# SPDX-License-Identifier: Apache-2.0
"""Faults that tests can order: what goes wrong, for which request, how often."""

import re
import threading
from dataclasses import dataclass, field
from typing import Callable, NamedTuple, Optional
from urllib.parse import unquote

from .errors import STANDARD_MESSAGES, standard_error
from .json_text import json_bytes

MAX_WAIT_SECONDS = 600


@dataclass
class Wire:
    """How a reply is sent, where that is not the plain way."""

    status: int
    body: bytes
    content_type: str = "application/json; charset=UTF-8"
    headers: dict = field(default_factory=dict)
    wait_seconds: float = 0  # before the first byte
    step_bytes: int = 0  # trickle: so many bytes, then a pause, for so many steps
    step_seconds: float = 0
    steps: int = 0
    content_length: Optional[int] = None  # what is claimed
    send_bytes: Optional[int] = None  # cut the connection after so much of the body
    no_reply: bool = False  # cut it before anything is sent
    close_after: bool = False  # close it after the reply, unannounced
    repeat: int = 1  # the body is sent so many times in a row,
    before: bytes = b""  # between these two
    after: bytes = b""


class FaultKind(NamedTuple):
    about: str
    parameters: dict  # name -> default
    spoil: Callable  # (parameters, true Wire) -> Wire
    takes_request: bool = False  # whether the request leaves its mark on the state
    needs_reply: bool = True  # whether the true reply is looked at


def _error_wire(status, body):
    return Wire(status, body if isinstance(body, bytes) else json_bytes(body))


def _status(given, true):
    status = given["status"]
    if status == 204:
        return Wire(204, b"", "text/html")
    if 200 <= status < 300:
        return Wire(status, true.body)
    return _error_wire(status, standard_error(status, given["message"]).body)


def _message_of(given):
    return given["message"] or STANDARD_MESSAGES.get(given["status"], "Something went wrong.")


def _line_feeds(_given, true):
    """A line feed in every string, as it must not stand in JSON."""
    def split(match):
        text = match.group()
        return text[:2] + "\n" + text[2:] if len(text) > 2 and text[1] != "\\" else text
    text = re.sub(r'"(?:[^"\\]|\\.)*"', split, true.body.decode())
    return Wire(200, text.encode())


def _spoiled_body(change):
    return lambda given, true: Wire(200, change(given, true.body))


def _deep(given, _body):
    depth = given["depth"]
    return b'{"a":' * depth + b"1" + b"}" * depth


def _wire(**changes):
    """The true reply, sent in another way; values that are names stand for parameters."""
    def spoil(given, true):
        for name, value in changes.items():
            setattr(true, name, given[value] if isinstance(value, str) else value(given, true)
                    if callable(value) else value)
        return true
    return spoil


def _huge(given, _true):
    piece = b'      "' + b"x" * 1015 + b'",\n'
    return Wire(200, piece, repeat=max(1, given["bytes"] // len(piece)), before=b'{\n  "padding": [\n',
                after=b'      ""\n  ]\n}\n')


_ERROR = {"status": 500, "message": None}
_WAIT = {"seconds": 5.0}
_HALF = {"bytes": None}

FAULTS = {
    "status": FaultKind("the service's reply of that status; 201 and 204 included", {"status": 503, "message": None},
                        _status),
    "html-page": FaultKind("an error as a page for people", _ERROR, lambda given, _: Wire(
        given["status"], f"<html><title>Error {given['status']}</title><p>{_message_of(given)}</html>\n".encode(),
        "text/html; charset=UTF-8"), needs_reply=False),
    "malformed-json": FaultKind("200 with the second half of the JSON missing", {}, _spoiled_body(
        lambda _, body: body[:max(1, len(body) // 2)])),
    "trailing-garbage": FaultKind("200 with more behind the JSON", {}, _spoiled_body(
        lambda _, body: body.rstrip() + b"garbage\n")),
    "not-an-object": FaultKind("200 with an array around the JSON", {}, _spoiled_body(
        lambda _, body: b"[" + body.rstrip() + b"]\n")),
    "plain-rate-limit": FaultKind("200 with RATE_LIMIT_EXCEEDED in place of JSON", {}, _spoiled_body(
        lambda _given, _body: b"RATE_LIMIT_EXCEEDED"), needs_reply=False),
    "empty-body": FaultKind("200 with nothing", {}, _spoiled_body(lambda _given, _body: b""), needs_reply=False),
    "line-feeds": FaultKind("200 with bare line feeds inside strings", {}, _line_feeds),
    "deep-nesting": FaultKind("200 with objects in objects", {"depth": 100_000}, _spoiled_body(_deep),
                              needs_reply=False),
    "slow-first-byte": FaultKind("the true reply after some seconds", _WAIT, _wire(wait_seconds="seconds"), True),
    "slow-trickle": FaultKind("the true reply a few bytes at a time", {"step": 1, "seconds": 0.05, "steps": 100},
                              _wire(step_bytes="step", step_seconds="seconds", steps="steps"), True),
    "cut-before-reply": FaultKind("the connection is closed without a reply", {}, _wire(no_reply=True)),
    "cut-in-body": FaultKind("the connection is closed in the middle of the body (or after some bytes)", _HALF,
                             _wire(send_bytes=lambda given, true: len(true.body) // 2 if given["bytes"] is None
                                   else given["bytes"])),
    "close-after-reply": FaultKind("the true reply, then the kept connection is closed unannounced", {},
                                   _wire(close_after=True), True),
    "length-too-large": FaultKind("Content-Length beyond the body, then the connection is closed", {"by": 100}, _wire(
        content_length=lambda given, true: len(true.body) + given["by"], send_bytes=lambda _, true: len(true.body))),
    "length-too-small": FaultKind("Content-Length below the body; the rest spoils the next reply", {"by": 10}, _wire(
        content_length=lambda given, true: max(0, len(true.body) - given["by"]))),
    "huge-reply": FaultKind("200 with an object of so many bytes", {"bytes": 64 << 20}, _huge, needs_reply=False),
    "taken-then-status": FaultKind("the request is done, the reply is an error", {"status": 503, "message": None},
                                   _status, True),
    "taken-then-cut": FaultKind("the request is done, the connection is closed without a reply", {},
                                _wire(no_reply=True), True),
}
COMMON_PARAMETERS = {"method": None, "path": "", "nth": 1, "times": 1}


class FaultError(Exception):
    """What is wrong with an order."""


class Order:
    """One fault that was ordered; path is a regular expression that the decoded target has to contain."""

    def __init__(self, spec):
        kind = FAULTS.get(spec.get("fault"))
        if kind is None:
            raise FaultError(f"unknown fault {spec.get('fault')!r}; there are {', '.join(FAULTS)}")
        unknown = set(spec) - {"fault"} - set(COMMON_PARAMETERS) - set(kind.parameters)
        if unknown:
            raise FaultError(f"unknown parameters {sorted(unknown)} of {spec['fault']}")
        self.name, self.kind = spec["fault"], kind
        common = COMMON_PARAMETERS | {name: spec[name] for name in COMMON_PARAMETERS if name in spec}
        self.method, self.nth, self.times = common["method"], common["nth"], common["times"]
        try:
            self.path = re.compile(common["path"])
        except re.error as error:
            raise FaultError(f"path is a regular expression: {error}") from None
        self.parameters = kind.parameters | {name: spec[name] for name in kind.parameters if name in spec}
        self.seen = self.fired = 0

    def meets(self, method, target):
        """Counts a request and says whether the fault is its lot; `times` 0 means for ever."""
        if (self.method not in (None, method)) or not self.path.search(unquote(target)):
            return False
        self.seen += 1
        if self.seen < self.nth or (self.times and self.fired >= self.times):
            return False
        self.fired += 1
        return True

    def shown(self):
        return {"fault": self.name, "method": self.method, "path": self.path.pattern, "nth": self.nth,
                "times": self.times, "seen": self.seen, "fired": self.fired} | self.parameters


class FaultPlan:
    """All orders. Waits end early when they are released, so that no test has to sit them out."""

    def __init__(self):
        self.orders = []
        self._released = threading.Event()

    def order(self, specs):
        self.orders += [Order(spec) for spec in specs]

    def pick(self, method, target):
        """The first order that a request meets."""
        return next((order for order in self.orders if order.meets(method, target)), None)

    def release(self):
        self._released.set()
        self._released = threading.Event()

    def clear(self):
        self.orders = []
        self.release()

    def wait(self, seconds):
        self._released.wait(min(seconds, MAX_WAIT_SECONDS))
