// SPDX-License-Identifier: Apache-2.0
//
// What can be asked of books and sheets beyond `IBook` and `ISheet`: which cells hold something,
// how numbers are shown, formulas, names and tables. A workbook file answers everything; other
// books say "not known" (nullopt or false) or give the nearest that their interface has.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/export.h"
#include "spreadsheet/book.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {

/// How a number is shown, as far as its format decides about dates and times.
enum class number_style : std::uint8_t {
    number = 0,
    date = 1,      ///< days, without a time
    time = 2,      ///< a time of day, without a date
    date_time = 3, ///< both
    elapsed = 4    ///< hours, minutes or seconds that are not cut at a day, such as [h]:mm
};

/// A cell with a formula. The text is UTF-8 without the equals sign.
struct FormulaCell {
    Cell cell;
    std::string_view text;  ///< lives until the receiver returns
    bool has_result = true; ///< whether the file has a value for it
};

/// Receives formulas. Copied freely; the context stays the caller's.
struct FormulaBuilder {
    void* context;
    void (*add)(void* context, const FormulaCell& formula);
};

/// What a look at a sheet finds without loading it.
struct SheetSummary {
    Range used;   ///< all cells, formatted blanks included; last indices of -1 when there is none
    Range filled; ///< cells with a value; last indices of -1 when there is none
    std::uint64_t cells = 0; ///< formatted blanks included
    std::uint64_t formulas = 0;
    std::uint64_t formulas_without_result = 0;
    sheet::hidden hidden = sheet::hidden::visible;
    bool is_protected = false;
};

/// A defined name or a table whose cells are one rectangle.
struct NamedRange {
    std::u16string name;
    std::size_t sheet = 0;            ///< index of the sheet that the cells are on
    std::optional<std::size_t> scope; ///< index of the sheet whose name it is; the book's without
    bool is_table = false;
    Range range;
};

/// The rectangle of the cells that have a value or a formula; last indices of -1 when none has.
/// Formatted blanks are in it only where they are between others. Without the interface
/// `used_range`.
ZX_API Range filled_range(const ISheet& sheet);

/// The cells of the first row at or after `row` (zero-based) that has any, from its first to its
/// last; nullopt after the last such row. Without the interface a row of `used_range`.
ZX_API std::optional<Range> next_row_of_cells(const ISheet& sheet, int row);

/// Stores one style per cell of the range, column after column; `number` for cells that are not
/// numbers. Returns false, with every style `number`, where formats are not known.
ZX_API bool number_styles(const ISheet& sheet, Range range, number_style* out);

/// The merged regions of the sheet; nullopt where they are not known.
ZX_API std::optional<std::vector<Range>> merged_ranges(const ISheet& sheet);

/// Cells of the loaded rows with a formula for which the file has no value; 0 where not known.
ZX_API std::uint64_t formulas_without_result(const ISheet& sheet);

/// Hands over the formulas of rows `first_row` to `last_row` (zero-based, inclusive), without the
/// prefixes that files give to newer functions, row after row, by reading them from the file.
/// Returns false where formulas are not known. `Exception` 9 when it cannot be read any more.
ZX_API bool read_formulas(const ISheet& sheet, int first_row, int last_row,
                          const FormulaBuilder& builder);

/// What keeps applications from reading a text as a formula, part of a sentence in English; empty
/// for a formula. UTF-8 without the equals sign, A1 notation, English names, commas between
/// arguments. Cells, names and sheets that it refers to are not looked up.
ZX_API std::string formula_problem(std::string_view formula);

/// Puts formulas into the cells of a range, one for each, column after column, as `formula_problem`
/// takes them; the cells keep their formats. Until an application has computed them they have no
/// result: a file is marked so that the application which opens it does. Returns false where
/// formulas cannot be written. `Exception` 28 when one is not accepted, whose cause says why; those
/// before it may have been written.
///
///     const std::string_view total = "SUM(A1:A9)";
///     write_formulas(*sheet, {9, 0, 9, 0}, &total);
ZX_API bool write_formulas(ISheet& sheet, Range range, const std::string_view* formulas);

/// Reads the sheet at `index` (zero-based) through once and keeps no cell of it; of a book loaded
/// by `load_book_from_file_with_sheetNames`, nothing else is read. Nullopt for a chart sheet and
/// for a book that is not a workbook file. `Exception` 9 when the sheet cannot be read.
ZX_API std::optional<SheetSummary> summarize_sheet(const std::shared_ptr<IBook>& book,
                                                   std::size_t index);

/// The names and tables of a workbook file, those of other books are not known: nullopt. Hidden
/// names and names of anything but one rectangle are left out.
ZX_API std::optional<std::vector<NamedRange>> named_ranges(const std::shared_ptr<IBook>& book);

} // namespace spreadsheet
