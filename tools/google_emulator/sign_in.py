# SPDX-License-Identifier: Apache-2.0
"""The endpoint that gives access tokens, /token, and the one that describes them, /tokeninfo: for assertions that a
service account has signed (RFC 7523) and for refresh tokens (RFC 6749, section 6)."""

import base64
import hashlib
import json
import time
from urllib.parse import parse_qs

from .methods import Reply

PATHS = ("/token", "/tokeninfo")
JWT_BEARER = "urn:ietf:params:oauth:grant-type:jwt-bearer"
MAX_SKEW_SECONDS = 300
MAX_ASSERTION_SECONDS = 3600
_SCOPES = "https://www.googleapis.com/auth/"
KNOWN_SCOPES = {_SCOPES + name for name in ("spreadsheets", "spreadsheets.readonly", "drive", "drive.readonly",
                                            "drive.file", "drive.metadata.readonly", "userinfo.email")}
# The begin of what is signed: the name of the hash and its length (RFC 8017, section 9.2).
_SHA256_PREFIX = bytes.fromhex("3031300d060960864801650304020105000420")
_TIMEFRAME = ("Invalid JWT: Token must be a short-lived token (60 minutes) and in a reasonable timeframe. Check your iat "
              "and exp values in the JWT claim.")


class Refusal(Exception):
    """What the endpoint answers in place of a token."""

    def __init__(self, error, description, status=400):
        super().__init__(description)
        self.reply = Reply(status, {"error": error, "error_description": description})


def answer(credentials, path, headers, raw_body):
    """The reply to a POST to one of PATHS."""
    form = {name: values[-1] for name, values in parse_qs(raw_body.decode("latin-1")).items()}
    try:
        return _described(credentials, form) if path == "/tokeninfo" else _token(credentials, headers, form)
    except Refusal as refusal:
        return refusal.reply


def _described(credentials, form):
    token = credentials.issued.get(form.get("access_token"))
    if form.get("access_token") in credentials.tokens:
        state = credentials.tokens[form["access_token"]]
        if state == "expired":
            return Reply(400, {"error_description": "Invalid Value"})
        scope = "spreadsheets.readonly" if state == "read-only" else "drive"
        return Reply(body={"scope": _SCOPES + scope, "expires_in": "3599", "email": "someone@example.com"})
    if token is None or token.has_ended(now(credentials)):
        return Reply(400, {"error_description": "Invalid Value"})
    return Reply(body={"scope": " ".join(sorted(token.scopes)), "expires_in": str(int(token.end - now(credentials))),
                       "email": token.account})


def now(credentials):
    return time.time() + credentials.clock_offset


def _token(credentials, headers, form):
    if form.get("grant_type") == JWT_BEARER:
        account, scopes, lifetime = _from_assertion(credentials, headers, form.get("assertion", ""))
    elif form.get("grant_type") == "refresh_token":
        account, scopes, lifetime = _from_refresh_token(credentials, form)
    else:
        raise Refusal("unsupported_grant_type", f"Invalid grant_type: {form.get('grant_type', '')}")
    token = credentials.issue(account, scopes, now(credentials) + lifetime)
    return Reply(body={"access_token": token, "expires_in": lifetime, "scope": " ".join(sorted(scopes)),
                       "token_type": "Bearer"})


def _from_refresh_token(credentials, form):
    known = credentials.refresh_tokens.get(form.get("refresh_token"))
    if known is None or known.get("state", "valid") != "valid":
        raise Refusal("invalid_grant", "Token has been expired or revoked.")
    if (form.get("client_id"), form.get("client_secret")) != (known["client_id"], known["client_secret"]):
        raise Refusal("invalid_client", "Unauthorized", 401)
    return known.get("account", "user@example.com"), set(known["scopes"]), known.get("lifetime", 3600)


def _from_assertion(credentials, headers, assertion):
    try:
        signed, _, signature = assertion.rpartition(".")
        head, claims = (json.loads(_decoded(part)) for part in signed.split("."))
        known = credentials.accounts.get(claims["iss"])
    except (ValueError, KeyError, TypeError):
        raise Refusal("invalid_grant", "Invalid JWT: the assertion cannot be read.") from None
    if known is None:
        raise Refusal("invalid_grant", "Invalid grant: account not found")
    if head.get("alg") != "RS256" or not verifies(known["key"], signed.encode(), _decoded(signature)):
        raise Refusal("invalid_grant", "Invalid JWT Signature.")
    if claims.get("aud") != f"http://{headers.get('Host')}/token":
        raise Refusal("invalid_grant", "Invalid JWT: Failed audience check.")
    issued, end = claims.get("iat", 0), claims.get("exp", 0)
    moment = now(credentials)
    if not (end - issued <= MAX_ASSERTION_SECONDS and issued <= moment + MAX_SKEW_SECONDS
            and end > moment - MAX_SKEW_SECONDS and end > issued):
        raise Refusal("invalid_grant", _TIMEFRAME)
    scopes = set(str(claims.get("scope", "")).split())
    if not scopes or not scopes <= KNOWN_SCOPES:
        raise Refusal("invalid_scope", "Invalid OAuth scope or ID token audience provided.")
    return claims["iss"], scopes, known.get("lifetime", 3600)


def _decoded(text):
    return base64.urlsafe_b64decode(text + "=" * (-len(text) % 4))


def verifies(key, message, signature):
    """Whether a signature RSASSA-PKCS1-v1_5 with SHA-256 belongs to the message; key is (modulus, exponent)."""
    modulus, exponent = key
    size = (modulus.bit_length() + 7) // 8
    if len(signature) != size:
        return False
    padded = pow(int.from_bytes(signature, "big"), exponent, modulus).to_bytes(size, "big")
    digest = _SHA256_PREFIX + hashlib.sha256(message).digest()
    return padded == b"\x00\x01" + b"\xff" * (size - len(digest) - 3) + b"\x00" + digest


def public_key(pem):
    """(modulus, exponent) of an RSA key in PEM ("BEGIN PUBLIC KEY", RFC 5280, section 4.1.2.7)."""
    der = base64.b64decode("".join(line for line in pem.split("\n") if line and not line.startswith("-")))
    _, info, _ = _element(der)
    _, _, rest = _element(info)  # the algorithm
    tag, bits, _ = _element(rest)
    _, numbers, _ = _element(bits[1:])
    _, modulus, rest = _element(numbers)
    _, exponent, _ = _element(rest)
    if tag != 0x03:
        raise ValueError("no RSA public key")
    return int.from_bytes(modulus, "big"), int.from_bytes(exponent, "big")


def _element(der):
    """(tag, contents, what follows) of the first element."""
    length, begin = der[1], 2
    if length & 0x80:
        begin += length & 0x7F
        length = int.from_bytes(der[2:begin], "big")
    return der[0], der[begin:begin + length], der[begin + length:]
