// SPDX-License-Identifier: Apache-2.0
//
// What a spreadsheet online can do beyond `IBook` and `ISheet`, whose operations have their
// requests fixed: the same work in fewer requests, and what only the service has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/export.h"
#include "spreadsheet/book.h"
#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {

/// A sheet online. Every operation throws what `ISheet` throws.
///
///     if (OnlineSheet* online = online_sheet(sheet); online != nullptr &&
///     online->may_write(range))
///         online->replace(range, types.data(), provider, false);
class OnlineSheet {
  public:
    /// Rows and columns that the sheet has, used or not; both 0 where the service does not say.
    struct Grid {
        std::int64_t rows = 0;
        std::int64_t columns = 0;
    };

    /// As far as the library knows: as loaded, with the library's own changes. Sends nothing.
    virtual Grid grid() const = 0;

    /// Whether the caller may change every cell of the range, as loaded. Protection that only warns
    /// counts as none, and so does protection whose editors include the caller. Sends nothing.
    virtual bool may_write(const Range& range) const = 0;

    /// Replaces the cells of the range, which may be outside the grid: what is needed of rows and
    /// columns is appended in the same request, so that a failure leaves the sheet as it was. One
    /// type for each cell, column after column. A cell without a value becomes empty. Strings stay
    /// strings, whatever they look like. With `keep_formats` cells keep their formats, except that
    /// dates get a date format; otherwise formats go with the old values. `Exception` 52 when the
    /// sheet has no room, also where room could be made only by deleting cells that hold something.
    virtual void replace(const Range& range, const cell_type* types, const CellProvider& provider,
                         bool keep_formats) = 0;

    /// Hides the sheet or shows it. The service refuses to hide the last visible sheet.
    virtual void set_hidden(bool hidden) = 0;

  protected:
    OnlineSheet() = default;
    OnlineSheet(const OnlineSheet&) = default;
    OnlineSheet& operator=(const OnlineSheet&) = default;
    ~OnlineSheet() = default;
};

/// A spreadsheet online. Every operation throws what `IBook` throws.
class OnlineBook {
  public:
    /// The cells of a defined name.
    struct NamedCells {
        std::size_t sheet_index = 0;
        Range range;
    };

    /// Of the spreadsheet; sends nothing after a load of everything.
    virtual std::u16string title() = 0;

    /// The position of the sheet with the service's own number, "gid" in a browser's address. Sends
    /// nothing.
    virtual std::optional<std::size_t> sheet_with_id(std::int64_t id) = 0;

    /// The used ranges of some sheets, by one request whatever their number: rows and columns up to
    /// the last that hold a value. Last indices of -1 for an empty sheet and one without cells.
    virtual std::vector<Range> used_ranges(const std::vector<std::size_t>& sheet_indices) = 0;

    /// The cells of a defined name, compared without regard to case, on whatever sheet they are;
    /// nullopt when the spreadsheet has no such name. One request.
    virtual std::optional<NamedCells> find_name(const std::u16string& name) = 0;

    /// Inserts a copy of the sheet at `source`, with that name, so that it is at `index`. One
    /// request that is done as a whole or not at all; `IBook::add_sheet` needs two, and one that
    /// fails in between leaves a copy with the service's name. The next question about sheets
    /// fetches the metadata again.
    virtual void copy_sheet(std::size_t source, std::size_t index, const std::u16string& name) = 0;

  protected:
    OnlineBook() = default;
    OnlineBook(const OnlineBook&) = default;
    OnlineBook& operator=(const OnlineBook&) = default;
    ~OnlineBook() = default;
};

/// The same object as what it is beyond the interface; null for one that is not online. Lives as
/// long as the argument's object.
ZX_API OnlineBook* online_book(const std::shared_ptr<IBook>& book);
ZX_API OnlineSheet* online_sheet(const std::shared_ptr<ISheet>& sheet);

} // namespace spreadsheet
