# SPDX-License-Identifier: Apache-2.0
"""The wire: HTTP/1.1 on 127.0.0.1 with kept connections, gzip, chunks for large replies, and ordered faults."""

import copy
import itertools
import re
import socket
import ssl
import threading
import traceback
import zlib
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from .control import PREFIX, Control
from .errors import REASONS, standard_error
from .faults import FaultPlan, Wire
from .json_text import json_bytes, json_pieces
from .request_log import RequestLog
from .service import Service

MAX_BODY_BYTES = 64 << 20
DEFAULT_SETTINGS = {"gzip": True}


class Emulator:
    """Everything behind one port. The lock is held while state is looked at, never while something is sent."""

    def __init__(self, port=0, certificate=None, key=None):
        self.service, self.plan, self.log = Service(), FaultPlan(), RequestLog()
        self.settings = dict(DEFAULT_SETTINGS)
        self.control = Control(self)
        self.lock = threading.RLock()
        self.connections = itertools.count(1)
        self.server = _Server(("127.0.0.1", port), _Handler)
        self.server.emulator = self
        if certificate:
            self.server.socket = _tls(certificate, key).wrap_socket(self.server.socket, server_side=True,
                                                                    do_handshake_on_connect=False)

    @property
    def port(self):
        return self.server.server_address[1]

    def reset(self):
        self.service.reset()
        self.plan.clear()
        self.log.clear()
        self.settings = dict(DEFAULT_SETTINGS)

    def run(self):
        self.server.serve_forever(poll_interval=0.1)

    def stop(self):
        """Ends run() from any thread."""
        self.plan.release()
        threading.Thread(target=self.server.shutdown, daemon=True).start()

    def wire_for(self, connection, method, target, headers, body):
        """What to send for a request, ordered faults included."""
        with self.lock:
            if target.startswith(PREFIX):
                reply = self.control.answer(method, target, body)
                return Wire(reply.status, json_bytes(reply.body), reply.content_type)
            entry = self.log.add(connection, method, target, headers, body)
            order = self.plan.pick(method, target)
            if not order:
                wire = _wire_of(self.service.answer(method, target, headers, body))
            else:
                entry["fault"] = order.name
                wire = order.kind.spoil(order.parameters, self._true_wire(order.kind, method, target, headers, body))
            entry["status"] = wire.status
            return wire

    def _true_wire(self, kind, method, target, headers, body):
        """The reply before it is spoilt. A fault that keeps the request from being done gets it from a copy."""
        if not kind.needs_reply:
            return Wire(200, b"")
        service = self.service
        if not kind.takes_request and method != "GET":
            service = copy.copy(self.service)
            service.drive = copy.deepcopy(self.service.drive)
        wire = _wire_of(service.answer(method, target, headers, body))
        if not isinstance(wire.body, bytes):
            wire.body = b"".join(wire.body)
        return wire


