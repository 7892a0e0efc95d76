// SPDX-License-Identifier: Apache-2.0
//
// What the command line asked for. Texts are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "spreadsheet/cell_exchange.h"

namespace zxsheet {

enum class DataFormat { Csv, Tsv, Json, JsonLines, Table };
enum class DateStyle { Iso, Serial };

struct Options {
    std::string book; ///< a path, or "gsheet:" and a spreadsheet's ID
    bool application = false;
    std::string sheet; ///< empty for the first worksheet
    std::string range; ///< empty for the used range
    bool json = false;
    DataFormat to = DataFormat::Csv;
    DateStyle dates = DateStyle::Iso;
    std::optional<spreadsheet::MergedCellColumnRule> merged_columns;
    std::optional<spreadsheet::MergedCellRowRule> merged_rows;
    std::string output;      ///< empty for standard output
    std::string google_root; ///< empty for the service's own addresses
    std::string google;      ///< the command of the group "google"; empty for any other
    std::vector<std::string> google_texts; ///< its arguments

    bool has_merged_rules() const { return merged_columns || merged_rows; }
};

} // namespace zxsheet
