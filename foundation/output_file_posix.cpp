// SPDX-License-Identifier: Apache-2.0
//
// Files that replace others on POSIX systems. The folder stays open, so that the new file reaches
// its place even when the folder is renamed meanwhile.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/buffered_output.h"
#include "foundation/descriptor.h"

namespace foundation::files {
namespace {

constexpr int kMaxLinks = 40;
constexpr int kMaxNames = 100;
constexpr std::size_t kLongestStem = 200; // leaves room for the rest within 255 bytes

#ifdef O_PATH
constexpr int kFolderWithoutReading = O_PATH;
#else
constexpr int kFolderWithoutReading = O_RDONLY;
#endif

[[noreturn]] void throw_write_error(int code) {
    switch (code) {
    case ENOENT:
    case ENOTDIR:
        throw FileError(FileProblem::NotFound, "There is no such folder.");
    case EISDIR:
        throw FileError(FileProblem::NotAFile, "It is a folder, not a file.");
    case EACCES:
    case EPERM:
        throw FileError(FileProblem::AccessDenied,
                        "Access is denied; check the permissions of the file and its folder.");
    case EROFS:
        throw FileError(FileProblem::ReadOnly, "The drive is write-protected.");
    case EBUSY:
    case ETXTBSY:
    case EAGAIN:
        throw FileError(FileProblem::InUse, "Another program has the file locked.");
    case ENAMETOOLONG:
        throw FileError(FileProblem::PathTooLong, "The path is longer than the system allows.");
    case ELOOP:
        throw FileError(FileProblem::NotFound, "The path is a loop of symbolic links.");
    case ENOSPC:
    case EDQUOT:
        throw FileError(FileProblem::DiskFull, "The disk is full.");
    case EFBIG:
        throw FileError(FileProblem::WriteFailed, "The file is larger than the system allows.");
    default:
        throw FileError(FileProblem::WriteFailed, "The system cannot write the file (" +
                                                      std::generic_category().message(code) + ").");
    }
}

/// The path behind all symbolic links that its last component leads through, whether or not there
/// is a file.
std::filesystem::path behind_links(std::filesystem::path path) {
    for (int i = 0; i < kMaxLinks; ++i) {
        std::error_code problem;
        const auto status = std::filesystem::symlink_status(path, problem);
        if (!std::filesystem::is_symlink(status)) return path;
        const std::filesystem::path link = std::filesystem::read_symlink(path, problem);
        if (problem) throw_write_error(problem.value());
        path = path.parent_path() / link; // an absolute link takes the place of the whole path
    }
    throw_write_error(ELOOP);
}

int open_folder(std::filesystem::path folder) {
    if (folder.empty()) folder = ".";
    constexpr int kFlags = O_DIRECTORY | O_CLOEXEC;
    int opened = ::open(folder.c_str(), O_RDONLY | kFlags);
    if (opened < 0 && errno == EACCES)
        opened = ::open(folder.c_str(), kFolderWithoutReading | kFlags);
    if (opened < 0) throw_write_error(errno);
    return opened;
}

/// The file of that name in the folder, if there is one; throws when it cannot be replaced.
std::optional<struct stat> replaceable_file(int folder, const std::string& name) {
    if (name.empty() || name == "." || name == "..") throw_write_error(EISDIR);
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, 0) != 0) {
        if (errno != ENOENT) throw_write_error(errno);
        return std::nullopt;
    }
    if (S_ISDIR(status.st_mode)) throw_write_error(EISDIR);
    if (!S_ISREG(status.st_mode))
        throw FileError(FileProblem::NotAFile, "It is a device or a pipe, not a file.");
    if (::faccessat(folder, name.c_str(), W_OK, AT_EACCESS) != 0) {
        if (errno != EACCES && errno != EPERM) throw_write_error(errno);
        throw FileError(FileProblem::ReadOnly, "The file is write-protected.");
    }
    return status;
}

