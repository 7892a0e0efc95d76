// SPDX-License-Identifier: Apache-2.0
//
// Saves every readable workbook of the collection, unchanged and with one cell more, and looks at
// the parts and cells that come out, each part byte for byte.
#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "tests/corpus/oracle.h"
#include "tests/corpus/saved_parts.h"
#include "workbook/library.h"
#include "workbook/xls/xls_limits.h"

namespace corpus {
namespace {

using workbook::Book;
using workbook::CellKind;
using workbook::Sheet;

const std::string kFolder = ZX_SHARED_DATA "/corpus";
constexpr double kWritten = 42.5;

/// A file that goes with the test.
class ScratchFile {
  public:
    explicit ScratchFile(const std::string& ending) {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string(test->test_suite_name()) + "_" + test->name() + ending;
        std::replace(name.begin(), name.end(), '/', '_');
        path_ = testing::TempDir() + name;
    }
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    std::u16string path() const { return foundation::unicode::to_utf16(path_); }

  private:
    std::string path_;
};

/// One cell in a form that can be compared.
struct CellImage {
    CellKind kind;
    double number;
    std::u16string text;
    bool is_date;
    bool operator==(const CellImage&) const = default;
};

using Cells = std::map<std::pair<int, int>, CellImage>;

Cells image_of(Sheet& sheet) {
    Cells cells;
    for (int row = sheet.first_row(); row < sheet.end_row(); ++row)
        for (int column = sheet.first_column(); column < sheet.end_column(); ++column) {
            const CellKind kind = sheet.cell_type(row, column);
            if (kind == CellKind::Empty) continue;
            cells[{row, column}] = {kind, sheet.read_num(row, column),
                                    std::u16string(sheet.read_str(row, column)),
                                    sheet.is_date(row, column)};
        }
    return cells;
}

/// All worksheets, their cells and merged regions, by index.
struct BookImage {
    std::map<int, Cells> cells;
    std::map<int, int> merged;
    bool operator==(const BookImage&) const = default;
};

BookImage image_of(Book& book) {
    BookImage image;
    for (int i = 0; i < book.sheet_count(); ++i)
        if (Sheet* sheet = book.get_sheet(i)) {
            image.cells[i] = image_of(*sheet);
            image.merged[i] = sheet->merge_size();
        }
    return image;
}

std::pair<int, int> first_free_cell(const Sheet& sheet) {
    for (int row = 0;; ++row)
        for (int column = 0; column < 50; ++column)
            if (sheet.cell_type(row, column) == CellKind::Empty) return {row, column};
}

int first_worksheet(Book& book) {
    for (int i = 0; i < book.sheet_count(); ++i)
        if (book.get_sheet(i) != nullptr) return i;
    return -1;
}

class SavedFile : public testing::TestWithParam<File> {
  protected:
    void SetUp() override {
        path_ = foundation::unicode::to_utf16(kFolder + "/dev/" + GetParam().name);
        ending_ = GetParam().name.substr(GetParam().name.rfind('.'));
        book_ = workbook::xlCreateBookW();
        if (!book_->load(path_)) GTEST_SKIP() << book_->error_message();
    }

    std::unique_ptr<Book> reload(const std::u16string& path) {
        auto book = workbook::xlCreateBookW();
        EXPECT_TRUE(book->load(path)) << book->error_message();
        return book;
    }

    std::u16string path_;
    std::string ending_;
    std::unique_ptr<Book> book_;
};
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SavedFile);

TEST_P(SavedFile, IsTheSameWhenNothingWasChanged) {
    const ScratchFile saved(ending_);
    ASSERT_TRUE(book_->save(saved.path())) << book_->error_message();
    const Parts before = read_parts(path_), after = read_parts(saved.path());
    EXPECT_EQ(after.order, before.order);
    for (const auto& [name, content] : before.content)
        EXPECT_TRUE(after.content.count(name) == 1 && after.content.at(name) == content) << name;
    EXPECT_EQ(book_->last_save().written, 0u);
}

void compare_parts(const Parts& before, const Parts& after) {
    std::vector<std::string> changed;
    for (const auto& [name, content] : before.content) {
        const auto found = after.content.find(name);
        if (found != after.content.end() && found->second == content) continue;
        if (!may_follow_a_number(name)) changed.push_back(name);
    }
    EXPECT_LE(changed.size(), 1u) << testing::PrintToString(changed) << " is more than the sheet";
    for (const auto& [name, content] : after.content)
        EXPECT_EQ(before.content.count(name), 1u) << name << " is new";
}

TEST_P(SavedFile, KeepsAllElseWhenOneCellIsWritten) {
    const int index = first_worksheet(*book_);
    if (index < 0) GTEST_SKIP() << "no worksheet";
    Sheet& sheet = *book_->get_sheet(index);
    const auto [row, column] = first_free_cell(sheet);
    BookImage expected = image_of(*book_);
    ASSERT_TRUE(sheet.write_num(row, column, kWritten, nullptr)) << book_->error_message();
    expected.cells[index][{row, column}] = {CellKind::Number, kWritten, u"", false};
    EXPECT_EQ(image_of(*book_), expected) << "in memory";

    const ScratchFile saved(ending_);
    ASSERT_TRUE(book_->save(saved.path())) << book_->error_message();
    compare_parts(read_parts(path_), read_parts(saved.path()));
    EXPECT_EQ(image_of(*reload(saved.path())), expected) << "in the saved file";
}

TEST_P(SavedFile, KeepsRowsAndSheetsThatWereNotLoaded) {
    const int index = first_worksheet(*book_);
    if (index < 0) GTEST_SKIP() << "no worksheet";
    const int end_row = book_->get_sheet(index)->end_row();
    const int row = end_row + 2 < workbook::kXlsLimits.rows ? end_row + 2 : 0;
    BookImage expected = image_of(*book_);
    expected.cells[index][{row, 1}] = {CellKind::String, 0.0, u"<kept> & \"well\"", false};

    const ScratchFile saved(ending_);
    auto part = workbook::xlCreateBookW();
    ASSERT_TRUE(part->load_partially(path_, index, 1, 2)) << part->error_message();
    ASSERT_TRUE(part->get_sheet(index)->write_str(row, 1, u"<kept> & \"well\"", nullptr));
    ASSERT_TRUE(part->save(saved.path())) << part->error_message();
    EXPECT_EQ(image_of(*reload(saved.path())), expected);
}

/// Files of the formats that can be saved, by their endings.
std::vector<File> writable_files() {
    std::vector<File> files = list_files(kFolder);
    std::erase_if(files, [](const File& file) {
        const std::string ending = file.name.substr(file.name.rfind('.'));
        return ending != ".xlsx" && ending != ".xlsm" && ending != ".xltx" && ending != ".xltm" &&
               ending != ".xls";
    });
    return files;
}

std::string test_name(const testing::TestParamInfo<File>& info) {
    std::string name = info.param.name;
    for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Corpus, SavedFile, testing::ValuesIn(writable_files()), test_name);

} // namespace
} // namespace corpus
