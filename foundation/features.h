// SPDX-License-Identifier: Apache-2.0
//
// Feature switches by name; the host turns them on and off. Thread-safe.
#pragma once

#include <string_view>

#include "foundation/export.h"

namespace foundation::features {

/// Whether a switch is on. "GOOGLESHEETS" is on at first, any other switch off.
ZX_API bool is_on(std::string_view name);
ZX_API void set(std::string_view name, bool on);

} // namespace foundation::features
