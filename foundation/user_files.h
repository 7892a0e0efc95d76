// SPDX-License-Identifier: Apache-2.0
//
// Files that belong to the user who runs the process.
#pragma once

#include <string>

namespace foundation::files {

/// The folder in which programs keep the user's settings: %APPDATA%, elsewhere ~/.config. Empty
/// when the environment names none.
std::u16string user_settings_folder();

/// Whether permissions let other users read the file; on Windows whether its access list lets a
/// group read that all users are in. False for a file that cannot be asked about.
bool is_open_to_others(const std::u16string& path);

} // namespace foundation::files
