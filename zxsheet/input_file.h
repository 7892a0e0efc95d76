// SPDX-License-Identifier: Apache-2.0
//
// Files that a command reads besides the book.
#pragma once

#include <fstream>
#include <string>

namespace zxsheet {

/// Opens the file of that name (a UTF-8 path). Throws `CommandError` that says why it cannot be
/// read.
std::ifstream open_input_file(const std::string& name);

} // namespace zxsheet
