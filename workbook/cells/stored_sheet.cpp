// SPDX-License-Identifier: Apache-2.0
//
// Reads over the cell store. Callers come here several times for every cell.
#include "workbook/cells/stored_sheet.h"

#include <algorithm>
#include <new>

#include "foundation/unicode.h"
#include "workbook/cells/cell_name.h"
#include "workbook/error.h"

namespace workbook {

namespace {

/// By StoredKind.
constexpr CellKind kCellKinds[] = {CellKind::Number,     CellKind::String, CellKind::String,
                                   CellKind::Boolean,    CellKind::Blank,  CellKind::Error,
                                   CellKind::StrictDate, CellKind::String, CellKind::Blank};

} // namespace

StoredSheet::StoredSheet(StoredBook& book)
    : book_(book), cells_(book.limits.columns), limits_(book.limits) {}

StoredSheet::StoredSheet(const StoredSheet& original)
    : Sheet(original),
      book_(original.book_),
      cells_(original.cells_),
      tail_(original.tail_),
      changes_(original.changes_),
      loaded_rows_(original.loaded_rows_),
      is_tail_read_(original.is_tail_read_),
      limits_(original.limits_),
      refusal_(original.refusal_),
      uses_added_strings_(original.uses_added_strings_),
      other_rows_(original.other_rows_ ? std::make_unique<SheetCells>(*original.other_rows_)
                                       : nullptr),
      tail_failure_(original.tail_failure_),
      rows_failure_(original.rows_failure_) {}

void StoredSheet::check_shared_strings() const {
    check_shared_strings(cells_);
}

void StoredSheet::check_shared_strings(const SheetCells& cells) const {
    const std::size_t known = book_.shared_strings.size();
    if (cells.shared_strings_end <= known) return;
    cells.cells.for_each([&](int row, const StoredCell& cell) {
        if (cell.stored_kind() != StoredKind::String || cell.value.text < known) return;
        const std::string name = cell_name(row, static_cast<int>(cell.column));
        throw Error::damaged("cell " + name, "it refers to shared string " +
                                                 std::to_string(cell.value.text) + " of " +
                                                 std::to_string(known))
            .in_sheet(utf8_name());
    });
}

void StoredSheet::mark_formats(std::size_t known, std::vector<bool>& formats) const {
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.has_format && span.format < formats.size()) formats[span.format] = true;
    if (cells_.formats_end <= known) return;
    std::uint32_t last = kMaxStoredFormat + 1; // neighbours are mostly alike
    const auto mark = [&](std::uint32_t format) {
        if (format != last && format < formats.size()) formats[format] = true;
        last = format;
    };
    cells_.cells.for_each([&](int, const StoredCell& cell) { mark(cell.format); });
    for (const RowFormat& row : cells_.row_formats)
        mark(row.format);
}

inline const StoredCell* StoredSheet::find(int row, int column) const {
    const StoredCell* cell = cells_.cells.find(row, column);
    return cell != nullptr || loaded_rows_.holds(row) ? cell : find_in_other_rows(row, column);
}

CellKind StoredSheet::cell_type(int row, int column) const {
    const StoredCell* cell = find(row, column);
    return cell == nullptr ? CellKind::Empty
                           : kCellKinds[static_cast<std::size_t>(cell->stored_kind())];
}

bool StoredSheet::is_date(int row, int column) const {
    const StoredCell* cell = find(row, column);
    return cell != nullptr && cell->stored_kind() == StoredKind::Number &&
           book_.cell_formats.is_date(cell->format);
}

NumberStyle StoredSheet::number_style(int row, int column) const {
    const StoredCell* cell = find(row, column);
    return cell != nullptr && cell->stored_kind() == StoredKind::Number
               ? book_.cell_formats.style(cell->format)
               : NumberStyle::Number;
}

std::optional<RowOfCells> StoredSheet::next_row_of_cells(int row) const {
    const CellStore& store = cells_.cells;
    for (std::size_t i = store.row_from(row); i < store.row_count(); ++i) {
        const CellStore::RowCells cells = store.row_at(i);
        if (cells.begin != cells.end)
            return RowOfCells{cells.row, static_cast<int>(cells.begin->column),
                              static_cast<int>(cells.end[-1].column)};
    }
    return std::nullopt;
}

double StoredSheet::read_num(int row, int column) const {
    const StoredCell* cell = find(row, column);
    if (cell == nullptr) return 0.0;
    switch (cell->stored_kind()) {
    case StoredKind::Number:
    case StoredKind::Boolean:
    case StoredKind::StrictDate:
        return cell->value.number;
    default:
        return 0.0;
    }
}

bool StoredSheet::read_bool(int row, int column) const {
    const StoredCell* cell = find(row, column);
    return cell != nullptr && cell->stored_kind() == StoredKind::Boolean &&
           cell->value.number != 0.0;
}

