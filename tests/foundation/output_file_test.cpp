// SPDX-License-Identifier: Apache-2.0
//
// Files that take the place of others: whole or not at all, and nothing is left behind.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#else
#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

#include <gtest/gtest.h>

#include "foundation/output_file.h"
#include "tests/failing_output.h"

namespace foundation::files {
namespace {

namespace fs = std::filesystem;

/// An empty folder of its own, removed at the end.
class Folder {
  public:
    Folder()
        : path_(fs::path(testing::TempDir()) / ("zx" + std::to_string(std::random_device()()))) {
        fs::create_directories(path_);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
        std::error_code ignored;
        fs::permissions(path_, fs::perms::owner_all, ignored);
        fs::remove_all(path_, ignored);
    }

    fs::path at(const std::u16string& name) const { return path_ / native_path(name); }
    std::u16string name_of(const std::u16string& name) const { return at(name).u16string(); }
    const fs::path& path() const { return path_; }

    void put(const std::u16string& name, const std::string& bytes) const {
        std::ofstream(at(name), std::ios::binary) << bytes;
    }
    std::string get(const std::u16string& name) const {
        std::ifstream file(at(name), std::ios::binary);
        if (!file) return "no file";
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(path_))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

  private:
    fs::path path_;
};

using Names = std::vector<std::string>;

void replace(const std::u16string& path, const std::string& bytes) {
    const auto file = replace_file(path);
    file->append(bytes.data(), bytes.size());
    file->commit();
}

std::optional<FileProblem> problem_of_replacing(const std::u16string& path) {
    try {
        replace(path, "new");
    } catch (const FileError& e) {
        EXPECT_STRNE(e.what(), "");
        return e.problem();
    }
    return std::nullopt;
}

TEST(FileReplacement, StepsInWhenItIsCommitted) {
    const Folder folder;
    for (const std::u16string name : {u"new.xlsx", u"b\u00FCch \u20AC \U0001F600.xlsx"})
        for (const std::string& bytes : {std::string("first"), std::string("2"), std::string()}) {
            const std::string before = folder.get(name);
            const auto file = replace_file(folder.name_of(name));
            file->append(bytes.data(), bytes.size());
            EXPECT_EQ(folder.get(name), before);
            file->commit();
            EXPECT_EQ(folder.get(name), bytes);
        }
    EXPECT_EQ(folder.names().size(), 2u);
}

TEST(FileReplacement, LeavesNothingBehindWithoutACommit) {
    const Folder folder;
    folder.put(u"old.xlsx", "old");
    for (const std::u16string name : {u"old.xlsx", u"new.xlsx"}) {
        const auto file = replace_file(folder.name_of(name));
        const std::string bytes(3 << 20, 'x');
        file->append(bytes.data(), bytes.size());
    }
    EXPECT_EQ(folder.names(), Names{"old.xlsx"});
    EXPECT_EQ(folder.get(u"old.xlsx"), "old");
}

TEST(FileReplacement, LeavesATargetAloneThatSomebodyElseHasWritten) {
    const Folder folder;
    folder.put(u"old.xlsx", "old");
    for (const std::u16string name : {u"old.xlsx", u"new.xlsx"}) {
        const auto file = replace_file(folder.name_of(name));
        file->append("mine", 4);
        folder.put(name, "theirs");
        EXPECT_THROW(file->commit(), FileError);
        EXPECT_EQ(folder.get(name), "theirs");
    }
    EXPECT_EQ(folder.names(), (Names{"new.xlsx", "old.xlsx"}));
}

TEST(FileReplacement, KeepsTheOldFileWhicheverOperationFails) {
    const Folder folder;
    folder.put(u"book.xlsx", "old");
    constexpr int kOperations = 4;
    for (int good = 0; good <= kOperations; ++good) {
        SCOPED_TRACE(good);
        const auto save = [&] {
            test::FailingOutput file(replace_file(folder.name_of(u"book.xlsx")), good);
            const std::string block(2 << 20, 'n');
            file.append(block.data(), block.size());
            file.append("tail", 4);
            file.overwrite(0, "new", 3);
            file.commit();
        };
        if (good < kOperations)
            EXPECT_THROW(save(), FileError);
        else
            EXPECT_NO_THROW(save());
        EXPECT_EQ(folder.get(u"book.xlsx").substr(0, 3), good < kOperations ? "old" : "new");
        EXPECT_EQ(folder.names(), Names{"book.xlsx"});
    }
}

TEST(FileReplacement, TakesPiecesOfEverySizeAndChangesThem) {
    const Folder folder;
    std::mt19937 random(7);
    std::string expected, in_memory;
    const auto file = replace_file(folder.name_of(u"a.bin"));
    const auto memory = memory_output(in_memory);
    for (const std::size_t size : {1u, 0u, 700'000u, 400'000u, 1u << 20, 3u << 20, 5u, 900'000u}) {
        const std::string piece(size, static_cast<char>('a' + random() % 26));
        expected += piece;
        for (OutputFile* out : {file.get(), memory.get()}) {
            out->append(piece.data(), piece.size());
            EXPECT_EQ(out->size(), expected.size());
        }
        for (int i = 0; i < 8; ++i) {
            const std::size_t count = random() % std::min<std::size_t>(expected.size(), 2000) + 1;
            // The last bytes too: they may lie on both sides of what has been written.
            const std::size_t room = expected.size() - count;
            const std::size_t at = i == 0 ? room : random() % (room + 1);
            const std::string patch(count, static_cast<char>('A' + random() % 26));
            expected.replace(at, count, patch);
            for (OutputFile* out : {file.get(), memory.get()})
                out->overwrite(at, patch.data(), count);
        }
    }
    const std::string both(200'000, '#'); // reaches back over the edge of the buffer
    expected.replace(expected.size() - 1'000'000, both.size(), both);
    for (OutputFile* out : {file.get(), memory.get()})
        out->overwrite(expected.size() - 1'000'000, both.data(), both.size());
    file->commit();
    memory->commit();
    EXPECT_TRUE(in_memory == expected);
    EXPECT_TRUE(folder.get(u"a.bin") == expected);
}

TEST(FileReplacement, TellsWhyATargetIsRefused) {
    const Folder folder;
    folder.put(u"file", "x");
    fs::create_directory(folder.at(u"folder"));
    const struct {
        std::u16string path;
        FileProblem problem;
    } cases[] = {
        {u"", FileProblem::NotFound},
        {folder.name_of(u"none") + u"/book.xlsx", FileProblem::NotFound},
        {folder.name_of(u"file") + u"/book.xlsx", FileProblem::NotFound},
        {folder.name_of(u"a") + std::u16string(1, u'\0') + u".xlsx", FileProblem::NotFound},
        {folder.name_of(u"folder"), FileProblem::NotAFile},
        {folder.name_of(u"folder") + u"/", FileProblem::NotAFile},
        {folder.name_of(u"folder") + u"/.", FileProblem::NotAFile},
#ifdef _WIN32
        {u"NUL", FileProblem::NotAFile},
        {u"Q:\\book.xlsx", FileProblem::NotFound},
#else
        {u"/dev/null", FileProblem::NotAFile},
        {folder.name_of(std::u16string(300, u'n')), FileProblem::PathTooLong},
#endif
    };
    for (const auto& c : cases)
        EXPECT_EQ(problem_of_replacing(c.path), c.problem) << native_path(c.path);
    EXPECT_EQ(folder.names(), (Names{"file", "folder"}));
}

TEST(FileReplacement, TakesTheLongestNames) {
    const Folder folder;
    // 250 bytes and characters beyond ASCII: the other file's name is cut between characters.
    const std::u16string name = std::u16string(199, u'n') + std::u16string(17, u'\u20AC');
    EXPECT_EQ(problem_of_replacing(folder.name_of(name)), std::nullopt);
    EXPECT_EQ(folder.get(name), "new");
    EXPECT_EQ(folder.names().size(), 1u);
}

TEST(FileReplacement, RemovesOnlyWhatAKilledProcessLeft) {
    const Folder folder;
    const Names others = {".book.xlsx.0000000.tmp", ".book.xlsx.00000000.tmp2",
                          ".book.xlsx.0000000g.tmp", ".other.xlsx.00000000.tmp"};
    for (const std::string& name : others)
        folder.put(std::u16string(name.begin(), name.end()), "other");
    folder.put(u".book.xlsx.00000000.tmp", "stale");
    folder.put(u".book.xlsx.89abcdef.tmp", "stale");
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"book.xlsx")), std::nullopt);
    Names left = others;
    left.push_back("book.xlsx");
    EXPECT_EQ(folder.names(), left);
}

TEST(FileReplacement, ReplacesAFileThatIsOpenForReading) {
#ifdef _WIN32
    GTEST_SKIP() << "older systems need it closed";
#endif
    const Folder folder;
    folder.put(u"book.xlsx", "old");
    const auto reader = open_for_reading(folder.name_of(u"book.xlsx"));
    replace(folder.name_of(u"book.xlsx"), "new");
    char bytes[3];
    EXPECT_EQ(reader->read_at(0, bytes, 3), 3u);
    EXPECT_EQ(std::string(bytes, 3), "old");
    EXPECT_EQ(folder.get(u"book.xlsx"), "new");
}

TEST(FileReplacement, RefusesAWriteProtectedFile) {
    const Folder folder;
    folder.put(u"book.xlsx", "old");
#ifdef _WIN32
    ::SetFileAttributesW(folder.at(u"book.xlsx").c_str(), FILE_ATTRIBUTE_READONLY);
#else
    if (::geteuid() == 0) GTEST_SKIP() << "root may write to everything";
    fs::permissions(folder.at(u"book.xlsx"), fs::perms::owner_read);
#endif
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"book.xlsx")), FileProblem::ReadOnly);
    EXPECT_EQ(folder.get(u"book.xlsx"), "old");
    EXPECT_EQ(folder.names(), Names{"book.xlsx"});
    fs::permissions(folder.at(u"book.xlsx"), fs::perms::owner_all);
}

