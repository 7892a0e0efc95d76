// SPDX-License-Identifier: Apache-2.0
//
// Compares one sheet, read through the public interface, with what is expected of it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "spreadsheet/sheet.h"
#include "tests/corpus/oracle.h"

namespace corpus {

/// Differences found: all are counted, the first few described.
class Report {
  public:
    void add(const std::string& description) {
        if (++count_ <= kMaxDescriptions) text_ += "\n  " + description;
    }
    std::size_t count() const { return count_; }
    std::string text() const { return std::to_string(count_) + " differences" + text_; }

  private:
    static constexpr std::size_t kMaxDescriptions = 5;
    std::size_t count_ = 0;
    std::string text_;
};

/// Hands every cell of the sheet's used range that has a value or a format to `consume`.
using Consume = std::function<void(int row, int column, const Answer& answer)>;
void read_sheet(spreadsheet::ISheet& sheet, bool dates_1904, const Consume& consume);

/// Compares every cell. Differences go to `wrong`; under `Verdict::Conflict` those of cells on
/// which the readers do not agree go to `disputed` when no reader gives the same answer.
void compare_cells(spreadsheet::ISheet& sheet, bool dates_1904, const ExpectedSheet& expected,
                   Verdict verdict, Report& wrong, Report& disputed);

/// Compares which cells lie in merged regions.
void compare_merged_cells(spreadsheet::ISheet& sheet, const ExpectedSheet& expected, Report& wrong);

} // namespace corpus
