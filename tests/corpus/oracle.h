// SPDX-License-Identifier: Apache-2.0
//
// What other readers found in the files of the corpus: expected sheets and cells, and how far the
// readers agree.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

#include "spreadsheet/range.h"

namespace corpus {

/// How far the readers agree on a file.
enum class Verdict {
    Agree,     ///< every cell is a hard expectation; where one reader differs, the others count
    Conflict,  ///< only the cells without other answers are
    OneReader, ///< nothing is certain
    Unreadable ///< damaged or encrypted: an error or data, nothing more is asked
};

/// One file of the corpus.
struct File {
    std::string name;
    Verdict verdict;
};

inline std::ostream& operator<<(std::ostream& out, const File& file) {
    return out << file.name;
}

/// One answer about a cell: n number, d number with a date format, s text, b boolean, e error, z
/// blank with a format, - no such cell.
struct Answer {
    char kind = '-';
    double number = 0.0; ///< of n and d, 1 or 0 of b
    std::string text{};  ///< of s and e, UTF-8
};

/// What a cell should hold, and what else may be right.
struct Expectation {
    Answer answer;
    std::vector<Answer> others; ///< answers of all readers, where they do not agree
};

/// Key of a cell in a map.
constexpr std::uint64_t cell_key(int row, int column) {
    return static_cast<std::uint64_t>(row) << 32 | static_cast<std::uint32_t>(column);
}

struct ExpectedSheet {
    std::string name;
    int visibility = 0;
    bool has_all_cells = true; ///< false when only a sample of the cells was kept
    std::vector<spreadsheet::Range> merged;
    std::unordered_map<std::uint64_t, Expectation> cells;
};

/// Where a sheet stands in the workbook.
struct ExpectedPlace {
    std::string name;
    bool is_chart = false;
};

struct Oracle {
    bool dates_1904 = false;
    std::vector<ExpectedPlace> places;
    std::vector<ExpectedSheet> sheets;
};

/// The files of the corpus in `folder`, empty when there is none.
std::vector<File> list_files(const std::string& folder);

/// The expectations of one file. Throws std::runtime_error when they cannot be read.
Oracle load_oracle(const std::string& folder, const std::string& file_name);

} // namespace corpus