TEST(IsSameFile, LooksBehindThePath) {
    const Folder folder;
    folder.put(u"one", "x");
    folder.put(u"two", "x");
    const std::u16string one = folder.name_of(u"one");
    EXPECT_TRUE(is_same_file(one, folder.path().u16string() + u"/./one"));
    EXPECT_FALSE(is_same_file(one, folder.name_of(u"two")));
    EXPECT_FALSE(is_same_file(one, folder.name_of(u"none")));
    EXPECT_FALSE(is_same_file(folder.name_of(u"none"), folder.name_of(u"none")));
    fs::create_hard_link(folder.at(u"one"), folder.at(u"three"));
    EXPECT_TRUE(is_same_file(one, folder.name_of(u"three")));
}

#ifdef _WIN32
TEST(FileReplacement, TellsThatAnotherProgramHasTheFileOpen) {
    const Folder folder;
    folder.put(u"book.xlsx", "old");
    const HANDLE other = ::CreateFileW(folder.at(u"book.xlsx").c_str(), GENERIC_READ,
                                       FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"book.xlsx")), FileProblem::InUse);
    ::CloseHandle(other);
    EXPECT_EQ(folder.names(), Names{"book.xlsx"});
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"book.xlsx")), std::nullopt);
}

TEST(FileReplacement, WritesBelowALongPath) {
    const Folder folder;
    const std::wstring deep = L"\\\\?\\" + fs::absolute(folder.path()).make_preferred().native() +
                              L"\\" + std::wstring(120, L'd');
    const std::wstring deeper = deep + L"\\" + std::wstring(120, L'e');
    fs::create_directory(deep);
    fs::create_directory(deeper);
    const std::u16string plain = fs::path(deeper.substr(4) + L"\\book.xlsx").u16string();
    EXPECT_EQ(problem_of_replacing(plain), std::nullopt);
    EXPECT_EQ(problem_of_replacing(plain), std::nullopt);
    EXPECT_EQ(open_for_reading(plain)->size(), 3u);
    EXPECT_TRUE(fs::remove(deeper + L"\\book.xlsx"));
    EXPECT_TRUE(fs::remove(deeper)) << "nothing else was left in it";
    fs::remove(deep);
}

