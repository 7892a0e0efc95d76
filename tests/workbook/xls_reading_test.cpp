// SPDX-License-Identifier: Apache-2.0
//
// Record by record what XLS books hold, and how damaged ones end.
#include <cmath>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/output_file.h"
#include "foundation/unicode.h"
#include "tests/workbook/xls_stream.h"
#include "workbook/cells/string_pool.h"
#include "workbook/cfb/compound_writer.h"
#include "workbook/library.h"
#include "workbook/xls/reading/byte_text.h"
#include "workbook/xls/reading/shared_strings.h"

namespace workbook {
namespace {

using test::bound_sheet;
using test::Bytes;
using test::cell;
using test::Stream;
using ::testing::HasSubstr;

std::unique_ptr<Book> load(const Stream& stream) {
    auto book = xlCreateBookW();
    EXPECT_TRUE(book->load(stream.file())) << book->error_message();
    return book;
}

/// A cell in one line: "1.5", "date 2", "text", TRUE, #N/A, "blank", "".
std::string shown(const Sheet& sheet, int row, int column) {
    const std::string text = foundation::unicode::to_utf8(sheet.read_str(row, column));
    switch (sheet.cell_type(row, column)) {
    case CellKind::Number: {
        std::string number = std::to_string(sheet.read_num(row, column));
        number.erase(number.find_last_not_of('0') + 1);
        return (sheet.is_date(row, column) ? "date " : "") + number;
    }
    case CellKind::String:
        return '"' + text + '"';
    case CellKind::Boolean:
        return sheet.read_bool(row, column) ? "TRUE" : "FALSE";
    case CellKind::Blank:
        return "blank";
    case CellKind::Error:
        return text;
    default:
        return "";
    }
}

std::vector<std::string> row_of(const Sheet& sheet, int row, int end_column) {
    std::vector<std::string> cells;
    for (int column = 0; column < end_column; ++column)
        cells.push_back(shown(sheet, row, column));
    return cells;
}

using Row = std::vector<std::string>;

Bytes formula(int row, int column, const Bytes& result) {
    return cell(row, column).text(result.str()).u16(0).u32(0).u16(0);
}

Bytes special(unsigned kind, unsigned value) {
    return Bytes().u8(kind).u8(0).u8(value).u8(0).u16(0).u16(0xFFFF);
}

Bytes string8(std::string_view text) {
    return Bytes().u16(static_cast<unsigned>(text.size())).u8(0).text(text);
}

// Two date formats: one built in, one of the file's own.
Stream formats8() {
    const auto xf = [](unsigned number_format, unsigned protection) {
        return Bytes().u16(0).u16(number_format).u16(protection).text(std::string(14, '\0'));
    };
    return Stream()
        .record(0x041E, Bytes().u16(164).text(string8("yyyy-mm-dd").str()))
        .record(0x00E0, xf(0, 1))
        .record(0x00E0, xf(14, 0))
        .record(0x00E0, xf(164, 1));
}

TEST(XlsReading, MakesCellsOfEveryRecord) {
    const Stream strings = formats8().record(
        0x00FC, Bytes().u32(2).u32(2).text(string8("one").str()).text(string8("two").str()));
    const Stream sheet =
        Stream()
            .record(0x0012, Bytes().u16(0))
            .record(0x0099, Bytes().u16(12 * 256))
            .record(0x0055, Bytes().u16(8)) // less exact
            .record(0x0203, cell(0, 0).f64(1.5))
            .record(0x027E, cell(0, 1, 1).u32(44000u << 2 | 2)) // RK: an integer
            .record(0x027E,
                    cell(0, 2).u32(static_cast<std::uint32_t>(-1234) << 2 | 3)) // hundredths
            .record(0x027E, cell(0, 3).u32(0x3FF80000u)) // RK: upper end of 1.5
            .record(0x00BD,
                    Bytes().u16(0).u16(4).u16(0).u32(1u << 2 | 2).u16(2).u32(2u << 2 | 2).u16(5))
            .record(0x00FD, cell(1, 0).u32(1))
            .record(0x0204, cell(1, 1).text(string8("label").str()))
            .record(0x00D6, cell(1, 2).text(string8("rich").str()).u16(1).u16(0).u16(0))
            .record(0x0201, cell(1, 3))
            .record(0x00BE, Bytes().u16(1).u16(4).u16(0).u16(1).u16(5))
            .record(0x0205, cell(2, 0).u8(1).u8(0))
            .record(0x0205, cell(2, 1).u8(0x2A).u8(1))
            .record(0x0006, formula(3, 0, Bytes().f64(2.25)))
            .record(0x0006, formula(3, 1, special(0, 0)))
            .record(0x04BC, Bytes().u32(0).u32(0)) // shared formula in between
            .record(0x0207, string8("result"))
            .record(0x0006, formula(3, 2, special(1, 1)))
            .record(0x0006, formula(3, 3, special(2, 0x07)))
            .record(0x0006, formula(3, 4, special(3, 0)))
            .record(0x0006, formula(3, 5, special(0, 0))) // its string is missing
            .record(0x0203, cell(3, 6).f64(1))
            .record(0x0006, formula(3, 7, Bytes().f64(-HUGE_VAL))) // nearly the mark of strings
            .record(0x0207, string8("not of a formula"));
    const auto book = load(book8(strings, sheet));
    const Sheet& data = *book->get_sheet(0);
    EXPECT_EQ(row_of(data, 0, 6), (Row{"1.5", "date 44000.", "-12.34", "1.5", "1.", "date 2."}));
    EXPECT_EQ(row_of(data, 1, 6),
              (Row{"\"two\"", "\"label\"", "\"rich\"", "blank", "blank", "blank"}));
    EXPECT_EQ(row_of(data, 2, 3), (Row{"TRUE", "#N/A", ""}));
    EXPECT_EQ(row_of(data, 3, 8),
              (Row{"2.25", "\"result\"", "TRUE", "#DIV/0!", "\"\"", "\"\"", "1.", "-inf"}));
    EXPECT_FALSE(data.protect());
    EXPECT_EQ(data.column_width(0), 12.0);
    EXPECT_EQ(data.cell_format(1, 4)->num_format(), 0);
    EXPECT_EQ(data.cell_format(1, 5)->num_format(), 14);
    EXPECT_FALSE(data.cell_format(0, 1)->locked());
    EXPECT_TRUE(data.cell_format(0, 0)->locked());
}

TEST(XlsReading, JoinsSharedStringsAcrossContinueRecords) {
    const std::u16string greek = u"\u03B1\u03B2";
    const Stream sst =
        Stream()
            .record(0x00FC,
                    Bytes().u32(9).u32(9).u16(4).u8(0).text("ab")) // cut within the characters
            .record(0x003C, Bytes()
                                .u8(1)
                                .wide(greek) // and wide from here on
                                .u16(3)
                                .u8(0x0D)
                                .u16(1)
                                .u32(6)
                                .wide(u"x\u00E9"))          // runs and phonetic data, cut again
            .record(0x003C)                                 // nothing at all
            .record(0x003C, Bytes().u8(0).text("z").u16(0)) // cut within the runs
            .record(0x003C, Bytes().u16(0).text("phonet").u16(2).u8(1).u16(
                                0xD83D)) // cut within a surrogate pair
            .record(0x003C, Bytes()
                                .u8(1)
                                .u16(0xDE00)
                                .u16(2)
                                .u8(0)
                                .text("\xE4\xFF")
                                .u16(0)
                                .u8(0)
                                .u16(4)
                                .u8(1)
                                .u16(0xDC00)
                                .u16(0xD800)
                                .u16(u'x')
                                .u16(0xD800)); // no pairs
    const char* const expected[] = {
        "ab\u03B1\u03B2", "x\u00E9z", "\U0001F600",
        "\u00E4\u00FF",   "",         "\xED\xB0\x80\xED\xA0\x80x\xED\xA0\x80"};
    StringPool all;
    read_shared_strings(sst.str(), 0, 99, all);
    ASSERT_EQ(all.size(), std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i)
        EXPECT_EQ(all[i], expected[i]);
    StringPool some;
    read_shared_strings(sst.str(), 0, 2, some);
    EXPECT_EQ(some.size(), 2u);
}

TEST(XlsReading, ReadsWhatIsAroundTheCells) {
    Stream repeated; // more cells than the row has columns, with a format that does not exist
    for (int i = 0; i < 300; ++i)
        repeated.record(0x0203, cell(7, 3, 9).f64(i));
    const Stream sheet =
        Stream()
            .record(0x0055, Bytes().u16(8))
            .record(0x007D, Bytes().u16(1).u16(2).u16(20 * 256).u16(1).u16(0))
            .record(0x0012, Bytes().u16(1))
            .record(0x0208, Bytes().u16(4).u16(0).u16(0).u16(255).u32(0).u32(0x80 | 2u << 16))
            .bof8(0x20)
            .record(0x0203, cell(0, 0).f64(9))
            .eof() // a chart's own cells
            .append(repeated)
            .record(0x00E5, Bytes()
                                .u16(2)
                                .u16(0)
                                .u16(1)
                                .u16(0)
                                .u16(2)
                                .u16(5)
                                .u16(5)
                                .u16(1)
                                .u16(3)
                                .u16(7)
                                .u16(8)
                                .u16(1)
                                .u16(2)); // not counted
    const auto book = load(book8(formats8(), sheet));
    const Sheet& data = *book->get_sheet(0);
    EXPECT_TRUE(data.protect());
    EXPECT_EQ(data.column_width(1), 20.0);
    EXPECT_EQ(data.column_width(0), 9.140625);
    EXPECT_EQ(data.cell_format(0, 2)->num_format(), 14);
    EXPECT_EQ(data.cell_format(4, 2)->num_format(), 164);
    EXPECT_EQ(data.cell_format(0, 0), nullptr);
    EXPECT_EQ(shown(data, 0, 0), "");
    EXPECT_EQ(data.first_row(), 7);
    EXPECT_EQ(shown(data, 7, 3), "299.");
    ASSERT_EQ(data.merge_size(), 2);
    int area[4];
    ASSERT_TRUE(data.merge(1, area[0], area[1], area[2], area[3]));
    EXPECT_THAT(area, ::testing::ElementsAre(5, 5, 1, 3));
    // A format that is added is not the one of the cell with a format of its own making.
    Format* added = book->add_format();
    ASSERT_NE(added, nullptr);
    EXPECT_NE(data.cell_format(7, 3), added);
}

TEST(XlsReading, ListsSheetsOfEveryKind) {
    const auto globals = [](std::size_t end) {
        return Stream()
            .bof8(0x05)
            .record(0x0022, Bytes().u16(1))
            .record(0x0085, bound_sheet(end, 0, 0, "Data"))
            .record(0x0085, bound_sheet(end, 1, 2, "Chart"))
            .record(0x0085, bound_sheet(end, 2, 1, "Macros")) // the cells of the first sheet
            .record(0x0085, bound_sheet(0xFFFFFF, 1, 6, "Module"))
            .eof();
    };
    const Stream stream =
        globals(globals(0).size()).bof8(0x10).record(0x0203, cell(0, 0).f64(4)).eof();
    const auto book = load(stream);
    EXPECT_TRUE(book->is_date_1904());
    ASSERT_EQ(book->sheet_count(), 4);
    EXPECT_EQ(book->sheet_type(1), SheetKind::Chart);
    EXPECT_EQ(book->get_sheet(1), nullptr);
    EXPECT_EQ(book->get_sheet(2)->hidden(), SheetState::VeryHidden);
    EXPECT_EQ(book->get_sheet(2)->end_row(), 0);
    EXPECT_EQ(book->load_warnings().size(), 1u);
    EXPECT_EQ(book->get_sheet(3)->hidden(), SheetState::Hidden);
    EXPECT_EQ(book->get_sheet(3)->end_row(), 0);
    EXPECT_EQ(book->get_sheet_name(3), u"Module");
    EXPECT_FALSE(book->get_sheet(3)->write_bool(0, 0, true, nullptr));
    EXPECT_EQ(book->insert_sheet(0, u"Copy", book->get_sheet(2)), nullptr);
    ASSERT_TRUE(book->load_info(stream.file()));
    EXPECT_EQ(book->get_sheet(0), nullptr);
    EXPECT_EQ(book->sheet_count(), 4);
}

TEST(XlsReading, FindsNamesThatAreOneRectangle) {
    const auto name = [](unsigned scope, unsigned flags, std::string_view text,
                         const Bytes& tokens) {
        return Bytes()
            .u16(flags)
            .u8(0)
            .u8(static_cast<unsigned>(text.size()))
            .u16(static_cast<unsigned>(tokens.str().size()))
            .u16(0)
            .u16(scope)
            .u32(0)
            .u8(0)
            .text(text)
            .text(tokens.str());
    };
    const Bytes area = Bytes().u8(0x3B).u16(0).u16(1).u16(2).u16(0x4003).u16(0xC004);
    const Bytes other_book = Bytes().u8(0x3A).u16(1).u16(1).u16(2);
    const Stream globals =
        Stream()
            .record(0x01AE, Bytes().u16(1).u16(0x0401))
            .record(0x01AE, Bytes().u16(1).text("\1\0\0x"))
            .record(0x0017, Bytes().u16(2).u16(0).u16(0).u16(0).u16(1).u16(0).u16(0))
            .record(0x0018, name(0, 0, "Table", area))
            .record(0x0018, name(1, 0, "Own", Bytes().u8(0x44).u16(8).u16(9)))
            .record(0x0018, name(0, 0x20, "\x06", area))
            .record(0x0018, name(0, 0, "Elsewhere", other_book))
            .record(0x0018, name(0, 0, "Sum", Bytes(area).text(area.str())))
            .record(0x0018, name(0, 0, "Cut", area).str().substr(0, 14));
    const auto book = load(book8(globals, Stream()));
    const Sheet& data = *book->get_sheet(0);
    int a[4];
    ASSERT_TRUE(data.named_range(u"TABLE", a[0], a[1], a[2], a[3]));
    EXPECT_THAT(a, ::testing::ElementsAre(1, 2, 3, 4));
    ASSERT_TRUE(data.named_range(u"own", a[0], a[1], a[2], a[3]));
    EXPECT_THAT(a, ::testing::ElementsAre(8, 8, 9, 9));
    EXPECT_TRUE(data.named_range(u"_xlnm.Print_Area", a[0], a[1], a[2], a[3]));
    EXPECT_FALSE(data.named_range(u"Elsewhere", a[0], a[1], a[2], a[3]));
    EXPECT_FALSE(data.named_range(u"Sum", a[0], a[1], a[2], a[3]));

    const Bytes area5 =
        Bytes().u8(0x3B).u16(0xFFFF).u32(0).u32(0).u16(0).u16(0).u16(0xC001).u16(2).u8(3).u8(4);
    const Stream biff5 = Stream()
                             .record(0x0809, Bytes().u16(0x0500).u16(0x10).u32(0))
                             .record(0x0018, Bytes()
                                                 .u16(0)
                                                 .u8(0)
                                                 .u8(3)
                                                 .u16(static_cast<unsigned>(area5.str().size()))
                                                 .u32(0)
                                                 .u32(0)
                                                 .text("Old")
                                                 .text(area5.str()))
                             .eof();
    const auto old = load(biff5);
    ASSERT_TRUE(old->get_sheet(0)->named_range(u"old", a[0], a[1], a[2], a[3]));
    EXPECT_THAT(a, ::testing::ElementsAre(1, 2, 3, 4));
}

TEST(XlsReading, LoadsSomeRowsAndTheOthersWhenTheyAreNeeded) {
    const Stream strings = Stream().record(
        0x00FC, Bytes().u32(2).u32(2).text(string8("one").str()).text(string8("two").str()));
    Stream sheet;
    for (int row = 0; row < 4; ++row)
        sheet.record(0x00FD, cell(row, 0).u32(row == 3 ? 1 : 0));
    const Stream stream = book8(strings, sheet);
    auto book = xlCreateBookW();
    ASSERT_TRUE(book->load_partially(stream.file(), 0, 1, 2)) << book->error_message();
    const Sheet& data = *book->get_sheet(0);
    EXPECT_EQ(data.first_row(), 1);
    EXPECT_EQ(data.end_row(), 3);
    EXPECT_TRUE(data.need_rows(3, 3));
    EXPECT_EQ(shown(data, 3, 0), "\"two\"");
    EXPECT_EQ(shown(data, 1, 0), "\"one\"");
    EXPECT_EQ(data.end_row(), 3);
    EXPECT_FALSE(book->load_sheet(stream.file(), 1) && book->get_sheet(0) == nullptr);
}

// --- Older versions

TEST(XlsReading, ReadsBiff2) {
    const auto cell2 = [](int row, int column, unsigned first, unsigned second) {
        return Bytes()
            .u16(static_cast<unsigned>(row))
            .u16(static_cast<unsigned>(column))
            .u8(first)
            .u8(second)
            .u8(0);
    };
    const auto sheet = [&](bool has_xf) {
        Stream stream = Stream().record(0x0009, Bytes().u16(2).u16(0x10));
        if (has_xf)
            stream.record(0x0043, Bytes().u8(0).u8(0).u8(0).u8(0))
                .record(0x0043, Bytes().u8(0).u8(0).u8(12 | 0x40).u8(0));
        return stream.record(0x0002, cell2(0, 0, 0x40, 12).u16(65000))
            .record(0x0003, cell2(0, 1, 1, 0).f64(1.5))
            .record(0x0004, cell2(0, 2, 0, 0)
                                .u8(2)
                                .text("\x80"
                                      "a"))
            .record(0x0001, cell2(0, 3, 0, 0))
            .record(0x0005, cell2(0, 4, 0, 0).u8(0x17).u8(1))
            .record(0x0006, cell2(0, 5, 0, 0).text(special(0, 0).str()).u8(0).u8(0))
            .record(0x0007, Bytes().u8(1).text("s"))
            .record(0x0044, Bytes().u16(1))
            .record(0x0003, cell2(0, 6, 63, 0).f64(2))
            .eof();
    };
    const auto plain = load(sheet(false));
    EXPECT_EQ(plain->get_sheet_name(0), u"Sheet1");
    EXPECT_EQ(row_of(*plain->get_sheet(0), 0, 6),
              (Row{"date 65000.", "1.5", "\"\u20ACa\"", "blank", "#REF!", "\"s\""}));
    EXPECT_TRUE(plain->get_sheet(0)->cell_format(0, 0)->locked());
    EXPECT_FALSE(plain->get_sheet(0)->cell_format(0, 1)->locked());
    const auto with_xf = load(sheet(true));
    EXPECT_EQ(row_of(*with_xf->get_sheet(0), 0, 2), (Row{"65000.", "date 1.5"}));
    EXPECT_EQ(shown(*with_xf->get_sheet(0), 0, 6), "date 2.");
}

TEST(XlsReading, ReadsBiff4BooksOfSeveralSheets) {
    const auto sheet = [](std::string_view name, unsigned format, unsigned kind = 0x10) {
        const Stream cells =
            Stream()
                .record(0x0409, Bytes().u16(4).u16(kind))
                .record(0x0042, Bytes().u16(1253))
                .record(0x0022, Bytes().u16(1))
                .record(0x041E, Bytes().u16(0).u8(1).text("0"))
                .record(0x041E, Bytes().u16(0).u8(2).text(format == 1 ? "yy" : "00"))
                .record(0x0443, Bytes().u8(0).u8(format).u16(1).u32(0).u32(0))
                .record(0x0203, cell(0, 0).f64(3))
                .record(0x0406, formula(0, 1, special(0, 0)))
                .record(0x0207, Bytes().u16(1).text("\xE1"))
                .eof();
        return Stream()
            .record(0x008F, Bytes()
                                .u32(static_cast<std::uint32_t>(cells.size()))
                                .u8(static_cast<unsigned>(name.size()))
                                .text(name))
            .append(cells);
    };
    const Stream stream = Stream()
                              .record(0x0409, Bytes().u16(4).u16(0x100))
                              .append(sheet("Numbers", 0))
                              .append(sheet("Dates", 1))
                              .append(sheet("Curve", 0, 0x20))
                              .eof();
    const auto book = load(stream);
    ASSERT_EQ(book->sheet_count(), 3);
    EXPECT_TRUE(book->is_date_1904());
    EXPECT_EQ(book->sheet_type(2), SheetKind::Chart);
    EXPECT_EQ(book->get_sheet_name(1), u"Dates");
    EXPECT_EQ(row_of(*book->get_sheet(0), 0, 2), (Row{"3.", "\"\u03B1\""}));
    EXPECT_EQ(row_of(*book->get_sheet(1), 0, 2), (Row{"date 3.", "\"\u03B1\""}));
}

TEST(XlsReading, DecodesByteStringsByCodePage) {
    struct Case {
        unsigned code_page; ///< 0: not stated
        unsigned charset;   ///< of the first font
        const char* bytes;
        const char* expected;
    } const cases[] = {
        {1252, 204, "\x80\xE4\x81", "\u20AC\u00E4\u0081"},
        {0x8001, 0, "\x99", "\u2122"},
        {1251, 0, "\xCF\xF0", "\u041F\u0440"},
        {0, 204, "\xCF\xF0", "\u041F\u0440"},
        {367, 161, "\xE1", "\u03B1"},
        {932, 0, "\x93\xFA\x96\x7B", "\u65E5\u672C"},
        {10000, 0, "\x8A", "\u00E4"},
        {0x8000, 0, "\x8A", "\u00E4"},
        {10006, 0, "\xC3\xE1\xFD\x8A", "\u039F\u03B1\u0390\u00E4"}, // all of the Macintosh
        {10010, 0, "\xBE\x8A", "\u0103\u00E4"},
        {10081, 0, "\xDA\xDD\x8A", "\u011E\u0131\u00E4"},
        {10082, 0, "\xE8\x8A", "\u010D\u00E4"},
        {9999, 0, "\xE4", "\u00E4"},
        {0, 0, "plain", "plain"},
    };
    for (const Case& c : cases) {
        Stream globals = Stream().record(0x0809, Bytes().u16(0x0500).u16(0x10).u32(0));
        if (c.code_page != 0) globals.record(0x0042, Bytes().u16(c.code_page));
        globals.record(0x0031, Bytes().text(std::string(12, '\0')).u8(c.charset).u8(0).u8(0));
        globals.record(0x0204,
                       cell(0, 0).u16(static_cast<unsigned>(std::strlen(c.bytes))).text(c.bytes));
        const auto book = load(globals.eof());
        EXPECT_EQ(foundation::unicode::to_utf8(book->get_sheet(0)->read_str(0, 0)), c.expected)
            << c.code_page << ' ' << c.charset;
    }
}

// --- Damage

TEST(XlsReading, EndsInACauseWhenDamaged) {
    const auto with_cell = [](const Bytes& data) {
        return book8(Stream(), Stream().record(0x0203, data));
    };
    const Stream whole = with_cell(cell(0, 0).f64(1));
    struct Case {
        const char* what;
        Stream stream;
        const char* message;
    } const cases[] = {
        {"column", with_cell(cell(0, 256).f64(1)), "column 257"},
        {"short record", with_cell(cell(0, 0).u8(1)), "a NUMBER record has 7 bytes"},
        {"position past the end",
         Stream().bof8(0x05).record(0x0085, bound_sheet(9999, 0, 0, "Data")).eof(), "BOF"},
        {"position of another record",
         Stream().bof8(0x05).record(0x0085, bound_sheet(4, 0, 0, "Data")).eof(), "sheet \"Data\""},
        {"no such string", book8(Stream(), Stream().record(0x00FD, cell(1, 1).u32(7))), "cell B2"},
    };
    for (const Case& c : cases) {
        auto book = xlCreateBookW();
        EXPECT_FALSE(book->load(c.stream.file())) << c.what;
        EXPECT_EQ(book->error_kind(), ErrorKind::Damaged) << c.what;
        EXPECT_THAT(book->error_message(), HasSubstr(c.message)) << c.what;
    }
    // Cut within the data of a record.
    for (std::size_t begin = 0; begin < whole.size();) {
        const std::size_t end = begin + 4 + load_u16(whole.str().data() + begin + 2);
        for (std::size_t size = begin + 4; size < end; ++size) {
            auto book = xlCreateBookW();
            EXPECT_FALSE(book->load(foundation::files::memory_file(whole.str().substr(0, size))))
                << size;
        }
        begin = end;
    }
}

TEST(XlsReading, SaysWhereASheetHasNoEnd) {
    const std::string whole = book8(Stream(), Stream().record(0x0203, cell(0, 0).f64(1))).str();
    auto book = xlCreateBookW();
    ASSERT_TRUE(book->load(foundation::files::memory_file(whole.substr(0, whole.size() - 4))));
    EXPECT_EQ(shown(*book->get_sheet(0), 0, 0), "1.");
    ASSERT_EQ(book->load_warnings().size(), 1u);
    EXPECT_THAT(book->load_warnings()[0], HasSubstr("\"Data\" has no end"));
}

// Sheets whose first record leads into the same cells are not many times as many cells.
TEST(XlsReading, RefusesSheetsThatShareTheirRecords) {
    constexpr int kSheets = 40;
    constexpr std::size_t kHeadBytes = 24; // a BOF record and the header of another
    Stream cells;
    for (int row = 0; row < 1000; ++row)
        cells.record(0x0203, cell(row, 0).f64(row));
    const auto globals = [](std::size_t begin) {
        Stream stream = Stream().bof8(0x05);
        for (int i = 0; i < kSheets; ++i)
            stream.record(0x0085, bound_sheet(begin + static_cast<std::size_t>(i) * kHeadBytes, 0,
                                              0, "S" + std::to_string(i)));
        return stream.eof();
    };
    std::string stream = globals(globals(0).size()).str();
    for (int i = kSheets; i-- > 0;) {
        stream += Stream().bof8(0x10).str();
        append_u16(stream, 0x00EC);
        append_u16(stream, static_cast<std::uint16_t>(static_cast<std::size_t>(i) * kHeadBytes));
    }
    stream += Stream(cells).eof().str();
    auto book = xlCreateBookW();
    EXPECT_FALSE(book->load(foundation::files::memory_file(stream)));
    EXPECT_EQ(book->error_kind(), ErrorKind::Damaged);
    EXPECT_THAT(book->error_message(), HasSubstr("records in common"));
    EXPECT_TRUE(book->load_sheet(foundation::files::memory_file(stream), 7));
    EXPECT_EQ(book->get_sheet(7)->end_row(), 1000);
}

// --- Which engine

TEST(XlsReading, ContentDecidesNotTheCreator) {
    const Stream xls = book8(Stream(), Stream().record(0x0203, cell(0, 0).f64(1)));
    auto made_for_xml = xlCreateXMLBookW();
    ASSERT_TRUE(made_for_xml->load(xls.file())) << made_for_xml->error_message();
    EXPECT_EQ(shown(*made_for_xml->get_sheet(0), 0, 0), "1.");
    std::string both; // as files for old and new applications at once have them
    CompoundChanges streams;
    streams.written = {{u"Book", [](ByteSink& sink) { sink.append("old"); }},
                       {u"Workbook", [&](ByteSink& sink) { sink.append(xls.str()); }}};
    write_compound_file(nullptr, streams, *foundation::files::memory_output(both));
    ASSERT_TRUE(made_for_xml->load(foundation::files::memory_file(both)));
    auto made_for_xls = xlCreateBookW();
    ASSERT_TRUE(made_for_xls->load(
        foundation::unicode::to_utf16(ZX_TEST_DATA "/booleans_errors_formulas.xlsx")))
        << made_for_xls->error_message();
    EXPECT_GT(made_for_xls->sheet_count(), 0);
    EXPECT_FALSE(made_for_xls->load(foundation::files::memory_file("a,b\n1,2\n")));
    EXPECT_EQ(made_for_xls->error_kind(), ErrorKind::NotAWorkbook);
    EXPECT_THAT(made_for_xls->error_message(), HasSubstr("text file"));
}

Bytes formula_of(int row, int column, const Bytes& result, const Bytes& tokens) {
    return cell(row, column)
        .text(result.str())
        .u16(0)
        .u32(0)
        .u16(static_cast<unsigned>(tokens.str().size()))
        .text(tokens.str());
}

TEST(XlsFormulas, AreTextInTheirPlaces) {
    const Bytes number = Bytes().f64(5), string = special(0, 0);
    const auto in_group_of = [](unsigned row, unsigned column) {
        return Bytes().u8(0x01).u16(row).u16(column);
    };
    const Bytes twice_above = Bytes().u8(0x4C).u16(0xFFFF).u16(0xC000).u8(0x1E).u16(2).u8(0x05);
    const Bytes on_sheet = Bytes().u8(0x5A).u16(0).u16(0).u16(0xC000);
    const Stream globals =
        Stream()
            .record(0x01AE, Bytes().u16(1).u16(0x0401))
            .record(0x0017, Bytes().u16(1).u16(0).u16(0).u16(0))
            .record(0x0018, Bytes().u16(0)) // is cut, and has its number
            .record(0x0018,
                    Bytes().u16(0).u8(0).u8(4).u16(0).u16(0).u16(0).u32(0).u8(0).text("Rate"));
    const Stream sheet =
        Stream()
            .record(0x0006, formula_of(0, 0, number, Bytes().u8(0x1E).u16(5)))
            .record(0x0006, formula_of(1, 0, number, in_group_of(1, 0)))
            .record(0x04BC,
                    Bytes().u16(1).u16(2).u8(0).u8(0).u8(0).u8(2).u16(9).text(twice_above.str()))
            .record(0x0006, formula_of(2, 0, number, in_group_of(1, 0)))
            .record(0x0006, formula_of(3, 0, string, in_group_of(3, 0)))
            .record(0x0221,
                    Bytes().u16(3).u16(3).u8(0).u8(1).u16(0).u32(0).u16(7).text(on_sheet.str()))
            .record(0x0207, string8("x"))
            .record(0x0006, formula_of(3, 1, number, in_group_of(3, 0)))
            .record(0x0006, formula_of(4, 0, string, Bytes().u8(0x23).u32(2)))
            .record(0x0006, formula_of(4, 1, number, Bytes().u8(0x23).u32(1)))
            .record(0x0006, formula_of(4, 2, number, in_group_of(9, 9)))
            .append(Stream().bof8(0x20).record(0x0006, formula_of(5, 0, number, on_sheet)).eof());
    const auto book = load(test::book8(globals, sheet));
    const Sheet& data = *book->get_sheet(0);
    const auto formulas = [&data](int first_row, int last_row) {
        std::vector<std::string> found;
        EXPECT_TRUE(data.visit_formulas(first_row, last_row, [&found](const FormulaCell& cell) {
            found.push_back(std::to_string(cell.row) + ' ' + std::to_string(cell.column) + ' ' +
                            std::string(cell.text) + (cell.has_result ? "" : " ?"));
        }));
        return found;
    };
    EXPECT_EQ(formulas(0, 9), (Row{"0 0 5", "1 0 A1*2", "2 0 A2*2", "3 0 Data!A1", "4 0 Rate ?"}));
    EXPECT_EQ(formulas(2, 2), (Row{"2 0 A2*2"}));
    EXPECT_EQ(data.formulas_without_result(), 1u);
    EXPECT_EQ(book->scan_sheet(0)->formulas_without_result, 1u);
}

} // namespace
} // namespace workbook
