// SPDX-License-Identifier: Apache-2.0
//
// The credentials that a host stores for the library, where the environment variables
// ZX_ACCESS_TOKEN and ZX_API_KEY are not the place for them. Thread-safe.
#pragma once

#include <string>
#include <string_view>

#include "foundation/export.h"

namespace foundation::oauth {

/// Stores the credential (UTF-8) that flows of `kind`, "apikey" or "accesstoken", use for
/// `purpose`; an empty one removes it. The built-in readGoogleSheet takes the API key of purpose
/// "gsheets-readtable".
ZX_API void store_key(std::string_view kind, std::string_view purpose, std::string key);

} // namespace foundation::oauth
