// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/auto_filter.h"

#include <exception>
#include <new>
#include <utility>

#include "spreadsheet/com/excel_application.h"

namespace spreadsheet {
namespace {

using com::get;
using com::Variant;
using foundation::automation::integer_in;
using foundation::automation::is_true;

constexpr std::string_view kTag = "[COM SHEET FILTER MSG]:";

/// The application's numbers: a filter of one criterion, and two combined by "and" or "or".
constexpr LONG kSingle = 0;
constexpr LONG kAnd = 1;
constexpr LONG kOr = 2;

std::shared_ptr<IDispatch> object_of(com::CallResult result) {
    if (result.status == E_OUTOFMEMORY) throw std::bad_alloc();
    return std::move(result).object_or_fail(kTag, error_id::internal);
}

LONG integer_of(com::CallResult result) {
    const OLECHAR* const member = result.member;
    const Variant value = std::move(result).or_fail_internally(kTag);
    const auto number = integer_in(value.get());
    if (!number) com::fail_call(kTag, error_id::internal, member, S_OK);
    return *number;
}

} // namespace

AutoFilter AutoFilter::capture(IDispatch* sheet) {
    AutoFilter captured;
    const auto filter = object_of(get(sheet, OLESTR("AutoFilter")));
    const auto filters = object_of(get(filter.get(), OLESTR("Filters")));
    const LONG count = integer_of(get(filters.get(), OLESTR("Count")));
    for (LONG field = 1; field <= count; ++field) {
        const auto column =
            object_of(get(filters.get(), OLESTR("Item"), {Variant::integer(field).get()}));
        const Variant on = get(column.get(), OLESTR("On")).or_fail_internally(kTag);
        if (!is_true(on.get())) continue;
        const LONG combination = integer_of(get(column.get(), OLESTR("Operator")));
        if (combination > kOr)
            com::fail(kTag, error_id::active_filter,
                      {FailureKind::Unsupported,
                       "Column " + std::to_string(field) +
                           " of the filter has a criterion that cannot be put back."});
        Column entry{field, combination, {}, {}};
        entry.first_criterion = get(column.get(), OLESTR("Criteria1")).or_fail_internally(kTag);
        if (combination == kAnd || combination == kOr)
            entry.second_criterion =
                get(column.get(), OLESTR("Criteria2")).or_fail_internally(kTag);
        captured.columns_.push_back(std::move(entry));
    }
    const auto range = object_of(get(filter.get(), OLESTR("Range")));
    captured.address_ = get(range.get(), OLESTR("Address")).or_fail_internally(kTag);
    if (captured.address_.type() != VT_BSTR)
        com::fail_call(kTag, error_id::internal, OLESTR("Address"), S_OK);
    return captured;
}

void AutoFilter::apply(IDispatch* sheet) const {
    const auto range = get(sheet, OLESTR("Range"), {address_.get()})
                           .object_or_fail(kTag, error_id::range_not_parsed);
    const auto filter = [&](std::initializer_list<VARIANT> arguments) {
        com::call(range.get(), OLESTR("AutoFilter"), arguments).or_fail(kTag, error_id::internal);
    };
    // A filter without criteria is its buttons alone.
    if (columns_.empty()) filter({Variant::integer(1).get()});
    for (const Column& column : columns_) {
        const VARIANT& first = column.first_criterion.get();
        const VARIANT& second = column.second_criterion.get();
        const VARIANT field = Variant::integer(column.field).get();
        const VARIANT combination = Variant::integer(column.filter_operator).get();
        if (column.filter_operator == kSingle)
            filter({first, field});
        else
            filter({second, combination, first, field});
    }
}

void AutoFilter::try_to_apply(IDispatch* sheet) const noexcept {
    try {
        apply(sheet);
    } catch (const std::exception&) {
        // Logged where the application has refused.
    }
}

} // namespace spreadsheet
