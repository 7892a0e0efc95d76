// SPDX-License-Identifier: Apache-2.0
//
// Where formats differ, parts of the range that have one format are found by halving, since a
// column of ten thousand numbers mostly has one format below a heading of another. What is left is
// asked cell by cell.
#include "spreadsheet/com/date_cells.h"

#include <algorithm>

#include "spreadsheet/com/late_bound_call.h"
#include "spreadsheet/range_walk.h"

namespace spreadsheet {
namespace {

using com::get;
using foundation::automation::Variant;

constexpr std::string_view kTag = "[COM SHEET CELL_TYPES MSG]:";

/// So few cells are asked one by one.
constexpr std::size_t kFewCells = 2;

class DateSearch {
  public:
    DateSearch(const DateFormats& formats, IDispatch* sheet, const Range& range,
               const VARIANT* cells, cell_type* out)
        : formats_(formats), sheet_(sheet), range_(range), cells_(cells), out_(out) {}

    /// Every candidate of an area with one format.
    void mark(const Range& area, const VARIANT& format) {
        if (!formats_.is_date(format)) return;
        for_each_candidate(
            area, [&](int row, int column) { out_[index_of(row, column)] = cell_type::date; });
    }

    /// Searches an area whose formats differ.
    void divide(const Range& area) {
        if (count_candidates(area) <= kFewCells) {
            for_each_candidate(area, [&](int row, int column) {
                mark({row, column, row, column}, format_of_cell(row, column).get());
            });
            return;
        }
        Range first = area;
        Range second = area;
        if (area.first_column < area.last_column) {
            first.last_column = area.first_column + (area.last_column - area.first_column) / 2;
            second.first_column = first.last_column + 1;
        } else {
            first.last_row = area.first_row + (area.last_row - area.first_row) / 2;
            second.first_row = first.last_row + 1;
        }
        search(first);
        search(second);
    }

  private:
    void search(const Range& area) {
        if (count_candidates(area) <= kFewCells) return divide(area);
        const Variant address = Variant::text(range_string(area));
        const auto part = get(sheet_, OLESTR("Range"), {address.get()})
                              .object_or_fail(kTag, error_id::range_not_parsed);
        const Variant format = format_of(part.get());
        if (format.type() == VT_BSTR)
            mark(area, format.get());
        else
            divide(area);
    }

    Variant format_of_cell(int row, int column) const {
        const Variant row_number = Variant::integer(row + 1);
        const Variant column_number = Variant::integer(column + 1);
        const auto cell = get(sheet_, OLESTR("Cells"), {column_number.get(), row_number.get()})
                              .object_or_fail(kTag, error_id::internal);
        return format_of(cell.get());
    }

    static Variant format_of(IDispatch* cells) {
        return get(cells, OLESTR("NumberFormat")).or_fail(kTag, error_id::internal);
    }

    std::size_t index_of(int row, int column) const {
        const auto rows = extent(range_.first_row, range_.last_row);
        return static_cast<std::size_t>(column - range_.first_column) * rows +
               static_cast<std::size_t>(row - range_.first_row);
    }

    template <class Use>
    void for_each_candidate(const Range& area, Use use) const {
        for (int column = area.first_column; column <= area.last_column; ++column)
            for (int row = area.first_row; row <= area.last_row; ++row)
                if (is_date_candidate(cells_[index_of(row, column)])) use(row, column);
    }

    std::size_t count_candidates(const Range& area) const {
        std::size_t count = 0;
        for_each_candidate(area, [&](int, int) { ++count; });
        return count;
    }

    const DateFormats& formats_;
    IDispatch* const sheet_;
    const Range range_;
    const VARIANT* const cells_;
    cell_type* const out_;
};

} // namespace

bool is_date_candidate(const VARIANT& cell) {
    return cell.vt == VT_R8 && cell.dblVal >= 1.0;
}

bool has_date_candidates(const VARIANT* cells, std::size_t count) {
    return std::any_of(cells, cells + count, is_date_candidate);
}

void mark_dates(const DateFormats& formats, IDispatch* sheet, const Range& range,
                const VARIANT& format, const VARIANT* cells, cell_type* out) {
    DateSearch search(formats, sheet, range, cells, out);
    if (format.vt == VT_BSTR)
        search.mark(range, format);
    else
        search.divide(range);
}

} // namespace spreadsheet
