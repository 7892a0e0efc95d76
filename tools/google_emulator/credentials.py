# SPDX-License-Identifier: Apache-2.0
"""Who may do what: access tokens with a state each or an end, API keys for reading what is public."""

import time
from dataclasses import dataclass
from typing import Optional

from .errors import ServiceError, bad_request, error_info

DEFAULT_TOKENS = {"test-token": "valid", "demo": "valid", "read-only-token": "read-only", "expired-token": "expired"}
DEFAULT_KEYS = ("test-key",)
TOKEN_STATES = ("valid", "read-only", "expired")

_UNREGISTERED = ("Method doesn't allow unregistered callers (callers without established identity). Please use API "
                 "Key or other form of API consumer identity to call this API.")
_INVALID_TOKEN = ("Request had invalid authentication credentials. Expected OAuth 2 access token, login cookie or "
                  "other valid authentication credential. See "
                  "https://developers.google.com/identity/sign-in/web/devconsole-project.")
_KEYS_NOT_SUPPORTED = ("API keys are not supported by this API. Expected OAuth2 access token or other authentication "
                       "credentials that assert a principal. See https://cloud.google.com/docs/authentication")


@dataclass
class IssuedToken:
    """A token that the token endpoint gave."""

    account: str
    scopes: set
    end: float  # seconds of the epoch
    uses: Optional[int] = None  # requests that are left; None: any number

    def has_ended(self, moment):
        return moment >= self.end or self.uses == 0


class Credentials:
    def __init__(self):
        self.tokens = dict(DEFAULT_TOKENS)
        self.keys = list(DEFAULT_KEYS)
        self.accounts = {}  # of services: e-mail address -> "key" (modulus, exponent), "lifetime"
        self.refresh_tokens = {}  # token -> "client_id", "client_secret", "scopes", "lifetime", "state"
        self.uses = []  # requests that the tokens to come are good for, one number for each
        self.issued = {}
        self.clock_offset = 0  # of the endpoint's clock, in seconds

    def issue(self, account, scopes, end):
        """A new token; its text repeats from run to run."""
        token = f"issued-token-{len(self.issued) + 1}"
        self.issued[token] = IssuedToken(account, scopes, end, self.uses.pop(0) if self.uses else None)
        return token

    def check(self, authorization, key, is_write, is_drive=False):
        """"token" or "key", whichever the caller comes with; raises what the service answers to bad ones."""
        if authorization:
            return self._check_token(authorization, is_write, is_drive)
        if not key:
            raise ServiceError(403, _UNREGISTERED)
        if key not in self.keys:
            problem = "API key not valid. Please pass a valid API key."
            refusal = bad_request(problem)
            refusal.body["error"]["details"] = [error_info("API_KEY_INVALID", service="sheets.googleapis.com")]
            raise refusal
        if is_write:
            raise ServiceError(401, _KEYS_NOT_SUPPORTED, details=[
                error_info("CREDENTIALS_MISSING", service="sheets.googleapis.com")])
        return "key"

    def _state_of_issued(self, token, is_write, is_drive):
        """The state of a token for this request, as if it had been named; counts its use."""
        issued = self.issued.get(token)
        if issued is None:
            return None
        if issued.has_ended(time.time() + self.clock_offset):
            return "expired"
        if issued.uses is not None:
            issued.uses -= 1
        names = {scope.rpartition("/")[2] for scope in issued.scopes}
        if names & ({"drive", "drive.file"} if is_drive else {"drive", "drive.file", "spreadsheets"}):
            return "valid"
        readers = {"drive.readonly", "drive.metadata.readonly"} if is_drive else {"drive.readonly",
                                                                               "spreadsheets.readonly"}
        return "read-only" if names & readers and not is_write else "lacks-scope"

    def _check_token(self, authorization, is_write, is_drive):
        scheme, _, token = authorization.partition(" ")
        token = token.strip() if scheme.lower() == "bearer" else ""
        state = self.tokens.get(token) or self._state_of_issued(token, is_write, is_drive)
        if state == "lacks-scope":
            state, is_write = "read-only", True
        if state not in ("valid", "read-only"):
            raise ServiceError(401, _INVALID_TOKEN, details=[
                error_info("ACCESS_TOKEN_EXPIRED" if state == "expired" else "ACCESS_TOKEN_TYPE_UNSUPPORTED",
                           service="sheets.googleapis.com")],
                headers={"WWW-Authenticate": 'Bearer realm="https://accounts.google.com/", error="invalid_token"'})
        if is_write and state == "read-only":
            raise ServiceError(403, "Request had insufficient authentication scopes.", details=[
                error_info("ACCESS_TOKEN_SCOPE_INSUFFICIENT", service="sheets.googleapis.com")])
        return "token"


def check_access(entry, caller, is_write):
    """Whether the caller may use a file; `caller` is what Credentials.check gave."""
    if caller == "key":
        allowed = entry.public
    else:
        allowed = entry.access == "owner" or (not is_write and (entry.access == "reader" or entry.public))
    if not allowed:
        raise ServiceError(403)
