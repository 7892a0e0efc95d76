// SPDX-License-Identifier: Apache-2.0
//
// The sheets of a book in their order: BOUNDSHEET records (MS-XLS 2.4.28), or what older books
// have in their place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "workbook/library.h"
#include "workbook/xls/reading/record_strings.h"

namespace workbook {

struct XlsSheetEntry {
    std::u16string name;
    SheetKind kind = SheetKind::Worksheet;
    SheetState state = SheetState::Visible;
    std::size_t position = 0; ///< of the sheet's BOF record in the stream
    /// False for a module of macros and for a second entry of one sheet: they are empty sheets that
    /// cannot be changed.
    bool has_cells = true;
    std::uint32_t first_format = 0; ///< what its cells add to the index of their format
    /// Its index in the loaded book; nullopt for a sheet that was added since.
    std::optional<std::size_t> original;
    /// The index in the loaded book of what an added sheet is a copy of; `position` is that
    /// sheet's.
    std::optional<std::size_t> copy_of;
};

/// Reads the BOUNDSHEET record that `records` is at. Throws `Error`.
XlsSheetEntry read_bound_sheet(RecordStream& records, RecordStrings& strings);

/// Reads the header of a BIFF4 workbook's sheet, which comes right before the sheet.
XlsSheetEntry read_sheet_header(RecordStream& records, RecordStrings& strings);

/// The one sheet of a stream without globals, which has no name.
XlsSheetEntry only_sheet(SubstreamKind kind);

} // namespace workbook
