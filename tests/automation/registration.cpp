// SPDX-License-Identifier: Apache-2.0
//
// Entering the scripted application under the programmatic identifier. On Windows the registry says
// which class that is; every test program writes the same there.
#include <stdexcept>

#include "foundation/automation/dispatch_object.h"
#include "tests/automation/scripted_application.h"

namespace scripted {
namespace {

using namespace foundation::automation;

Script* current = nullptr;

IDispatch* make_application() {
    return current->start_application();
}

void enter_program_id() {
#ifdef _WIN32
    wchar_t class_id[40];
    StringFromGUID2(kSpreadsheetApplication, class_id, 40);
    const auto size = static_cast<DWORD>((wcslen(class_id) + 1) * sizeof(wchar_t));
    // Wine's CLSIDFromProgID does not look at the user's classes.
    if (RegSetKeyValueW(HKEY_LOCAL_MACHINE, L"Software\\Classes\\Excel.Application\\CLSID", nullptr,
                        REG_SZ, class_id, size) != ERROR_SUCCESS)
        throw std::runtime_error("The registry cannot be written.");
#endif
}

} // namespace

Registration::Registration(Script& script) {
    enter_program_id();
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    current = &script;
    const auto factory = ComPtr<IClassFactory>::adopt(new DispatchClass(&make_application));
    if (FAILED(CoRegisterClassObject(kSpreadsheetApplication, factory.get(), CLSCTX_LOCAL_SERVER,
                                     REGCLS_MULTIPLEUSE, &cookie_)))
        throw std::runtime_error("The class cannot be registered.");
}

Registration::~Registration() {
    CoRevokeClassObject(cookie_);
    current = nullptr;
    CoUninitialize();
}

} // namespace scripted
