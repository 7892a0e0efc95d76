// SPDX-License-Identifier: Apache-2.0
//
// Loading of the run-time module, once for the process, and what went wrong with it.
#include <mutex>
#include <string>
#include <utility>

#include <dlfcn.h>
#include <unistd.h>

#include "foundation/automation/class_table.h"
#include "foundation/never_destroyed.h"
#include "foundation/unicode.h"

namespace foundation::automation {
namespace {

constexpr const char* kWhatToInstall =
    "Interactive mode needs LibreOffice Calc: install the package libreoffice-calc";

using GetClassObject = HRESULT (*)(REFCLSID, REFIID, void**);
using GetStartProblem = BSTR (*)();

struct Module {
    std::mutex mutex;
    std::string path; ///< empty for the file beside the library
    GetClassObject get_class_object = nullptr;
    GetStartProblem get_start_problem = nullptr;
    std::string problem;
};

Module& module() {
    static NeverDestroyed<Module> instance;
    return instance.get();
}

/// The folder of the shared object, or program, that this code is in, with the slash after it.
std::string own_folder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&own_folder), &info) == 0 || info.dli_fname == nullptr)
        return {};
    const std::string path = info.dli_fname;
    return path.substr(0, path.rfind('/') + 1); // npos + 1 is 0: no folder
}

/// Beside the library; an installed module is in the folder "zxspreadsheet" there.
std::string module_path() {
    const std::string folder = own_folder();
    const std::string installed = folder + "zxspreadsheet/" + kModuleName;
    return access(installed.c_str(), F_OK) == 0 ? installed : folder + kModuleName;
}

/// The caller holds the lock.
void load(Module& self) {
    const std::string path = self.path.empty() ? module_path() : self.path;
    // A path without a slash would be searched for elsewhere.
    const std::string exact = path.find('/') == std::string::npos ? "./" + path : path;
    void* const handle = dlopen(exact.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* const reason = dlerror(); // NOLINT(concurrency-mt-unsafe): one for each thread
        self.problem = std::string(kWhatToInstall) + "; the module " + kModuleName +
                       " of this library cannot be loaded (" + (reason ? reason : "unknown") + ").";
        return;
    }
    self.get_start_problem = reinterpret_cast<GetStartProblem>(dlsym(handle, "DllGetStartProblem"));
    self.get_class_object = reinterpret_cast<GetClassObject>(dlsym(handle, "DllGetClassObject"));
    if (self.get_class_object == nullptr)
        self.problem = std::string("The module ") + exact + " has no DllGetClassObject.";
}

} // namespace

void set_module_path(std::string path) {
    Module& self = module();
    const std::scoped_lock lock(self.mutex);
    self.path = std::move(path);
    self.get_class_object = nullptr;
    self.get_start_problem = nullptr;
    self.problem.clear();
}

HRESULT module_class_object(REFCLSID class_id, ComPtr<IClassFactory>& factory) {
    Module& self = module();
    GetClassObject get_class_object = nullptr;
    {
        const std::scoped_lock lock(self.mutex);
        self.problem.clear();
        if (self.get_class_object == nullptr) load(self);
        get_class_object = self.get_class_object;
    }
    if (get_class_object == nullptr) return REGDB_E_CLASSNOTREG;
    const HRESULT result = get_class_object(class_id, IID_IClassFactory, factory.out());
    if (FAILED(result)) note_module_problem();
    return result;
}

void note_module_problem() {
    Module& self = module();
    const std::scoped_lock lock(self.mutex);
    if (self.get_start_problem == nullptr) return;
    BSTR text = self.get_start_problem();
    self.problem = unicode::to_utf8(view_of(text));
    SysFreeString(text);
}

std::string start_problem(HRESULT result) {
    Module& self = module();
    const std::scoped_lock lock(self.mutex);
    if (!self.problem.empty()) return self.problem;
    return result == CO_E_NOTINITIALIZED
               ? "The thread has not been initialised for automation."
               : std::string(kWhatToInstall) + ", or see whether it starts.";
}

} // namespace foundation::automation
