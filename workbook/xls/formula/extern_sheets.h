// SPDX-License-Identifier: Apache-2.0
//
// The EXTERNSHEET table (MS-XLS 2.4.105): tokens refer to its entries, which name a book and a span
// of its sheets. Moving, adding and removing sheets changes entries, not tokens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace workbook::biff {

struct ExternSheet {
    std::uint16_t book = 0;            ///< zero-based number of its SUPBOOK record
    std::uint16_t first = 0, last = 0; ///< sheets of the book, or one of the values below
    bool operator==(const ExternSheet&) const = default;
};

inline constexpr std::uint16_t kWholeBook = 0xFFFE;    ///< for names of the book
inline constexpr std::uint16_t kRemovedSheet = 0xFFFF; ///< shown as #REF!

class ExternSheets {
  public:
    /// An empty table; `own_book` is the number of the SUPBOOK record for this book.
    explicit ExternSheets(std::uint16_t own_book) : own_book_(own_book) {}
    /// Reads the record's body, its CONTINUE records joined. Entries that it claims and does not
    /// have are not made.
    ExternSheets(std::string_view body, std::uint16_t own_book);

    const std::vector<ExternSheet>& entries() const { return entries_; }

    /// The body of the record.
    std::string body() const;

    /// The number of the entry for these sheets of this book, added where there is none; nothing
    /// when the table is full.
    std::optional<std::uint16_t> find_or_add(std::uint16_t first, std::uint16_t last);

    /// Follows a change of this book's sheets: `now[i]` is the new number of sheet i, nothing for
    /// one that is gone. A span that loses an end shrinks; an entry that loses all is marked as
    /// removed. Sheets that `now` does not have count as gone.
    void renumber(const std::vector<std::optional<std::uint16_t>>& now);

    /// Whether references over the entry show #REF!; also true for an entry that does not exist.
    bool is_removed(std::uint16_t entry) const;

    /// The entry that takes the place of `entry` in a copy of sheet `source`, which is sheet
    /// `copy`: one for the copy where `entry` is for the source alone, else `entry` itself.
    /// Nothing when the table is full.
    std::optional<std::uint16_t> for_copy(std::uint16_t entry, std::uint16_t source,
                                          std::uint16_t copy);

  private:
    std::uint16_t own_book_;
    std::vector<ExternSheet> entries_;
};

} // namespace workbook::biff
