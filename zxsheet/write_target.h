// SPDX-License-Identifier: Apache-2.0
//
// Where `zxsheet write` writes: a sheet of a book that is there or of one that is made, a sheet
// that is there or is added.
#pragma once

#include <memory>
#include <string>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/cell_sink.h"
#include "zxsheet/commands.h"
#include "zxsheet/save_book.h"

namespace zxsheet {

struct WriteTarget {
    std::shared_ptr<spreadsheet::IBook> book;
    std::shared_ptr<spreadsheet::ISheet> sheet;
    std::u16string sheet_name;
    spreadsheet::Range room; ///< data starts in its first cell and must fit into it
    Origin origin = Origin::Loaded;
    std::string preparation; ///< what was done already, such as "Made the book, "
};

/// Opens the target that the options name; `place` counts where they do not. Only a path at which
/// there is nothing becomes a new book.
WriteTarget open_write_target(const Options& options, const DataPlace& place, ChangeTools& tools);

} // namespace zxsheet
