// SPDX-License-Identifier: Apache-2.0
//
// Records of the globals that refer to sheets by their number, brought up to date with sheets that
// came, went or moved: the window's sheets, references of formulas (MS-XLS 2.4.105 ExternSheet,
// 2.4.271 SupBook) and the sheets that names belong to (2.4.150 Lbl). Formulas name sheets by the
// number of such a reference, so only those of copied sheets change.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/xls/formula/extern_sheets.h"
#include "workbook/xls/formula/token_rewriter.h"
#include "workbook/xls/record_stream.h"

namespace workbook {

struct PlannedSheet;

class SheetReferences {
  public:
    /// `stream` begins with the globals of a BIFF8 book of `original_count` sheets; it and `sheets`
    /// must outlive this.
    SheetReferences(std::string_view stream, const std::vector<PlannedSheet>& sheets,
                    std::size_t original_count);

    /// Whether a sheet has another number than in the loaded book.
    bool has_changed() const { return has_changed_; }

    /// What the formulas of the copy that is sheet number `sheet` need: references by which they
    /// name the original, and its names, become those of the copy. This must outlive the result.
    biff::TokenChanges changes_for_copy(std::size_t sheet) const;

    /// Called for every record of the old globals, in order, before it is copied to `globals`:
    /// names of copies go after the last old one.
    void before(const Record& record, std::string& globals);
    /// `record` was copied to `globals`, where its header is at `position`; it is the last one
    /// there. It is changed, replaced or removed.
    void adjust(const Record& record, std::size_t position, std::string& globals);

  private:
    /// What is different in a copy of a sheet.
    struct Copy {
        std::map<std::uint16_t, std::uint16_t> links; ///< entries of EXTERNSHEET
        std::map<std::uint32_t, std::uint32_t> names; ///< one-based numbers
    };

    void read(std::string_view stream);
    void plan_copies(std::size_t original_count);
    void add_copied_names(std::size_t sheet, Copy& copy);
    void append_links(std::string& globals) const;
    void adjust_window(std::string& globals, std::size_t data, std::size_t size) const;
    void adjust_name(const Record& record, std::size_t position, std::string& globals);

    const std::vector<PlannedSheet>& sheets_;
    std::vector<std::optional<std::size_t>> new_index_; ///< by old index
    bool has_changed_ = false;
    std::optional<std::uint16_t> own_book_; ///< number of the SUPBOOK record of the book itself
    std::vector<std::uint16_t> link_books_; ///< SUPBOOK numbers of the old entries of EXTERNSHEET
    biff::ExternSheets links_{0};
    std::vector<std::string_view> old_names_; ///< data of the NAME records
    std::map<std::size_t, Copy> copies_;      ///< by number of the copy
    std::string copied_names_;                ///< NAME records
    std::size_t copied_name_count_ = 0;

    // While the globals are written.
    std::size_t names_ = 0;
    bool are_links_written_ = false;
    bool is_dropped_ = false; ///< CONTINUE records that come now belong to a replaced record
};

} // namespace workbook
