// SPDX-License-Identifier: Apache-2.0
//
// Changes to sheets of a book: what is refused, what the reads see at once, and what a file holds.
#include <fstream>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/scratch_folder.h"
#include "tests/workbook/zip_builder.h"
#include "workbook/library.h"

namespace workbook::test {
namespace {

using testing::HasSubstr;

// Formats 1 to 3 with number formats 11, 12 and 14.
std::string book_with(const std::string& sheet) {
    const std::string main = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
    const std::string links = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const std::string package = "http://schemas.openxmlformats.org/package/2006/";
    const std::string types = "application/vnd.openxmlformats-officedocument.spreadsheetml.";
    const auto link = [&](const std::string& id, const std::string& type, const std::string& to) {
        return "<Relationship Id=\"" + id + "\" Type=\"" + links + "/" + type + "\" Target=\"" +
               to + "\"/>";
    };
    const auto part = [&](const std::string& name, const std::string& type) {
        return "<Override PartName=\"" + name + "\" ContentType=\"" + types + type + "+xml\"/>";
    };
    return build_zip(
        {{.name = "[Content_Types].xml",
          .content = "<Types xmlns=\"" + package +
                     "content-types\"><Default Extension=\"rels\" "
                     "ContentType=\"application/vnd.openxmlformats-package.relationships+xml\"/>" +
                     part("/xl/workbook.xml", "sheet.main") + part("/xl/s.xml", "worksheet") +
                     part("/xl/styles.xml", "styles") + "</Types>"},
         {.name = "_rels/.rels",
          .content = "<Relationships xmlns=\"" + package + "relationships\">" +
                     link("r1", "officeDocument", "xl/workbook.xml") + "</Relationships>"},
         {.name = "xl/_rels/workbook.xml.rels",
          .content = "<Relationships xmlns=\"" + package + "relationships\">" +
                     link("r1", "worksheet", "s.xml") + link("r2", "styles", "styles.xml") +
                     "</Relationships>"},
         {.name = "xl/workbook.xml",
          .content = "<workbook xmlns=\"" + main + "\" xmlns:r=\"" + links +
                     "\"><sheets><sheet name=\"Data\" sheetId=\"1\" r:id=\"r1\"/></sheets>"
                     "</workbook>"},
         {.name = "xl/styles.xml",
          .content = "<styleSheet xmlns=\"" + main +
                     "\"><cellXfs><xf/><xf numFmtId=\"11\"/><xf numFmtId=\"12\"/><xf "
                     "numFmtId=\"14\"/></cellXfs></styleSheet>"},
         {.name = "xl/s.xml",
          .content = "<worksheet xmlns=\"" + main + "\">" + sheet + "</worksheet>"}});
}

class SheetChanges : public testing::Test {
  protected:
    Sheet& open(const std::string& sheet) {
        std::ofstream(folder_.path() / "book.xlsx", std::ios::binary) << book_with(sheet);
        return reload("book.xlsx");
    }
    Sheet& reload(const char* name) {
        book_ = xlCreateXMLBookW();
        EXPECT_TRUE(book_->load(folder_.file(name))) << book_->error_message();
        return *book_->get_sheet(0);
    }
    Sheet& save_and_reload() {
        EXPECT_TRUE(book_->save(folder_.file("saved.xlsx"))) << book_->error_message();
        return reload("saved.xlsx");
    }
    int format_at(const Sheet& sheet, int row, int column) {
        const Format* format = sheet.cell_format(row, column);
        return format == nullptr ? -1 : format->num_format();
    }

