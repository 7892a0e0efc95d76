// SPDX-License-Identifier: Apache-2.0
//
// Where `zxsheet write` writes: to a sheet of an existing or new book, itself existing or added.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "zxsheet/book_access.h"
#include "zxsheet/cell_sink.h"
#include "zxsheet/command.h"
#include "zxsheet/save_book.h"

namespace zxsheet {

/// What the command line says about the target.
struct WriteOptions : BookOptions {
    std::string sheet;
    std::string range;                 ///< the first cell, or all that may be written to
    bool append = false;               ///< after the last row with a value
    bool replace = false;              ///< nothing of the sheet's cells stays
    bool formulas = false;             ///< text that begins with "=" is a formula
    bool plain = false;                ///< cells lose the formats that they have
    std::optional<std::size_t> skip{}; ///< rows of the data to leave out
};

struct WriteTarget {
    Selection cells; ///< data starts in the first cell of the range and must fit into it
    Origin origin = Origin::Loaded;
    bool is_new_sheet = false; ///< without any format
    /// Of a sheet that is appended to and has values: where the names of its columns are.
    std::optional<spreadsheet::Range> header;
    std::string preparation; ///< what was done already, such as "Made the book, "
};

/// Opens the target that the options name; `place` counts where they do not. Only a path at which
/// there is no file becomes a new book. Throws `CommandError` with `ExitCode::Usage` when values
/// would be overwritten and nothing says that they should be.
WriteTarget open_write_target(const WriteOptions& options, const DataPlace& place);

} // namespace zxsheet
