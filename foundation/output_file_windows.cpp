// SPDX-License-Identifier: Apache-2.0
//
// Files that replace others on Windows. The step into the target's place is one rename, which the
// file system makes whole or not at all; ReplaceFile would leave a moment without any file.
#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "foundation/buffered_output.h"
#include "foundation/windows_files.h"

namespace foundation::files {
namespace {

constexpr int kMaxNames = 100;
constexpr std::size_t kLongestStem = 200; // leaves room for the rest within 255 characters

// Declared by newer headers only.
constexpr DWORD kDiskQuotaExceeded = 1295;
constexpr auto kFileRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);

[[noreturn]] void throw_write_error(DWORD code, const std::wstring& path) {
    if (is_folder(path)) throw FileError(FileProblem::NotAFile, "It is a folder, not a file.");
    switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_NETWORK_UNREACHABLE:
    case ERROR_HOST_UNREACHABLE:
    case ERROR_NO_NET_OR_BAD_PATH:
    case ERROR_NOT_READY: // a drive without a medium
    case ERROR_DIRECTORY:
        throw FileError(FileProblem::NotFound, "There is no such folder.");
    case ERROR_ACCESS_DENIED:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_LOGON_FAILURE:
        throw FileError(FileProblem::AccessDenied,
                        "Access is denied; check the permissions of the file and its folder.");
    case ERROR_WRITE_PROTECT:
        throw FileError(FileProblem::ReadOnly, "The drive is write-protected.");
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        throw FileError(FileProblem::InUse, "Another program has the file locked.");
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_BUFFER_OVERFLOW:
        throw FileError(FileProblem::PathTooLong, "The path is longer than the system allows.");
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case kDiskQuotaExceeded:
        throw FileError(FileProblem::DiskFull, "The disk is full.");
    case ERROR_FILE_TOO_LARGE:
        throw FileError(FileProblem::WriteFailed, "The file is larger than the system allows.");
    default:
        throw FileError(FileProblem::WriteFailed,
                        "The system cannot write the file (error " + std::to_string(code) + ").");
    }
}

[[noreturn]] void throw_last_error(const std::wstring& path) {
    throw_write_error(::GetLastError(), path);
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kNoImpersonation = SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION;

HANDLE open_existing(const std::wstring& path, DWORD access) {
    return ::CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING,
                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_BACKUP_SEMANTICS | kNoImpersonation,
                         nullptr);
}

/// The path of the file at the end of all links.
std::wstring path_without_links(const std::wstring& path) {
    const Handle file(open_existing(path, 0));
    if (!file.valid()) throw_last_error(path);
    std::wstring final(std::numeric_limits<short>::max(), L'\0');
    const DWORD length = ::GetFinalPathNameByHandleW(
        file.get(), final.data(), static_cast<DWORD>(final.size()), FILE_NAME_NORMALIZED);
    if (length == 0 || length >= final.size()) throw_last_error(path);
    final.resize(length);
    return final;
}

/// Throws when there is something at `path` that cannot be replaced by a file.
void require_replaceable(const std::wstring& path, DWORD attributes) {
    const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
    if (exists && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        throw_write_error(ERROR_ACCESS_DENIED, path);
    if (exists && (attributes & FILE_ATTRIBUTE_READONLY) != 0)
        throw FileError(FileProblem::ReadOnly, "The file is write-protected.");
    // Opening shows what the rename would meet only after everything was written.
    const Handle file(open_existing(path, GENERIC_WRITE | DELETE));
    if (file.valid() && ::GetFileType(file.get()) == FILE_TYPE_DISK) return;
    const DWORD code = ::GetLastError();
    const Handle device(file.valid() ? INVALID_HANDLE_VALUE : open_existing(path, GENERIC_WRITE));
    if (file.valid() || (device.valid() && ::GetFileType(device.get()) != FILE_TYPE_DISK))
        throw FileError(FileProblem::NotAFile, "It is a device or a pipe, not a file.");
    if (exists || code != ERROR_FILE_NOT_FOUND) throw_write_error(code, path);
}

/// The access list of a file; empty when it cannot be read or the drive knows none.
std::vector<char> access_list(const std::wstring& path) {
    DWORD needed = 0;
    ::GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &needed);
    std::vector<char> list(needed);
    if (needed == 0 ||
        !::GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, list.data(), needed, &needed))
        list.clear();
    return list;
}

