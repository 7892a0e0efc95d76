// SPDX-License-Identifier: Apache-2.0
//
// Owners of automation values: references to objects, VARIANTs, blocks of VARIANTs. Functions that
// make text throw std::bad_alloc where memory runs out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "foundation/automation/automation.h"

namespace foundation::automation {

/// One reference to an object, released at the end.
///
///     auto factory = ComPtr<IClassFactory>::adopt(new Factory);   // takes the reference over
///     ComPtr<IDispatch> object;
///     factory->CreateInstance(nullptr, IID_IDispatch, object.out());
template <class Interface>
class ComPtr {
  public:
    ComPtr() = default;
    /// Adds a reference.
    explicit ComPtr(Interface* object) : object_(object) {
        if (object_ != nullptr) object_->AddRef();
    }
    ComPtr(const ComPtr& other) : ComPtr(other.object_) {}
    ComPtr(ComPtr&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~ComPtr() {
        if (object_ != nullptr) object_->Release();
    }

    /// Takes the caller's reference over.
    static ComPtr adopt(Interface* object) {
        ComPtr owner;
        owner.object_ = object;
        return owner;
    }

    Interface* get() const { return object_; }
    Interface* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    /// Hands the reference over to the caller.
    Interface* release() { return std::exchange(object_, nullptr); }
    /// Releases what is held; for calls that return an object through a pointer.
    void** out() {
        *this = ComPtr();
        return reinterpret_cast<void**>(&object_);
    }

  private:
    Interface* object_ = nullptr;
};

/// An owned VARIANT. Moves, is not copied.
///
///     Variant format = Variant::integer(51);
///     Variant result;
///     object->Invoke(..., result.out(), nullptr, nullptr);
///     if (const auto number = integer_in(result.get())) ...
class Variant {
  public:
    Variant() noexcept { VariantInit(&value_); }
    Variant(Variant&& other) noexcept : value_(other.value_) { VariantInit(&other.value_); }
    Variant& operator=(Variant&& other) noexcept {
        std::swap(value_, other.value_);
        return *this;
    }
    ~Variant() { VariantClear(&value_); }

    static Variant null();
    static Variant integer(LONG value);
    static Variant number(double value);
    static Variant date(DATE value);
    static Variant boolean(bool value);
    static Variant text(std::u16string_view value);
    /// Adds a reference; null gives VT_DISPATCH with a null pointer.
    static Variant object(IDispatch* value);
    /// Throws std::bad_alloc where the copy cannot be made.
    static Variant copy_of(const VARIANT& value);
    /// Takes over what `value` owns.
    static Variant adopt(const VARIANT& value);

    const VARIANT& get() const { return value_; }
    VARTYPE type() const { return value_.vt; }
    /// Clears the value; for calls that return one through a pointer.
    VARIANT* out() {
        VariantClear(&value_);
        return &value_;
    }
    /// Hands what the value owns over to the caller.
    VARIANT release();
    /// Hands the object over to the caller, with its reference; null when the value is not an
    /// object.
    IDispatch* release_object();

  private:
    VARIANT value_;
};

/// A BSTR of that text; the caller frees it. Throws std::bad_alloc.
BSTR make_bstr(std::u16string_view text);

/// The text of a BSTR, as long as that lives; null is the empty text.
std::u16string_view view_of(BSTR text);

/// What a value holds, without conversion of text. Nothing for values of another kind; `integer_in`
/// and `number_in` accept every numeric type (the first only whole numbers in range), `is_true` any
/// boolean or number that is not 0.
std::optional<LONG> integer_in(const VARIANT& value);
std::optional<double> number_in(const VARIANT& value);
std::optional<std::u16string_view> text_in(const VARIANT& value);
bool is_true(const VARIANT& value);

/// A two-dimensional array of VARIANTs with lower bounds of 1 as an owned value; element (row,
/// column) is `elements()[row + column * rows]`, zero-based. Throws std::bad_alloc.
///
///     BlockBuilder block(2, 3);
///     block.elements()[0] = Variant::number(1.5).release();
///     Variant value = std::move(block).take();
class BlockBuilder {
  public:
    BlockBuilder(std::uint32_t rows, std::uint32_t columns);
    ~BlockBuilder();
    BlockBuilder(const BlockBuilder&) = delete;
    BlockBuilder& operator=(const BlockBuilder&) = delete;

    /// The elements, empty at first; valid until `take`.
    VARIANT* elements() { return elements_; }
    Variant take() &&;

  private:
    SAFEARRAY* array_;
    VARIANT* elements_ = nullptr;
};

/// The elements of an array of VARIANTs that somebody else made, column after column, locked while
/// this object lives. The value must outlive it.
class BlockView {
  public:
    /// Accepts a one- or two-dimensional array of VARIANTs; anything else gives a view without
    /// elements. A one-dimensional array is one column.
    explicit BlockView(const VARIANT& value);
    ~BlockView();
    BlockView(const BlockView&) = delete;
    BlockView& operator=(const BlockView&) = delete;

    explicit operator bool() const { return elements_ != nullptr; }
    std::size_t rows() const { return rows_; }
    std::size_t columns() const { return columns_; }
    const VARIANT* elements() const { return elements_; }

  private:
    SAFEARRAY* array_ = nullptr;
    const VARIANT* elements_ = nullptr;
    std::size_t rows_ = 0;
    std::size_t columns_ = 0;
};

/// Replaces the allocation of BSTRs by `make_bstr`, for tests of memory that runs out; null
/// restores the system's. `allocate` has the contract of SysAllocStringLen.
void replace_bstr_allocation(BSTR (*allocate)(const OLECHAR* text, UINT length));

} // namespace foundation::automation
