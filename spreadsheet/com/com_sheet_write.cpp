// SPDX-License-Identifier: Apache-2.0
//
// The writing side of a worksheet: state, clearing, values past an active filter, widths.
#include <cmath>
#include <new>
#include <string>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/com/auto_filter.h"
#include "spreadsheet/com/com_sheet.h"
#include "spreadsheet/com/text_prefix.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/typed_cells.h"

namespace spreadsheet {
namespace {

using com::call;
using com::get;
using com::put;
using com::Variant;
using foundation::automation::BlockBuilder;
using foundation::automation::is_true;

constexpr std::string_view kTag = "[COM SHEET WRITE MSG]:";

/// A block of the range's shape whose elements come from `next`, column after column.
template <class Next>
Variant make_block(const Range& range, Next next) {
    BlockBuilder block(static_cast<std::uint32_t>(extent(range.first_row, range.last_row)),
                       static_cast<std::uint32_t>(extent(range.first_column, range.last_column)));
    const auto count = static_cast<std::size_t>(range.count());
    for (std::size_t index = 0; index < count; ++index)
        block.elements()[index] = next(index).release();
    return std::move(block).take();
}

Variant variant_of(double value) {
    return std::isnan(value) ? Variant() : Variant::number(value);
}

Variant variant_of(SerialDatenum date) {
    return std::isnan(date.value) ? Variant() : Variant::date(date.value);
}

Variant variant_of(bool value) {
    return Variant::boolean(value);
}

Variant variant_of(NoValue) {
    return Variant();
}

Variant variant_of(const std::u16string& text) {
    if (text.size() > kMaxCellTextUnits)
        com::fail(kTag, error_id::write_failed,
                  {FailureKind::Limit, "A text is longer than the " +
                                           std::to_string(kMaxCellTextUnits) +
                                           " characters that a cell holds."});
    if (text.empty()) return Variant();
    return Variant::text(com::needs_apostrophe(text) ? u"'" + text : text);
}

Variant provided_value(cell_type type, const CellProvider& provider) {
    Variant value;
    take_cell(provider, type, [&](const auto& given) { value = variant_of(given); });
    return value;
}

} // namespace

// --- State of the sheet

void COMSheet::name(const std::u16string& new_name) {
    Variant value;
    try {
        value = Variant::text(new_name);
    } catch (const std::bad_alloc&) {
        com::fail(kTag, error_id::internal,
                  {FailureKind::OutOfMemory, "There is no memory for the sheet's name."});
    }
    put(object(), OLESTR("Name"), value).or_fail(kTag, error_id::sheet_name_invalid);
}

void COMSheet::hidden(sheet::hidden state) {
    const LONG number = state == sheet::hidden::visible  ? -1
                        : state == sheet::hidden::hidden ? 0
                                                         : 2;
    put(object(), OLESTR("Visible"), Variant::integer(number))
        .or_fail(kTag, error_id::hidden_state_not_set);
}

void COMSheet::set_protected(bool) {
    com::fail(kTag, error_id::internal,
              {FailureKind::Unsupported, "Interactive mode does not change a sheet's protection."});
}

bool COMSheet::is_range_writeable(Range range) {
    try {
        const com::CallResult contents = get(object(), OLESTR("ProtectContents"));
        if (!contents) return false;
        if (contents.value.type() == VT_BOOL && !is_true(contents.value.get())) return true;
        const auto cells = range_object(range);
        const com::CallResult locked = get(cells.get(), OLESTR("Locked"));
        return locked && locked.value.type() != VT_NULL && !is_true(locked.value.get());
    } catch (const std::exception&) {
        return false;
    }
}

// --- Cells

void COMSheet::clear(Cell cell) {
    clear(Range{cell.row, cell.column, cell.row, cell.column});
}

void COMSheet::clear(Range range) {
    const auto cells = range_object(range);
    call(cells.get(), OLESTR("Clear")).or_fail(kTag, error_id::range_not_cleared);
}

void COMSheet::unmerge(Range range) {
    const auto cells = range_object(range);
    call(cells.get(), OLESTR("UnMerge")).or_fail(kTag, error_id::merge_not_removed);
}

void COMSheet::auto_fit_column_widths(Range range) {
    const auto cells = range_object(range);
    const auto columns =
        get(cells.get(), OLESTR("Columns")).object_or_fail(kTag, error_id::internal);
    call(columns.get(), OLESTR("AutoFit")).or_fail(kTag, error_id::internal);
}

// --- Values

void COMSheet::put_values(const Range& range, const com::Variant& block) {
    const auto cells = range_object(range);
    put(cells.get(), OLESTR("Value"), block).or_fail(kTag, error_id::write_failed);
}

/// Writes what `next` gives for each cell of a range that is not empty.
template <class Next>
void COMSheet::write_cells(const Range& range, Next next) {
    if (is_empty(range)) return;
    check_limits(range);
    put_values(range, make_block(range, next));
}

void COMSheet::write(Range range, const double* values) {
    write_cells(range, [&](std::size_t index) { return variant_of(values[index]); });
}

void COMSheet::write(Range range, const SerialDatenum* values) {
    write_cells(range, [&](std::size_t index) { return variant_of(values[index]); });
}

void COMSheet::write(Range range, const bool* values) {
    write_cells(range, [&](std::size_t index) { return variant_of(values[index]); });
}

void COMSheet::write(Range range, const unsigned char* values) {
    write_cells(range, [&](std::size_t index) { return variant_of(values[index] != 0); });
}

void COMSheet::write(Range range, const StringProvider& provider) {
    write_cells(range, [&](std::size_t) { return variant_of(provider.next(provider.context)); });
}

void COMSheet::write(Range range, const cell_type* types, const CellProvider& provider,
                     bool preserve_format) {
    if (is_empty(range)) return;
    check_limits(range);
    const Variant block = make_block(
        range, [&](std::size_t index) { return provided_value(types[index], provider); });
    if (!preserve_format) clear(range);
    const Variant filtering = get(object(), OLESTR("AutoFilterMode")).or_fail_internally(kTag);
    if (!is_true(filtering.get())) return put_values(range, block);
    const AutoFilter filter = AutoFilter::capture(object());
    put(object(), OLESTR("AutoFilterMode"), Variant::boolean(false))
        .or_fail(kTag, error_id::internal);
    try {
        put_values(range, block);
    } catch (...) {
        filter.try_to_apply(object());
        throw;
    }
    filter.apply(object());
}

void COMSheet::write_formulas(Range range, const std::string_view* formulas) {
    if (is_empty(range)) return;
    check_limits(range);
    const Variant block = make_block(range, [&](std::size_t index) {
        return Variant::text(u"=" + foundation::unicode::to_utf16(formulas[index]));
    });
    const auto cells = range_object(range);
    put(cells.get(), OLESTR("Formula"), block).or_fail(kTag, error_id::write_failed);
}

} // namespace spreadsheet
