// SPDX-License-Identifier: Apache-2.0
//
// Files that replace others on POSIX systems. The folder stays open, so that the new file reaches
// its place even when the folder is renamed meanwhile.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
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

/// The path at the end of all symbolic links that its last component leads through, whether or not
/// there is a file.
std::filesystem::path without_links(std::filesystem::path path) {
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

constexpr std::string_view kTemporaryEnding = ".tmp";
constexpr std::size_t kUniqueDigits = 8;

/// The beginning of a name that is not too long, without half a character.
std::string_view stem(std::string_view name) {
    if (name.size() <= kLongestStem) return name;
    std::size_t end = kLongestStem;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}

/// What the names of files beside `name` begin with: ".book.xlsx.0123abcd.tmp".
std::string temporary_prefix(std::string_view name) {
    return "." + std::string(stem(name)) + ".";
}

bool is_temporary_name(std::string_view name, std::string_view prefix) {
    if (name.size() != prefix.size() + kUniqueDigits + kTemporaryEnding.size() ||
        !name.starts_with(prefix) || !name.ends_with(kTemporaryEnding))
        return false;
    const std::string_view digits = name.substr(prefix.size(), kUniqueDigits);
    return digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
}

/// Whoever writes such a file has it locked, so what can be locked was left by a process that died.
void remove_if_stale(int folder, const char* name) {
    constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
    const Descriptor file(::openat(folder, name, kFlags));
    struct stat status {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_uid != ::geteuid() || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0)
        return;
    ::unlinkat(folder, name, 0);
}

/// Removes what processes that died in a save of `name` left in the folder, if it can be listed.
void remove_stale_files(int folder, std::string_view name) {
    const int listed = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (listed < 0) return;
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(listed), ::closedir);
    if (entries == nullptr) {
        ::close(listed);
        return;
    }
    const std::string prefix = temporary_prefix(name);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody else reads from this list
    while (const dirent* entry = ::readdir(entries.get()))
        if (is_temporary_name(entry->d_name, prefix)) remove_if_stale(folder, entry->d_name);
}

class PosixOutput final : public BufferedOutput {
  public:
    explicit PosixOutput(const std::filesystem::path& target)
        : folder_(open_folder(target.parent_path())),
          name_(target.filename().native()),
          replaced_(replaceable_file(folder_.get(), name_)),
          file_(create_temporary()) {
        remove_stale_files(folder_.get(), name_);
    }

    ~PosixOutput() override {
        if (!published_ && !temporary_.empty()) ::unlinkat(folder_.get(), temporary_.c_str(), 0);
    }

  private:
    static constexpr std::size_t kMostAtOnce = std::size_t{1} << 30;

    /// Nobody else may see a replacement before it has the permissions of the file it replaces; a
    /// new file gets from the system what every new file gets.
    int create_temporary() {
        const mode_t mode = replaced_ ? S_IRUSR | S_IWUSR : 0666;
        int file = create_unnamed(mode);
        if (file < 0)
            file = with_new_name([&] {
                constexpr int kFlags = O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
                return ::openat(folder_.get(), temporary_.c_str(), kFlags, mode);
            });
        ::flock(file, LOCK_EX | LOCK_NB); // see `remove_if_stale`
        return file;
    }

    /// A file that is gone when its process is; negative where the file system has none, or where
    /// it could not be given a name later.
    int create_unnamed([[maybe_unused]] mode_t mode) const {
#ifdef O_TMPFILE
        const int file = ::openat(folder_.get(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
        if (file < 0 || ::access(link_to(file).c_str(), F_OK) == 0) return file;
        ::close(file);
#endif
        return -1;
    }

    /// A path that leads to an open file without a name.
    static std::string link_to(int file) {
        return "/proc/self/fd/" + std::to_string(file);
    }

    /// Sets `temporary_` to a name that is free: one with which `create` returns no error.
    template <class Create>
    int with_new_name(Create create) {
        std::random_device random;
        int code = EEXIST;
        for (int i = 0; i < kMaxNames && code == EEXIST; ++i) {
            char unique[kUniqueDigits + 1];
            std::snprintf(unique, sizeof unique, "%08x", static_cast<unsigned>(random()));
            temporary_ = temporary_prefix(name_).append(unique).append(kTemporaryEnding);
            const int result = create();
            if (result >= 0) return result;
            code = errno;
        }
        temporary_.clear();
        throw_write_error(code);
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
        if (temporary_.empty())
            with_new_name([this] {
                return ::linkat(AT_FDCWD, link_to(file_.get()).c_str(), folder_.get(),
                                temporary_.c_str(), AT_SYMLINK_FOLLOW);
            });
        check_unchanged();
        if (::renameat(folder_.get(), temporary_.c_str(), folder_.get(), name_.c_str()) != 0)
            throw_write_error(errno);
        published_ = true;
        // The file has its new content; that a folder cannot be synchronised does not change that.
        ::fsync(folder_.get());
    }

    /// What somebody else put into the place since the beginning must not be lost. Numbers of
    /// files are not compared: some file systems give a file another one.
    void check_unchanged() const {
        struct stat now {};
        if (::fstatat(folder_.get(), name_.c_str(), &now, 0) != 0) return;
        if (!replaced_ || now.st_size != replaced_->st_size ||
            now.st_mtim.tv_sec != replaced_->st_mtim.tv_sec ||
            now.st_mtim.tv_nsec != replaced_->st_mtim.tv_nsec)
            throw_changed_target();
    }

    void take_over_permissions() {
        mode_t mode = replaced_->st_mode & 07777;
        const bool is_own = replaced_->st_uid == ::geteuid() ||
                            ::fchown(file_.get(), replaced_->st_uid, static_cast<gid_t>(-1)) == 0;
        const bool is_of_group =
            ::fchown(file_.get(), static_cast<uid_t>(-1), replaced_->st_gid) == 0;
        // A new owner or group must not get what was granted to the old one.
        if (!is_own) mode &= ~static_cast<mode_t>(S_ISUID);
        if (!is_of_group)
            mode = (mode & ~static_cast<mode_t>(S_ISGID | S_IRWXG)) | (mode & S_IRWXO) << 3;
        if (::fchmod(file_.get(), mode) != 0) throw_write_error(errno);
    }

    static constexpr std::uint64_t kLastPosition = std::numeric_limits<off_t>::max();

    Descriptor folder_;
    std::string name_;
    std::optional<struct stat> replaced_;
    std::string temporary_; ///< empty while the file has no name
    Descriptor file_;
    bool published_ = false;
};

} // namespace

std::unique_ptr<OutputFile> replace_file(std::u16string_view path) {
    // The system would not see what follows a null character and might write another file.
    if (path.empty() || path.find(u'\0') != std::u16string_view::npos) throw_write_error(ENOENT);
    return std::make_unique<PosixOutput>(without_links(native_path(path)));
}

bool is_same_file(std::u16string_view one, std::u16string_view other) {
    struct stat a {
    }, b{};
    return ::stat(native_path(one).c_str(), &a) == 0 &&
           ::stat(native_path(other).c_str(), &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}

} // namespace foundation::files
