// SPDX-License-Identifier: Apache-2.0
//
// Headers of tables that are written: columns, references to them and cells agree in the saved
// file.
#include <fstream>
#include <functional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/files.h"
#include "foundation/output_file.h"
#include "foundation/unicode.h"
#include "tests/failing_output.h"
#include "tests/workbook/memory_source.h"
#include "tests/workbook/scratch_folder.h"
#include "tests/workbook/structured_book.h"
#include "workbook/library.h"
#include "workbook/xlsx/formula/formula_text.h"

namespace workbook::test {
namespace {

using ::testing::HasSubstr;

TEST(TableHeader, IsAsBeforeWhenTheSaveFails) {
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    ASSERT_TRUE(book->load(foundation::files::memory_file(build_zip(structured_book()))));
    Sheet& sheet = *book->get_sheet(0);
    ASSERT_TRUE(sheet.write_num(0, 0, 2.5, nullptr));
    std::string bytes;
    for (int operations : {0, 3}) {
        foundation::files::test::FailingOutput out(foundation::files::memory_output(bytes),
                                                   operations);
        EXPECT_FALSE(book->save(out, u"xlsx"));
        EXPECT_EQ(sheet.read_num(0, 0), 2.5);
    }
    ASSERT_TRUE(sheet.clear(0, 0, 0, 0));
    foundation::files::test::FailingOutput out(foundation::files::memory_output(bytes), 0);
    EXPECT_FALSE(book->save(out, u"xlsx"));
    EXPECT_EQ(sheet.cell_type(0, 0), CellKind::Empty);
    ASSERT_TRUE(book->save(*foundation::files::memory_output(bytes), u"xlsx"));
    EXPECT_EQ(sheet.read_str(0, 0), u"Column1") << "applications accept nothing but strings";
}

TEST(RenameColumns, FindsThemInStructuredReferences) {
    const auto map = [](std::string_view table, std::string_view column) {
        const bool is_it = table == "T" && (column == "A" || column == "x[1]" || column == "#'");
        return is_it ? std::optional<std::string>("n'[]") : std::nullopt;
    };
    struct Case {
        const char *formula, *renamed;
    } const cases[] = {
        {"T[A]", "T[n'''[']]"},
        {"SUM(T[[#This Row],[A]])", "SUM(T[[#This Row],[n'''[']]])"},
        {"T[[#All],[A]:[B]]+T[[B]:[A]]", "T[[#All],[n'''[']]:[B]]+T[[B]:[n'''[']]]"},
        {"T[ [A] , [B] ]", "T[ [n'''[']] , [B] ]"},
        {"T[x'[1']]", "T[n'''[']]"},
        {"T['#'']", "T[n'''[']]"},
        {"T[B]", ""},
        {"U[A]", ""},
        {"T[#All]", ""},
        {"T[]", ""},
        {"T", ""},
        {"[1]!T[A]", ""},
        {"[A]", ""},
        {"\"T[A]\"", ""},
        {"T[A]+\"open", ""},
        {"T[[A", ""},
    };
    for (const Case& c : cases)
        EXPECT_EQ(rename_columns(c.formula, map).value_or(""), c.renamed) << c.formula;
}

class TableHeaders : public testing::Test {
  protected:
    TableHeaders() {
        std::vector<ZipItem> items = structured_book();
        for (ZipItem& item : items)
            if (const auto at = item.content.find("Data!$B$9+"); at != std::string::npos)
                item.content.insert(at, "SUM(Sales[Amount])+");
        std::ofstream(folder_.path() / "b.xlsx", std::ios::binary) << build_zip(items);
        EXPECT_TRUE(book_->load(folder_.file("b.xlsx"))) << book_->error_message();
    }
    /// After a save.
    std::string part(const std::string& name) {
        EXPECT_TRUE(book_->save(folder_.file("saved.xlsx"))) << book_->error_message();
        OpcPackage package(foundation::files::open_for_reading(folder_.file("saved.xlsx")));
        return read_all(*package.open_part(name));
    }

