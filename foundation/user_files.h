// SPDX-License-Identifier: Apache-2.0
//
// Files that belong to the user who runs the process.
#pragma once

#include <string>

namespace foundation::files {

/// The folder in which programs keep the user's settings: %APPDATA%, elsewhere ~/.config. Empty
/// when the environment names none.
std::u16string user_settings_folder();

/// Whether permissions let other users read the file. On Windows, whose access lists are not looked
/// at, and for a file that is not there, false.
bool is_open_to_others(const std::u16string& path);

} // namespace foundation::files
