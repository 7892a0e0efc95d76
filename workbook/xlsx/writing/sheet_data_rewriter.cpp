// SPDX-License-Identifier: Apache-2.0
//
// Merges the rows of the part with those of the store.
#include "workbook/xlsx/writing/sheet_data_rewriter.h"

#include <algorithm>

#include "workbook/cells/cell_name.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook {

namespace {

using Token = XmlScanner::Token;

bool has_changed_cell(const CellStore::RowCells& row) {
    return row.has_changes && std::any_of(row.begin, row.end,
                                          [](const StoredCell& cell) { return cell.is_changed(); });
}

} // namespace

SheetDataRewriter::SheetDataRewriter(XmlScanner& scanner, MarkupWriter& out, std::string prefix,
                                     const CellStore& cells, ChangedPlaces& changed,
                                     FormulaGroups& groups, CellMarkup& markup)
    : scanner_(scanner),
      window_(scanner.window()),
      out_(out),
      prefix_(std::move(prefix)),
      cells_(cells),
      changed_(changed),
      groups_(groups),
      markup_(markup) {
    find_next_changed_row();
}

void SheetDataRewriter::rewrite() {
    const int depth = scanner_.depth();
    places_ = written_ = {};
    row_prefix_ = scanner_.prefix();
    if (scanner_.is_empty_element() && next_row_ < cells_.row_count()) {
        out_.append(open_tag(scanner_.raw()));
        out_.append(">");
        const std::string end_tag = "</" + std::string(scanner_.prefix()) + "sheetData>";
        scanner_.next();
        write_rows_before(kMaxRows);
        out_.append(end_tag);
        return;
    }
    out_.append(scanner_.raw());
    const bool is_empty = scanner_.is_empty_element();
    for (;;) {
        if (!is_empty) copy_plain_rows();
        const Token token = scanner_.next();
        if (token == Token::End && scanner_.depth() < depth) {
            if (!is_empty) write_rows_before(kMaxRows);
            highest_row_ = kMaxRows;
            out_.append(scanner_.raw());
            return;
        }
        if (token == Token::Start && scanner_.depth() == depth + 1 && scanner_.name() == "row") {
            rewrite_row();
            continue;
        }
        const int outside = scanner_.depth() - 1;
        out_.append(scanner_.raw());
        if (token != Token::Start) continue;
        while (scanner_.depth() > outside) {
            scanner_.next();
            out_.append(scanner_.raw());
        }
    }
}

void SheetDataRewriter::write_missing() {
    if (next_row_ == cells_.row_count()) return;
    out_.append("<" + prefix_ + "sheetData>");
    write_rows_before(kMaxRows);
    out_.append("</" + prefix_ + "sheetData>");
}

void SheetDataRewriter::rewrite_row() {
    const int depth = scanner_.depth();
    const int row = places_.begin_row(scanner_);
    highest_row_ = std::max(highest_row_, row);
    write_rows_before(row);
    new_cells_ = {};
    if (next_row_ < cells_.row_count() && cells_.row_at(next_row_).row == row) {
        new_cells_ = cells_.row_at(next_row_++);
        find_next_changed_row();
        markup_.set_row(row);
    }
    const bool has_new = new_cells_.begin != new_cells_.end;
    write_row_tag(row, has_new || changed_.has_cleared_in(row));
    if (scanner_.is_empty_element()) {
        const std::string end_tag = "</" + std::string(scanner_.prefix()) + "row>";
        scanner_.next();
        out_.append(has_new ? ">" : "/>");
        write_cells_before(kMaxColumns);
        if (has_new) out_.append(end_tag);
        return;
    }
    out_.append(">");
    for (;;) {
        const Token token = scanner_.next();
        const bool is_child = token == Token::Start && scanner_.depth() == depth + 1;
        if (is_child && scanner_.name() == "c") {
            rewrite_cell(row);
            continue;
        }
        const bool ends = token == Token::End && scanner_.depth() < depth;
        if (ends || (is_child && scanner_.name() == "extLst")) write_cells_before(kMaxColumns);
        out_.append(scanner_.raw());
        if (ends) return;
    }
}

// All but what ends the tag. The columns that a row claims to span are only a hint.
void SheetDataRewriter::write_row_tag(int row, bool is_changed) {
    out_.append(is_changed ? open_tag_without(scanner_, "spans")
                           : std::string(open_tag(scanner_.raw())));
    if (scanner_.attribute("r").data() == nullptr && written_.next_row() != row)
        out_.append(" r=\"" + std::to_string(row + 1) + "\"");
    written_.set_row(row);
}

void SheetDataRewriter::rewrite_cell(int row) {
    const CellReference place = places_.next_cell(scanner_);
    read_source_cell(scanner_, cell_);
    if (changed_.holds(place.row, place.column)) return;
    if (place.row == row) write_cells_before(place.column);
    groups_.adjust(cell_, place);
    const CellReference implied = written_.next_place();
    const bool is_found =
        cell_.has_reference || (implied.row == place.row && implied.column == place.column);
    cell_text_.clear();
    cell_.append_to(cell_text_,
                    is_found ? "" : " r=\"" + cell_name(place.row, place.column) + "\"");
    out_.append(cell_text_);
    written_.set_place(place);
}

// Skips rows of the store without a cell that was written.
void SheetDataRewriter::find_next_changed_row() {
    while (next_row_ < cells_.row_count() && !has_changed_cell(cells_.row_at(next_row_)))
        ++next_row_;
}

void SheetDataRewriter::write_rows_before(int row) {
    for (; next_row_ < cells_.row_count(); find_next_changed_row()) {
        const CellStore::RowCells cells = cells_.row_at(next_row_);
        if (cells.row >= row) return;
        ++next_row_;
        out_.append("<");
        out_.append(prefix_);
        out_.append("row r=\"");
        out_.append(std::to_string(cells.row + 1));
        out_.append("\">");
        markup_.set_row(cells.row);
        new_cells_ = cells;
        write_cells_before(kMaxColumns);
        out_.append("</");
        out_.append(prefix_);
        out_.append("row>");
        written_.set_row(cells.row);
    }
}

void SheetDataRewriter::write_cells_before(int column) {
    const StoredCell* cell = new_cells_.begin;
    const StoredCell* last = nullptr;
    for (; cell != new_cells_.end && static_cast<int>(cell->column) < column; ++cell) {
        if (!cell->is_changed()) continue;
        markup_.write(*cell);
        last = cell;
    }
    new_cells_.begin = cell;
    if (last != nullptr) written_.set_place({new_cells_.row, static_cast<int>(last->column)});
}

} // namespace workbook
