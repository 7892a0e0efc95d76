// SPDX-License-Identifier: Apache-2.0
//
// Environment variables of the process.
#pragma once

#include <string>

namespace foundation {

/// The value of a variable, empty when it is not set. Read at each call.
std::u16string environment_variable(const char* name);

/// Sets a variable for this process; an empty value removes it. Not while other threads read.
void set_environment_variable(const char* name, const std::u16string& value);

} // namespace foundation
