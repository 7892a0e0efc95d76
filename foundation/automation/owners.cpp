// SPDX-License-Identifier: Apache-2.0
#include "foundation/automation/owners.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

namespace foundation::automation {
namespace {

using Allocate = BSTR (*)(const OLECHAR* text, UINT length);
std::atomic<Allocate> replaced_allocation{nullptr};

constexpr double kUnitsOfMoney = 10'000.0;

std::size_t extent(SAFEARRAY* array, UINT dimension) {
    LONG first = 0;
    LONG last = -1;
    if (FAILED(SafeArrayGetLBound(array, dimension, &first)) ||
        FAILED(SafeArrayGetUBound(array, dimension, &last)) || last < first)
        return 0;
    return static_cast<std::size_t>(std::int64_t{last} - first + 1);
}

} // namespace

// --- Text

void replace_bstr_allocation(Allocate allocate) {
    replaced_allocation = allocate;
}

BSTR make_bstr(std::u16string_view text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<LONG>::max()))
        throw std::bad_alloc();
    const Allocate replaced = replaced_allocation;
    const auto* const units = reinterpret_cast<const OLECHAR*>(text.data());
    const auto length = static_cast<UINT>(text.size());
    BSTR made = replaced != nullptr ? replaced(units, length) : SysAllocStringLen(units, length);
    if (made == nullptr) throw std::bad_alloc();
    return made;
}

std::u16string_view view_of(BSTR text) {
    return {reinterpret_cast<const char16_t*>(text), SysStringLen(text)};
}

// --- Variant

Variant Variant::null() {
    Variant made;
    made.value_.vt = VT_NULL;
    return made;
}

Variant Variant::integer(LONG value) {
    Variant made;
    made.value_.vt = VT_I4;
    made.value_.lVal = value;
    return made;
}

Variant Variant::number(double value) {
    Variant made;
    made.value_.vt = VT_R8;
    made.value_.dblVal = value;
    return made;
}

Variant Variant::date(DATE value) {
    Variant made;
    made.value_.vt = VT_DATE;
    made.value_.date = value;
    return made;
}

Variant Variant::boolean(bool value) {
    Variant made;
    made.value_.vt = VT_BOOL;
    made.value_.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
    return made;
}

Variant Variant::text(std::u16string_view value) {
    Variant made;
    made.value_.bstrVal = make_bstr(value);
    made.value_.vt = VT_BSTR;
    return made;
}

Variant Variant::object(IDispatch* value) {
    Variant made;
    made.value_.vt = VT_DISPATCH;
    made.value_.pdispVal = value;
    if (value != nullptr) value->AddRef();
    return made;
}

Variant Variant::copy_of(const VARIANT& value) {
    Variant made;
    // The system's declaration lacks the const.
    if (FAILED(VariantCopy(&made.value_, const_cast<VARIANT*>(&value)))) throw std::bad_alloc();
    return made;
}

Variant Variant::adopt(const VARIANT& value) {
    Variant made;
    made.value_ = value;
    return made;
}

VARIANT Variant::release() {
    const VARIANT released = value_;
    VariantInit(&value_);
    return released;
}

IDispatch* Variant::release_object() {
    return value_.vt == VT_DISPATCH ? release().pdispVal : nullptr;
}

// --- What a value holds

std::optional<double> number_in(const VARIANT& value) {
    switch (value.vt) {
    case VT_R8:
        return value.dblVal;
    case VT_I4:
        return value.lVal;
    case VT_I2:
        return value.iVal;
    case VT_UI1:
        return value.bVal;
    case VT_I8:
        return static_cast<double>(value.llVal);
    case VT_R4:
        return static_cast<double>(value.fltVal);
    case VT_CY:
        return static_cast<double>(value.cyVal.int64) / kUnitsOfMoney;
    default:
        return std::nullopt;
    }
}

std::optional<LONG> integer_in(const VARIANT& value) {
    const std::optional<double> number = number_in(value);
    const bool is_whole = number && *number == std::floor(*number) &&
                          *number >= std::numeric_limits<LONG>::min() &&
                          *number <= std::numeric_limits<LONG>::max();
    if (!is_whole) return std::nullopt;
    return static_cast<LONG>(*number);
}

std::optional<std::u16string_view> text_in(const VARIANT& value) {
    if (value.vt != VT_BSTR) return std::nullopt;
    return view_of(value.bstrVal);
}

bool is_true(const VARIANT& value) {
    if (value.vt == VT_BOOL) return value.boolVal != VARIANT_FALSE;
    return number_in(value).value_or(0.0) != 0.0;
}

// --- Blocks

BlockBuilder::BlockBuilder(std::uint32_t rows, std::uint32_t columns) {
    // The system's own multiplication may overflow.
    if (std::uint64_t{rows} * columns > std::numeric_limits<std::int32_t>::max())
        throw std::bad_alloc();
    SAFEARRAYBOUND bounds[] = {{rows, 1}, {columns, 1}};
    array_ = SafeArrayCreate(VT_VARIANT, 2, bounds);
    void* data = nullptr;
    if (array_ == nullptr || FAILED(SafeArrayAccessData(array_, &data))) throw std::bad_alloc();
    elements_ = static_cast<VARIANT*>(data);
}

BlockBuilder::~BlockBuilder() {
    if (array_ == nullptr) return;
    SafeArrayUnaccessData(array_);
    SafeArrayDestroy(array_);
}

Variant BlockBuilder::take() && {
    SafeArrayUnaccessData(array_);
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = std::exchange(array_, nullptr);
    elements_ = nullptr;
    return Variant::adopt(value);
}

BlockView::BlockView(const VARIANT& value) {
    VARTYPE type = VT_EMPTY;
    if (value.vt != (VT_ARRAY | VT_VARIANT) || value.parray == nullptr ||
        FAILED(SafeArrayGetVartype(value.parray, &type)) || type != VT_VARIANT)
        return;
    const UINT dimensions = SafeArrayGetDim(value.parray);
    if (dimensions < 1 || dimensions > 2) return;
    void* data = nullptr;
    if (FAILED(SafeArrayAccessData(value.parray, &data))) return;
    array_ = value.parray;
    elements_ = static_cast<const VARIANT*>(data);
    rows_ = extent(array_, 1);
    columns_ = dimensions == 2 ? extent(array_, 2) : 1;
}

BlockView::~BlockView() {
    if (array_ != nullptr) SafeArrayUnaccessData(array_);
}

} // namespace foundation::automation