def _tls(certificate, key):
    """HTTPS with that chain; the handshake happens in the connection's thread, with its first read."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    context.set_alpn_protocols(["http/1.1"])
    return context


def _wire_of(reply):
    """The bytes of a reply, or the pieces of one that is too large to be held."""
    body = reply.body
    if not isinstance(body, bytes):
        body = json_pieces(body) or json_bytes(body)
    return Wire(reply.status, body, reply.content_type, dict(reply.headers))


class _Server(ThreadingHTTPServer):
    daemon_threads = True
    allow_reuse_address = True
    request_queue_size = 64

    def handle_error(self, request, client_address):
        """Clients that go away are part of the game."""


class _Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True

    def setup(self):
        super().setup()
        self.connection_number = next(self.server.emulator.connections)

    def log_message(self, *_arguments):
        pass

    def _serve(self):
        body = self._request_body()
        if body is None:
            return
        emulator = self.server.emulator
        try:
            wire = emulator.wire_for(self.connection_number, self.command, self.path, self.headers, body)
        except Exception:  # a mistake in here must not look like a cut connection
            traceback.print_exc()
            wire = Wire(500, json_bytes(standard_error(500, "The emulator failed; see its standard error.").body))
        self._send(wire)

    do_GET = do_POST = do_PUT = do_DELETE = do_PATCH = _serve

    def _request_body(self):
        """The body, or None after one that cannot be read was refused."""
        length = self.headers.get("Content-Length", "0")
        if self.headers.get("Transfer-Encoding", "").lower() == "chunked":
            body = self._chunked_body()
        else:
            body = self.rfile.read(int(length)) if _is_size(length, 10) else None
        if body is None:
            self.close_connection = True
            self._send(Wire(413, b"", "text/html"))
        return body

    def _chunked_body(self):
        body = b""
        while True:
            size = self.rfile.readline(100).partition(b";")[0].strip().decode("latin-1")
            if not _is_size(size, 16) or len(body) + int(size, 16) > MAX_BODY_BYTES:
                return None
            if int(size, 16) == 0:
                break
            body += self.rfile.read(int(size, 16))
            self.rfile.readline(3)
        while self.rfile.readline(1 << 16).strip():
            pass  # fields after the last chunk
        return body

    def _send(self, wire):
        emulator = self.server.emulator
        if wire.wait_seconds:
            emulator.plan.wait(wire.wait_seconds)
        if wire.no_reply:
            return self._cut()
        if not isinstance(wire.body, bytes):
            return self._send_pieces(wire)
        plain = (wire.content_length, wire.send_bytes, wire.repeat, wire.steps) == (None, None, 1, 0)
        body, encoding = wire.body, {}
        if plain and self._takes_gzip() and body:
            body, encoding = _gzipped(body), {"Content-Encoding": "gzip"}
        length = len(wire.before) + len(body) * wire.repeat + len(wire.after)
        claimed = length if wire.content_length is None else wire.content_length
        counted = {} if wire.status == 204 else {"Content-Length": str(claimed)}
        self._write(self._head(wire, encoding | counted) + wire.before)
        if wire.steps:
            return self._trickle(wire)
        for _ in range(wire.repeat):
            self._write(body if wire.send_bytes is None else body[:wire.send_bytes])
        self._write(wire.after)
        if wire.send_bytes is not None or wire.close_after:
            self._cut()
        return None

    def _head(self, wire, headers):
        reason = REASONS.get(wire.status, "Unknown")
        lines = [f"HTTP/1.1 {wire.status} {reason}", f"Content-Type: {wire.content_type}",
                 f"Date: {self.date_time_string()}", "Server: ESF", "Vary: Origin, X-Origin, Referer"]
        if self.close_connection:
            lines.append("Connection: close")
        lines += [f"{name}: {value}" for name, value in (headers | wire.headers).items()]
        return ("\r\n".join(lines) + "\r\n\r\n").encode("latin-1")

    def _takes_gzip(self):
        return self.server.emulator.settings["gzip"] and "gzip" in self.headers.get("Accept-Encoding", "")

    def _send_pieces(self, wire):
        """A large reply in chunks, compressed on the way where the client takes that."""
        packer = _packer() if self._takes_gzip() else None
        encoding = {"Content-Encoding": "gzip"} if packer else {}
        self._write(self._head(wire, encoding | {"Transfer-Encoding": "chunked"}))
        for piece in wire.body:
            self._write_chunk(packer.compress(piece) if packer else piece)
        if packer:
            self._write_chunk(packer.flush())
        self._write(b"0\r\n\r\n")

    def _write_chunk(self, data):
        if data:
            self._write(b"%x\r\n" % len(data) + data + b"\r\n")

    def _write(self, data):
        if data:
            self.wfile.write(data)

    def _trickle(self, wire):
        position = 0
        for _ in range(wire.steps):
            if position >= len(wire.body):
                break
            self._write(wire.body[position:position + wire.step_bytes])
            position += wire.step_bytes
            self.server.emulator.plan.wait(wire.step_seconds)
        self._write(wire.body[position:])

    def _cut(self):
        """Ends the connection at once; the client sees a closed one, not one that waits."""
        self.close_connection = True
        try:
            self.connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass


def _is_size(text, base):
    digits = "[0-9]+" if base == 10 else "[0-9a-fA-F]+"
    return re.fullmatch(digits, text) is not None and int(text, base) <= MAX_BODY_BYTES


def _packer():
    return zlib.compressobj(1, zlib.DEFLATED, zlib.MAX_WBITS | 16)


def _gzipped(body):
    packer = _packer()
    return packer.compress(body) + packer.flush()
