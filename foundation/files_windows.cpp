// SPDX-License-Identifier: Apache-2.0
//
// Opening and reading files on Windows.
#include <algorithm>
#include <limits>
#include <string>

#include "foundation/files.h"
#include "foundation/windows_files.h"

namespace foundation::files {
namespace {

[[noreturn]] void throw_open_error(DWORD code, const std::wstring& path) {
    // The system's answer for a folder is one of several, with a separator at its end another.
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
        throw FileError(FileProblem::NotFound, "There is no such file.");
    case ERROR_ACCESS_DENIED:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_LOGON_FAILURE:
        throw FileError(FileProblem::AccessDenied, "Access is denied; check the permissions.");
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        throw FileError(FileProblem::InUse, "Another program has the file locked.");
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_BUFFER_OVERFLOW:
        throw FileError(FileProblem::PathTooLong, "The path is longer than the system allows.");
    default:
        throw FileError(FileProblem::ReadFailed,
                        "The system cannot open the file (error " + std::to_string(code) + ").");
    }
}

/// The path may name a pipe, whose server must not act in the name of whoever opens it.
HANDLE open_shared(const std::wstring& path) {
    return ::CreateFileW(
        path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION,
        nullptr);
}

class WindowsFile : public RandomAccessFile {
  public:
    explicit WindowsFile(const std::wstring& path) : file_(open_shared(path)) {
        if (!file_.valid()) throw_open_error(::GetLastError(), path);
        if (::GetFileType(file_.get()) != FILE_TYPE_DISK)
            throw FileError(FileProblem::NotAFile, "It is a device or a pipe, not a file.");
        LARGE_INTEGER size;
        if (!::GetFileSizeEx(file_.get(), &size)) throw_open_error(::GetLastError(), path);
        size_ = static_cast<std::uint64_t>(size.QuadPart);
    }

    std::uint64_t size() const override { return size_; }

    std::size_t read_at(std::uint64_t position, char* buffer, std::size_t count) override {
        std::size_t done = 0;
        while (done < count && position + done <= kLastPosition) {
            const DWORD got = read_once(position + done, buffer + done, count - done);
            if (got == 0) break;
            done += got;
        }
        return done;
    }

  private:
    static constexpr std::uint64_t kLastPosition = std::numeric_limits<LONGLONG>::max();
    static constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

    DWORD read_once(std::uint64_t position, char* buffer, std::size_t count) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(position & 0xFFFFFFFFu);
        place.OffsetHigh = static_cast<DWORD>(position >> 32);
        DWORD got = 0;
        const auto wanted = static_cast<DWORD>(std::min(count, kMostAtOnce));
        if (::ReadFile(file_.get(), buffer, wanted, &got, &place)) return got;
        const DWORD code = ::GetLastError();
        if (code == ERROR_HANDLE_EOF) return 0;
        if (code == ERROR_LOCK_VIOLATION)
            throw FileError(FileProblem::InUse, "Another program has a part of the file locked.");
        throw FileError(FileProblem::ReadFailed,
                        "The system cannot read the file (error " + std::to_string(code) + ").");
    }

    Handle file_;
    std::uint64_t size_ = 0;
};

} // namespace

std::unique_ptr<RandomAccessFile> open_for_reading(std::u16string_view path) {
    const std::wstring wide = native_path(path).native();
    // Behind a null character the system would not see the rest and might open another file.
    if (wide.empty() || wide.find(L'\0') != std::wstring::npos)
        throw FileError(FileProblem::NotFound, "There is no such file.");
    return std::make_unique<WindowsFile>(system_path(wide));
}

} // namespace foundation::files
