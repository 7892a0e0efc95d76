// SPDX-License-Identifier: Apache-2.0
//
// What a book says about all of its sheets: the globals substream (MS-XLS 2.1.7.20.3), or, up to
// BIFF4, the same records in the one sheet that the file has.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/xls/biff_version.h"
#include "workbook/xls/reading/byte_text.h"
#include "workbook/xls/reading/format_records.h"
#include "workbook/xls/reading/name_records.h"
#include "workbook/xls/reading/sheet_list.h"

namespace workbook {

struct XlsGlobals {
    explicit XlsGlobals(BiffVersion biff_version)
        : version(biff_version), formats(biff_version), names(biff_version) {}

    BiffVersion version;
    bool date_1904 = false;
    ByteText byte_text; ///< for the byte strings of all sheets
    std::vector<XlsSheetEntry> sheets;
    FormatRecords formats;
    NameRecords names;
    std::optional<std::size_t> shared_strings; ///< position of the SST record in the stream
    std::vector<std::string> warnings;         ///< one sentence each; see `Book::load_warnings`
};

/// Reads the globals of a workbook stream that is not encrypted any more. Throws `Error`.
XlsGlobals read_globals(std::string_view stream);

} // namespace workbook
