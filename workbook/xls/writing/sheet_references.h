// SPDX-License-Identifier: Apache-2.0
//
// Records of the globals that refer to sheets by their number, brought up to date with sheets that
// came, went or moved: the window's sheets, references of formulas (MS-XLS 2.4.105 ExternSheet,
// 2.4.271 SupBook) and the sheets that names belong to (2.4.150 Lbl). Formulas name sheets by the
// number of such a reference, so they need no change.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "workbook/xls/record_stream.h"

namespace workbook {

struct PlannedSheet;

class SheetReferences {
  public:
    /// `sheets` must outlive this.
    SheetReferences(const std::vector<PlannedSheet>& sheets, std::size_t original_count);

    /// Whether a sheet has another number than in the loaded book.
    bool has_changed() const { return has_changed_; }

    /// `record` of the old globals was copied to `globals`, where its header is at `position`; it
    /// is the last one there. Called for every record, in order.
    void adjust(const Record& record, std::size_t position, std::string& globals);

  private:
    void adjust_window(std::string& globals, std::size_t data, std::size_t size) const;
    void adjust_book(std::string& globals, std::size_t data, std::size_t size);
    void adjust_links(std::string& globals, std::size_t data, std::size_t size);
    void adjust_name(const Record& record, std::size_t position, std::string& globals);

    static constexpr std::size_t kLinkBytes = 6;

    const std::vector<PlannedSheet>& sheets_;
    std::vector<std::optional<std::size_t>> new_index_; ///< by old index
    bool has_changed_ = false;
    std::vector<bool> is_own_book_; ///< by SUPBOOK record
    std::uint16_t last_id_ = 0;     ///< of the last record that was not a CONTINUE record
    std::vector<std::size_t> link_; ///< positions of the bytes of a reference that is not complete
    std::size_t names_ = 0;
};

} // namespace workbook
