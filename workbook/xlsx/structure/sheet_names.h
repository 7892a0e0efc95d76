// SPDX-License-Identifier: Apache-2.0
//
// What the sheet names in a package mean after changes to the book's structure.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "workbook/xlsx/formula/formula_text.h"
#include "workbook/xlsx/structure/reference_rewriter.h"
#include "workbook/xlsx/structure/sheet_list.h"
#include "workbook/xlsx/structure/table_columns.h"

namespace workbook {

/// As the book is now; made again after each change.
class SheetNames {
  public:
    SheetNames(const SheetList& sheets, const RenamedColumns& columns);

    /// Whether every sheet of the package is there under its name, and every column of a table.
    bool are_unchanged() const { return are_unchanged_; }

    /// For parts of the package; `copy` when they are read for a copied sheet, null otherwise.
    std::optional<std::string> name(std::string_view package_name, const SheetRecord* copy) const;
    std::optional<SheetPrefixNames> span(const SheetPrefixNames& package_names) const;

    const RenamedColumns& columns() const { return columns_; }

  private:
    const SheetRecord* find(std::string_view package_name) const;

    std::unordered_map<std::u16string, const SheetRecord*> by_package_name_; ///< case folded
    std::unordered_map<const SheetRecord*, std::size_t> positions_;          ///< of those there are
    RenamedColumns columns_;
    bool are_unchanged_ = true;
};

/// The edits that bring a part of the package up to date, for its sheet's copy when `copy` is not
/// null.
std::shared_ptr<PartEdits> edits_for(std::shared_ptr<const SheetNames> names,
                                     const SheetRecord* copy);

} // namespace workbook