/// The beginning of a name that is not too long, without half a character.
std::string_view stem(std::string_view name) {
    if (name.size() <= kLongestStem) return name;
    std::size_t end = kLongestStem;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}

class PosixOutput final : public BufferedOutput {
  public:
    explicit PosixOutput(const std::filesystem::path& target)
        : folder_(open_folder(target.parent_path())),
          name_(target.filename().native()),
          replaced_(replaceable_file(folder_.get(), name_)),
          file_(create_temporary()) {}

    ~PosixOutput() override {
        if (!published_) ::unlinkat(folder_.get(), temporary_.c_str(), 0);
    }

  private:
    static constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

    /// Nobody else may see a replacement before it has the permissions of the file it replaces; a
    /// new file gets from the system what every new file gets.
    int create_temporary() {
        const mode_t mode = replaced_ ? S_IRUSR | S_IWUSR : 0666;
        std::random_device random;
        for (int i = 0; i < kMaxNames; ++i) {
            char unique[16];
            std::snprintf(unique, sizeof unique, ".%08x.tmp", static_cast<unsigned>(random()));
            temporary_ = "." + std::string(stem(name_)) + unique;
            constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
            const int file = ::openat(folder_.get(), temporary_.c_str(), kFlags, mode);
            if (file >= 0) return file;
            if (errno != EEXIST) throw_write_error(errno);
        }
        throw_write_error(EEXIST);
    }

    void write_at(std::uint64_t position, const char* bytes, std::size_t count) override {
        if (position > kLastPosition || count > kLastPosition - position) throw_write_error(EFBIG);
        while (count > 0) {
            const ssize_t put = ::pwrite(file_.get(), bytes, std::min(count, kMostAtOnce),
                                         static_cast<off_t>(position));
            if (put < 0 && errno == EINTR) continue;
            if (put <= 0) throw_write_error(put == 0 ? ENOSPC : errno);
            position += static_cast<std::uint64_t>(put);
            bytes += put;
            count -= static_cast<std::size_t>(put);
        }
    }

    void publish() override {
        if (replaced_) take_over_permissions();
        if (::fsync(file_.get()) != 0) throw_write_error(errno);
        if (::renameat(folder_.get(), temporary_.c_str(), folder_.get(), name_.c_str()) != 0)
            throw_write_error(errno);
        published_ = true;
        // The file has its new content; that a folder cannot be synchronised does not change that.
        ::fsync(folder_.get());
    }

    void take_over_permissions() {
        mode_t mode = replaced_->st_mode & 07777;
        const bool is_own = replaced_->st_uid == ::geteuid() ||
                            ::fchown(file_.get(), replaced_->st_uid, static_cast<gid_t>(-1)) == 0;
        const bool is_of_group =
            ::fchown(file_.get(), static_cast<uid_t>(-1), replaced_->st_gid) == 0;
        // A new owner or group must not get what was granted to the old one.
        if (!is_own) mode &= ~static_cast<mode_t>(S_ISUID);
        if (!is_of_group) mode = (mode & ~(S_ISGID | S_IRWXG)) | (mode & S_IRWXO) << 3;
        if (::fchmod(file_.get(), mode) != 0) throw_write_error(errno);
    }

    static constexpr std::uint64_t kLastPosition = std::numeric_limits<off_t>::max();

    Descriptor folder_;
    std::string name_;
    std::optional<struct stat> replaced_;
    std::string temporary_;
    Descriptor file_;
    bool published_ = false;
};

} // namespace

std::unique_ptr<OutputFile> replace_file(std::u16string_view path) {
    // Behind a null character the system would not see the rest and might write another file.
    if (path.empty() || path.find(u'\0') != std::u16string_view::npos) throw_write_error(ENOENT);
    return std::make_unique<PosixOutput>(behind_links(native_path(path)));
}

bool is_same_file(std::u16string_view one, std::u16string_view other) {
    struct stat a {
    }, b{};
    return ::stat(native_path(one).c_str(), &a) == 0 &&
           ::stat(native_path(other).c_str(), &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

} // namespace foundation::files
