// SPDX-License-Identifier: Apache-2.0
//
// The XML of cells that were written: `<c r="B2" s="1"><v>7</v></c>`. Numbers get the shortest
// digits that read back as the same number.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "workbook/cells/cell_store.h"
#include "workbook/cells/string_pool.h"
#include "workbook/xml/markup_writer.h"

namespace workbook {

/// Room that `append_number` needs.
inline constexpr std::size_t kNumberRoom = 40;

/// Writes a finite number at `out` and returns the place after it.
char* append_number(char* out, double value);

class CellMarkup {
  public:
    /// `prefix` is the part's namespace prefix with its colon, or empty; `shared_index_of` says
    /// where the book's added strings are in the saved file; `formulas` has those of the cells.
    /// All references must outlive this.
    CellMarkup(MarkupWriter& out, std::string_view prefix,
               const std::vector<std::uint32_t>& shared_index_of, const StringPool& formulas);

    /// The row of the cells to come.
    void set_row(int row);
    /// `cell` must be one that was written: a number, boolean, blank, formula or added string.
    void write(const StoredCell& cell);

  private:
    static constexpr std::size_t kPiece = 32;
    // A text that is copied without a loop unless it is long.
    struct Piece {
        Piece() = default;
        explicit Piece(std::string from) : text(std::move(from)), size(text.size()) {
            if (size < kPiece) text.resize(kPiece);
        }
        std::string text;
        std::size_t size = 0;
    };

    static char* put(char* out, const Piece& piece);
    char* put_value(char* out, const StoredCell& cell) const;
    void append_formula(std::string_view formula);

    MarkupWriter& out_;
    const std::vector<std::uint32_t>& shared_index_of_;
    const StringPool& formulas_;
    const std::string prefix_;
    std::vector<std::array<char, 4>> column_names_; ///< letters and, last, how many
    std::array<char, 8> row_digits_{};              ///< with the closing quote
    std::size_t row_digits_size_ = 0;
    Piece open_, value_, string_, boolean_, close_;
    std::size_t longest_cell_;
};

} // namespace workbook