TEST(FileReplacement, KeepsAttributes) {
    const Folder folder;
    folder.put(u"book.xlsx", "old");
    ::SetFileAttributesW(folder.at(u"book.xlsx").c_str(), FILE_ATTRIBUTE_HIDDEN);
    replace(folder.name_of(u"book.xlsx"), "new");
    EXPECT_NE(::GetFileAttributesW(folder.at(u"book.xlsx").c_str()) & FILE_ATTRIBUTE_HIDDEN, 0u);
}
#else
mode_t mode_of(const fs::path& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

TEST(FileReplacement, KeepsPermissionsAndGivesNewFilesTheUsualOnes) {
    const Folder folder;
    const mode_t umask_before = ::umask(027);
    replace(folder.name_of(u"new.xlsx"), "new");
    ::umask(umask_before);
    EXPECT_EQ(mode_of(folder.at(u"new.xlsx")), 0640u);
    for (const mode_t mode : {0600u, 0644u, 0666u, 0755u, 0777u}) {
        ASSERT_EQ(::chmod(folder.at(u"new.xlsx").c_str(), mode), 0);
        replace(folder.name_of(u"new.xlsx"), "again");
        EXPECT_EQ(mode_of(folder.at(u"new.xlsx")), mode);
    }
    if (::geteuid() != 0) return;
    ASSERT_EQ(::chown(folder.at(u"new.xlsx").c_str(), 1234, 4321), 0);
    replace(folder.name_of(u"new.xlsx"), "again");
    struct stat status {};
    ::stat(folder.at(u"new.xlsx").c_str(), &status);
    EXPECT_EQ(status.st_uid, 1234u);
    EXPECT_EQ(status.st_gid, 4321u);
}

TEST(FileReplacement, ShowsAReplacementToItsOwnerOnly) {
    const Folder folder;
    folder.put(u"secret.xlsx", "old");
    ASSERT_EQ(::chmod(folder.at(u"secret.xlsx").c_str(), 0644), 0);
    const auto file = replace_file(folder.name_of(u"secret.xlsx"));
    for (const std::string& name : folder.names()) // none but its own where it has no name yet
        EXPECT_EQ(mode_of(folder.path() / name), name[0] == '.' ? 0600u : 0644u);
}

TEST(FileReplacement, FollowsSymbolicLinks) {
    const Folder folder;
    fs::create_directory(folder.at(u"real"));
    folder.put(u"real/book.xlsx", "old");
    const struct {
        std::u16string link, leads_to;
        std::u16string file;
    } cases[] = {
        {u"relative", u"real/book.xlsx", u"real/book.xlsx"},
        {u"absolute", folder.name_of(u"real/book.xlsx"), u"real/book.xlsx"},
        {u"two_steps", u"relative", u"real/book.xlsx"},
        {u"to_a_new_file", u"real/new.xlsx", u"real/new.xlsx"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(native_path(c.link));
        fs::create_symlink(native_path(c.leads_to), folder.at(c.link));
        const std::string bytes = "through " + native_path(c.link).string();
        replace(folder.name_of(c.link), bytes);
        EXPECT_TRUE(fs::is_symlink(folder.at(c.link)));
        EXPECT_EQ(folder.get(c.file), bytes);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.at(u"real")), {}), 2);
    fs::create_symlink("loop", folder.at(u"loop"));
    fs::create_symlink("no folder/book.xlsx", folder.at(u"lost"));
    fs::create_symlink("real", folder.at(u"to_a_folder"));
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"loop")), FileProblem::NotFound);
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"lost")), FileProblem::NotFound);
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"to_a_folder")), FileProblem::NotAFile);
}

