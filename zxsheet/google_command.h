// SPDX-License-Identifier: Apache-2.0
//
// Where the commands for spreadsheets online find the service.
#pragma once

#include <string>

namespace zxsheet {

/// Lets the library use `root` in place of the service's own addresses, which an empty one
/// restores. Throws `CommandError` for an address that is refused.
void use_google_root(const std::string& root);

} // namespace zxsheet
