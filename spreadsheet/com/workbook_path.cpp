// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/workbook_path.h"

#include <filesystem>
#include <system_error>

#include "foundation/files.h"

namespace spreadsheet::com {

std::u16string absolute_path(const std::u16string& path) {
    if (path.empty() || path.find(u"://") != std::u16string::npos) return path;
    const std::filesystem::path native = foundation::files::native_path(path);
    if (native.is_absolute()) return path;
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(native, failure);
    return failure ? path : absolute.u16string();
}

} // namespace spreadsheet::com
