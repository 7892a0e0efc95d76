// SPDX-License-Identifier: Apache-2.0
#include "foundation/windows_files.h"

#include <algorithm>

namespace foundation::files {

bool is_folder(const std::wstring& path) {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::wstring full_path(const std::wstring& path) {
    const DWORD needed = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(needed, L'\0');
    const DWORD length = ::GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
    full.resize(length < needed ? length : 0);
    return full;
}

std::wstring system_path(const std::wstring& path) {
    if (path.starts_with(L"\\\\?\\")) return path;
    const std::wstring full = full_path(path);
    if (full.empty() || std::max(path.size(), full.size()) < MAX_PATH) return path;
    if (full.size() < MAX_PATH || full.starts_with(L"\\\\?\\")) return full;
    if (full.starts_with(L"\\\\.\\")) return L"\\\\?\\" + full.substr(4);
    if (full.starts_with(L"\\\\")) return L"\\\\?\\UNC" + full.substr(1);
    return L"\\\\?\\" + full;
}

} // namespace foundation::files
