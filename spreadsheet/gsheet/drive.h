// SPDX-License-Identifier: Apache-2.0
//
// Files of the Drive, those on shared drives included. Unlike the functions in builtins.h these
// throw `spreadsheet::Exception`s with their causes (spreadsheet/failure.h). Strings are UTF-16
// unless a comment says otherwise.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/export.h"

namespace gsheet {

struct DriveFile {
    std::u16string id;
    std::u16string name;
    std::string mime_type;
    std::int64_t quota_bytes = -1; ///< that it takes of the owner's quota; -1 when not known
};

inline constexpr const char* kSpreadsheetMimeType = "application/vnd.google-apps.spreadsheet";

/// `Exception` 42 for a file that is not there.
ZX_API DriveFile drive_file(const std::u16string& id);

ZX_API void delete_drive_file(const std::u16string& id);

/// The spreadsheets with exactly that name that the caller can see, the latest changed first, at
/// most 100.
ZX_API std::vector<DriveFile> find_spreadsheets(const std::u16string& name);

struct UploadOptions {
    bool convert = false;       ///< into a spreadsheet, named without the extension
    std::u16string folder_id{}; ///< empty for the top of the caller's own Drive
};

/// Puts a workbook file, at most 1 GiB, into the Drive. Throws std::runtime_error for one that
/// cannot be read.
ZX_API DriveFile upload_to_drive(const std::u16string& path, const UploadOptions& options);

} // namespace gsheet
