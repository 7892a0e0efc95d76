// SPDX-License-Identifier: Apache-2.0
//
// The COLINFO records of a sheet (MS-XLS 2.4.53), COLWIDTH in BIFF2, with the widths of some
// columns set: records are split where needed, everything else that they say stays.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/xls/biff_version.h"

namespace workbook {

/// `records` is the data of the sheet's records in their order; `widths` are in characters by
/// zero-based column; columns that had no record get `default_format`. Appends the new records.
void append_column_records(const std::vector<std::string_view>& records,
                           const std::map<int, double>& widths, BiffVersion version,
                           std::uint16_t default_format, std::string& out);

} // namespace workbook
