// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

#include "foundation/environment.h"
#include "foundation/user_files.h"
#include "foundation/windows_files.h"

// clang-format off: after windows.h, whose names it uses
#include <aclapi.h>
// clang-format on

namespace foundation::files {

namespace {

/// A group that every user of the machine is in.
bool has_everybody(PSID group) {
    constexpr WELL_KNOWN_SID_TYPE kGroups[] = {WinWorldSid, WinAuthenticatedUserSid,
                                               WinBuiltinUsersSid};
    return std::any_of(std::begin(kGroups), std::end(kGroups),
                       [group](auto kind) { return ::IsWellKnownSid(group, kind) != FALSE; });
}

/// Whether an entry of an access list lets such a group read. What an entry before it denies is
/// left aside.
bool lets_others_read(void* entry) {
    const auto& header = *static_cast<const ACE_HEADER*>(entry);
    const bool is_about_file =
        header.AceType == ACCESS_ALLOWED_ACE_TYPE && (header.AceFlags & INHERIT_ONLY_ACE) == 0;
    if (!is_about_file) return false;
    auto& allowed = *static_cast<ACCESS_ALLOWED_ACE*>(entry);
    constexpr ACCESS_MASK kReading = FILE_READ_DATA | GENERIC_READ | GENERIC_ALL;
    return (allowed.Mask & kReading) != 0 && has_everybody(&allowed.SidStart);
}

} // namespace

std::u16string user_settings_folder() {
    return environment_variable("APPDATA");
}

bool is_open_to_others(const std::u16string& path) {
    std::wstring name = system_path({path.begin(), path.end()});
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS)
        return false;
    const std::unique_ptr<void, decltype(&::LocalFree)> owner(descriptor, &::LocalFree);
    if (list == nullptr) return true; // everybody may do everything
    for (DWORD index = 0; index < list->AceCount; ++index) {
        void* entry = nullptr;
        if (::GetAce(list, index, &entry) != FALSE && lets_others_read(entry)) return true;
    }
    return false;
}

} // namespace foundation::files
