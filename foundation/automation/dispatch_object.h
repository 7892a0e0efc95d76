// SPDX-License-Identifier: Apache-2.0
//
// Base of objects that serve automation: references, the look-up of names, the checks of a call.
// An object is born with one reference, which belongs to whoever made it.
#pragma once

#include <atomic>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "foundation/ascii_case.h"
#include "foundation/automation/owners.h"

// The system's interfaces have no virtual destructor; objects are deleted by their own class alone.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace foundation::automation {

/// One call as a member sees it.
struct DispatchCall {
    WORD flags;                        ///< how the member is used
    std::span<const VARIANT> reversed; ///< the arguments, the last one first
    VARIANT* result;                   ///< initialised; null when the caller wants no result

    bool is_put() const { return flags == DISPATCH_PROPERTYPUT; }
    std::size_t count() const { return reversed.size(); }
    /// An argument by its place, zero-based, in the order of the call's text; an omitted one is
    /// VT_EMPTY, VT_NULL or VT_ERROR.
    const VARIANT& argument(std::size_t index) const {
        static constexpr VARIANT kMissing{};
        return index < reversed.size() ? reversed[reversed.size() - 1 - index] : kMissing;
    }
    /// The value of a put: its last argument.
    const VARIANT& value() const { return argument(reversed.size() - 1); }

    /// Ends the call with a result.
    HRESULT give(Variant value) const {
        if (result != nullptr) *result = value.release();
        return S_OK;
    }
    HRESULT give(LONG value) const { return give(Variant::integer(value)); }
    HRESULT give(bool value) const { return give(Variant::boolean(value)); }
    HRESULT give(double value) const { return give(Variant::number(value)); }
    HRESULT give(std::u16string_view value) const { return give(Variant::text(value)); }
    /// With a reference of its own.
    HRESULT give(IDispatch* object) const { return give(Variant::object(object)); }
};

/// A member of `Object`: its name, the flags it may be called with, and what it does.
template <class Object>
struct DispatchMember {
    std::u16string_view name;
    WORD flags;
    HRESULT (Object::*call)(const DispatchCall&);
};

/// An object whose members are in a table. `Object` derives from it and has
///
///     static std::span<const DispatchMember<Object>> members();
///
/// An exception that leaves a member becomes `E_OUTOFMEMORY` or `DISP_E_EXCEPTION`, unless `Object`
/// overrides `result_of_exception`. References may
/// be counted on any thread.
template <class Object>
class DispatchObject : public IDispatch {
  public:
    DispatchObject() = default;
    DispatchObject(const DispatchObject&) = delete;
    DispatchObject& operator=(const DispatchObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interface_id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (interface_id != IID_IUnknown && interface_id != IID_IDispatch) return E_NOINTERFACE;
        AddRef();
        *object = static_cast<IDispatch*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }

    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID interface_id, LPOLESTR* names, UINT count, LCID,
                                            DISPID* ids) override {
        if (interface_id != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        for (UINT index = 0; index < count; ++index)
            ids[index] = DISPID_UNKNOWN;
        // Names after the first would be those of arguments; no member here names its arguments.
        if (count != 1) return DISP_E_UNKNOWNNAME;
        const std::u16string_view name(reinterpret_cast<const char16_t*>(names[0]));
        const auto members = Object::members();
        for (std::size_t index = 0; index < members.size(); ++index)
            if (foundation::unicode::equal_ignoring_ascii_case(members[index].name, name)) {
                ids[0] = static_cast<DISPID>(index + 1);
                return S_OK;
            }
        return DISP_E_UNKNOWNNAME;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID interface_id, LCID, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        if (interface_id != IID_NULL) return DISP_E_UNKNOWNINTERFACE;
        const auto members = Object::members();
        if (member < 1 || static_cast<std::size_t>(member) > members.size())
            return DISP_E_MEMBERNOTFOUND;
        const DispatchMember<Object>& found = members[static_cast<std::size_t>(member) - 1];
        const WORD used = static_cast<WORD>(flags & found.flags);
        if (used == 0) return DISP_E_MEMBERNOTFOUND;
        const bool is_put = used == DISPATCH_PROPERTYPUT;
        if (is_put && (parameters->cArgs == 0 || parameters->cNamedArgs != 1 ||
                       parameters->rgdispidNamedArgs[0] != DISPID_PROPERTYPUT))
            return DISP_E_PARAMNOTFOUND;
        try {
            // A put's value is named and comes first, which is the place of the last argument.
            return (static_cast<Object*>(this)->*found.call)(
                {used, {parameters->rgvarg, parameters->cArgs}, result});
        } catch (...) {
            return result_of_exception();
        }
    }

  protected:
    virtual ~DispatchObject() = default;
    /// What a call returns whose member has thrown the exception that is being handled.
    virtual HRESULT result_of_exception() const noexcept {
        try {
            throw;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return DISP_E_EXCEPTION;
        }
    }

  private:
    std::atomic<ULONG> references_{1};
};

/// A class object whose `CreateInstance` calls `make`, which returns an object with one reference
/// or null. `make` must not throw.
class DispatchClass final : public IClassFactory {
  public:
    using Maker = IDispatch* (*)();
    explicit DispatchClass(Maker make) : make_(make) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID interface_id, void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (interface_id != IID_IUnknown && interface_id != IID_IClassFactory) return E_NOINTERFACE;
        AddRef();
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --references_;
        if (left == 0) delete this;
        return left;
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID interface_id,
                                             void** object) override {
        if (object == nullptr) return E_POINTER;
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        const auto made = ComPtr<IDispatch>::adopt(make_());
        return made ? made->QueryInterface(interface_id, object) : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  private:
    ~DispatchClass() = default;

    const Maker make_;
    std::atomic<ULONG> references_{1};
};

} // namespace foundation::automation

#pragma GCC diagnostic pop
