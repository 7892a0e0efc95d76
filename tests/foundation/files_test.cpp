// SPDX-License-Identifier: Apache-2.0
//
// Opening, reading at positions, parts of paths.
#include <algorithm>
#include <fstream>
#include <optional>
#include <random>
#include <string>
#include <vector>

#ifdef _WIN32
#include <windows.h>
#endif

#include <gtest/gtest.h>

#include "foundation/files.h"

namespace foundation::files {
namespace {

std::u16string path_in_temp(const std::u16string& name) {
    return (std::filesystem::path(testing::TempDir()) / native_path(name)).u16string();
}

std::u16string write_file(const std::u16string& name, const std::string& bytes) {
    const std::u16string path = path_in_temp(name);
    std::ofstream(native_path(path), std::ios::binary) << bytes;
    return path;
}

std::optional<FileProblem> problem_of_opening(const std::u16string& path) {
    try {
        open_for_reading(path);
    } catch (const FileError& e) {
        EXPECT_STRNE(e.what(), "");
        return e.problem();
    }
    return std::nullopt;
}

#ifdef _WIN32
const std::u16string kDevice = u"NUL";
// The system drops dots at the end of a name.
constexpr std::optional<FileProblem> kDotAtEnd = std::nullopt;
#else
const std::u16string kDevice = u"/dev/null";
constexpr std::optional<FileProblem> kDotAtEnd = FileProblem::NotFound;
#endif

TEST(OpenForReading, TellsWhyAFileCannotBeOpened) {
    const std::u16string file = write_file(u"zx_files_test.txt", "x");
    const std::u16string missing(300, u'n');
    const struct {
        std::u16string path;
        std::optional<FileProblem> problem;
    } cases[] = {
        {file, std::nullopt},
        {u"", FileProblem::NotFound},
        {path_in_temp(u"no such file"), FileProblem::NotFound},
        {file + u"/below a file", FileProblem::NotFound},
        {file + std::u16string(1, u'\0') + u".xlsx", FileProblem::NotFound},
        {file + u".", kDotAtEnd},
        {path_in_temp(u""), FileProblem::NotAFile},
        {path_in_temp(u"."), FileProblem::NotAFile},
        {kDevice, FileProblem::NotAFile},
        {std::u16string(u"lone \xD800 surrogate"), FileProblem::NotFound},
        // Drives and servers that are not there; elsewhere names of files that are not there.
        {u"Q:\\folder\\book.xlsx", FileProblem::NotFound},
        {u"Q:/folder/book.xlsx", FileProblem::NotFound},
        {u"Q:book.xlsx", FileProblem::NotFound},
        {u"\\\\server.invalid\\share\\book.xlsx", FileProblem::NotFound},
        {u"//server.invalid/share/book.xlsx", FileProblem::NotFound},
        {u"\\\\?\\Q:\\folder\\book.xlsx", FileProblem::NotFound},
        {u"what?.xlsx", FileProblem::NotFound},
        {u"a:b:c.xlsx", FileProblem::NotFound},
#ifdef _WIN32
        {u"nul", FileProblem::NotAFile},
        {path_in_temp(u"NUL"), FileProblem::NotAFile},
        {u"\\\\.\\NUL", FileProblem::NotAFile},
#else
        {path_in_temp(missing), FileProblem::PathTooLong},
#endif
    };
    for (const auto& c : cases)
        EXPECT_EQ(problem_of_opening(c.path), c.problem) << native_path(c.path);
    std::filesystem::remove(native_path(file));
}

void expect_reads(RandomAccessFile& file, const std::string& bytes) {
    const struct {
        std::uint64_t position;
        std::size_t count;
        std::string expected;
    } cases[] = {
        {0, 3, bytes.substr(0, 3)},
        {4, 100, bytes.substr(4)},
        {bytes.size(), 5, ""},
        {bytes.size() + 1, 5, ""},
        {~std::uint64_t{0}, 5, ""},
        {std::uint64_t{1} << 63, 5, ""},
        {2, 0, ""},
    };
    EXPECT_EQ(file.size(), bytes.size());
    for (const auto& c : cases) {
        std::string buffer(c.count, '?');
        const std::size_t got = file.read_at(c.position, buffer.data(), c.count);
        EXPECT_EQ(buffer.substr(0, got), c.expected) << c.position;
    }
}

TEST(RandomAccessFile, ReadsAtAnyPosition) {
    const std::string bytes("zero\0one two\n", 13);
    const std::u16string path = write_file(u"zx_\u00E9\u20AC_\U0001F600.bin", bytes);
    expect_reads(*open_for_reading(path), bytes);
    expect_reads(*memory_file(bytes), bytes);
    std::filesystem::remove(native_path(path));
}

/// A new folder whose path is longer than old interfaces of Windows take; removed at the end.
class DeepFolder {
  public:
    DeepFolder()
        : top_(std::filesystem::path(testing::TempDir()) / std::to_string(std::random_device()())) {
        std::filesystem::create_directories(unlimited(path()));
    }
    DeepFolder(const DeepFolder&) = delete;
    DeepFolder& operator=(const DeepFolder&) = delete;
    ~DeepFolder() {
        // From the inside out: the standard library of GCC 12 cannot list such a folder on Windows.
        std::error_code ignored;
        for (auto folder = path(); folder != top_.parent_path(); folder = folder.parent_path())
            std::filesystem::remove(unlimited(folder), ignored);
    }

