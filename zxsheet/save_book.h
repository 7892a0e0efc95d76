// SPDX-License-Identifier: Apache-2.0
//
// Making books and saving what was changed.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/command.h"

namespace zxsheet {

/// The file that a changed book is saved to: the book itself unless `-o` names another.
const std::string& save_target(const BookOptions& options);

/// Throws `CommandError` when `output` is the file of the book that is read.
void refuse_own_file(const BookLocation& book, const std::string& output);

/// Throws `CommandError` when there is a file where a new book is to be.
void refuse_existing(const BookLocation& book);

/// Whether the name ends like that of a workbook.
bool has_book_name(const std::string& file);
/// Whether `make_book` can make the book; a file's name has to say a format that can be written.
bool can_be_made(const BookLocation& location);

/// A new book of the format that the name's extension says, with sheets Sheet1, Sheet2, ... in it.
/// Throws `CommandError` for one that cannot be made.
std::shared_ptr<spreadsheet::IBook> make_book(const BookLocation& location,
                                              std::size_t sheet_count);

/// Throws `CommandError` when the target's extension is not that of the book's format, which the
/// library would say only after all the work. A spreadsheet online has no other target.
void check_target(const BookOptions& options);

/// Whether a sheet of the book can have the name, as far as its characters go.
bool is_sheet_name(std::u16string_view name, const BookLocation& location);
/// Throws `CommandError` for text that cannot be a sheet's name.
void check_sheet_name(const std::string& name, const BookLocation& location);

/// Throws `CommandError` when the sheet's protection locks a cell of the range.
void check_unlocked(const std::shared_ptr<spreadsheet::ISheet>& sheet,
                    const spreadsheet::Range& range, const BookLocation& location);

/// Throws `CommandError` if the book or a sheet of it could not do something since the last call
/// that does not throw by itself: writing cells, renaming, protecting, fitting columns.
void check_done(const std::shared_ptr<spreadsheet::IBook>& book, const BookOptions& options);

/// Where a book comes from.
enum class Origin { Loaded, Made };

/// Saves the book and returns the sentence: target, what was `done`, what became of the parts.
std::string save_changes(const std::shared_ptr<spreadsheet::IBook>& book,
                         const BookOptions& options, ChangeTools& tools, const std::string& done,
                         Origin origin = Origin::Loaded);

} // namespace zxsheet
