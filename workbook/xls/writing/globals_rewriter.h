// SPDX-License-Identifier: Apache-2.0
//
// Writes the globals substream of a workbook (MS-XLS 2.1.7.20.3) from what it was and the changes
// made since: sheets that came, went, moved or have another name, cell formats, strings, the date
// system. Everything else is copied.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/cells/cell_formats.h"
#include "workbook/cells/string_pool.h"
#include "workbook/library.h"
#include "workbook/xls/biff_version.h"

namespace workbook {

class DrawingGroup;
class SheetNameChanges;
class SheetReferences;

/// One sheet of the book that is written.
struct PlannedSheet {
    std::u16string_view name;
    SheetState state = SheetState::Visible;
    std::optional<std::size_t> original; ///< its index in the loaded book; nullopt for a new one
    std::optional<std::size_t> copy_of;  ///< the index in the loaded book of what it is a copy of
    bool is_renamed = false;             ///< since it was loaded
};

/// Views and references must outlive the call they are given to.
struct GlobalsRewrite {
    std::string_view stream; ///< the loaded workbook stream
    BiffVersion version = BiffVersion::Biff8;
    const std::vector<PlannedSheet>& sheets; ///< in their order
    SheetReferences& references;             ///< for `sheets`; used once
    const SheetNameChanges& names;           ///< of the loaded sheets
    const DrawingGroup& drawings;            ///< with those of copied sheets
    const CellFormats& formats;              ///< of all cells
    std::size_t first_new_format = 0;        ///< formats from here to `formats_end` are written
    std::size_t formats_end = 0;             ///< anew
    std::optional<std::size_t> old_strings;  ///< position of the SST record
    const StringPool& added_strings;
    std::uint64_t added_uses = 0;   ///< cells that have an added string
    std::optional<bool> date_1904;  ///< when it was changed
    bool has_changed_cells = false; ///< formulas have to be computed again
};

struct WrittenGlobals {
    std::string bytes;
    /// Where each planned sheet's BOUNDSHEET record holds the position of its substream.
    std::vector<std::size_t> sheet_positions;
};

/// Throws `Error`.
WrittenGlobals rewrite_globals(const GlobalsRewrite& globals);

} // namespace workbook
