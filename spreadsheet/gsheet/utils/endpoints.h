// SPDX-License-Identifier: Apache-2.0
//
// Where the service is: the roots of its three interfaces, which the host can point elsewhere.
#pragma once

#include <string>
#include <string_view>

#include "foundation/export.h"

namespace gsheet {

/// Addresses with neither a path nor a slash at the end. UTF-16.
struct Endpoints {
    std::u16string sheets = u"https://sheets.googleapis.com";
    std::u16string drive = u"https://www.googleapis.com";
    std::u16string upload = u"https://www.googleapis.com";   ///< of Drive files
    std::u16string token = u"https://oauth2.googleapis.com"; ///< gives and describes tokens
};

/// For every request from now on; not while requests are under way. An address that is neither
/// "https://HOST" nor "http://" and a name of this machine (127.0.0.1, localhost, [::1]), each with
/// or without a port, throws std::invalid_argument: a credential must not travel in clear text.
ZX_API void set_endpoints(const Endpoints& endpoints);
ZX_API Endpoints endpoints();

/// Whether a credential may go to this address, which may have a path: https, or http and this
/// machine.
bool is_safe_address(std::u16string_view address);

} // namespace gsheet
