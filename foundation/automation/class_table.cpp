// SPDX-License-Identifier: Apache-2.0
//
// Apartments as counts of the threads, and the classes registered in this process.
#include "foundation/automation/class_table.h"

#include <algorithm>
#include <mutex>
#include <string_view>
#include <vector>

#include "foundation/ascii_case.h"
#include "foundation/never_destroyed.h"

namespace {

using foundation::automation::ComPtr;

struct Apartment {
    int initialisations;
    DWORD mode;
};
thread_local Apartment apartment{};

struct RegisteredClass {
    CLSID class_id;
    DWORD cookie;
    ComPtr<IUnknown> class_object;
};

struct ClassTable {
    std::mutex mutex;
    std::vector<RegisteredClass> classes;
    DWORD last_cookie = 0;
};

ClassTable& class_table() {
    static foundation::NeverDestroyed<ClassTable> instance;
    return instance.get();
}

ComPtr<IUnknown> find_class_object(REFCLSID class_id) {
    ClassTable& table = class_table();
    const std::scoped_lock lock(table.mutex);
    const auto found = std::find_if(table.classes.begin(), table.classes.end(),
                                    [&](const auto& entry) { return entry.class_id == class_id; });
    return found == table.classes.end() ? ComPtr<IUnknown>() : found->class_object;
}

} // namespace

HRESULT CoInitializeEx(void*, DWORD mode) {
    if (apartment.initialisations > 0 && apartment.mode != mode) return RPC_E_CHANGED_MODE;
    apartment.mode = mode;
    return apartment.initialisations++ == 0 ? S_OK : S_FALSE;
}

void CoUninitialize() {
    if (apartment.initialisations > 0) --apartment.initialisations;
}

HRESULT CLSIDFromProgID(LPCOLESTR program_id, CLSID* class_id) {
    if (program_id == nullptr || class_id == nullptr) return E_INVALIDARG;
    *class_id = GUID_NULL;
    if (!foundation::unicode::equal_ignoring_ascii_case(std::u16string_view(program_id),
                                                        std::u16string_view(u"Excel.Application")))
        return CO_E_CLASSSTRING;
    *class_id = foundation::automation::kSpreadsheetApplication;
    return S_OK;
}

HRESULT CoCreateInstance(REFCLSID class_id, IUnknown* outer, DWORD, REFIID interface_id,
                         void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (apartment.initialisations == 0) return CO_E_NOTINITIALIZED;
    ComPtr<IClassFactory> factory;
    if (const auto registered = find_class_object(class_id)) {
        const HRESULT result = registered->QueryInterface(IID_IClassFactory, factory.out());
        return FAILED(result) ? result : factory->CreateInstance(outer, interface_id, object);
    }
    HRESULT result = foundation::automation::module_class_object(class_id, factory);
    if (FAILED(result)) return result;
    result = factory->CreateInstance(outer, interface_id, object);
    if (FAILED(result)) foundation::automation::note_module_problem();
    return result;
}

HRESULT CoRegisterClassObject(REFCLSID class_id, IUnknown* class_object, DWORD, DWORD flags,
                              DWORD* cookie) {
    if (class_object == nullptr || cookie == nullptr || flags != REGCLS_MULTIPLEUSE)
        return E_INVALIDARG;
    ClassTable& table = class_table();
    const std::scoped_lock lock(table.mutex);
    *cookie = ++table.last_cookie;
    table.classes.push_back({class_id, *cookie, ComPtr<IUnknown>(class_object)});
    return S_OK;
}

HRESULT CoRevokeClassObject(DWORD cookie) {
    ClassTable& table = class_table();
    ComPtr<IUnknown> revoked; // released after the lock, as its destructor may call back
    const std::scoped_lock lock(table.mutex);
    const auto found = std::find_if(table.classes.begin(), table.classes.end(),
                                    [&](const auto& entry) { return entry.cookie == cookie; });
    if (found == table.classes.end()) return E_INVALIDARG;
    revoked = found->class_object;
    table.classes.erase(found);
    return S_OK;
}
