// SPDX-License-Identifier: Apache-2.0
//
// Reading bands of rows, with and without merged-cell rules.
#include "zxsheet/cell_grid.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <tuple>

#include "foundation/unicode.h"
#include "spreadsheet/online.h"
#include "zxsheet/command_error.h"
#include "zxsheet/online_cells.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

/// Cells of a band, which has at least one row: as many as the processor's cache holds.
constexpr std::int64_t kCellsPerBand = 1 << 13;

/// The cells of a band, column after column.
struct Band {
    Range range;
    std::vector<cell_type> types;
    std::vector<CellValue> cells;
    std::vector<number_style> styles{};

    std::size_t rows() const {
        return static_cast<std::size_t>(range.last_row - range.first_row) + 1;
    }
    std::size_t columns() const { return cells.size() / rows(); }
    void adopt_types() {
        cells.resize(types.size());
        for (std::size_t i = 0; i < types.size(); ++i)
            cells[i].type = types[i];
    }
};

/// Where a builder's callbacks put the next cell.
struct Cursor {
    CellValue* next;
};

CellValue& take_next(void* context) {
    return *static_cast<Cursor*>(context)->next++;
}

void put_text(void* context, const std::u16string& text) {
    foundation::unicode::assign_utf8(take_next(context).text, text);
}
void put_number(void* context, double value) {
    take_next(context).number = value;
}
void put_boolean(void* context, bool value) {
    take_next(context).number = value ? 1.0 : 0.0;
}

/// Builders get errors as empty strings. Their codes are read as text, those of a column at once.
void read_error_texts(const ISheet& sheet, Band& band) {
    const std::size_t rows = band.rows();
    for (std::size_t column = 0; column < band.columns(); ++column) {
        const auto begin = band.types.begin() + static_cast<std::ptrdiff_t>(column * rows);
        const auto end = begin + static_cast<std::ptrdiff_t>(rows);
        const auto first = std::find(begin, end, cell_type::error);
        if (first == end) continue;
        const auto last =
            std::find(std::reverse_iterator(end), std::reverse_iterator(first), cell_type::error)
                .base() -
            1;
        std::vector<std::string> texts;
        const auto append = [](void* context, const std::u16string& text) {
            static_cast<std::vector<std::string>*>(context)->push_back(
                foundation::unicode::to_utf8(text));
        };
        const auto row_at = [&](auto place) {
            return static_cast<int>(place - begin) + band.range.first_row;
        };
        const int sheet_column = static_cast<int>(column) + band.range.first_column;
        sheet.read({row_at(first), sheet_column, row_at(last), sheet_column},
                   StringBuilder{&texts, append});
        CellValue* const cells = &band.cells[static_cast<std::size_t>(first - band.types.begin())];
        for (std::size_t i = 0; i < texts.size(); ++i)
            if (first[static_cast<std::ptrdiff_t>(i)] == cell_type::error)
                cells[i].text = std::move(texts[i]);
    }
}

bool has_type(const Band& band, std::initializer_list<cell_type> wanted) {
    return std::find_first_of(band.types.begin(), band.types.end(), wanted.begin(), wanted.end()) !=
           band.types.end();
}

void read_styles(const ISheet& sheet, Band& band) {
    if (!has_type(band, {cell_type::number, cell_type::date})) return;
    band.styles.resize(band.cells.size());
    number_styles(sheet, band.range, band.styles.data());
    for (std::size_t i = 0; i < band.cells.size(); ++i)
        band.cells[i].style = band.styles[i];
}

void apply_formulas(const FormulaTexts& formulas, Band& band) {
    for (std::size_t i = 0; i < band.cells.size(); ++i) {
        const auto row = static_cast<int>(i % band.rows()) + band.range.first_row;
        const auto column = static_cast<int>(i / band.rows()) + band.range.first_column;
        const std::string_view text = formulas.at(row, column);
        if (text.empty()) continue;
        band.cells[i].type = cell_type::text;
        band.cells[i].text = text;
    }
}

void read_values(const ISheet& sheet, Band& band) {
    Cursor cursor{band.cells.data()};
    const CellBuilder builder{&cursor, put_text, put_number, put_number, put_boolean};
    sheet.read(band.range, band.types.data(), builder);
    read_error_texts(sheet, band);
}

