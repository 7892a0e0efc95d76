// SPDX-License-Identifier: Apache-2.0
//
// Files that hold the key of a service account, or the long-lived token of a signed-in user.
#pragma once

#include <cstdint>
#include <string>

namespace gsheet {

struct CredentialFile {
    enum class Kind : std::uint8_t { service_account, authorized_user };

    Kind kind = Kind::service_account;
    std::string token_uri; ///< UTF-8, as are all strings
    std::string quota_project;
    bool is_open_to_others = false; ///< its permissions let other users read it

    // Of a service account:
    std::string client_email;
    std::string private_key; ///< PEM
    std::string private_key_id;

    // Of a user:
    std::string client_id;
    std::string client_secret;
    std::string refresh_token;
};

/// Throws `spreadsheet::Exception` 45 for a file that cannot be read, is of another type, lacks
/// something or names an address that tokens must not go to.
CredentialFile read_credential_file(const std::u16string& path);

} // namespace gsheet
