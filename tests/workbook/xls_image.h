// SPDX-License-Identifier: Apache-2.0
//
// What an XLS file says, by a walk over its records that knows nothing of how they are written, and
// the cells as the reader gives them. A book's image can be changed as the book should change.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "workbook/library.h"

namespace workbook::test {

/// References of a formula: "s:Sheet", "s:#REF!", "n:Sheet!Name", "n:!Name", "n:#REF!". A hyperlink
/// to a sheet is "l:Sheet", "l:#REF!" when the sheet is gone.
using References = std::set<std::string>;

struct CellImage {
    CellKind kind = CellKind::Empty;
    double number = 0.0;
    std::u16string text{};
    int num_format = 0;
    bool operator==(const CellImage&) const = default;
};

struct SheetImage {
    std::string name;
    SheetState state = SheetState::Visible;
    std::map<std::pair<int, int>, CellImage> cells{};
    std::map<std::pair<int, int>, References> formulas{}; ///< of cells
    std::vector<std::string> merged{};
    References others{};                  ///< of charts and hyperlinks
    std::map<std::string, int> objects{}; ///< how many shapes, comments, charts
    bool operator==(const SheetImage&) const = default;
};

struct NameImage {
    std::string scope, name;
    References refers_to;
    auto operator<=>(const NameImage&) const = default;
};

struct BookImage {
    std::vector<SheetImage> sheets;
    std::multiset<NameImage> names;
    std::set<std::string> faults; ///< what does not fit together in the file

    void rename_sheet(std::size_t index, const std::string& name);
    void remove_sheet(std::size_t index);
    void copy_sheet(std::size_t source, std::size_t index, const std::string& name);
};

/// `file` is a BIFF8 book with the default password at most.
BookImage image_of(const std::string& file);

/// Its workbook stream, decrypted; the file itself where it has no container.
std::string stream_of(const std::string& file);

/// The first difference between books, empty for equal ones.
std::string difference(const BookImage& a, const BookImage& b);

} // namespace workbook::test
