// SPDX-License-Identifier: Apache-2.0
//
// What a worksheet of an application does not offer: merged-cell rules and what goes with them.
#include "spreadsheet/com/com_sheet.h"

namespace spreadsheet {
namespace {

constexpr std::string_view kTag = "[COM SHEET MSG]:";

} // namespace

Exception COMSheet::refused_rules(std::source_location) const {
    com::fail(kTag, error_id::merged_cells_unsupported,
              {FailureKind::Unsupported, "Interactive mode has no rules for merged cells."});
}

std::vector<bool> COMSheet::get_merged_cells_vector() const {
    return {};
}

std::vector<int> COMSheet::get_omit_rows_vector() const {
    return {};
}

std::vector<int> COMSheet::get_omit_vars_vector() const {
    return {};
}

void COMSheet::reset_merged_cells_vector() {}

void COMSheet::reset_omit_vars_bool() {}

void COMSheet::set_return_empty_vars_bool(const bool) {}

cell_type COMSheet::typeCheck(int, int) {
    com::log_line(kTag, "typeCheck method should never be called");
    return cell_type::error;
}

void COMSheet::prefetch(Range, cell_type*) const {
    com::fail(kTag, error_id::google_only,
              {FailureKind::Unsupported, "Interactive mode fetches nothing in advance."});
}

} // namespace spreadsheet
