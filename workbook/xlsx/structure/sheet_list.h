// SPDX-License-Identifier: Apache-2.0
//
// The sheets of a book while its structure changes. Each has a record that stays the same whatever
// happens to the sheet, so that a name in the package always means the sheet that had it there.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "workbook/xlsx/reading/workbook_part.h"
#include "workbook/xlsx/structure/sheet_copy.h"

namespace workbook {

struct SheetRecord {
    SheetEntry* entry = nullptr; ///< null when the sheet was removed
    bool is_in_package = false;
    std::u16string package_name; ///< empty unless in the package
    SheetState package_state = SheetState::Visible;
    std::string part;         ///< as in the entry, which may be gone
    std::size_t element = 0;  ///< index among the package's sheet elements
    std::string package_part; ///< where its XML comes from; empty for an empty sheet
    std::string relationship_id;
    std::uint32_t sheet_id = 0;               ///< 0 when the package has none for it
    const SheetRecord* copied_from = nullptr; ///< a record in the package; null for other sheets
    SheetCopyPlan copy;
    /// The sheets beside a removed one when it went.
    SheetRecord *before = nullptr, *after = nullptr;
};

class SheetList {
  public:
    /// `workbook` must outlive this; its sheets are in the order of the package.
    explicit SheetList(WorkbookPart& workbook);

    /// Throws `Error` unless `name` can be the name of a sheet; `own` may have it already.
    void check_name(std::u16string_view name, const SheetEntry* own) const;
    /// Throws `Error`.
    void check_room(std::size_t index) const;
    void check_index(std::size_t index) const;
    /// Throws `Error` when no visible sheet is left without this one.
    void check_not_last_visible(const SheetEntry& sheet) const;

    SheetRecord& insert(std::size_t index, std::unique_ptr<SheetEntry> entry);
    void remove(std::size_t index);
    void move(std::size_t from, std::size_t to);
    void rename(SheetEntry& sheet, std::u16string_view name);

    SheetRecord& record(const SheetEntry& sheet) const { return *by_entry_.at(&sheet); }
    const std::vector<std::unique_ptr<SheetRecord>>& records() const { return records_; }
    const std::vector<std::unique_ptr<SheetEntry>>& entries() const { return workbook_.sheets; }

    /// Whether sheets came, went, moved or have other names than in the package.
    bool has_changed() const;

  private:
    WorkbookPart& workbook_;
    std::vector<std::unique_ptr<SheetRecord>> records_; ///< those of the package first
    std::unordered_map<const SheetEntry*, SheetRecord*> by_entry_;
    std::unordered_set<std::u16string> folded_names_;
};

} // namespace workbook
