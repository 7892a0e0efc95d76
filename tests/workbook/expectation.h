// SPDX-License-Identifier: Apache-2.0
//
// What a fixture of tests/data holds, read from NAME.expected (tests/data/make_fixtures.py has the
// form).
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace workbook::test {

using Place = std::pair<int, int>; ///< row and column

struct ExpectedSheet {
    std::string kind;  ///< "worksheet", "chart" or "unknown"
    std::string state; ///< "visible", "hidden", "veryhidden" or "-"
    std::string name;
    bool is_protected = false;
    bool is_unordered = false;       ///< its rows are not in ascending order
    std::string bounds;              ///< "A1:B2", "none" or empty when nothing is expected of them
    std::string filled;              ///< likewise
    std::vector<std::string> merged; ///< "A1:B2" in the file's order
    std::vector<std::pair<std::string, std::string>> names; ///< name and "A1:B2" or "none"
    std::map<Place, std::string> cells; ///< "number 1.5"; what is not here does not exist
};

struct Expectation {
    bool date_1904 = false;
    std::vector<ExpectedSheet> sheets;
};

Expectation read_expectation(const std::filesystem::path& path);

/// The whole text of a file.
std::string read_text(const std::filesystem::path& path);

/// "A1:B2" of zero-based inclusive corners.
std::string area_name(int first_row, int last_row, int first_column, int last_column);

/// Text in the escapes of the expectation files.
std::string escaped(std::u16string_view text);

} // namespace workbook::test
