// SPDX-License-Identifier: Apache-2.0
//
// From the command line's BOOK, SHEET and RANGE to the library's objects, loading no more than is
// needed.
#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "spreadsheet/spreadsheet.h"
#include "zxsheet/options.h"

namespace zxsheet {

/// The ID of a Google spreadsheet written as "gsheet:ID"; empty for a path.
std::optional<std::string> google_id(const std::string& book);

/// A UTF-8 path in the platform's own form.
std::filesystem::path native_path(const std::string& path);

/// What serves the book.
spreadsheet::book::interactive mode_of(const Options& options);

/// The format that the extension names; XLSX for an unknown one, since the content decides anyway.
spreadsheet::book::format format_of(const Options& options);

/// Loads the whole book.
std::shared_ptr<spreadsheet::IBook> open_book(const Options& options);

/// Loads the names (and kinds) of the sheets.
std::shared_ptr<spreadsheet::IBook> open_sheet_list(const Options& options);

/// The name of the sheet at an index.
std::u16string sheet_name(const spreadsheet::IBook& book, std::size_t index);

/// The index of the sheet of that name, in whatever case.
std::optional<std::size_t> find_sheet_name(const spreadsheet::IBook& book,
                                           const std::u16string& name);

/// The number from 1 that a text is.
std::optional<std::size_t> sheet_number(const std::string& text);

/// The index of the wanted sheet: of that name, else of that number; the first worksheet for an
/// empty text. Error 6 of the library when there is none.
std::size_t find_sheet(const spreadsheet::IBook& book, const std::string& wanted);

/// The range that a text stands for, A1 or a name. What is wrong with the text is told with the
/// sheet's name; other failures pass as they are.
spreadsheet::Range range_on_sheet(const std::string& text,
                                  const std::shared_ptr<spreadsheet::ISheet>& sheet,
                                  const std::u16string& name_of_sheet,
                                  spreadsheet::book::format format);

/// A sheet and the cells of it that are wanted.
struct Selection {
    std::shared_ptr<spreadsheet::IBook> book;
    std::shared_ptr<spreadsheet::ISheet> sheet;
    std::u16string sheet_name;
    spreadsheet::Range range; ///< of no cells when the sheet is empty
};

/// How much of the wanted sheet to load; what is not loaded is kept all the same when the book is
/// saved.
enum class Extent { WantedRows, WholeSheet, NoCells };

/// Loads the wanted sheet and works the range out, except with `NoCells`. Throws what the library
/// throws for a sheet or range that does not exist and for a chart sheet.
Selection open_selection(const Options& options, Extent extent = Extent::WantedRows);

} // namespace zxsheet
