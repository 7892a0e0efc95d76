// SPDX-License-Identifier: Apache-2.0
//
// Opening and reading files on POSIX systems.
#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/descriptor.h"
#include "foundation/files.h"

namespace foundation::files {
namespace {

[[noreturn]] void throw_open_error(int code) {
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        throw FileError(FileProblem::NotFound, "There is no such file.");
    case EISDIR:
        throw FileError(FileProblem::NotAFile, "It is a folder, not a file.");
    case EACCES:
    case EPERM:
        throw FileError(FileProblem::AccessDenied, "Access is denied; check the permissions.");
    case EBUSY:
    case ETXTBSY:
    case EAGAIN:
        throw FileError(FileProblem::InUse, "Another program has the file locked.");
    case ENAMETOOLONG:
        throw FileError(FileProblem::PathTooLong, "The path is longer than the system allows.");
    default:
        throw FileError(FileProblem::ReadFailed, "The system cannot open the file (" +
                                                     std::generic_category().message(code) + ").");
    }
}

class PosixFile : public RandomAccessFile {
  public:
    explicit PosixFile(const char* path)
        // Without O_NONBLOCK a named pipe would wait for its writer.
        : file_(::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
        if (file_.get() < 0) throw_open_error(errno);
        struct stat status {};
        if (::fstat(file_.get(), &status) != 0) throw_open_error(errno);
        if (S_ISDIR(status.st_mode)) throw_open_error(EISDIR);
        if (!S_ISREG(status.st_mode))
            throw FileError(FileProblem::NotAFile, "It is a device or a pipe, not a file.");
        size_ = static_cast<std::uint64_t>(status.st_size);
    }

    std::uint64_t size() const override { return size_; }

    std::size_t read_at(std::uint64_t position, char* buffer, std::size_t count) override {
        std::size_t done = 0;
        while (done < count && position + done <= kLastPosition) {
            const ssize_t got =
                ::pread(file_.get(), buffer + done, std::min(count - done, kMostAtOnce),
                        static_cast<off_t>(position + done));
            if (got == 0) break;
            if (got > 0)
                done += static_cast<std::size_t>(got);
            else if (errno != EINTR)
                throw FileError(FileProblem::ReadFailed,
                                "The system cannot read the file (" +
                                    std::generic_category().message(errno) + ").");
        }
        return done;
    }

  private:
    static constexpr std::uint64_t kLastPosition = std::numeric_limits<off_t>::max();
    static constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

    Descriptor file_;
    std::uint64_t size_ = 0;
};

} // namespace

std::unique_ptr<RandomAccessFile> open_for_reading(std::u16string_view path) {
    // Behind a null character the system would not see the rest and might open another file.
    if (path.empty() || path.find(u'\0') != std::u16string_view::npos) throw_open_error(ENOENT);
    return std::make_unique<PosixFile>(native_path(path).c_str());
}

} // namespace foundation::files
