// SPDX-License-Identifier: Apache-2.0
//
// What depends on the Open XML file: messages, missing parts, formats. What every engine promises
// is in contract_test.cpp.
#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "workbook/library.h"
#include "workbook/xlsx/book_contents.h"

namespace workbook {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

std::u16string fixture(const char* name) {
    return (std::filesystem::path(ZX_TEST_DATA) / name).u16string();
}

TEST(XlsxBook, SaysWhyThereIsNoSheet) {
    const auto book = xlCreateXMLBookW();
    ASSERT_TRUE(book->load_sheet(fixture("chart_and_dialog_sheets.xlsm"), 0));
    struct Case {
        int index;
        const char* message;
    };
    for (const Case& c : {Case{1, "\"Chart\": it is a chart sheet"}, Case{4, "were not loaded"},
                          Case{7, "no sheet"}, Case{-1, "no sheet"}}) {
        EXPECT_EQ(book->get_sheet(c.index), nullptr);
        EXPECT_THAT(book->error_message(), HasSubstr(c.message));
    }
}

TEST(XlsxBook, ReadsASheetWithoutAPartAsEmpty) {
    const auto book = xlCreateXMLBookW();
    ASSERT_TRUE(book->load(fixture("chart_and_dialog_sheets.xlsm")));
    EXPECT_THAT(book->load_warnings(),
                ElementsAre(HasSubstr("\"Lost\""), HasSubstr("\"No target\"")));
    std::string bytes;
    for (int index : {5, 6}) {
        Sheet* const sheet = book->get_sheet(index);
        ASSERT_NE(sheet, nullptr);
        EXPECT_EQ(sheet->end_row(), 0);
        EXPECT_FALSE(sheet->write_num(0, 0, 1.0, nullptr));
        EXPECT_THAT(book->error_message(), HasSubstr("without cells"));
    }
    ASSERT_TRUE(book->get_sheet(0)->write_num(4, 0, 1.0, nullptr));
    ASSERT_TRUE(book->save(*foundation::files::memory_output(bytes), u"xlsm"));
    const auto again = xlCreateXMLBookW();
    ASSERT_TRUE(again->load(foundation::files::memory_file(bytes)));
    EXPECT_EQ(again->sheet_count(), 7);
    EXPECT_EQ(again->load_warnings(), book->load_warnings());
}

// On Windows nobody could replace the file otherwise.
TEST(XlsxBook, ClosesItsFileAfterEveryRead) {
    LastError error;
    const std::u16string path = fixture("formatted_blanks.xlsx");
    BookContents book(std::make_unique<OpcPackage>(foundation::files::open_for_reading(path)), path,
                      error);
    book.close_file();
    using Read = void (*)(BookContents&);
    for (const Read read : {Read([](BookContents& b) { b.named_cells(); }),
                            Read([](BookContents& b) { b.scan_sheet(0); }),
                            Read([](BookContents& b) { b.need_formats(); })}) {
        read(book);
        EXPECT_FALSE(book.package->is_open());
    }
    book.open_package();
    book.load_sheets();
    book.close_file();
    EXPECT_TRUE(book.sheet(0)->visit_formulas(0, 9, [](const FormulaCell&) {}));
    EXPECT_FALSE(book.package->is_open());
}

TEST(XlsxBook, KeepsFormatHandlesWhenOneIsAdded) {
    const auto book = xlCreateXMLBookW();
    ASSERT_TRUE(book->load(fixture("formatted_blanks.xlsx")));
    ASSERT_EQ(book->format_size(), 2);
    Format* first = book->format(0);
    EXPECT_EQ(book->format(1)->num_format(), 14);
    EXPECT_EQ(book->get_sheet(0)->cell_format(1, 1), book->format(1));
    EXPECT_EQ(book->get_sheet(0)->cell_format(0, 0), nullptr);
    for (int i = 0; i < 1000; ++i)
        ASSERT_NE(book->add_format(), nullptr);
    EXPECT_EQ(book->format(0), first);
    EXPECT_EQ(book->format(1001)->num_format(), 0);
    EXPECT_TRUE(book->format(1001)->locked());

    EXPECT_FALSE(book->get_sheet(0)->is_date(3, 3));
    book->format(0)->set_num_format(22);
    EXPECT_TRUE(book->get_sheet(0)->is_date(3, 3));
    EXPECT_FALSE(book->get_sheet(0)->is_date(1, 1)) << "a blank cell is no date";
}

TEST(XlsxBook, AnAddedFormatIsNotThatOfPlainCells) {
    const auto book = xlCreateXMLBookW();
    ASSERT_TRUE(book->load(fixture("no_styles.xlsx")));
    Format* added = book->add_format();
    ASSERT_NE(added, nullptr);
    added->set_num_format(22);
    const Sheet* sheet = book->get_sheet(0);
    int numbers = 0;
    for (int row = 0; row < sheet->end_row(); ++row)
        for (int column = 0; column < sheet->end_column(); ++column) {
            numbers += sheet->cell_type(row, column) == CellKind::Number;
            EXPECT_FALSE(sheet->is_date(row, column)) << row << ' ' << column;
        }
    EXPECT_GT(numbers, 0);
}

TEST(XlsxBook, ReadsOtherKindsAsNothing) {
    const auto book = xlCreateXMLBookW();
    ASSERT_TRUE(book->load(fixture("booleans_errors_formulas.xlsx")));
    const Sheet* sheet = book->get_sheet(0);
    EXPECT_EQ(sheet->read_num(0, 0), 1.0) << "a boolean is a number";
    EXPECT_EQ(sheet->read_num(1, 0), 0.0);
    EXPECT_EQ(sheet->read_num(2, 1), 0.0);
    EXPECT_FALSE(sheet->read_bool(2, 0));
    EXPECT_EQ(sheet->read_str(2, 0).data(), nullptr);
    EXPECT_EQ(sheet->read_str(90, 90).data(), nullptr);
    EXPECT_NE(sheet->read_str(2, 5).data(), nullptr) << "an empty text is a text";
    EXPECT_EQ(sheet->read_str(1, 0), u"#DIV/0!");
}

} // namespace
} // namespace workbook
