// SPDX-License-Identifier: Apache-2.0
//
// Base of the objects that serve the application's members over UNO. Members throw: `Refusal`, or
// what UNO throws.
#pragma once

#include <memory>
#include <utility>

#include <com/sun/star/lang/DisposedException.hpp>

#include "automation/libreoffice/office_session.h"
#include "foundation/automation/dispatch_object.h"

namespace office {

using foundation::automation::DispatchCall;
using foundation::automation::DispatchMember;
using foundation::automation::integer_in;
using foundation::automation::is_true;
using foundation::automation::text_in;
using foundation::automation::Variant;

inline constexpr WORD kGet = DISPATCH_PROPERTYGET;
inline constexpr WORD kPut = DISPATCH_PROPERTYPUT;
inline constexpr WORD kCall = DISPATCH_METHOD;

/// The result of a call that the application cannot serve.
struct Refusal {
    HRESULT result;
};

/// An argument as a whole number or as text; throws `Refusal` where it is something else.
LONG integer_argument(const VARIANT& argument);
std::u16string_view text_argument(const VARIANT& argument);

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A call is watched while it runs. Every failure of an application that has ended is
/// `RPC_E_DISCONNECTED`.
template <class Object>
class OfficeObject : public foundation::automation::DispatchObject<Object> {
  public:
    explicit OfficeObject(std::shared_ptr<OfficeSession> session) : session_(std::move(session)) {}

    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID interface_id, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* bad_argument) override {
        if (!session_->is_alive()) return RPC_E_DISCONNECTED;
        const OfficeProcess::Call call(session_->process());
        const HRESULT status = foundation::automation::DispatchObject<Object>::Invoke(
            member, interface_id, locale, flags, parameters, result, exception, bad_argument);
        return FAILED(status) && !session_->is_alive() ? RPC_E_DISCONNECTED : status;
    }

  protected:
    HRESULT result_of_exception() const noexcept override {
        try {
            throw;
        } catch (const Refusal& refusal) {
            return refusal.result;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (const css::lang::DisposedException&) {
            // The connection breaks a little before the process is seen to have ended.
            session_->process().has_ended(std::chrono::milliseconds(500));
            return DISP_E_EXCEPTION;
        } catch (...) {
            return DISP_E_EXCEPTION;
        }
    }
    /// Ends a call with a new object.
    template <class Other, class... Arguments>
    HRESULT give_new(const DispatchCall& call, Arguments&&... arguments) const {
        const auto made = foundation::automation::ComPtr<IDispatch>::adopt(
            new Other(session_, std::forward<Arguments>(arguments)...));
        return call.give(made.get());
    }

    const std::shared_ptr<OfficeSession> session_;
};

#pragma GCC diagnostic pop

} // namespace office
