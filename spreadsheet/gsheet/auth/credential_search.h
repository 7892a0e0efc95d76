// SPDX-License-Identifier: Apache-2.0
//
// The tokens of the process: which source gives them, how long they are kept, who has them renewed.
#pragma once

#include <string>
#include <vector>

#include "spreadsheet/gsheet/auth/access_token.h"
#include "spreadsheet/gsheet/credentials.h"

namespace gsheet {

/// The token for a request; empty when there is none. Threads that need the same token wait for one
/// request of it.
std::string bearer_token(Scope scope);

/// Another token in the place of `refused`; empty when the source has no other.
std::string renewed_token(Scope scope, const std::string& refused);

/// Whether `renewed_token` may have one.
bool can_renew_tokens();
/// Whether the host has switched the search on.
bool is_search_on();

/// The project whose quota requests use; empty for the credential's own.
std::string quota_project();

/// Where the credential is from and whose it is, without asking the service.
struct CredentialOwner {
    std::string source;
    std::string account;
};
CredentialOwner credential_owner();

/// Tokens, keys and assertions that were used so far, the latest of them.
std::vector<std::string> secrets_of_search();

} // namespace gsheet