TEST(FileReplacement, RefusesAFolderThatTakesNoFiles) {
    if (::geteuid() == 0) GTEST_SKIP() << "root may write to everything";
    const Folder folder;
    folder.put(u"book.xlsx", "old");
    fs::permissions(folder.path(), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(problem_of_replacing(folder.name_of(u"book.xlsx")), FileProblem::AccessDenied);
    EXPECT_EQ(folder.get(u"book.xlsx"), "old");
}

/// The system's own refusal to write more, as of a full disk.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }

  private:
    void (*handler_)(int);
    rlimit before_{};
};

TEST(FileReplacement, KeepsTheOldFileWhenTheSystemWritesNoMore) {
    const Folder folder;
    folder.put(u"book.xlsx", "old");
    const std::string half(600'000, 'x');
    for (const rlim_t limit : {0u, 100u, 1'000'000u, 1'500'000u}) {
        const FileSizeLimit guard(limit);
        try {
            const auto file = replace_file(folder.name_of(u"book.xlsx"));
            for (int i = 0; i < 3; ++i)
                file->append(half.data(), half.size());
            file->commit();
            ADD_FAILURE() << "no error at " << limit;
        } catch (const FileError& e) {
            EXPECT_EQ(e.problem(), FileProblem::WriteFailed);
        }
    }
    EXPECT_EQ(folder.get(u"book.xlsx"), "old");
    EXPECT_EQ(folder.names(), Names{"book.xlsx"});
}
#endif

} // namespace
} // namespace foundation::files
