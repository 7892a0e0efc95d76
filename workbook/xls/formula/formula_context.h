// SPDX-License-Identifier: Apache-2.0
//
// What tokens of BIFF8 formulas refer to by numbers: sheets, defined names, and the books that
// EXTERNSHEET leads to.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "workbook/xls/formula/extern_sheets.h"

namespace workbook::biff {

/// A SUPBOOK record (MS-XLS 2.4.271) and the EXTERNNAME records (2.4.106) after it. UTF-8; empty
/// where the record cannot be read.
struct SupportingBook {
    enum class Kind { Own, AddIn, Other, Unknown };

    Kind kind = Kind::Unknown;
    std::string file; ///< the file's name without its folder
    std::vector<std::string> sheets;
    std::vector<std::string> names; ///< of functions of an add-in; names of another book
};

struct FormulaName {
    std::string name;                 ///< UTF-8; empty where the record cannot be read
    std::optional<std::size_t> scope; ///< index of the sheet whose name it is
};

struct FormulaContext {
    std::vector<std::string> sheets; ///< UTF-8, in the file's order
    std::vector<FormulaName> names;
    std::vector<SupportingBook> books;
    ExternSheets entries{0};
};

} // namespace workbook::biff