/// Renames the open file even where others have the target open, if they share its deletion.
bool rename_over_open_file(HANDLE file, const std::wstring& target) {
    const std::size_t name_bytes = target.size() * sizeof(wchar_t);
    std::vector<char> request(sizeof(FILE_RENAME_INFO) + name_bytes);
    auto* info = reinterpret_cast<FILE_RENAME_INFO*>(request.data());
    const DWORD flags = FILE_RENAME_FLAG_REPLACE_IF_EXISTS | FILE_RENAME_FLAG_POSIX_SEMANTICS;
    std::memcpy(request.data(), &flags, sizeof flags); // older headers know its first byte only
    info->FileNameLength = static_cast<DWORD>(name_bytes);
    std::memcpy(info->FileName, target.data(), name_bytes);
    return ::SetFileInformationByHandle(file, kFileRenameInfoEx, info,
                                        static_cast<DWORD>(request.size())) != 0;
}

constexpr std::size_t kUniqueDigits = 8;

/// What the names of files beside `target` begin with.
std::wstring temporary_prefix(const std::wstring& target) {
    const std::size_t name_begin = target.find_last_of(L"\\/") + 1; // 0 without a separator
    return target.substr(0, name_begin) + L"." + target.substr(name_begin, kLongestStem) + L".";
}