    const ScratchFolder folder_;
    std::unique_ptr<Book> book_ = xlCreateXMLBookW();
};

TEST_F(TableHeaders, NameTheColumns) {
    struct Case {
        std::function<bool(Sheet&)> change;
        const char *attribute, *reference;
        std::u16string header;
    } const cases[] = {
        {[](Sheet& s) { return s.write_str(0, 0, u"Su[m]\n&", nullptr); }, "Su[m]_x000a_&amp;",
         "Su'[m']\n&amp;", u"Su[m]\n&"},
        {[](Sheet& s) { return s.write_num(0, 0, 7.5, nullptr); }, "7.5", "7.5", u"7.5"},
        {[](Sheet& s) { return s.write_bool(0, 0, true, nullptr); }, "TRUE", "TRUE", u"TRUE"},
        {[](Sheet& s) { return s.write_blank(0, 0, nullptr); }, "Column1", "Column1", u"Column1"},
        {[](Sheet& s) { return s.clear(0, 0, 0, 0); }, "Column1", "Column1", u"Column1"},
        {[](Sheet& s) { return s.write_str(0, 0, u"Amount", nullptr); }, "Amount", "Amount",
         u"Amount"},
    };
    for (const Case& c : cases) {
        Sheet& data = *book_->get_sheet(0);
        ASSERT_TRUE(c.change(data));
        const std::string table = part("xl/tables/table1.xml");
        const std::string name = c.reference;
        EXPECT_THAT(table, HasSubstr("id=\"1\" name=\"" + std::string(c.attribute) + "\""));
        EXPECT_THAT(table, HasSubstr("Sales[[#This Row],[" + name + "]]+Report!A1"));
        EXPECT_THAT(part("xl/worksheets/sheet1.xml"), HasSubstr("SUM(Sales[" + name + "])+Data"));
        EXPECT_THAT(part("xl/workbook.xml"), HasSubstr(">SUM(Sales[" + name + "])+Data!$B$9"));
        EXPECT_EQ(data.read_str(0, 0), c.header);
    }
    ASSERT_TRUE(book_->load(folder_.file("b.xlsx")));
    ASSERT_TRUE(book_->get_sheet(0)->write_str(0, 2, u"beside it", nullptr));
    ASSERT_TRUE(book_->get_sheet(1)->write_str(0, 0, u"another sheet", nullptr));
    EXPECT_THAT(part("xl/tables/table1.xml"), HasSubstr("name=\"Amount\""));
}

TEST_F(TableHeaders, OfACopyNameItsColumnsOnly) {
    Sheet* copy = book_->insert_sheet(0, u"Copy", book_->get_sheet(0));
    ASSERT_NE(copy, nullptr) << book_->error_message();
    ASSERT_TRUE(copy->write_str(0, 0, u"Sum", nullptr));
    ASSERT_TRUE(book_->get_sheet(2)->set_name(u"Said"));
    EXPECT_THAT(part("xl/tables/table1.xml"), HasSubstr("[Amount]]+Said!A1"));
    EXPECT_THAT(part("xl/tables/table2.xml"), HasSubstr("Sales_2[[#This Row],[Sum]]+Said!A1"));
    EXPECT_THAT(part("xl/worksheets/sheet4.xml"), HasSubstr("SUM(Sales_2[Sum])+Copy!A1"));
    EXPECT_THAT(part("xl/worksheets/sheet1.xml"), HasSubstr("SUM(Sales[Amount])+Data!A1"));
    ASSERT_TRUE(book_->delete_sheet(0));
    EXPECT_THAT(part("xl/tables/table1.xml"), HasSubstr("name=\"Amount\""));
}

TEST_F(TableHeaders, AreTextsThatDiffer) {
    const std::string two = "<tableColumn id=\"1\" name=\"Amount\"";
    std::vector<ZipItem> items = structured_book();
    for (ZipItem& item : items)
        if (const auto at = item.content.find(two); at != std::string::npos)
            item.content.insert(at, "<tableColumn id=\"7\" name=\"Kept\"/>");
    std::ofstream(folder_.path() / "b.xlsx", std::ios::binary) << build_zip(items);
    struct Case {
        std::u16string written, header;
    } const cases[] = {
        {u"kept", u"kept2"},
        {u"KEPT2", u"KEPT2"},
        {u"", u"Column2"},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(book_->load(folder_.file("b.xlsx")));
        ASSERT_TRUE(book_->get_sheet(0)->write_str(0, 1, c.written, nullptr));
        const std::string table = part("xl/tables/table1.xml");
        EXPECT_EQ(book_->get_sheet(0)->read_str(0, 1), c.header);
        EXPECT_THAT(table, HasSubstr("<tableColumn id=\"7\" name=\"Kept\"/><tableColumn id=\"1\" "
                                     "name=\"" +
                                     foundation::unicode::to_utf8(c.header) + "\">"));
    }
}

} // namespace
} // namespace workbook::test
