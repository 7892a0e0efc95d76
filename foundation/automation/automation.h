// SPDX-License-Identifier: Apache-2.0
//
// Automation: late-bound objects (`IDispatch`), the values that travel through them, and how a
// class is found. On Windows these are the system's own headers; elsewhere
// foundation/automation/com_types.h declares the same names with the same rules of ownership.
// Text literals are OLESTR("..."), so that one source serves both.
#pragma once

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
// After windows.h, which they build on.
#include <objbase.h>
#include <oleauto.h>
#else
#include "foundation/automation/com_types.h"
#endif

#include <string>

namespace foundation::automation {

/// The class that serves spreadsheets where no other is installed: elsewhere than on Windows the
/// programmatic identifier "Excel.Application" names it, and the run-time module serves it.
inline constexpr CLSID kSpreadsheetApplication = {
    0x6b1d74c2, 0x93ae, 0x4f05, {0x8e, 0x27, 0x5c, 0x40, 0xd1, 0x9a, 0x7b, 0x36}};

/// Why `CoCreateInstance` or `CLSIDFromProgID` ended in `result`: one English sentence that says
/// what to install. Elsewhere than on Windows it belongs to the last start that failed, on any
/// thread.
std::string start_problem(HRESULT result);

#ifndef _WIN32

/// The run-time module is a shared object that is loaded by the first `CoCreateInstance` of a class
/// that is not registered in the process. It is beside the library, installed in the folder
/// "zxspreadsheet" there, and is never unloaded. It exports
///
///     extern "C" HRESULT DllGetClassObject(REFCLSID, REFIID, void** object);
///     extern "C" BSTR DllGetStartProblem();     // may be missing
///
/// The first returns the class object (`IClassFactory`) of `kSpreadsheetApplication`. After a
/// `CreateInstance` that failed the second returns one English sentence that says why; the caller
/// frees it. Strings and arrays may cross the border, as both sides use malloc.
inline constexpr const char* kModuleName = "libzxspreadsheet_automation.so";

/// Loads the module from `path` in place of the file beside the library, for tests; empty restores
/// that. A module that has been loaded stays in memory. Not while an application starts.
void set_module_path(std::string path);

#endif

} // namespace foundation::automation