/// Removes what processes that died in a save of `target` left beside it. Files that are still
/// being written cannot be removed, since nobody shares them.
void remove_stale_files(const std::wstring& target) {
    const std::wstring prefix = temporary_prefix(target);
    const std::size_t name_begin = prefix.find_last_of(L"\\/") + 1;
    const std::wstring ending = L".tmp";
    WIN32_FIND_DATAW found{};
    const HANDLE search = ::FindFirstFileW(system_path(prefix + L"*" + ending).c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    do {
        const std::wstring name = found.cFileName;
        const std::size_t length = prefix.size() - name_begin;
        if (name.size() == length + kUniqueDigits + ending.size() &&
            name.find_first_not_of(L"0123456789abcdef", length) == length + kUniqueDigits)
            ::DeleteFileW(system_path(prefix.substr(0, name_begin) + name).c_str());
    } while (::FindNextFileW(search, &found) != 0);
    ::FindClose(search);
}

class WindowsOutput final : public BufferedOutput {
  public:
    explicit WindowsOutput(std::wstring target)
        : target_(std::move(target)),
          attributes_(::GetFileAttributesW(target_.c_str())),
          file_(create_temporary()) {
        ::GetFileAttributesExW(target_.c_str(), GetFileExInfoStandard, &before_);
    }

    ~WindowsOutput() override {
        file_.close();
        if (!published_) ::DeleteFileW(temporary_.c_str());
    }

  private:
    static constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

    HANDLE create_temporary() {
        require_replaceable(target_, attributes_);
        remove_stale_files(target_);
        std::random_device random;
        for (int i = 0; i < kMaxNames; ++i) {
            wchar_t unique[16];
            std::swprintf(unique, std::size(unique), L"%08x.tmp", static_cast<unsigned>(random()));
            temporary_ = system_path(temporary_prefix(target_) + unique);
            const HANDLE file =
                ::CreateFileW(temporary_.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                              CREATE_NEW, FILE_ATTRIBUTE_NORMAL | kNoImpersonation, nullptr);
            if (file != INVALID_HANDLE_VALUE) return file;
            if (::GetLastError() != ERROR_FILE_EXISTS) throw_last_error(target_);
        }
        throw_write_error(ERROR_FILE_EXISTS, target_);
    }

    void write_at(std::uint64_t position, const char* bytes, std::size_t count) override {
        while (count > 0) {
            OVERLAPPED place{};
            place.Offset = static_cast<DWORD>(position & 0xFFFFFFFFu);
            place.OffsetHigh = static_cast<DWORD>(position >> 32);
            DWORD put = 0;
            const auto wanted = static_cast<DWORD>(std::min(count, kMostAtOnce));
            if (!::WriteFile(file_.get(), bytes, wanted, &put, &place)) throw_last_error(target_);
            if (put == 0) throw_write_error(ERROR_DISK_FULL, target_);
            position += put;
            bytes += put;
            count -= put;
        }
    }

    void publish() override {
        if (attributes_ != INVALID_FILE_ATTRIBUTES) take_over_permissions();
        if (!::FlushFileBuffers(file_.get())) throw_last_error(target_);
        check_unchanged();
        published_ = rename_over_open_file(file_.get(), full_path(target_));
        file_.close();
        if (!published_ && !::MoveFileExW(temporary_.c_str(), target_.c_str(),
                                          MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            throw_move_error();
        published_ = true;
    }

    /// What somebody else put into the place since the beginning must not be lost.
    void check_unchanged() const {
        WIN32_FILE_ATTRIBUTE_DATA now{};
        if (!::GetFileAttributesExW(target_.c_str(), GetFileExInfoStandard, &now)) return;
        if (attributes_ == INVALID_FILE_ATTRIBUTES || now.nFileSizeLow != before_.nFileSizeLow ||
            now.nFileSizeHigh != before_.nFileSizeHigh ||
            ::CompareFileTime(&now.ftLastWriteTime, &before_.ftLastWriteTime) != 0)
            throw_changed_target();
    }

    /// The system answers "access denied" when somebody has the target open.
    [[noreturn]] void throw_move_error() {
        const DWORD code = ::GetLastError();
        if (code == ERROR_ACCESS_DENIED && !is_folder(target_))
            throw FileError(FileProblem::InUse,
                            "The file cannot be replaced; another program may have it open.");
        throw_write_error(code, target_);
    }

    /// Attributes and access list, as far as the drive has them.
    void take_over_permissions() {
        std::vector<char> list = access_list(target_);
        if (!list.empty())
            ::SetFileSecurityW(temporary_.c_str(), DACL_SECURITY_INFORMATION, list.data());
        constexpr DWORD kKept =
            FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
        if ((attributes_ & kKept) != 0)
            ::SetFileAttributesW(temporary_.c_str(),
                                 (attributes_ & kKept) | FILE_ATTRIBUTE_ARCHIVE);
    }

    std::wstring target_;
    DWORD attributes_; ///< of the target before; INVALID_FILE_ATTRIBUTES for a new file
    WIN32_FILE_ATTRIBUTE_DATA before_{}; ///< the target's size and time of the last change
    std::wstring temporary_;
    Handle file_;
    bool published_ = false;
};

/// The path with which to work: what a link leads to, in a form that may be long.
std::wstring target_path(std::u16string_view path) {
    const std::wstring wide = native_path(path).native();
    // The system would not see what follows a null character and might write another file.
    if (wide.empty() || wide.find(L'\0') != std::wstring::npos)
        throw FileError(FileProblem::NotFound, "There is no such folder.");
    const std::wstring target = system_path(wide);
    const DWORD attributes = ::GetFileAttributesW(target.c_str());
    const bool is_link =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    return is_link ? path_without_links(target) : target;
}

/// Tells files apart: the drive and the number of the file on it. False when there is none.
bool identify(std::u16string_view path, BY_HANDLE_FILE_INFORMATION& information) {
    const Handle file(open_existing(system_path(native_path(path).native()), 0));
    return file.valid() && ::GetFileInformationByHandle(file.get(), &information) != 0;
}

} // namespace

std::unique_ptr<OutputFile> replace_file(std::u16string_view path) {
    return std::make_unique<WindowsOutput>(target_path(path));
}

bool is_same_file(std::u16string_view one, std::u16string_view other) {
    BY_HANDLE_FILE_INFORMATION a{}, b{};
    return identify(one, a) && identify(other, b) &&
           a.dwVolumeSerialNumber == b.dwVolumeSerialNumber &&
           a.nFileIndexHigh == b.nFileIndexHigh && a.nFileIndexLow == b.nFileIndexLow;
}

} // namespace foundation::files
