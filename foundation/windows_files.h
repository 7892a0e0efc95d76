// SPDX-License-Identifier: Apache-2.0
//
// What sources that talk to the file system of Windows share. It brings windows.h.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX // windows.h has macros of the names min and max
#endif

#include <string>

#include <windows.h>

namespace foundation::files {

/// Owns a file handle.
class Handle {
  public:
    explicit Handle(HANDLE value) : value_(value) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { close(); }
    void close() {
        if (valid()) ::CloseHandle(value_);
        value_ = INVALID_HANDLE_VALUE;
    }
    bool valid() const { return value_ != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return value_; }

  private:
    HANDLE value_;
};

bool is_folder(const std::wstring& path);

/// The absolute form of a path; empty when it has none.
std::wstring full_path(const std::wstring& path);

/// The absolute form with the prefix that lifts the limit of MAX_PATH characters; paths within it
/// stay as they are, since the prefix switches '/', relative components and device names off.
std::wstring system_path(const std::wstring& path);

} // namespace foundation::files