/// Rules for both directions.
struct BothRules {
    MergedCellColumnRule columns;
    MergedCellRowRule rows;
};

/// Puts the values of one element type where cells have the type asked for.
template <class Element, class NumberOf>
void read_ruled(ISheet& sheet, Band& band, const BothRules& rules, cell_type wanted,
                NumberOf number_of) {
    if (!has_type(band, {wanted})) return;
    const auto values = std::make_unique<Element[]>(band.cells.size());
    sheet.read(band.range, values.get(), rules.columns, rules.rows);
    for (std::size_t i = 0; i < band.cells.size(); ++i)
        if (band.types[i] == wanted) band.cells[i].number = number_of(values[i]);
}

void read_ruled_texts(ISheet& sheet, Band& band, const BothRules& rules) {
    Cursor cursor{band.cells.data()};
    sheet.read(band.range, StringBuilder{&cursor, put_text}, rules.columns, rules.rows);
}

/// The library's builder read knows no rules, so there is one read for each kind of value.
void read_values(ISheet& sheet, Band& band, const BothRules& rules) {
    read_ruled<double>(sheet, band, rules, cell_type::number, [](double v) { return v; });
    read_ruled<SerialDatenum>(sheet, band, rules, cell_type::date,
                              [](SerialDatenum v) { return v.value; });
    read_ruled<bool>(sheet, band, rules, cell_type::boolean, [](bool v) { return v ? 1.0 : 0.0; });
    // Always, since this read determines which rows and columns are omitted.
    read_ruled_texts(sheet, band, rules);
}

/// Marks zero-based offsets, as the library lists them.
std::vector<bool> marks(const std::vector<int>& offsets, std::size_t count) {
    std::vector<bool> marked(count);
    for (const int offset : offsets)
        if (offset >= 0 && static_cast<std::size_t>(offset) < count)
            marked[static_cast<std::size_t>(offset)] = true;
    return marked;
}

void visit_rows(const Band& band, const std::vector<bool>& omitted_rows,
                const std::vector<bool>& omitted_columns, const RowVisitor& visit) {
    std::vector<const CellValue*> row_cells;
    if (std::count(omitted_columns.begin(), omitted_columns.end(), false) == 0) return;
    for (std::size_t row = 0; row < band.rows(); ++row) {
        if (omitted_rows[row]) continue;
        row_cells.clear();
        for (std::size_t column = 0; column < band.columns(); ++column)
            if (!omitted_columns[column])
                row_cells.push_back(&band.cells[column * band.rows() + row]);
        visit(row_cells);
    }
}

/// Rules need the whole range at once: what they leave out depends on every row.
void visit_ruled(const Selection& selection, const MergedRules& wanted, const RowVisitor& visit) {
    const BothRules rules{wanted.columns.value_or(MergedCellColumnRule::first),
                          wanted.rows.value_or(MergedCellRowRule::first)};
    ISheet& sheet = *selection.sheet;
    Band band{selection.range, {}, {}, {}};
    band.types.resize(static_cast<std::size_t>(selection.range.count()));
    sheet.cell_types(band.range, band.types.data(), rules.columns, rules.rows);
    band.adopt_types();
    read_values(sheet, band, rules);
    read_styles(sheet, band);
    visit_rows(band, marks(sheet.get_omit_rows_vector(), band.rows()),
               marks(sheet.get_omit_vars_vector(), band.columns()), visit);
}

std::size_t offset(int first, int index) {
    return static_cast<std::size_t>(index - first);
}

/// Sheets online have times of day before their first day.
void mark_times(Band& band) {
    for (CellValue& cell : band.cells) {
        if (cell.type != cell_type::date || cell.number < -1.0 || cell.number >= 0.0) continue;
        cell.number += 1.0;
        cell.style = number_style::time;
    }
}

