// SPDX-License-Identifier: Apache-2.0
//
// Paths as the application needs them: it has a current folder of its own.
#pragma once

#include <string>

namespace spreadsheet::com {

/// The path from the root, in the system's own form; an address with "://" and a path that cannot
/// be completed are returned unchanged.
std::u16string absolute_path(const std::u16string& path);

} // namespace spreadsheet::com
