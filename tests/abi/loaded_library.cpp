// SPDX-License-Identifier: Apache-2.0
//
// Loading libraries and counting handles and threads, on POSIX systems and on Windows.
#include "tests/abi/loaded_library.h"

#include <cstdint>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
// Needs what windows.h declares.
#include <tlhelp32.h>
#else
#include <dlfcn.h>
#endif

namespace spreadsheet::test {

#ifdef _WIN32

namespace {

std::wstring wide(const std::string& path) {
    return std::filesystem::path(path).make_preferred().wstring();
}

std::runtime_error failure(const std::string& what) {
    return std::runtime_error(what + ": error " + std::to_string(::GetLastError()));
}

/// The open ones of the lowest handles, which the system gives out first. Wine answers 0 when it is
/// asked for the number.
std::size_t handle_count() {
    constexpr std::uintptr_t kStep = 4, kEnd = 512 * kStep;
    std::size_t count = 0;
    for (std::uintptr_t value = kStep; value < kEnd; value += kStep) {
        DWORD flags = 0;
        count += ::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) ? 1 : 0;
    }
    return count;
}

std::size_t thread_count() {
    const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) throw failure("no list of threads");
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    std::size_t count = 0;
    for (BOOL more = ::Thread32First(snapshot, &entry); more;
         more = ::Thread32Next(snapshot, &entry))
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    ::CloseHandle(snapshot);
    return count;
}

} // namespace

LoadedLibrary::LoadedLibrary(const std::string& path)
    : handle_(::LoadLibraryW(wide(path).c_str())) {
    if (!handle_) throw failure(path);
}

LoadedLibrary::~LoadedLibrary() {
    ::FreeLibrary(static_cast<HMODULE>(handle_));
}

void* LoadedLibrary::find(const std::string& name) const {
    const FARPROC address = ::GetProcAddress(static_cast<HMODULE>(handle_), name.c_str());
    if (!address) throw failure(name);
    void* result = nullptr;
    std::memcpy(&result, &address, sizeof result);
    return result;
}

bool is_loaded(const std::string& path) {
    return ::GetModuleHandleW(wide(path).c_str()) != nullptr;
}

ProcessState process_state() {
    return {handle_count(), thread_count()};
}

#else

namespace {

std::size_t entries(const char* folder) {
    const std::filesystem::directory_iterator begin(folder);
    return static_cast<std::size_t>(std::distance(begin, {}));
}

} // namespace

LoadedLibrary::LoadedLibrary(const std::string& path)
    : handle_(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!handle_) throw std::runtime_error(::dlerror());
}

LoadedLibrary::~LoadedLibrary() {
    ::dlclose(handle_);
}

void* LoadedLibrary::find(const std::string& name) const {
    void* const address = ::dlsym(handle_, name.c_str());
    if (!address) throw std::runtime_error(::dlerror());
    return address;
}

bool is_loaded(const std::string& path) {
    void* const handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle) ::dlclose(handle);
    return handle != nullptr;
}

ProcessState process_state() {
    return {entries("/proc/self/fd"), entries("/proc/self/task")};
}

#endif

} // namespace spreadsheet::test
