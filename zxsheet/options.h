// SPDX-License-Identifier: Apache-2.0
//
// What the command line asked for. Texts are UTF-8.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

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
    std::string output; ///< empty for standard output, or for the book that was changed

    std::size_t sheet_count = 1;           ///< of a new book
    bool force = false;                    ///< replace a book that exists
    std::string input;                     ///< the data; empty or "-" for standard input
    std::optional<DataFormat> from{};      ///< of the data; by the name of `input` when not given
    bool as_text = false;                  ///< guess no types
    bool keep_format = false;              ///< cells keep the formats that they have
    std::string new_name;                  ///< of an added or renamed sheet
    std::optional<std::size_t> position{}; ///< where a sheet goes, from 1
    std::string copied_sheet;              ///< empty for a new, empty sheet
    bool very_hidden = false;

    bool has_merged_rules() const { return merged_columns || merged_rows; }
};

} // namespace zxsheet
