// SPDX-License-Identifier: Apache-2.0
//
// Base of the scripted application's objects: counts references without ever freeing, holds calls
// against the rules, fails those that are to fail.
#pragma once

#include <string>

#include "foundation/automation/dispatch_object.h"
#include "foundation/unicode.h"
#include "tests/automation/scripted_application.h"

namespace scripted {

using foundation::automation::DispatchCall;
using foundation::automation::DispatchMember;
using foundation::automation::integer_in;
using foundation::automation::is_true;
using foundation::automation::text_in;

inline constexpr WORD kGet = DISPATCH_PROPERTYGET;
inline constexpr WORD kPut = DISPATCH_PROPERTYPUT;
inline constexpr WORD kCall = DISPATCH_METHOD;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// `Made` has the constant `kName` and the members of a `DispatchObject`.
template <class Made>
class ScriptedObject : public foundation::automation::DispatchObject<Made>, public Script::Object {
  public:
    using Base = foundation::automation::DispatchObject<Made>;

    ScriptedObject(Script& script, std::shared_ptr<ApplicationModel> application)
        : script_(script), application_(std::move(application)) {}

    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override {
        if (references == 0) script_.note(std::string(Made::kName) + " is released too often");
        if (references > 0) --references;
        return static_cast<ULONG>(references);
    }

    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID interface_id, LPOLESTR* names, UINT count,
                                            LCID locale, DISPID* ids) override {
        expect(references > 0, "is used after its release");
        expect(interface_id == IID_NULL && count == 1, "is asked for names oddly");
        expect(locale == 0x400, "is asked for names in another locale");
        const HRESULT result = Base::GetIDsOfNames(interface_id, names, count, locale, ids);
        const std::u16string_view name(reinterpret_cast<const char16_t*>(names[0]));
        expect(SUCCEEDED(result), "has no " + foundation::unicode::to_utf8(name));
        if (SUCCEEDED(result))
            expect(Made::members()[static_cast<std::size_t>(ids[0]) - 1].name == name,
                   "is asked in other letters for " + foundation::unicode::to_utf8(name));
        return result;
    }

    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID interface_id, LCID locale, WORD flags,
                                     DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                     UINT* bad_argument) override {
        const auto& found = Made::members()[static_cast<std::size_t>(member) - 1];
        const std::string name =
            std::string(Made::kName) + "." + foundation::unicode::to_utf8(found.name);
        const auto number = static_cast<int>(script_.calls.size());
        script_.calls.push_back(name + (flags == kGet ? " get" : flags == kPut ? " put" : " call"));
        expect(locale == 0x800, "is called in another locale: " + name);
        expect((flags & found.flags) == flags && (flags & (flags - 1)) == 0,
               "is used the wrong way: " + script_.calls.back());
        expect(flags == kPut ? parameters->cNamedArgs == 1 : parameters->cNamedArgs == 0,
               "has named arguments that it should not: " + name);
        expect(result != nullptr && result->vt == VT_EMPTY, "has no place for a result: " + name);
        expect(script_.is_remote || (exception == nullptr && bad_argument == nullptr),
               "is asked for details: " + name);
        if (script_.before_call) script_.before_call(script_.calls.back());
        if (number == script_.die_at) application_->dead = true;
        if (application_->dead) return RPC_E_DISCONNECTED;
        if (const auto refusal = script_.refused.find(name); refusal != script_.refused.end())
            return refusal->second;
        if (script_.fail_at >= 0 &&
            (number == script_.fail_at || (script_.from_then && number > script_.fail_at)))
            return script_.fail_with;
        return Base::Invoke(member, interface_id, locale, flags, parameters, result, exception,
                            bad_argument);
    }

  protected:
    void expect(bool holds, const std::string& violation) {
        if (!holds) script_.note(std::string(Made::kName) + " " + violation);
    }
    /// An argument list that the member does not take.
    HRESULT wrong_arguments(const char* member) {
        expect(false, std::string("has other arguments than expected: ") + member);
        return DISP_E_TYPEMISMATCH;
    }
    /// Ends a call with the object of a node, which is made once.
    template <class Other, class Node>
    HRESULT give_known(const DispatchCall& call, const std::shared_ptr<Node>& node) {
        IDispatch*& object = script_.known(*application_, node.get());
        if (object == nullptr) object = script_.keep<Other>(script_, application_, node);
        return call.give(object);
    }
    /// Ends a call with an object of its own.
    template <class Other, class... Arguments>
    HRESULT give_new(const DispatchCall& call, Arguments&&... arguments) {
        return call.give(static_cast<IDispatch*>(
            script_.keep<Other>(script_, application_, std::forward<Arguments>(arguments)...)));
    }

    Script& script_;
    std::shared_ptr<ApplicationModel> application_;
};

#pragma GCC diagnostic pop

} // namespace scripted
