// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>

#include "foundation/environment.h"
#include "foundation/unicode.h"

// The header says when a change is allowed.
// NOLINTBEGIN(concurrency-mt-unsafe)
namespace foundation {

std::u16string environment_variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::u16string() : unicode::to_utf16(value);
}

void set_environment_variable(const char* name, const std::u16string& value) {
    if (value.empty())
        ::unsetenv(name);
    else
        ::setenv(name, unicode::to_utf8(value).c_str(), 1);
}

} // namespace foundation
// NOLINTEND(concurrency-mt-unsafe)
