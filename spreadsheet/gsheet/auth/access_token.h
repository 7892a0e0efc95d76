// SPDX-License-Identifier: Apache-2.0
//
// A token that was got for a scope.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "foundation/clock.h"

namespace gsheet {

/// What requests are about; each has a scope of its own.
enum class Scope : std::uint8_t { sheets, drive };

struct AccessToken {
    std::string value;
    std::optional<foundation::Clock::TimePoint> end; ///< by the library's clock; none: not known
};

} // namespace gsheet
