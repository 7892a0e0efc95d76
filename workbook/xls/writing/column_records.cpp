// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/column_records.h"

#include <algorithm>
#include <cmath>

#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

constexpr std::size_t kColInfoBytes = 10; ///< without the last two, which some writers leave out
constexpr std::uint16_t kWidthIsSet = 0x0002; ///< of the options
constexpr double kWidthUnits = 256.0;

struct ColumnRecord {
    int first, last;
    std::uint16_t width, format, options;
    std::string_view rest;
};

std::uint16_t width_units(double characters) {
    return static_cast<std::uint16_t>(
        std::clamp(std::round(characters * kWidthUnits), 0.0, 65535.0));
}

void append_record(const ColumnRecord& columns, std::string& out) {
    append_u16(out, record::kColInfo);
    append_u16(out, static_cast<std::uint16_t>(kColInfoBytes + columns.rest.size()));
    for (const int value : {columns.first, columns.last, int{columns.width}, int{columns.format},
                            int{columns.options}})
        append_u16(out, static_cast<std::uint16_t>(value));
    out += columns.rest;
}

} // namespace

void append_column_records(const std::vector<std::string_view>& records,
                           const std::map<int, double>& widths, BiffVersion version,
                           std::uint16_t default_format, std::string& out) {
    if (version == BiffVersion::Biff2) {
        // Of records for one column the last counts.
        for (const auto& [column, width] : widths) {
            append_u16(out, record::kColWidth2);
            append_u16(out, 4);
            out.append(2, static_cast<char>(column));
            append_u16(out, width_units(width));
        }
        return;
    }
    std::vector<ColumnRecord> columns;
    std::vector<bool> is_known(kXlsLimits.columns);
    for (const std::string_view data : records) {
        if (data.size() < kColInfoBytes) continue;
        ColumnRecord old{load_u16(data.data()),     load_u16(data.data() + 2),
                         load_u16(data.data() + 4), load_u16(data.data() + 6),
                         load_u16(data.data() + 8), data.substr(kColInfoBytes)};
        // Before, at and after each column that gets a width.
        for (auto set = widths.lower_bound(old.first);
             set != widths.end() && set->first <= old.last; ++set) {
            if (old.first < set->first)
                columns.push_back(old), columns.back().last = set->first - 1;
            ColumnRecord changed = old;
            changed.first = changed.last = set->first;
            changed.width = width_units(set->second);
            changed.options |= kWidthIsSet;
            columns.push_back(changed);
            is_known[static_cast<std::size_t>(set->first)] = true;
            old.first = set->first + 1;
        }
        if (old.first <= old.last) columns.push_back(old);
    }
    for (const auto& [column, width] : widths)
        if (!is_known[static_cast<std::size_t>(column)])
            columns.push_back(
                {column, column, width_units(width), default_format, kWidthIsSet, {"\0\0", 2}});
    std::stable_sort(
        columns.begin(), columns.end(),
        [](const ColumnRecord& one, const ColumnRecord& other) { return one.first < other.first; });
    for (const ColumnRecord& record : columns)
        append_record(record, out);
}

} // namespace workbook