/// Puts the fetched cells into the band, whose other cells stay empty.
void fill_band(const ISheet& sheet, const FetchedCells& fetched, Content content, Band& band) {
    Band inner;
    inner.range = common_range(band.range, fetched.range);
    const std::size_t height = offset(fetched.range.first_row, fetched.range.last_row + 1);
    for (int column = inner.range.first_column; column <= inner.range.last_column; ++column) {
        const auto begin =
            fetched.types.begin() +
            static_cast<std::ptrdiff_t>(offset(fetched.range.first_column, column) * height +
                                        offset(fetched.range.first_row, inner.range.first_row));
        inner.types.insert(inner.types.end(), begin,
                           begin + static_cast<std::ptrdiff_t>(
                                       offset(inner.range.first_row, inner.range.last_row + 1)));
    }
    inner.adopt_types();
    if (content == Content::Values && !inner.cells.empty()) read_values(sheet, inner);
    mark_times(inner);
    if (inner.range == band.range) {
        band = std::move(inner);
        return;
    }
    const std::size_t rows = band.rows();
    std::size_t next = 0;
    for (int column = inner.range.first_column; column <= inner.range.last_column; ++column)
        for (int row = inner.range.first_row; row <= inner.range.last_row; ++row)
            band.cells[offset(band.range.first_column, column) * rows +
                       offset(band.range.first_row, row)] = std::move(inner.cells[next++]);
}

/// A sheet online: a block of rows comes at once, and bands of it are delivered.
void visit_online(const Selection& selection, Content content, int band_rows,
                  const RowVisitor& visit) {
    const Range& whole = selection.range;
    for (const RowBlock& block : online_row_blocks(selection)) {
        const FetchedCells& fetched = fetch_block(selection, block);
        for (int row = block.first_row; row <= block.last_row; row += band_rows) {
            Band band;
            band.range = {row, whole.first_column, std::min(block.last_row, row + band_rows - 1),
                          whole.last_column};
            band.cells.resize(static_cast<std::size_t>(band.range.count()));
            fill_band(*selection.sheet, fetched, content, band);
            visit_rows(band, std::vector<bool>(band.rows()), std::vector<bool>(band.columns()),
                       visit);
        }
    }
}

} // namespace

Range common_range(const Range& a, const Range& b) {
    return {std::max(a.first_row, b.first_row), std::max(a.first_column, b.first_column),
            std::min(a.last_row, b.last_row), std::min(a.last_column, b.last_column)};
}

FormulaTexts::FormulaTexts(const Selection& selection, const BookLocation& location) {
    const auto add_to = [](void* context, const FormulaCell& formula) {
        static_cast<FormulaTexts*>(context)->add(formula);
    };
    const Range& range = selection.range;
    if (range.count() > 0 &&
        !read_formulas(*selection.sheet, range.first_row, range.last_row, {this, add_to}))
        throw CommandError(ExitCode::Failed,
                           location.text() + ": The formulas of such a book are not known.");
    const auto before = [](const Entry& a, const Entry& b) {
        return std::tie(a.row, a.column) < std::tie(b.row, b.column);
    };
    std::stable_sort(entries_.begin(), entries_.end(), before);
}

void FormulaTexts::add(const FormulaCell& formula) {
    const std::size_t begin = text_.size();
    text_.append(1, '=').append(formula.text);
    entries_.push_back({formula.cell.row, formula.cell.column, begin, text_.size()});
}

std::string_view FormulaTexts::at(int row, int column) const {
    const auto found = std::lower_bound(entries_.begin(), entries_.end(), std::tie(row, column),
                                        [](const Entry& entry, const auto& place) {
                                            return std::tie(entry.row, entry.column) < place;
                                        });
    if (found == entries_.end() || found->row != row || found->column != column) return {};
    return std::string_view(text_).substr(found->begin, found->end - found->begin);
}