std::u16string_view StoredSheet::read_str(int row, int column) const {
    const StoredCell* cell = find(row, column);
    if (cell == nullptr) return {};
    // Only what is not in the sheet's own store came with the other rows.
    const bool is_other = other_rows_ != nullptr && cells_.cells.find(row, column) == nullptr;
    const auto text = text_of(*cell, is_other ? other_rows_->own_strings : cells_.own_strings);
    if (!text) return {};
    foundation::unicode::assign_utf16(book_.text, *text);
    return book_.text;
}

std::optional<std::string_view> StoredSheet::text_of(const StoredCell& cell,
                                                     const StringPool& own_strings) const {
    switch (cell.stored_kind()) {
    case StoredKind::String:
        return book_.shared_strings[cell.value.text];
    case StoredKind::AddedString:
        return book_.added_strings[cell.value.text];
    case StoredKind::OwnString:
    case StoredKind::Error:
        return own_strings[cell.value.text];
    default:
        return std::nullopt;
    }
}

const Format* StoredSheet::cell_format(int row, int column) const {
    if (const StoredCell* cell = find(row, column)) return format_at(cell->format);
    if (const auto format = row_format(row)) return format_at(*format);
    for (const ColumnSpan& span : cells_.columns.spans)
        if (span.has_format && column >= span.first && column <= span.last)
            return format_at(span.format);
    return nullptr;
}

std::optional<std::uint32_t> StoredSheet::row_format(int row) const {
    const bool is_other = !loaded_rows_.holds(row) && other_rows_ != nullptr;
    const std::vector<RowFormat>& rows = is_other ? other_rows_->row_formats : cells_.row_formats;
    const auto found =
        std::lower_bound(rows.begin(), rows.end(), row,
                         [](const RowFormat& a, int wanted) { return a.row < wanted; });
    if (found == rows.end() || found->row != row) return std::nullopt;
    return found->format;
}

const Format* StoredSheet::format_at(std::uint32_t index) const {
    return index < book_.formats.size() ? &book_.formats[index] : nullptr;
}

bool StoredSheet::protect() const {
    if (changes_.is_protected) return *changes_.is_protected;
    need_tail();
    return tail_.is_protected;
}

const std::vector<Rectangle>& StoredSheet::merged_regions() const {
    if (changes_.merged_regions) return *changes_.merged_regions;
    need_tail();
    return tail_.merged_regions;
}

bool StoredSheet::merge(int index, int& first_row, int& last_row, int& first_column,
                        int& last_column) const {
    const std::vector<Rectangle>& regions = merged_regions();
    if (index < 0 || static_cast<std::size_t>(index) >= regions.size()) return false;
    const Rectangle& region = regions[static_cast<std::size_t>(index)];
    first_row = region.first_row;
    last_row = region.last_row;
    first_column = region.first_column;
    last_column = region.last_column;
    return true;
}

bool StoredSheet::named_range(std::u16string_view name, int& first_row, int& last_row,
                              int& first_column, int& last_column) const {
    const std::optional<Rectangle> cells = named_cells(name);
    if (!cells) return false;
    first_row = cells->first_row;
    last_row = cells->last_row;
    first_column = cells->first_column;
    last_column = cells->last_column;
    return true;
}

// --- What a load of some rows left out

void StoredSheet::read_tail(SheetTail&) const {}

void StoredSheet::read_other_rows(SheetCells&) const {}

template <class Read>
void StoredSheet::read_once(const Read& read, std::optional<LastError>& failure) const {
    try {
        read();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const Error& error) {
        failure.emplace().set(error.in_sheet(utf8_name()));
    } catch (const std::exception& error) {
        failure.emplace().set(error);
    }
}

bool StoredSheet::need_tail() const {
    if (!is_tail_read_) {
        read_once([this] { read_tail(tail_); }, tail_failure_);
        is_tail_read_ = true;
    }
    if (tail_failure_) book_.error = *tail_failure_;
    return !tail_failure_;
}

bool StoredSheet::need_rows(int first_row, int last_row) const {
    if (loaded_rows_.holds(first_row) && loaded_rows_.holds(last_row)) return true;
    return need_other_rows();
}

bool StoredSheet::need_other_rows() const {
    if (is_whole()) return true;
    if (other_rows_ == nullptr) {
        auto others = std::make_unique<SheetCells>(book_.limits.columns);
        read_once(
            [&] {
                read_other_rows(*others);
                check_shared_strings(*others);
            },
            rows_failure_);
        if (rows_failure_) *others = SheetCells(book_.limits.columns);
        const int last_column = book_.limits.columns - 1;
        others->cells.remove({loaded_rows_.first, loaded_rows_.last, 0, last_column});
        for (const Rectangle& area : changes_.cleared.rectangles())
            others->cells.remove(area);
        other_rows_ = std::move(others);
    }
    if (rows_failure_) book_.error = *rows_failure_;
    return !rows_failure_;
}

const StoredCell* StoredSheet::find_in_other_rows(int row, int column) const {
    if (!book_.limits.hold(row, column) || !need_other_rows() || other_rows_ == nullptr)
        return nullptr;
    return other_rows_->cells.find(row, column);
}

std::string StoredSheet::utf8_name() const {
    return foundation::unicode::to_utf8(name());
}

} // namespace workbook
