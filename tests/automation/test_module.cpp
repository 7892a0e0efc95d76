// SPDX-License-Identifier: Apache-2.0
//
// A run-time module whose class makes one object and then fails with a reason.
#include "foundation/automation/dispatch_object.h"

namespace {

using namespace foundation::automation;

class Application : public DispatchObject<Application> {
  public:
    static std::span<const DispatchMember<Application>> members() { return {}; }
};

bool made = false;

IDispatch* make_application() {
    if (made) return nullptr;
    made = true;
    return new Application;
}

} // namespace

extern "C" __attribute__((visibility("default"))) HRESULT
DllGetClassObject(REFCLSID class_id, REFIID interface_id, void** object) {
    if (class_id != kSpreadsheetApplication) return CLASS_E_CLASSNOTAVAILABLE;
    const auto factory = ComPtr<IClassFactory>::adopt(new DispatchClass(&make_application));
    return factory->QueryInterface(interface_id, object);
}

extern "C" __attribute__((visibility("default"))) BSTR DllGetStartProblem() {
    return SysAllocString(u"The module makes one object only.");
}
