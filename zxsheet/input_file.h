// SPDX-License-Identifier: Apache-2.0
//
// Files that a command reads besides the book.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace zxsheet {

/// What workbooks are kept in, by the first bytes of the file.
enum class Container { None, Zip, CompoundFile };
Container container_of(std::string_view first_bytes);
/// The same for a file (a UTF-8 path), which is opened.
Container container_of_file(const std::string& name);

/// Opens the file of that name (a UTF-8 path). Throws `CommandError` that says why it cannot be
/// read.
std::ifstream open_input_file(const std::string& name);

} // namespace zxsheet
