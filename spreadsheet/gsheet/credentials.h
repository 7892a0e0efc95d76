// SPDX-License-Identifier: Apache-2.0
//
// Where access tokens for Google come from. By default the variable ZX_ACCESS_TOKEN (else
// ZX_API_KEY) decides at each request; a host switches the search for other sources on, or gives a
// function.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/export.h"

namespace gsheet {

/// Returns an access token (UTF-8); an empty one for none. `renew` is true after the service has
/// refused the last one. May be called from any thread that sends a request; must not send requests
/// through this library. What it throws leaves the operation that needed the token.
using TokenFunction = std::function<std::string(bool renew)>;

/// Tokens come from the function, whatever the environment has; an empty function ends that.
/// Thread-safe.
///
///     gsheet::set_token_function([&](bool renew) { return session.token(renew); });
ZX_API void set_token_function(TokenFunction function);

/// Switches the search for credentials on or off. While it is on, the first of these that is set
/// gives the token:
///
/// 1. ZX_ACCESS_TOKEN, a token, which is not renewed;
/// 2. ZX_TOKEN_COMMAND, a command line that prints a token, run again when the token is refused;
/// 3. the file in GOOGLE_APPLICATION_CREDENTIALS;
/// 4. the file in which the vendor's command-line tool keeps the default credentials of
///    applications;
/// 5. without any of them ZX_API_KEY.
///
/// Files are keys of service accounts, or of a signed-in user (types "service_account" and
/// "authorized_user"); their tokens are kept in this process until a minute before their end, and
/// renewed once, with the request repeated, when the service refuses one. Token requests go to
/// https addresses and to this machine only. GOOGLE_CLOUD_QUOTA_PROJECT, else the file, names the
/// project whose quota is used. Thread-safe. A source that is there and cannot be used is
/// `Exception` 45.
ZX_API void use_credential_search(bool on);

/// The credential that requests use; nothing in it is secret. Strings are UTF-8.
struct CredentialDescription {
    std::string source;              ///< such as "ZX_ACCESS_TOKEN" or the path of a file
    std::string account;             ///< an e-mail address; empty where it is not known
    std::vector<std::string> scopes; ///< of the token; empty for an API key
    std::optional<std::chrono::seconds> remaining; ///< until the token ends
    std::string quota_project;                     ///< empty for the credential's own
    std::string note;                              ///< something to mend; empty for nothing
};

/// Asks the service about the token. Throws `spreadsheet::Exception` 45 when there is no credential
/// or the token is refused.
ZX_API CredentialDescription describe_credential();

/// `text` with every credential that the library knows replaced by "***", for hosts that print what
/// the library logs.
ZX_API std::string hide_credentials(std::string_view text);

} // namespace gsheet
