# SPDX-License-Identifier: Apache-2.0
"""What tests say to the emulator itself, below a path that the service does not have."""

import json

from .book_specs import SpecError, add_file, dump_file
from .credentials import TOKEN_STATES
from .errors import ServiceError
from .faults import FAULTS, FaultError
from .generated import GeneratedNumbers
from .methods import Reply
from .samples import STATES
from .sign_in import public_key

PREFIX = "/__emulator/"


class ControlError(Exception):
    """What is wrong with an instruction."""


class Control:
    """The instructions; `emulator` has service, plan, log, settings and stop()."""

    def __init__(self, emulator):
        self.emulator = emulator
        self.instructions = {
            ("GET", "help"): self.help,
            ("POST", "reset"): self.reset,
            ("GET", "files"): self.files,
            ("POST", "files"): self.add_files,
            ("POST", "fill"): self.fill,
            ("POST", "credentials"): self.credentials,
            ("GET", "faults"): lambda _: [order.shown() for order in self.emulator.plan.orders],
            ("POST", "faults"): self.order_faults,
            ("DELETE", "faults"): self.clear_faults,
            ("POST", "release"): self.release,
            ("GET", "log"): lambda _: self.emulator.log.entries,
            ("DELETE", "log"): self.clear_log,
            ("POST", "settings"): self.settings,
            ("POST", "stop"): self.stop,
        }

    def answer(self, method, target, raw_body):
        name = target.partition("?")[0].removeprefix(PREFIX).strip("/")
        try:
            body = json.loads(raw_body) if raw_body.strip() else {}
            if method == "GET" and name.startswith("files/"):
                return self._reply(200, self.dump(name.removeprefix("files/")))
            instruction = self.instructions.get((method, name))
            if not instruction:
                raise ControlError(f"no instruction {method} {name}; see GET {PREFIX}help")
            return self._reply(200, instruction(body))
        except ServiceError as error:
            return self._reply(400, {"error": error.message})
        except (ControlError, SpecError, FaultError, ValueError, KeyError, TypeError, AttributeError) as error:
            return self._reply(400, {"error": f"{type(error).__name__}: {error}"})

    @staticmethod
    def _reply(status, body):
        return Reply(status, body if body is not None else {})

    def help(self, _body):
        faults = {name: {"about": kind.about, "parameters": kind.parameters, "takes_request": kind.takes_request}
                  for name, kind in FAULTS.items()}
        return {"instructions": [f"{method} {PREFIX}{name}" for method, name in self.instructions],
                "states": list(STATES), "faults": faults}

    def reset(self, body):
        """Everything as at the start, with the files of a named state, or of descriptions, or both."""
        names = body.get("state", "empty")
        if names not in STATES:
            raise ControlError(f"no state {names!r}; there are {', '.join(STATES)}")
        self.emulator.reset()
        return self.add_files(STATES[names]() + body.get("files", []))

    def add_files(self, specs):
        specs = specs if isinstance(specs, list) else [specs]
        return {"ids": [add_file(self.emulator.service.drive, spec).file_id for spec in specs]}

    def files(self, _body):
        return [{"id": entry.file_id, "name": entry.name, "mimeType": entry.mime_type}
                for entry in self.emulator.service.drive.files.values()]

    def _file(self, file_id):
        entry = self.emulator.service.drive.files.get(file_id)
        if entry is None:
            raise ControlError(f"no file {file_id}")
        return entry

    def dump(self, file_id):
        return dump_file(self.emulator.service.drive, self._file(file_id))

    def fill(self, body):
        """Makes a sheet as large as that, full of generated numbers; what was in it is gone."""
        book = self._file(body["file"]).book
        sheet = book.sheet_with_title(body["sheet"]) if "sheet" in body else book.sheets[0]
        if sheet is None:
            raise ControlError(f"no sheet {body['sheet']}")
        rows, columns = int(body["rows"]), int(body["columns"])
        sheet.rows, sheet.merges = {}, []
        sheet.row_count, sheet.column_count = max(rows, 1), max(columns, 1)
        sheet.generated = GeneratedNumbers(rows, columns)

    def credentials(self, body):
        """Replaces what is given: the tokens ({token: state}), the keys, the service accounts ({address: {"public_key":
        PEM, "lifetime": seconds}}), the refresh tokens ({token: {"client_id", "client_secret", "scopes", "lifetime",
        "state": "valid" or anything else}}), the requests that tokens to come are good for, the endpoint's clock."""
        tokens = body.get("tokens", {})
        if not set(tokens.values()) <= set(TOKEN_STATES):
            raise ControlError(f"a token is one of {', '.join(TOKEN_STATES)}")
        if "tokens" in body:
            self.emulator.service.credentials.tokens = dict(tokens)
        if "keys" in body:
            self.emulator.service.credentials.keys = list(body["keys"])
        known = self.emulator.service.credentials
        if "accounts" in body:
            known.accounts = {address: account | {"key": public_key(account["public_key"])}
                              for address, account in body["accounts"].items()}
        for name in ("refresh_tokens", "uses", "clock_offset"):
            if name in body:
                setattr(known, name, body[name])

    def order_faults(self, body):
        self.emulator.plan.order(body if isinstance(body, list) else [body])

    def clear_faults(self, _body):
        self.emulator.plan.clear()

    def release(self, _body):
        self.emulator.plan.release()

    def clear_log(self, _body):
        self.emulator.log.clear()

    def settings(self, body):
        unknown = set(body) - set(self.emulator.settings)
        if unknown:
            raise ControlError(f"no settings {sorted(unknown)}; there are {sorted(self.emulator.settings)}")
        self.emulator.settings.update(body)
        return self.emulator.settings

    def stop(self, _body):
        self.emulator.stop()
