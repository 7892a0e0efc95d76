// SPDX-License-Identifier: Apache-2.0
//
// What every sheet has without doing anything for it.
#include "spreadsheet/sheet.h"

namespace spreadsheet {

Range ISheet::get_data_span(Range range, const MergedCellColumnRule&, const MergedCellRowRule&) {
    return range;
}

void ISheet::get_types(cell_type*) {}

ISheet::~ISheet() = default;

std::vector<cell_type> ISheet::cell_types(Range range) const {
    const std::int64_t count = range.count();
    if (count <= 0) return {};
    std::vector<cell_type> types(static_cast<std::size_t>(count));
    cell_types(range, types.data());
    return types;
}

} // namespace spreadsheet
