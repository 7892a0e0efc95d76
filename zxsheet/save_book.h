// SPDX-License-Identifier: Apache-2.0
//
// Making books and saving what was changed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/commands.h"

namespace zxsheet {

/// The file that a changed book goes to: the book itself unless `-o` names another.
const std::string& target_of(const Options& options);

/// A new book of the format that the name tells, with sheets Sheet1, Sheet2, ... in it. Throws
/// `Failure` for a name without one of the endings that can be written.
std::shared_ptr<spreadsheet::IBook> make_book(const Options& options, std::size_t sheet_count);

/// Throws error 20 of the library when the target's ending is not that of the book's format, which
/// the library would say only after all the work.
void check_target(const Options& options);

/// Throws error 26 of the library for a text that cannot be a sheet's name.
void check_sheet_name(const std::string& name);

/// Throws `Failure` when the sheet's protection locks a cell of the range.
void check_unlocked(spreadsheet::ISheet& sheet, const spreadsheet::Range& range,
                    const Options& options);

/// Throws `Failure` with the cause if the library has logged a failure since `tools.log.forget()`.
void check_log(const Options& options, const ChangeTools& tools);

/// Where a book comes from.
enum class Origin { Loaded, Made };

/// Saves the book and returns the sentence: target, what was `done`, what became of the parts.
std::string save_changes(const std::shared_ptr<spreadsheet::IBook>& book, const Options& options,
                         ChangeTools& tools, const std::string& done,
                         Origin origin = Origin::Loaded);

} // namespace zxsheet
