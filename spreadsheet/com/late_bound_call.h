// SPDX-License-Identifier: Apache-2.0
//
// Calls of members by name, the only way to the application. Arguments stay the caller's; they are
// passed unchanged, the last argument of a call first.
#pragma once

#include <initializer_list>
#include <memory>
#include <string_view>

#include "foundation/automation/owners.h"
#include "spreadsheet/com/automation_failure.h"

namespace spreadsheet {

/// Reads a property, with arguments or without. `result` is initialised by the caller. Returns what
/// the look-up of the name or the call returned; nothing is thrown but std::bad_alloc.
HRESULT invoke_get(VARIANT& result, IDispatch* target, const OLECHAR* name, const VARIANT* begin,
                   const VARIANT* end);
/// Writes a property; its value is the first argument of the list.
HRESULT invoke_put(VARIANT& result, IDispatch* target, const OLECHAR* name, const VARIANT* begin,
                   const VARIANT* end);
/// Calls a method.
HRESULT invoke_method(VARIANT& result, IDispatch* target, const OLECHAR* name, const VARIANT* begin,
                      const VARIANT* end);

namespace com {

using foundation::automation::Variant;

/// How a call ended: its value, or why it failed.
///
///     const Variant count = get(sheets, OLESTR("Count")).or_fail(kTag, error_id::internal);
struct CallResult {
    const OLECHAR* member;
    HRESULT status;
    Variant value;

    explicit operator bool() const { return SUCCEEDED(status); }

    /// The value; `Exception` `id` when the call failed.
    Variant or_fail(std::string_view tag, error_id id) &&;
    /// The same with `Exception` 18; std::bad_alloc where the application is out of memory.
    Variant or_fail_internally(std::string_view tag) &&;
    /// The object that the call returned, released by its last owner; null when the call failed or
    /// returned no object.
    std::shared_ptr<IDispatch> object() &&;
    /// The same; `Exception` `id` in place of null.
    std::shared_ptr<IDispatch> object_or_fail(std::string_view tag, error_id id) &&;
    /// The same with its reference, which is the caller's.
    IDispatch* release_object_or_fail(std::string_view tag, error_id id) &&;
};

/// The three calls with their value. `arguments` are not owned; `target` may be null, which gives
/// `E_POINTER`.
CallResult get(IDispatch* target, const OLECHAR* name,
               std::initializer_list<VARIANT> arguments = {});
CallResult put(IDispatch* target, const OLECHAR* name, const Variant& value);
CallResult call(IDispatch* target, const OLECHAR* name,
                std::initializer_list<VARIANT> arguments = {});

} // namespace com
} // namespace spreadsheet
