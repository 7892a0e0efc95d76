// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/com/late_bound_call.h"

#include <new>
#include <utility>
#include <vector>

#include "spreadsheet/com/excel_application.h"

namespace spreadsheet {
namespace {

/// Names are looked up in the user's locale, calls run in the system's.
constexpr LCID kUserDefaultLocale = 0x0400;
constexpr LCID kSystemDefaultLocale = 0x0800;

HRESULT invoke(WORD flags, VARIANT& result, IDispatch* target, const OLECHAR* name,
               const VARIANT* begin, const VARIANT* end) {
    std::vector<VARIANT> arguments(begin, end);
    OLECHAR* member_name = const_cast<OLECHAR*>(name); // the interface lacks the const
    DISPID member = 0;
    const HRESULT found =
        target->GetIDsOfNames(IID_NULL, &member_name, 1, kUserDefaultLocale, &member);
    if (FAILED(found)) return found;
    DISPID put_value = DISPID_PROPERTYPUT;
    const bool is_put = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS parameters{arguments.data(), is_put ? &put_value : nullptr,
                          static_cast<UINT>(arguments.size()), is_put ? 1u : 0u};
    return target->Invoke(member, IID_NULL, kSystemDefaultLocale, flags, &parameters, &result,
                          nullptr, nullptr);
}

} // namespace

HRESULT invoke_get(VARIANT& result, IDispatch* target, const OLECHAR* name, const VARIANT* begin,
                   const VARIANT* end) {
    return invoke(DISPATCH_PROPERTYGET, result, target, name, begin, end);
}

HRESULT invoke_put(VARIANT& result, IDispatch* target, const OLECHAR* name, const VARIANT* begin,
                   const VARIANT* end) {
    return invoke(DISPATCH_PROPERTYPUT, result, target, name, begin, end);
}

HRESULT invoke_method(VARIANT& result, IDispatch* target, const OLECHAR* name, const VARIANT* begin,
                      const VARIANT* end) {
    return invoke(DISPATCH_METHOD, result, target, name, begin, end);
}

namespace com {
namespace {

using Helper = HRESULT (*)(VARIANT&, IDispatch*, const OLECHAR*, const VARIANT*, const VARIANT*);

CallResult run(Helper helper, IDispatch* target, const OLECHAR* name, const VARIANT* begin,
               const VARIANT* end) {
    CallResult result{name, E_POINTER, {}};
    if (target != nullptr) result.status = helper(*result.value.out(), target, name, begin, end);
    return result;
}

} // namespace

CallResult get(IDispatch* target, const OLECHAR* name, std::initializer_list<VARIANT> arguments) {
    return run(invoke_get, target, name, arguments.begin(), arguments.end());
}

CallResult put(IDispatch* target, const OLECHAR* name, const Variant& value) {
    return run(invoke_put, target, name, &value.get(), &value.get() + 1);
}

CallResult call(IDispatch* target, const OLECHAR* name, std::initializer_list<VARIANT> arguments) {
    return run(invoke_method, target, name, arguments.begin(), arguments.end());
}

Variant CallResult::or_fail(std::string_view tag, error_id id) && {
    if (FAILED(status)) fail_call(tag, id, member, status);
    return std::move(value);
}

Variant CallResult::or_fail_internally(std::string_view tag) && {
    if (status == E_OUTOFMEMORY) throw std::bad_alloc();
    return std::move(*this).or_fail(tag, error_id::internal);
}

std::shared_ptr<IDispatch> CallResult::object() && {
    return excel_application::get_temp_ref(SUCCEEDED(status) ? value.release_object() : nullptr);
}

std::shared_ptr<IDispatch> CallResult::object_or_fail(std::string_view tag, error_id id) && {
    return excel_application::get_temp_ref(std::move(*this).release_object_or_fail(tag, id));
}

IDispatch* CallResult::release_object_or_fail(std::string_view tag, error_id id) && {
    IDispatch* const object = SUCCEEDED(status) ? value.release_object() : nullptr;
    if (object == nullptr) fail_call(tag, id, member, status);
    return object;
}

} // namespace com
} // namespace spreadsheet
