// SPDX-License-Identifier: Apache-2.0
//
// What the run-time module exports, and the application's own members.
#include <mutex>
#include <string>

#include <com/sun/star/uno/Exception.hpp>

#include "automation/libreoffice/served_objects.h"
#include "automation/libreoffice/start_problem.h"
#include "foundation/never_destroyed.h"
#include "foundation/unicode.h"

namespace office {
namespace {

using foundation::automation::ComPtr;
using foundation::automation::DispatchClass;

/// Places in the International array, one-based.
constexpr LONG kFirstLetter = 19;
constexpr LONG kGeneralName = 26;
constexpr ULONG kInternationalCount = 45;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

class Application final : public OfficeObject<Application> {
  public:
    using OfficeObject::OfficeObject;

    static std::span<const DispatchMember<Application>> members() {
        static constexpr DispatchMember<Application> kMembers[] = {
            {u"Visible", kGet | kPut, &Application::visible},
            {u"DisplayAlerts", kGet | kPut, &Application::display_alerts},
            {u"DefaultSaveFormat", kGet | kPut, &Application::default_save_format},
            {u"International", kGet, &Application::international},
            {u"Workbooks", kGet, &Application::workbooks},
            {u"Quit", kCall, &Application::quit},
        };
        return kMembers;
    }

  private:
    /// It has no screen to appear on.
    HRESULT visible(const DispatchCall& call) {
        if (!call.is_put()) return call.give(false);
        return is_true(call.value()) ? E_NOTIMPL : S_OK;
    }

    HRESULT display_alerts(const DispatchCall& call) {
        if (!call.is_put()) return call.give(session_->shows_alerts);
        session_->shows_alerts = is_true(call.value());
        return S_OK;
    }

    HRESULT default_save_format(const DispatchCall& call) {
        if (!call.is_put()) return call.give(LONG{session_->default_save_format});
        session_->default_save_format = integer_argument(call.value());
        return S_OK;
    }

    /// Those of English, which `NumberFormat::code` has, too.
    HRESULT international(const DispatchCall& call) {
        SAFEARRAYBOUND bound{kInternationalCount, 1};
        VARIANT array{};
        array.vt = VT_ARRAY | VT_VARIANT;
        array.parray = SafeArrayCreate(VT_VARIANT, 1, &bound);
        if (array.parray == nullptr) return E_OUTOFMEMORY;
        Variant owned = Variant::adopt(array);
        LONG index = kFirstLetter;
        for (const char16_t* letter : {u"y", u"m", u"d", u"h", u"m", u"s"}) {
            Variant text = Variant::text(letter);
            VARIANT value = text.get();
            SafeArrayPutElement(array.parray, &index, &value);
            ++index;
        }
        index = kGeneralName;
        const Variant general = Variant::text(u"General");
        VARIANT value = general.get();
        SafeArrayPutElement(array.parray, &index, &value);
        return call.give(std::move(owned));
    }

    HRESULT workbooks(const DispatchCall& call) { return give_new<Workbooks>(call); }

    HRESULT quit(const DispatchCall&) {
        session_->end();
        return S_OK;
    }
};

#pragma GCC diagnostic pop

struct LastProblem {
    std::mutex mutex;
    std::string text;
};

LastProblem& last_problem() {
    static foundation::NeverDestroyed<LastProblem> instance;
    return instance.get();
}

void note_problem(std::string text) {
    LastProblem& problem = last_problem();
    const std::scoped_lock lock(problem.mutex);
    problem.text = std::move(text);
}

IDispatch* start_application() {
    try {
        return new Application(std::make_shared<OfficeSession>(find_office()));
    } catch (const css::uno::Exception& failure) {
        note_problem("LibreOffice cannot be used: " +
                     foundation::unicode::to_utf8(view_of(failure.Message)));
    } catch (const std::exception& failure) {
        note_problem(failure.what());
    }
    return nullptr;
}

} // namespace
} // namespace office

extern "C" __attribute__((visibility("default"))) HRESULT
DllGetClassObject(REFCLSID class_id, REFIID interface_id, void** object) {
    using namespace office;
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (class_id != foundation::automation::kSpreadsheetApplication)
        return CLASS_E_CLASSNOTAVAILABLE;
    const auto factory = ComPtr<IClassFactory>::adopt(new DispatchClass(&start_application));
    return factory->QueryInterface(interface_id, object);
}

extern "C" __attribute__((visibility("default"))) BSTR DllGetStartProblem() {
    office::LastProblem& problem = office::last_problem();
    const std::scoped_lock lock(problem.mutex);
    return foundation::automation::make_bstr(foundation::unicode::to_utf16(problem.text));
}