    std::filesystem::path path() const { return top_ / kName / kName / kName; }

    /// The form in which the standard library can handle it.
    static std::filesystem::path unlimited(const std::filesystem::path& path) {
#ifdef _WIN32
        return L"\\\\?\\" + std::filesystem::absolute(path).make_preferred().native();
#else
        return path;
#endif
    }

  private:
    inline static const std::string kName = std::string(120, 'd');
    std::filesystem::path top_;
};

TEST(OpenForReading, TakesEveryFormOfAPath) {
    const DeepFolder deep;
    const std::u16string folder = deep.path().u16string();
    const std::u16string name = u"b\u00FCch \u20AC \U0001F600.xlsx";
    ASSERT_GT(folder.size(), 360u);
    std::ofstream(DeepFolder::unlimited(deep.path() / native_path(name)), std::ios::binary) << "x";
    std::vector<std::u16string> paths = {folder + u"/" + name, folder + u"//./" + name,
                                         folder + u"/../" + std::u16string(120, u'd') + u"/" +
                                             name};
#ifdef _WIN32
    std::u16string backward = folder + u"/" + name;
    std::replace(backward.begin(), backward.end(), u'/', u'\\');
    paths.push_back(backward);
    paths.push_back(DeepFolder::unlimited(native_path(backward)).u16string());
    paths.push_back(folder + u"\\" + name + u".. ");
    const std::u16string absolute = std::filesystem::absolute(native_path(backward)).u16string();
    std::u16string forward = absolute;
    std::replace(forward.begin(), forward.end(), u'\\', u'/');
    paths.push_back(u"\\\\.\\" + absolute);
    paths.push_back(u"//./" + forward);
    paths.push_back(u"//?/" + forward);
#endif
    for (const auto& path : paths) {
        SCOPED_TRACE(native_path(path));
        EXPECT_EQ(problem_of_opening(path), std::nullopt);
    }
    EXPECT_EQ(problem_of_opening(folder), FileProblem::NotAFile);
    EXPECT_EQ(problem_of_opening(folder + u"/none"), FileProblem::NotFound);
}

TEST(OpenForReading, SharesTheFileWithWritersAndRemovers) {
    const std::u16string path = write_file(u"zx_shared.bin", "before");
    std::ofstream writer(native_path(path), std::ios::binary | std::ios::app);
    const auto file = open_for_reading(path);
    writer << "after" << std::flush;
    EXPECT_TRUE(writer);
    writer.close();
    EXPECT_EQ(file->size(), 6u) << "the size when it was opened";
    EXPECT_TRUE(std::filesystem::remove(native_path(path)));
    char bytes[6];
    EXPECT_EQ(file->read_at(0, bytes, sizeof bytes), 6u);
}

#ifdef _WIN32
TEST(OpenForReading, TellsThatAnotherProgramLocksTheFile) {
    const std::u16string path = write_file(u"zx_locked.bin", "x");
    const struct {
        unsigned long shared;
        std::optional<FileProblem> problem;
    } cases[] = {
        {0, FileProblem::InUse},
        {FILE_SHARE_WRITE, FileProblem::InUse},
        {FILE_SHARE_READ, std::nullopt},
    };
    for (const auto& c : cases) {
        const HANDLE other =
            ::CreateFileW(native_path(path).c_str(), GENERIC_READ | GENERIC_WRITE, c.shared,
                          nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        ASSERT_NE(other, INVALID_HANDLE_VALUE);
        EXPECT_EQ(problem_of_opening(path), c.problem) << c.shared;
        ::CloseHandle(other);
    }
    std::filesystem::remove(native_path(path));
}
#endif

TEST(Path, IsTakenApartAtItsLastComponent) {
    const struct {
        std::u16string path, file_name, extension;
    } cases[] = {
        {u"/a/b.c/data.XLSX", u"data.XLSX", u"XLSX"},
        {u"data", u"data", u""},
        {u"a.b/data", u"data", u""},
        {u"data.tar.gz", u"data.tar.gz", u"gz"},
        {u".xlsx", u".xlsx", u"xlsx"},
        {u"data.", u"data.", u""},
        {u"folder.x/", u"", u""},
        {u"", u"", u""},
#ifdef _WIN32
        {u"C:\\a.b\\data.xls", u"data.xls", u"xls"},
        {u"C:\\a.b/data", u"data", u""},
        {u"\\\\server\\share.d\\data.xlsx", u"data.xlsx", u"xlsx"},
        {u"C:data.xlsx", u"data.xlsx", u"xlsx"},
#else
        {u"a\\b.xls", u"a\\b.xls", u"xls"},
#endif
    };
    for (const auto& c : cases) {
        EXPECT_EQ(file_name(c.path), c.file_name);
        EXPECT_EQ(extension(c.path), c.extension);
    }
}

} // namespace
} // namespace foundation::files
