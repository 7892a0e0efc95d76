// SPDX-License-Identifier: Apache-2.0
//
// Every workbook of tests/data in every mode of loading, compared with what it is known to hold.
#include <algorithm>
#include <charconv>
#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/expectation.h"
#include "workbook/library.h"

namespace workbook {
namespace {

namespace fs = std::filesystem;
using test::area_name;
using test::Expectation;
using test::ExpectedSheet;
using test::Place;

std::vector<fs::path> workbooks_in(const fs::path& folder) {
    std::vector<fs::path> found;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension.starts_with(".xl")) found.push_back(entry.path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string test_name(const ::testing::TestParamInfo<fs::path>& info) {
    return info.param.stem().string();
}

/// What the sheet says of a cell, in the words of the expectations.
std::string described(const Sheet& sheet, int row, int column) {
    const auto number = [&](const char* word) {
        char digits[32];
        const auto end = std::to_chars(digits, digits + sizeof digits, sheet.read_num(row, column));
        return std::string(word) + " " + std::string(digits, end.ptr);
    };
    switch (sheet.cell_type(row, column)) {
    case CellKind::Empty:
        return "nothing";
    case CellKind::Number:
        return number(sheet.is_date(row, column) ? "date" : "number");
    case CellKind::StrictDate:
        return number("strictdate");
    case CellKind::Boolean:
        return sheet.read_bool(row, column) ? "bool true" : "bool false";
    case CellKind::Blank:
        return "blank";
    case CellKind::String:
        return "text " + test::escaped(sheet.read_str(row, column));
    case CellKind::Error:
        return "error " + test::escaped(sheet.read_str(row, column));
    }
    return "unknown kind";
}

/// The expectation with its number in the form of `described`.
std::string normalised(const std::string& expected) {
    for (const char* word : {"number ", "date ", "strictdate "}) {
        if (!expected.starts_with(word)) continue;
        char digits[32];
        const char* text = expected.data() + std::string_view(word).size();
        double value = 0;
        std::from_chars(text, expected.data() + expected.size(), value);
        const auto end = std::to_chars(digits, digits + sizeof digits, value);
        return word + std::string(digits, end.ptr);
    }
    return expected;
}

void expect_cells(const Sheet& sheet, const ExpectedSheet& expected, int search = 400) {
    int inside = 0, far = 0;
    for (const auto& [place, cell] : expected.cells) {
        EXPECT_EQ(described(sheet, place.first, place.second), normalised(cell))
            << expected.name << " row " << place.first << " column " << place.second;
        ++inside;
        far += place.first >= search || place.second >= search ? 1 : 0;
    }
    // Nothing else may be there; sheets with far cells are searched along their edges only.
    int found = 0;
    for (int row = 0; row < search; ++row)
        for (int column = 0; column < search; ++column)
            found += sheet.cell_type(row, column) != CellKind::Empty ? 1 : 0;
    EXPECT_EQ(found + far, inside) << expected.name;
    EXPECT_EQ(sheet.cell_type(-1, 0), CellKind::Empty);
    EXPECT_EQ(sheet.cell_type(0, -1), CellKind::Empty);
}

void expect_bounds(const Sheet& sheet, const ExpectedSheet& expected) {
    const auto text = [](int first_row, int end_row, int first_column, int end_column) {
        if (first_row == 0 && end_row == 0 && first_column == 0 && end_column == 0)
            return std::string("none");
        return area_name(first_row, end_row - 1, first_column, end_column - 1);
    };
    if (!expected.bounds.empty()) {
        EXPECT_EQ(
            text(sheet.first_row(), sheet.end_row(), sheet.first_column(), sheet.end_column()),
            expected.bounds);
    }
    if (!expected.filled.empty()) {
        EXPECT_EQ(text(sheet.first_filled_row(), sheet.end_filled_row(),
                       sheet.first_filled_column(), sheet.end_filled_column()),
                  expected.filled);
    }
}

/// Everything of a sheet that is not a cell.
void expect_surroundings(const Sheet& sheet, const ExpectedSheet& expected) {
    constexpr const char* kStates[] = {"visible", "hidden", "veryhidden"};
    EXPECT_EQ(test::escaped(sheet.name()), expected.name);
    EXPECT_EQ(kStates[static_cast<int>(sheet.hidden())], expected.state);
    EXPECT_EQ(sheet.protect(), expected.is_protected);
    int a = 0, b = 0, c = 0, d = 0;
    std::vector<std::string> merged;
    for (int i = 0; sheet.merge(i, a, b, c, d); ++i)
        merged.push_back(area_name(a, b, c, d));
    EXPECT_EQ(merged, expected.merged);
    EXPECT_EQ(sheet.merge_size(), static_cast<int>(merged.size()));
    for (const auto& [name, area] : expected.names) {
        const bool known = sheet.named_range(std::u16string(name.begin(), name.end()), a, b, c, d);
        EXPECT_EQ(known ? area_name(a, b, c, d) : "none", area) << name;
    }
}

void expect_list(const Book& book, const Expectation& expected) {
    EXPECT_EQ(book.is_date_1904(), expected.date_1904);
    ASSERT_EQ(book.sheet_count(), static_cast<int>(expected.sheets.size()));
    constexpr const char* kKinds[] = {"worksheet", "chart", "unknown"};
    for (int i = 0; i < book.sheet_count(); ++i) {
        const ExpectedSheet& sheet = expected.sheets[static_cast<std::size_t>(i)];
        EXPECT_EQ(kKinds[static_cast<int>(book.sheet_type(i))], sheet.kind);
        EXPECT_EQ(test::escaped(book.get_sheet_name(i)), sheet.name);
    }
}

class Fixture : public ::testing::TestWithParam<fs::path> {
  protected:
    Fixture()
        : path_(GetParam().u16string()),
          expected_(test::read_expectation(fs::path(GetParam()).replace_extension(".expected"))) {}

    std::u16string path_;
    Expectation expected_;
    std::unique_ptr<Book> book_ = xlCreateXMLBookW();
};

TEST_P(Fixture, LoadsWhole) {
    ASSERT_TRUE(book_->load(path_)) << book_->error_message();
    EXPECT_STREQ(book_->error_message(), "ok");
    expect_list(*book_, expected_);
    for (int i = 0; i < book_->sheet_count(); ++i) {
        const ExpectedSheet& expected = expected_.sheets[static_cast<std::size_t>(i)];
        const Sheet* sheet = book_->get_sheet(i);
        ASSERT_EQ(sheet != nullptr, expected.kind == "worksheet") << expected.name;
        if (sheet == nullptr) continue;
        expect_cells(*sheet, expected);
        expect_bounds(*sheet, expected);
        expect_surroundings(*sheet, expected);
    }
}

TEST_P(Fixture, LoadsSheetBySheet) {
    for (int i = 0; i < static_cast<int>(expected_.sheets.size()); ++i) {
        ASSERT_TRUE(book_->load_sheet(path_, i)) << book_->error_message();
        expect_list(*book_, expected_);
        const ExpectedSheet& expected = expected_.sheets[static_cast<std::size_t>(i)];
        const Sheet* sheet = book_->get_sheet(i);
        ASSERT_EQ(sheet != nullptr, expected.kind == "worksheet") << expected.name;
        if (sheet == nullptr) continue;
        expect_cells(*sheet, expected);
        expect_surroundings(*sheet, expected);
    }
}

TEST_P(Fixture, LoadsRowsOnly) {
    struct Span {
        int first, last;
    };
    for (const Span rows : {Span{0, 0}, Span{1, 2}, Span{-5, 1}, Span{2, 1'048'580}, Span{3, 1}}) {
        for (int i = 0; i < static_cast<int>(expected_.sheets.size()); ++i) {
            ASSERT_TRUE(book_->load_partially(path_, i, rows.first, rows.last));
            const Sheet* sheet = book_->get_sheet(i);
            if (sheet == nullptr) continue;
            const ExpectedSheet& expected = expected_.sheets[static_cast<std::size_t>(i)];
            EXPECT_GE(sheet->first_row(), sheet->end_row() > 0 ? rows.first : 0);
            EXPECT_LE(sheet->end_row(), std::max(rows.last, -1) + 1);
            // Reading stops at the first row after the last wanted one.
            if (!expected.is_unordered) expect_cells(*sheet, expected, 40);
            expect_surroundings(*sheet, expected);
        }
    }
}

TEST_P(Fixture, LoadsInformationOnly) {
    ASSERT_TRUE(book_->load_info(path_)) << book_->error_message();
    expect_list(*book_, expected_);
    for (int i = 0; i < book_->sheet_count(); ++i)
        EXPECT_EQ(book_->get_sheet(i), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Workbooks, Fixture, ::testing::ValuesIn(workbooks_in(ZX_TEST_DATA)),
                         test_name);

class BadFixture : public ::testing::TestWithParam<fs::path> {};

TEST_P(BadFixture, FailsWithItsCause) {
    std::string cause = test::read_text(fs::path(GetParam()).replace_extension(".expected"));
    cause.erase(cause.find_last_not_of('\n') + 1);
    ASSERT_FALSE(cause.empty());
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    const std::u16string path = GetParam().u16string();
    EXPECT_FALSE(book->load(path));
    EXPECT_THAT(book->error_message(), ::testing::HasSubstr(cause));
    EXPECT_FALSE(book->load_sheet(path, 0));
    EXPECT_THAT(book->error_message(), ::testing::HasSubstr(cause));
    EXPECT_EQ(book->sheet_count(), 0);
    EXPECT_EQ(book->get_sheet(0), nullptr);

    const fs::path good = fs::path(ZX_TEST_DATA) / "plain_xlsm.xlsm";
    EXPECT_TRUE(book->load(good.u16string())) << "a book must be usable after a failed load";
}

INSTANTIATE_TEST_SUITE_P(Workbooks, BadFixture,
                         ::testing::ValuesIn(workbooks_in(fs::path(ZX_TEST_DATA) / "bad")),
                         test_name);

} // namespace
} // namespace workbook