    ScratchFolder folder_;
    std::unique_ptr<Book> book_;
};

// Damaged files have cells of formats that they do not define.
TEST_F(SheetChanges, GiveNewFormatsToWrittenCellsOnly) {
    Sheet* sheet =
        &open("<cols><col min=\"9\" max=\"9\" style=\"6\"/></cols><sheetData><row r=\"1\">"
              "<c r=\"A1\" s=\"5\"><v>7</v></c><c r=\"B1\" s=\"4\"><v>7</v></c></row>"
              "</sheetData>");
    Format* date = book_->add_format();
    ASSERT_NE(date, nullptr);
    date->set_num_format(22);
    ASSERT_TRUE(sheet->write_num(1, 0, 45'000.0, date));
    for (int round = 0; round < 2; ++round) {
        EXPECT_FALSE(sheet->is_date(0, 0));
        EXPECT_FALSE(sheet->is_date(0, 1));
        EXPECT_EQ(format_at(*sheet, 0, 0), 0);
        EXPECT_EQ(format_at(*sheet, 5, 8), 0);
        EXPECT_EQ(format_at(*sheet, 1, 0), 22);
        sheet = &save_and_reload();
    }
}

TEST_F(SheetChanges, ShowTheFormatOfCellRowOrColumn) {
    Sheet& sheet =
        open(R"(<cols><col min="3" max="3" width="9" style="1"/></cols><sheetData>)"
             R"(<row r="2" s="2" customFormat="1" ht="9"><c r="A2" s="3"/><c r="B2"/></row>)"
             R"(<row r="3" s="2" ht="9"/></sheetData>)");
    EXPECT_EQ(format_at(sheet, 1, 0), 14);
    EXPECT_EQ(format_at(sheet, 1, 1), 0);
    EXPECT_EQ(format_at(sheet, 1, 2), 12);
    EXPECT_EQ(format_at(sheet, 2, 2), 11);
    EXPECT_EQ(format_at(sheet, 2, 1), -1);
    ASSERT_TRUE(sheet.clear(1, 1, 0, 0));
    EXPECT_EQ(format_at(sheet, 1, 0), 12);
    ASSERT_TRUE(sheet.write_num(1, 0, 5, book_->format(1)));
    EXPECT_EQ(format_at(sheet, 1, 0), 11);
    Sheet& saved = save_and_reload();
    EXPECT_EQ(format_at(saved, 1, 0), 11);
    EXPECT_EQ(format_at(saved, 1, 2), 12);
    EXPECT_EQ(saved.read_num(1, 0), 5);
}

TEST_F(SheetChanges, OfMergedRegionsAndProtectionReachTheFile) {
    Sheet& sheet = open(R"(<sheetData/><sheetProtection sheet="1" password="AA"/><mergeCells>)"
                        R"(<mergeCell ref="A1:B2"/><mergeCell ref="C1:D2"/></mergeCells>)");
    ASSERT_TRUE(sheet.protect());
    EXPECT_TRUE(sheet.set_protect(false));
    EXPECT_FALSE(sheet.protect());
    EXPECT_TRUE(sheet.delete_merge(0));
    ASSERT_EQ(sheet.merge_size(), 1);
    int first_row = 0, last_row = 0, first_column = 0, last_column = 0;
    Sheet& saved = save_and_reload();
    EXPECT_FALSE(saved.protect());
    ASSERT_EQ(saved.merge_size(), 1);
    ASSERT_TRUE(saved.merge(0, first_row, last_row, first_column, last_column));
    EXPECT_EQ(first_column, 2);
    EXPECT_TRUE(saved.set_protect(true));
    EXPECT_TRUE(saved.delete_merge(0));
    Sheet& again = save_and_reload();
    EXPECT_TRUE(again.protect());
    EXPECT_EQ(again.merge_size(), 0);
}

/// Rows 2 and 3 of four; what follows the cells is `tail`.
std::string four_rows(const std::string& tail) {
    return R"(<sheetData><row r="1"><c r="A1" s="3"><v>5</v></c></row><row r="2"/><row r="3"/>)"
           R"(<row r="4" s="2" customFormat="1"><c r="B4" t="inlineStr"><is><t>a string that is )"
           R"(wide</t></is></c></row></sheetData>)" +
           tail;
}

TEST_F(SheetChanges, KnowFormatsAndWidthsOfRowsThatWereNotLoaded) {
    open(four_rows(""));
    ASSERT_TRUE(book_->load_partially(folder_.file("book.xlsx"), 0, 1, 2));
    Sheet& sheet = *book_->get_sheet(0);
    EXPECT_EQ(sheet.end_row(), 0);
    ASSERT_TRUE(sheet.auto_fit_columns(0, 1));
    EXPECT_GT(sheet.column_width(0), 10) << "a date";
    EXPECT_GT(sheet.column_width(1), 15);
    EXPECT_EQ(format_at(sheet, 0, 0), 14);
    EXPECT_TRUE(sheet.is_date(0, 0));
    EXPECT_EQ(format_at(sheet, 3, 5), 12) << "of the row";
    EXPECT_EQ(format_at(sheet, 2, 5), -1);
    EXPECT_EQ(sheet.read_str(3, 1), u"a string that is wide");
}

TEST_F(SheetChanges, FailWhereTheRestOfAPartialLoadIsDamaged) {
    const std::string regions = R"(<mergeCells><mergeCell ref="A1:!"/></mergeCells>)";
    std::ofstream(folder_.path() / "book.xlsx", std::ios::binary) << book_with(four_rows(regions));
    book_ = xlCreateXMLBookW();
    for (int again = 0; again < 2; ++again) {
        ASSERT_TRUE(book_->load_partially(folder_.file("book.xlsx"), 0, 0, 1));
        const Sheet& read = *book_->get_sheet(0);
        EXPECT_EQ(read.read_num(0, 0), 5.0);
        EXPECT_EQ(book_->error_kind(), again == 0 ? ErrorKind::None : ErrorKind::Damaged);
        EXPECT_FALSE(read.need_tail());
        EXPECT_EQ(book_->error_kind(), ErrorKind::Damaged);
        EXPECT_THAT(book_->error_message(), HasSubstr("A1:!"));
        EXPECT_EQ(read.merge_size(), 0);
        EXPECT_FALSE(read.need_rows(3, 3));
        EXPECT_TRUE(read.need_rows(0, 1));
        EXPECT_EQ(read.cell_type(3, 1), CellKind::Empty);
    }
    Sheet& sheet = *book_->get_sheet(0);
    EXPECT_FALSE(sheet.delete_merge(0));
    EXPECT_FALSE(sheet.set_protect(true));
    EXPECT_FALSE(sheet.auto_fit_columns(0, 0));
    EXPECT_EQ(book_->insert_sheet(1, u"Copy", &sheet), nullptr);
}

TEST_F(SheetChanges, FitColumnsThatHaveContent) {
    Sheet& sheet = open(R"(<cols><col min="1" max="4" width="30"/></cols><sheetData>)"
                        R"(<row r="1"><c r="A1"><v>5</v></c><c r="B1" s="1"/></row></sheetData>)");
    ASSERT_TRUE(sheet.write_str(0, 2, u"a text that needs a good deal of room", nullptr));
    ASSERT_TRUE(sheet.write_num(0, 3, 1234567.25, nullptr));
    ASSERT_TRUE(sheet.write_num(1, 4, 45000, book_->format(3)));
    ASSERT_TRUE(sheet.auto_fit_columns(0, 3));
    EXPECT_LT(sheet.column_width(0), sheet.column_width(3));
    EXPECT_EQ(sheet.column_width(1), 30);
    EXPECT_GT(sheet.column_width(2), 30);
    EXPECT_LT(sheet.column_width(3), 20);
    const double width_of_e = sheet.column_width(4); // not asked for
    const double width_of_c = sheet.column_width(2);
    Sheet& saved = save_and_reload();
    EXPECT_EQ(saved.column_width(2), width_of_c);
    EXPECT_EQ(saved.column_width(1), 30);
    EXPECT_EQ(saved.column_width(4), width_of_e);
}

} // namespace
} // namespace workbook::test