void for_each_row(const Selection& selection, const MergedRules& rules, Content content,
                  const RowVisitor& visit) {
    const Range& whole = selection.range;
    if (whole.count() <= 0) return;
    if (rules.columns || rules.rows) return visit_ruled(selection, rules, visit);
    const std::int64_t columns = std::int64_t{whole.last_column} - whole.first_column + 1;
    const auto band_rows = static_cast<int>(std::max<std::int64_t>(1, kCellsPerBand / columns));
    if (online_sheet(selection.sheet) != nullptr)
        return visit_online(selection, content, band_rows, visit);
    Band band;
    for (int row = whole.first_row; row <= whole.last_row; row += band_rows) {
        const int last_row = std::min(whole.last_row, row + band_rows - 1);
        band.range = {row, whole.first_column, last_row, whole.last_column};
        band.types = selection.sheet->cell_types(band.range);
        band.adopt_types();
        if (content == Content::Values) {
            read_values(*selection.sheet, band);
            read_styles(*selection.sheet, band);
        }
        if (selection.formulas) apply_formulas(*selection.formulas, band);
        visit_rows(band, std::vector<bool>(band.rows()), std::vector<bool>(band.columns()), visit);
    }
}

namespace {

/// The next rows of cells that begin and end at the same columns, within `range`; no value after
/// the last.
std::optional<Range> next_block(const ISheet& sheet, const Range& range, int row) {
    std::optional<Range> block;
    const auto in_range = [&range](Range cells) {
        cells.first_column = std::max(cells.first_column, range.first_column);
        cells.last_column = std::min(cells.last_column, range.last_column);
        return cells;
    };
    while (row <= range.last_row) {
        const auto found = next_row_of_cells(sheet, row);
        if (!found || found->first_row > range.last_row) break;
        const Range cells = in_range(*found);
        row = cells.first_row + 1;
        if (cells.first_column > cells.last_column) continue;
        if (!block) {
            block = cells;
            continue;
        }
        const bool is_next =
            cells.first_row == block->last_row + 1 && cells.first_column == block->first_column &&
            cells.last_column == block->last_column && block->count() < kCellsPerBand;
        if (!is_next) break;
        block->last_row = cells.first_row;
    }
    return block;
}

} // namespace

Range with_repeated_cells(const Selection& selection, const MergedRules& rules, bool is_open) {
    Range range = selection.range;
    const bool repeats =
        rules.columns == MergedCellColumnRule::repeat || rules.rows == MergedCellRowRule::repeat;
    if (!is_open || !repeats || range.count() <= 0) return range;
    const auto merged = merged_ranges(*selection.sheet);
    if (!merged) return range;
    for (const Range& region : *merged) {
        const bool has_value = region.first_row >= selection.range.first_row &&
                               region.first_row <= selection.range.last_row &&
                               region.first_column >= selection.range.first_column &&
                               region.first_column <= selection.range.last_column;
        if (!has_value) continue;
        if (rules.rows == MergedCellRowRule::repeat)
            range.last_row = std::max(range.last_row, region.last_row);
        if (rules.columns == MergedCellColumnRule::repeat)
            range.last_column = std::max(range.last_column, region.last_column);
    }
    return range;
}

void for_each_block(const Selection& selection,
                    const std::function<void(const Range& block)>& visit) {
    int row = selection.range.first_row;
    while (const auto block = next_block(*selection.sheet, selection.range, row)) {
        visit(*block);
        row = block->last_row + 1;
    }
}

void for_each_cell(const Selection& selection, const CellVisitor& visit) {
    if (online_sheet(selection.sheet) != nullptr) {
        // Empty cells cost nothing there, requests do.
        Selection filled = selection;
        filled.range = common_range(selection.range, selection.sheet->used_range());
        if (filled.range.last_row < filled.range.first_row ||
            filled.range.last_column < filled.range.first_column)
            return;
        int row = filled.range.first_row;
        for_each_row(filled, {}, Content::Values, [&](const std::vector<const CellValue*>& cells) {
            for (std::size_t i = 0; i < cells.size(); ++i)
                if (cells[i]->type != cell_type::empty)
                    visit(row, filled.range.first_column + static_cast<int>(i), *cells[i]);
            ++row;
        });
        return;
    }
    Selection part = selection;
    for_each_block(selection, [&](const Range& block) {
        part.range = block;
        int row = block.first_row;
        for_each_row(part, {}, Content::Values, [&](const std::vector<const CellValue*>& cells) {
            for (std::size_t i = 0; i < cells.size(); ++i)
                if (cells[i]->type != cell_type::empty)
                    visit(row, block.first_column + static_cast<int>(i), *cells[i]);
            ++row;
        });
    });
}

} // namespace zxsheet
