// SPDX-License-Identifier: Apache-2.0
//
// Opening, reading at positions, parts of paths.
#include <fstream>
#include <optional>

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
        {path_in_temp(u""), FileProblem::NotAFile},
#ifndef _WIN32
        {u"/dev/null", FileProblem::NotAFile},
        {path_in_temp(missing), FileProblem::PathTooLong},
        {std::u16string(u"lone \xD800 surrogate"), FileProblem::NotFound},
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
