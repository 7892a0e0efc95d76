// SPDX-License-Identifier: Apache-2.0
//
// Base64 as signed tokens have it (RFC 4648, section 5; RFC 7515, appendix C).
#pragma once

#include <string>
#include <string_view>

namespace foundation {

/// With '-' and '_', without padding.
std::string to_base64url(std::string_view bytes);

} // namespace foundation
