// SPDX-License-Identifier: Apache-2.0
#include <filesystem>
#include <system_error>

#include "foundation/environment.h"
#include "foundation/files.h"
#include "foundation/user_files.h"

namespace foundation::files {

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

} // namespace foundation::files
