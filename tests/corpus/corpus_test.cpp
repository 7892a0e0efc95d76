// SPDX-License-Identifier: Apache-2.0
//
// Reads a collection of real workbook files through the public interface, one test a file, and
// compares them with what other readers found. Run each test in a process of its own (as ctest
// does) for the check of its memory to mean anything.
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>

#include <gtest/gtest.h>

#ifdef __linux__
#include <sys/resource.h>
#endif

#include "foundation/unicode.h"
#include "spreadsheet/spreadsheet.h"
#include "tests/corpus/oracle.h"
#include "tests/corpus/sheet_comparison.h"

namespace corpus {
namespace {

using namespace spreadsheet;

const std::string kFolder = ZX_SHARED_DATA "/corpus";

constexpr std::uint64_t kMemoryPerFileByte = 50;
constexpr std::uint64_t kMemoryFreeBytes = 48u << 20;

std::string extension_of(const std::string& name) {
    std::string extension = name.substr(name.rfind('.') + 1);
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

/// The identifier that a load of a format without a reader ends in; -1 for a format with one.
int expected_failure(const std::string& extension) {
    const bool is_served = extension == "xls" || extension == "xlsx" || extension == "xlsm" ||
                           extension == "xltx" || extension == "xltm";
    return is_served ? -1 : 30;
}

std::u16string path_of(const File& file) {
    return foundation::unicode::to_utf16(kFolder + "/dev/" + file.name);
}

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__)
constexpr bool kCanMeasureMemory = true;
std::uint64_t peak_memory_bytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::uint64_t>(usage.ru_maxrss) * 1024;
}
#else
constexpr bool kCanMeasureMemory = false;
std::uint64_t peak_memory_bytes() {
    return 0;
}
#endif

/// Where one of the other readers answers with a blank cell though the sheet has none: a comment is
/// attached to the place.
struct CommentAnchor {
    const char* file;
    const char* sheet;
    spreadsheet::Cell cell;
};
constexpr CommentAnchor kCommentAnchors[] = {
    {"openxlsx-data__pivot_notes__7ad969.xlsx", "Sheet2", {4, 5}},
    {"openxlsx-data__pivot_notes__7ad969.xlsx", "Sheet4", {2, 7}},
    {"xlrd__sample__7607b5.xlsx", "Sheet1", {0, 1}},
    {"xlsx-populate__template__9cd3e7.xlsx", "Comments", {1, 0}},
    {"xlsx-populate__template__9cd3e7.xlsx", "Comments", {2, 0}},
};

void drop_comment_anchors(const std::string& file, Oracle& oracle) {
    for (const CommentAnchor& anchor : kCommentAnchors)
        for (ExpectedSheet& sheet : oracle.sheets)
            if (file == anchor.file && sheet.name == anchor.sheet)
                sheet.cells.erase(cell_key(anchor.cell.row, anchor.cell.column));
}

void read_everything(IBook& book) {
    for (std::size_t index = 0; index < book.num_sheets(); ++index)
        if (book.sheet_type(index) == sheet::type::worksheet)
            if (const auto sheet = book.sheet(index))
                read_sheet(*sheet, book.are_dates_1904(), [](int, int, const Answer&) {});
}

void compare_sheet_list(IBook& book, const Oracle& oracle) {
    EXPECT_EQ(book.are_dates_1904(), oracle.dates_1904);
    ASSERT_EQ(book.num_sheets(), oracle.places.size());
    for (std::size_t index = 0; index < oracle.places.size(); ++index) {
        const auto name = book.get_sheet_name(static_cast<int>(index));
        EXPECT_EQ(foundation::unicode::to_utf8(name.value()), oracle.places[index].name) << index;
        EXPECT_EQ(book.sheet_type(index) == sheet::type::chart, oracle.places[index].is_chart)
            << index;
        EXPECT_NE(book.sheet(index), nullptr) << index;
    }
}

std::shared_ptr<ISheet> sheet_of(IBook& book, const Oracle& oracle, const std::string& name) {
    for (std::size_t index = 0; index < oracle.places.size(); ++index)
        if (oracle.places[index].name == name && !oracle.places[index].is_chart)
            return book.sheet(index);
    return nullptr;
}

void compare_with_oracle(IBook& book, const File& file) {
    Oracle oracle = load_oracle(kFolder, file.name);
    drop_comment_anchors(file.name, oracle);
    compare_sheet_list(book, oracle);
    Report wrong;
    Report disputed;
    for (const ExpectedSheet& expected : oracle.sheets) {
        const auto sheet = sheet_of(book, oracle, expected.name);
        if (!sheet) continue;
        EXPECT_EQ(static_cast<int>(sheet->hidden()), expected.visibility) << expected.name;
        compare_cells(*sheet, book.are_dates_1904(), expected, file.verdict, wrong, disputed);
        compare_merged_cells(*sheet, expected, wrong);
    }
    EXPECT_EQ(wrong.count(), 0u) << wrong.text();
    if (disputed.count() > 0)
        std::cout << file.name << ": readers disagree, and with us: " << disputed.text() << '\n';
}

/// Formats without a reader end in their error. A file on which the readers do not agree may be
/// damaged and end in one too.
void check_failure(const File& file, const Exception& e) {
    const int id = expected_failure(extension_of(file.name));
    if (id >= 0) {
        EXPECT_EQ(static_cast<int>(e.id()), id);
        return;
    }
    EXPECT_NE(file.verdict, Verdict::Agree) << e.what();
    std::cout << file.name << ": " << e.what() << '\n';
}

void check_file(const File& file) {
    const std::string extension = extension_of(file.name);
    const auto format = book::create_format(foundation::unicode::to_utf16(extension));
    const std::uint64_t memory_before = peak_memory_bytes();
    std::shared_ptr<IBook> book;
    try {
        book = load_book_from_file(path_of(file), format, book::interactive::file);
        read_everything(*book);
    } catch (const Exception& e) {
        check_failure(file, e);
        return;
    }
    if (kCanMeasureMemory) {
        const auto size = std::filesystem::file_size(kFolder + "/dev/" + file.name);
        EXPECT_LE(peak_memory_bytes() - memory_before,
                  size * kMemoryPerFileByte + kMemoryFreeBytes);
    }
    EXPECT_LT(expected_failure(extension), 0) << "read, though the format has no reader";
    if (file.verdict == Verdict::Agree || file.verdict == Verdict::Conflict)
        compare_with_oracle(*book, file);
}

class CorpusFile : public testing::TestWithParam<File> {};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusFile);

TEST_P(CorpusFile, ReadsAsOtherReadersDo) {
    check_file(GetParam());
}

/// The file's name with everything that a test's name cannot hold replaced.
std::string test_name(const testing::TestParamInfo<File>& info) {
    std::string name = info.param.name;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Corpus, CorpusFile, testing::ValuesIn(list_files(kFolder)), test_name);

TEST(Corpus, IsThere) {
    const std::size_t count = list_files(kFolder).size();
    if (count == 0) GTEST_SKIP() << "no corpus of workbooks in " << kFolder;
    EXPECT_GE(count, 100u);
}

} // namespace
} // namespace corpus
