// SPDX-License-Identifier: Apache-2.0
//
// The wide variables of the C runtime: what the host sets through it is seen here.
#include <string>

#include <stdlib.h>

#include "foundation/environment.h"

namespace foundation {

namespace {

std::wstring widened(const char* name) {
    return std::wstring(name, name + std::char_traits<char>::length(name));
}

} // namespace

std::u16string environment_variable(const char* name) {
    const wchar_t* const value = ::_wgetenv(widened(name).c_str());
    if (value == nullptr) return {};
    const std::wstring text = value;
    return {text.begin(), text.end()};
}

void set_environment_variable(const char* name, const std::u16string& value) {
    ::_wputenv_s(widened(name).c_str(), std::wstring(value.begin(), value.end()).c_str());
}

} // namespace foundation
