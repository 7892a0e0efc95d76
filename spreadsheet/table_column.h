// SPDX-License-Identifier: Apache-2.0
//
// How the cells of one column become a `Column`: they are collected as they are, then the type is
// found and the values are stored in its layout. Not for installation.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "spreadsheet/table.h"

namespace spreadsheet {

/// The distinct texts of a column, numbered in the order in which they come.
class TextIndex {
  public:
    std::int32_t code_of(std::u16string_view text);
    std::size_t size() const { return ends_.size(); }
    std::u16string_view operator[](std::size_t code) const;
    void clear();

  private:
    void grow();

    std::u16string units_;            ///< all texts, one after the other
    std::vector<std::size_t> ends_;   ///< of each text in `units_`
    std::vector<std::size_t> hashes_; ///< of each text
    std::vector<std::int32_t> slots_; ///< open addressing; -1 for a free slot
};

/// Texts and numbers that stand for a missing value.
class MissingValues {
  public:
    explicit MissingValues(const std::vector<std::string>& texts);
    bool none() const { return texts_.empty(); }
    bool has(std::string_view text) const;
    bool has(double number) const;

  private:
    std::vector<std::string> texts_;
    std::vector<double> numbers_;
};

/// Cells that were changed in the same way, rows counted from the column's first.
struct CoercedRows {
    std::size_t count = 0;
    std::size_t first = 0;
};
inline constexpr std::size_t kCoercions = 5;
using ColumnCoercions = std::array<CoercedRows, kCoercions>;

/// Collects the cells of a column, from the first row to the last. Reused from column to column,
/// so that its memory is.
class ColumnCollector {
  public:
    void begin(std::size_t rows);
    void add_missing() { add(cell_type::empty, 0.0); }
    void add_error() { add(cell_type::error, 0.0); }
    void add_number(double value) { add(cell_type::number, value); }
    void add_date(double serial) { add(cell_type::date, serial); }
    void add_boolean(bool value) { add(cell_type::boolean, value ? 1.0 : 0.0); }
    void add_text(std::u16string_view text) { add(cell_type::text, texts_.code_of(text)); }
    std::size_t size() const { return kinds_.size(); }

    /// The column of the rows that `kept` marks, all where it is empty. `wanted` is the type asked
    /// for. Adds to `coercions`, whose rows count dropped ones too.
    Column finish(std::optional<ColumnType> wanted, const std::vector<bool>& kept,
                  const MissingValues& missing, ColumnCoercions& coercions);

  private:
    class Converter;

    void add(cell_type kind, double value) {
        kinds_.push_back(kind);
        values_.push_back(value);
    }
    void mark_missing(const MissingValues& missing, ColumnCoercions& coercions);
    ColumnType common_type() const;

    std::vector<cell_type> kinds_;
    std::vector<double> values_; ///< number, serial, 0 or 1, or the code of a text
    TextIndex texts_;
};

} // namespace spreadsheet
