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

#ifdef _WIN32

const std::wstring kClasses = L"Software\\Classes\\";

std::wstring class_text() {
    wchar_t text[40];
    StringFromGUID2(kSpreadsheetApplication, text, 40);
    return text;
}

/// Wine's CLSIDFromProgID does not look at the user's classes.
void enter(const std::wstring& key, const std::wstring& value) {
    if (RegSetKeyValueW(HKEY_LOCAL_MACHINE, (kClasses + key).c_str(), nullptr, REG_SZ,
                        value.c_str(),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))) != ERROR_SUCCESS)
        throw std::runtime_error("The registry cannot be written.");
}

void enter_program_id() {
    enter(L"Excel.Application\\CLSID", class_text());
}

#else

void enter_program_id() {}

#endif

} // namespace

#ifdef _WIN32

void register_local_server(const std::wstring& program, const std::wstring& folder) {
    enter_program_id();
    const std::wstring key = L"CLSID\\" + class_text();
    enter(key + L"\\LocalServer32", L"\"" + program + L"\" \"" + folder + L"\"");
    enter(key + L"\\ProgID", L"Excel.Application");
}

void unregister_local_server() {
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, (kClasses + L"CLSID\\" + class_text()).c_str());
}

#endif

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
