// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/workbook_path.h"

#include <filesystem>

#include "foundation/files.h"

namespace spreadsheet::com {

std::u16string absolute_path(const std::u16string& path) {
    if (path.empty() || path.find(u"://") != std::u16string::npos) return path;
    try {
        const std::filesystem::path native = foundation::files::native_path(path);
        return std::filesystem::absolute(native).make_preferred().u16string();
    } catch (const std::filesystem::filesystem_error&) {
        return path; // such as a current folder that has been removed or has no name in Unicode
    }
}

} // namespace spreadsheet::com
