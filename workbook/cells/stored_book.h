// SPDX-License-Identifier: Apache-2.0
//
// What the sheets of one loaded book share, whatever the file format: formats, strings, the last
// error. A new load makes a new one.
#pragma once

#include <cstddef>
#include <deque>
#include <string>

#include "workbook/cells/cell_formats.h"
#include "workbook/cells/sheet_limits.h"
#include "workbook/cells/string_pool.h"
#include "workbook/cells/string_set.h"
#include "workbook/last_error.h"

namespace workbook {

struct StoredBook {
    /// `last_error` is the book's, which outlives what it has loaded.
    StoredBook(const SheetLimits& format_limits, LastError& last_error)
        : limits(format_limits), error(last_error) {}
    StoredBook(const StoredBook&) = delete;
    StoredBook& operator=(const StoredBook&) = delete;

    /// Appends a format with its handle.
    StoredFormat& add_cell_format(CellFormat format = {}) {
        return formats.emplace_back(cell_formats, cell_formats.add(format));
    }

    const SheetLimits limits;
    CellFormats cell_formats;
    std::deque<StoredFormat> formats; ///< handles, by index; they stay where they are in memory
    std::uint32_t default_format = 0; ///< of cells that are written without one
    std::size_t used_formats_end = 0; ///< one past the last format that a cell was written with
    StringPool shared_strings;
    StringSet added_strings; ///< written to cells, in any sheet
    LastError& error;
    std::u16string text; ///< the string last handed out
};

} // namespace workbook
