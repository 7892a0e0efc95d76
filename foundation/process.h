// SPDX-License-Identifier: Apache-2.0
//
// Programs that the library runs.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace foundation {

/// Runs a command line of the system's shell (UTF-16) and returns what it wrote on its standard
/// output, at most `max_bytes`; its standard error stays the process's. No value when it cannot be
/// started, ends with a code other than 0 or writes more.
std::optional<std::string> output_of_command(const std::u16string& command, std::size_t max_bytes);

} // namespace foundation
