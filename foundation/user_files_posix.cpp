// SPDX-License-Identifier: Apache-2.0
#include "foundation/user_files.h"

#include <filesystem>
#include <system_error>

#include "foundation/environment.h"
#include "foundation/files.h"

namespace foundation::files {

#ifdef _WIN32

std::u16string user_settings_folder() {
    return environment_variable("APPDATA");
}

bool is_open_to_others(const std::u16string&) {
    return false;
}

#else

std::u16string user_settings_folder() {
    const std::u16string home = environment_variable("HOME");
    return home.empty() ? home : home + u"/.config";
}

bool is_open_to_others(const std::u16string& path) {
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::perms permissions = fs::status(native_path(path), failure).permissions();
    const fs::perms others = fs::perms::group_read | fs::perms::others_read;
    return !failure && (permissions & others) != fs::perms::none;
}

#endif

} // namespace foundation::files
