// SPDX-License-Identifier: Apache-2.0
//
// Requests of tokens: an assertion signed by a service account (RFC 7523), or a refresh token
// (RFC 6749, section 6), for an access token.
#pragma once

#include <string>

#include "foundation/json.h"
#include "spreadsheet/gsheet/auth/access_token.h"
#include "spreadsheet/gsheet/auth/credential_file.h"

namespace gsheet {

/// The URL of a scope.
std::string scope_url(Scope scope);

/// Asks for a token; blocks, pauses included. Throws `spreadsheet::Exception` 45 when the key or
/// the refresh token is refused, 48 and what the client throws when there is no answer.
/// `remember_secret` is called with assertions and tokens, each before it could get into a log.
AccessToken request_token(const CredentialFile& file, Scope scope,
                          void (*remember_secret)(const std::string& secret));

/// What the service says about a token: "scope", "expires_in", "email".
foundation::json::Object describe_token(const std::string& token);

} // namespace gsheet
