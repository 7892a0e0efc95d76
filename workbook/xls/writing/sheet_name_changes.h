// SPDX-License-Identifier: Apache-2.0
//
// Records that refer to sheets by their names, unlike formulas: places in this book that hyperlinks
// lead to (MS-XLS 2.4.140 HLink), and the cells that pivot tables and consolidations are made from
// (2.4.86 DConRef, 2.4.85 DConName).
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace workbook {

class SheetNameChanges {
  public:
    /// Sheet `old_name` of the loaded book is called `new_name` now.
    void set(std::u16string_view old_name, std::u16string_view new_name);
    bool empty() const { return new_names_.empty(); }
    /// The new name, null for a name that stays or is not a sheet's.
    const std::u16string* find(std::u16string_view name) const;

    /// Changes the data of record `id`; returns whether anything changed. Records of other kinds,
    /// those that break the format, and those that would become too long are left alone.
    bool apply(std::uint16_t id, std::string& data) const;

  private:
    bool rename_in_hyperlink(std::string& data) const;
    bool rename_in_source(std::string& data, std::size_t file) const;

    std::map<std::u16string, std::u16string, std::less<>> new_names_; ///< by old, case folded
};

/// A hyperlink's place in a book ("Sheet!A1", "'It''s'!A1") with the sheet's name replaced; empty
/// when it stays.
std::u16string renamed_place(std::u16string_view place, const SheetNameChanges& changes);

} // namespace workbook
