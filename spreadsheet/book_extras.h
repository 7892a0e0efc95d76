// SPDX-License-Identifier: Apache-2.0
//
// What a book of this library can do beyond `IBook`, whose slots are fixed. The free functions of
// book_factory.h find it by a cast. Not for installation.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "spreadsheet/book_factory.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/sheet_contents.h"

namespace spreadsheet {

class IBookExtras {
  public:
    /// As `spreadsheet::reorder_sheet`.
    virtual void reorder_sheet(std::size_t from, std::size_t to) = 0;
    /// As `spreadsheet::last_save`.
    virtual SaveSummary last_save() const { return {}; }
    /// As `spreadsheet::take_unreported_failure`.
    virtual std::optional<Failure> take_unreported_failure() { return std::nullopt; }

    /// As `spreadsheet::summarize_sheet`.
    virtual std::optional<SheetSummary> summarize_sheet(std::size_t) { return std::nullopt; }
    /// As `spreadsheet::named_ranges`.
    virtual std::optional<std::vector<NamedRange>> named_ranges() { return std::nullopt; }

  protected:
    IBookExtras() = default;
    IBookExtras(const IBookExtras&) = default;
    IBookExtras& operator=(const IBookExtras&) = default;
    ~IBookExtras() = default;
};

} // namespace spreadsheet
