// SPDX-License-Identifier: Apache-2.0
//
// The writing side of a worksheet: state, clearing, values past an active filter, widths.
#include <cmath>
#include <new>
#include <utility>

#include "spreadsheet/com/auto_filter.h"
#include "spreadsheet/com/com_sheet.h"
#include "spreadsheet/com/text_prefix.h"

namespace spreadsheet {
namespace {

using com::call;
using com::get;
using com::put;
using com::Variant;
using foundation::automation::BlockBuilder;
using foundation::automation::is_true;

constexpr std::string_view kTag = "[COM SHEET WRITE MSG]:";

/// A cell holds no more units of text.
constexpr std::size_t kLongestText = 32'767;

bool is_empty(const Range& range) {
    return range.last_row < range.first_row || range.last_column < range.first_column;
}

/// A block of the range's shape whose elements come from `next`, column after column.
template <class Next>
Variant make_block(const Range& range, Next next) {
    const auto extent = [](int first, int last) {
        return static_cast<std::uint32_t>(std::int64_t{last} - first + 1);
    };
    BlockBuilder block(extent(range.first_row, range.last_row),
                       extent(range.first_column, range.last_column));
    const auto count = static_cast<std::size_t>(range.count());
    for (std::size_t index = 0; index < count; ++index)
        block.elements()[index] = next(index).release();
    return std::move(block).take();
}

Variant number_value(double value) {
    return std::isnan(value) ? Variant() : Variant::number(value);
}

Variant date_value(SerialDatenum date) {
    return std::isnan(date.value) ? Variant() : Variant::date(date.value);
}

Variant text_value(const std::u16string& text) {
    if (text.size() > kLongestText)
        com::fail(kTag, error_id::write_failed,
                  {FailureKind::Limit, "A text is longer than the 32767 characters of a cell."});
    if (text.empty()) return Variant();
    return Variant::text(com::needs_apostrophe(text) ? u"'" + text : text);
}

Variant provided_value(cell_type type, const CellProvider& provider) {
    switch (type) {
    case cell_type::number:
        return number_value(provider.number(provider.context));
    case cell_type::text:
        return text_value(provider.text(provider.context));
    case cell_type::date:
        return date_value(provider.date(provider.context));
    case cell_type::boolean:
        return Variant::boolean(provider.boolean(provider.context));
    default:
        provider.skip(provider.context);
        return Variant();
    }
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

void COMSheet::write(Range range, const double* values) {
    if (is_empty(range)) return;
    put_values(range,
               make_block(range, [&](std::size_t index) { return number_value(values[index]); }));
}

void COMSheet::write(Range range, const SerialDatenum* values) {
    if (is_empty(range)) return;
    put_values(range,
               make_block(range, [&](std::size_t index) { return date_value(values[index]); }));
}

void COMSheet::write(Range range, const bool* values) {
    if (is_empty(range)) return;
    put_values(range, make_block(range, [&](std::size_t index) {
                   return Variant::boolean(values[index]);
               }));
}

void COMSheet::write(Range range, const unsigned char* values) {
    if (is_empty(range)) return;
    put_values(range, make_block(range, [&](std::size_t index) {
                   return Variant::boolean(values[index] != 0);
               }));
}

void COMSheet::write(Range range, const StringProvider& provider) {
    if (is_empty(range)) return;
    put_values(range, make_block(range, [&](std::size_t) {
                   return text_value(provider.next(provider.context));
               }));
}

void COMSheet::write(Range range, const cell_type* types, const CellProvider& provider,
                     bool preserve_format) {
    if (is_empty(range)) return;
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

} // namespace spreadsheet
