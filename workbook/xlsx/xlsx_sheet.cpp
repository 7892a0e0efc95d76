// SPDX-License-Identifier: Apache-2.0
//
// Between a sheet's cells in memory and its part in the package.
#include "workbook/xlsx/xlsx_sheet.h"

#include <new>

#include "workbook/cells/cell_name.h"
#include "workbook/error.h"
#include "workbook/xlsx/formula/stored_formula.h"
#include "workbook/xlsx/reading/formula_reader.h"
#include "workbook/xlsx/reading/worksheet_reader.h"

namespace workbook {

XlsxSheet::XlsxSheet(BookContents& contents, SheetEntry& entry, RowSpan rows)
    : StoredSheet(contents), contents_(contents), entry_(entry), is_new_(false) {
    try {
        const std::unique_ptr<ByteSource> part = contents_.package->open_part(entry_.part);
        is_tail_read_ = read_worksheet(*part, rows, date_base(contents_.workbook), cells_, tail_);
        loaded_rows_ = rows;
    } catch (const Error& error) {
        throw error.in_sheet(utf8_name());
    }
}

XlsxSheet::XlsxSheet(BookContents& contents, SheetEntry& entry)
    : StoredSheet(contents), contents_(contents), entry_(entry), is_new_(true) {
    if (entry.part.empty())
        refuse_changes("it cannot be changed, since the file lists it without cells: add a sheet");
}

XlsxSheet::XlsxSheet(const XlsxSheet& original, SheetEntry& entry)
    : StoredSheet(original),
      contents_(original.contents_),
      entry_(entry),
      is_new_(original.is_new_) {}

std::optional<Rectangle> XlsxSheet::named_cells(std::u16string_view name) const {
    return find_named_cells(contents_.workbook.defined_names, name, contents_.index_of(entry_),
                            entry_.name);
}

void XlsxSheet::read_tail(SheetTail& tail) const {
    const PackageReading reading(contents_);
    tail = read_worksheet_tail(*contents_.open_sheet_part(entry_));
}

void XlsxSheet::read_other_rows(SheetCells& cells) const {
    const PackageReading reading(contents_);
    SheetTail tail; // known or read on its own
    read_worksheet(*contents_.open_sheet_part(entry_), {}, date_base(contents_.workbook), cells,
                   tail);
    contents_.need_strings(cells.shared_strings_end);
}

bool XlsxSheet::visit_formulas(int first_row, int last_row, const FormulaVisitor& visit) const {
    if (is_new_) return true;
    try {
        const PackageReading reading(contents_);
        read_formulas(*contents_.open_sheet_part(entry_), {first_row, last_row}, visit);
        return true;
    } catch (const Error& error) {
        return fail(error.kind(), error.what());
    }
}

// Applications refuse a file with a formula that they cannot read.
bool XlsxSheet::write_formula(int row, int column, std::string_view formula, const Format* format) {
    if (const std::string problem = formula_problem(formula); !problem.empty())
        return fail(ErrorKind::Refused, cell_name(row, column) + ": " + problem);
    const std::string stored = stored_formula(formula);
    if (const auto missing = contents_.missing_in(stored))
        return fail(ErrorKind::Missing, cell_name(row, column) + ": the formula refers to a " +
                                            *missing + ", which the workbook does not have");
    return keep_formula(row, column, stored, format);
}

template <class Change>
bool XlsxSheet::try_change(const Change& change) {
    try {
        change();
        return true;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        contents_.error.set(error); // it names the sheet
        return false;
    }
}

bool XlsxSheet::set_name(std::u16string_view name) {
    return try_change([&] { contents_.rename_sheet(entry_, name); });
}

bool XlsxSheet::set_hidden(SheetState state) {
    return try_change([&] { contents_.set_sheet_state(entry_, state); });
}

std::uint64_t XlsxSheet::expected_bytes() const {
    constexpr std::uint64_t kCellBytes = 60;
    return cells_.cells.size() * kCellBytes;
}

void XlsxSheet::write_part(const PartOpener& open_part,
                           const std::vector<std::uint32_t>& shared_index_of, ByteSink& out) const {
    rewrite_worksheet(open_part, cells_.cells, shared_index_of, changes_, is_whole(), out);
}

} // namespace workbook
