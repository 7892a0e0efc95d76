// SPDX-License-Identifier: Apache-2.0
//
// A1 notation in both directions, the limits of formats, defined names in place of ranges.
#include <optional>
#include <ostream>

#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "spreadsheet/range.h"
#include "tests/spreadsheet/fake_sheet.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {

void PrintTo(const Range& r, std::ostream* out) {
    *out << '{' << r.first_row << ", " << r.first_column << ", " << r.last_row << ", "
         << r.last_column << '}';
}

namespace {

using book::format;
constexpr Range kUsed{2, 3, 20, 8};
constexpr Range kNothing{0, 0, -1, -1};

struct Parsed {
    Range range;
    range_type type{99};
    sheet::boundedRange bounded{sheet::boundedRange::no};
};

Parsed parse(std::u16string_view text, format fmt, Range used = kUsed, bool strict = false) {
    Parsed parsed;
    parsed.range =
        parse_range(text.data(), text.size(), fmt, used, strict, &parsed.type, &parsed.bounded);
    return parsed;
}

TEST(ParseRange, ReadsEveryShape) {
    const struct {
        std::u16string_view text;
        format fmt;
        Range used, range;
        range_type type;
        bool bounded = false;
    } cases[] = {
        {u"B3", format::XLSX, kUsed, {2, 1, 2, 1}, range_type::single_cell},
        {u" a1 ", format::XLSX, kUsed, {0, 0, 0, 0}, range_type::single_cell},
        {u"A000000000000001", format::XLSX, kUsed, {0, 0, 0, 0}, range_type::single_cell},
        {u"A1:D20", format::XLSX, kUsed, {0, 0, 19, 3}, range_type::two_corner},
        {u"A1 : b2", format::XLSX, kUsed, {0, 0, 1, 1}, range_type::two_corner},
        {u"A1:A1", format::XLSX, kUsed, {0, 0, 0, 0}, range_type::two_corner},
        {u"B5:A1", format::XLSX, kUsed, {0, 0, 4, 1}, range_type::two_corner},
        {u"A5:B1", format::XLSX, kUsed, {0, 0, 4, 1}, range_type::two_corner},
        {u"C:A", format::XLSX, kUsed, {2, 0, 20, 2}, range_type::column_only},
        {u"10:2", format::XLSX, kUsed, {1, 3, 9, 8}, range_type::row_only},
        {u"A:B", format::XLSX, kNothing, {0, 0, 1048575, 1}, range_type::column_only, true},
        {u"A:B", format::XLS, kNothing, {0, 0, 65535, 1}, range_type::column_only, true},
        {u"2:3", format::XLS, kNothing, {1, 0, 2, 255}, range_type::row_only, true},
        {u"A:B", format::XLSX, {-1, 0, 5, 5}, {0, 0, 1048575, 1}, range_type::column_only, true},
        {u"A:B", format::XLSX, {5, 5, 5, 4}, {0, 0, 1048575, 1}, range_type::column_only, true},
        {u"A:B", format::XLSX, {5, -1, 9, 5}, {5, 0, 9, 1}, range_type::column_only},
        {u"XFD1048576",
         format::XLSX,
         kUsed,
         {1048575, 16383, 1048575, 16383},
         range_type::single_cell},
        {u"IV65536", format::XLS, kUsed, {65535, 255, 65535, 255}, range_type::single_cell},
        {u"ZZZ1", format::GSHEET, kUsed, {0, 18277, 0, 18277}, range_type::single_cell},
        // 100,000 rows from row one times 100 columns from column one: just within the ceiling
        {u"CW100001", format::GSHEET, kUsed, {100000, 100, 100000, 100}, range_type::single_cell},
        {u"A10000001", format::GSHEET, kUsed, {10000000, 0, 10000000, 0}, range_type::single_cell},
        {u"A1:J1000000", format::GSHEET, kUsed, {0, 0, 999999, 9}, range_type::two_corner},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(foundation::unicode::to_utf8(c.text));
        const Parsed parsed = parse(c.text, c.fmt, c.used);
        EXPECT_EQ(parsed.range, c.range);
        EXPECT_EQ(parsed.type, c.type);
        EXPECT_EQ(parsed.bounded == sheet::boundedRange::yes, c.bounded);
    }
}

TEST(ParseRange, ReportsWhatIsWrong) {
    const struct {
        std::u16string_view text;
        format fmt;
        int id;
        bool strict = false;
    } cases[] = {
        {u"", format::XLSX, 22},
        {u"A", format::XLSX, 22},
        {u"1", format::XLSX, 22},
        {u":", format::XLSX, 22},
        {u"A:", format::XLSX, 22},
        {u"A1:", format::XLSX, 22},
        {u"A1:B", format::XLSX, 22},
        {u"A1:5", format::XLSX, 22},
        {u"A:5", format::XLSX, 22},
        {u"1:B", format::XLSX, 22},
        {u"A:B5", format::XLSX, 22},
        {u"A1B2", format::XLSX, 22},
        {u"A B", format::XLSX, 22},
        {u"A 1", format::XLSX, 22},
        {u"\tA1", format::XLSX, 22},
        {u"A0", format::XLSX, 22},
        {u"A1:B0", format::XLSX, 22},
        {u"0:5", format::XLSX, 22},
        {u"B5:A1", format::XLSX, 22, true},
        {u"B1:A5", format::XLSX, 22, true},
        {u"C:A", format::XLSX, 22, true},
        {u"5:1", format::XLSX, 22, true},
        {u"A1\t", format::XLSX, 21},
        {u"A1-B2", format::XLSX, 21},
        {u"A1:B2:C3", format::XLSX, 21},
        {u"$A$1", format::XLSX, 22},
        {u"\uFF211", format::XLSX, 22}, // a full-width letter
        {u"XFE1", format::XLSX, 24},
        {u"XFE1 -", format::XLSX, 24},
        {u"A1048577", format::XLSX, 24},
        {u"A1:XFE2", format::XLSX, 24},
        {u"A1:A1048577", format::XLSX, 24},
        {u"IW1", format::XLS, 24},
        {u"A65537", format::XLS, 24},
        {u"A2147483648", format::XLSX, 24},
        {u"A4294967297", format::XLSX, 24}, // row one in 32 bits
        {u"A99999999999999999999999", format::GSHEET, 24},
        {u"AAAAAAAAAAAAAAAAAAAA1", format::XLSX, 24},
        {u"A1:ZZZZZZZZZZZZZZZZZZZZZ9", format::GSHEET, 24},
        {u"AAAA1", format::GSHEET, 24},
        {u"CW100002", format::GSHEET, 24}, // 100,001 times 100
        {u"A1:J1000001", format::GSHEET, 24},
    };
    for (const auto& c : cases)
        EXPECT_EQ(thrown_id([&] { parse(c.text, c.fmt, kUsed, c.strict); }), c.id)
            << foundation::unicode::to_utf8(c.text);
}

TEST(ParseRange, TakesNoMoreThanItsLengthAndNeedsNoOutPointers) {
    const std::u16string text = u"A1:B22";
    EXPECT_EQ(parse_range(text.data(), 5, format::XLSX, kNothing, false, nullptr, nullptr),
              (Range{0, 0, 1, 1}));
    EXPECT_EQ(parse_range(u"1:1", 3, format::XLSX, kNothing, false, nullptr, nullptr).last_column,
              16383);
}

TEST(SheetRange, FallsBackToDefinedNames) {
    const auto sheet = std::make_shared<FakeSheet>();
    sheet->used = kUsed;
    sheet->names[u"Totals"] = {9, 9, 9, 12};
    sheet->names[u"XFE7"] = {1, 1, 1, 1};
    const struct {
        std::u16string_view text;
        format fmt;
        std::optional<Range> range;
        int type_or_id;
    } cases[] = {
        {u"A:B", format::XLSX, Range{2, 0, 20, 1}, 2},
        {u"Totals", format::XLSX, Range{9, 9, 9, 12}, 4},
        {u"XFE7", format::XLSX, Range{1, 1, 1, 1}, 4},
        {u"Sales", format::XLSX, std::nullopt, 23},
        {u"A1 and more", format::XLSX, std::nullopt, 23},
        {u"XFE1", format::XLSX, std::nullopt, 25},
        {u"A1:XFE2", format::XLSX, std::nullopt, 24},
        {u"AAAA1", format::GSHEET, std::nullopt, 54},
        {u"A1:AAAA2", format::GSHEET, std::nullopt, 52},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(foundation::unicode::to_utf8(c.text));
        range_type type{99};
        std::optional<Range> range;
        const int id = thrown_id([&] {
            range = sheet_range(c.text.data(), c.text.size(), sheet, c.fmt, false, &type, nullptr);
        });
        EXPECT_EQ(range, c.range);
        EXPECT_EQ(c.range ? static_cast<int>(type) : id, c.type_or_id);
    }
    EXPECT_EQ(sheet.use_count(), 1);
}

TEST(RangeString, WritesBothCornersUnlessThereIsOneCell) {
    const struct {
        Range range;
        std::u16string text;
    } cases[] = {
        {{0, 0, 0, 0}, u"A1"},           {{2, 1, 2, 1}, u"B3"},
        {{0, 0, 19, 3}, u"A1:D20"},      {{0, 25, 0, 26}, u"Z1:AA1"},
        {{0, 701, 0, 702}, u"ZZ1:AAA1"}, {{0, 0, 1048575, 16383}, u"A1:XFD1048576"},
        {{0, 0, -1, -1}, u""},           {{4, 3, 9, 2}, u""},
        {{4, 3, 9, 1}, u"D5:B10"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(range_string(c.range), c.text);
}

TEST(RangeLimits, FollowTheFormat) {
    EXPECT_TRUE(is_valid_range(65535, 255, format::XLS));
    EXPECT_FALSE(is_valid_range(65536, 255, format::XLS));
    EXPECT_FALSE(is_valid_range(65535, 256, format::XLS));
    EXPECT_FALSE(is_valid_range(-1, 0, format::XLSX));
    EXPECT_FALSE(is_valid_range(0, -1, format::XLSX));
    EXPECT_FALSE(is_within_limits({-1, 0, 3, 3}, format::XLSX));
    EXPECT_FALSE(is_within_limits({3, 3, 2, 4}, format::GSHEET));
    EXPECT_TRUE(is_within_limits({0, 0, 9999999, 0}, format::GSHEET));
}

TEST(GetRangeTypeString, IsEmptyForAnyOtherValue) {
    EXPECT_EQ(getRangeTypeString(range_type::named), u"named");
    EXPECT_EQ(getRangeTypeString(range_type::two_corner), u"two-corner");
    EXPECT_EQ(getRangeTypeString(static_cast<range_type>(6)), u"");
}

TEST(CellTypes, FillsOneTypePerCell) {
    FakeSheet sheet;
    EXPECT_EQ(sheet.ISheet::cell_types({0, 0, 1, 2}), std::vector(6, cell_type::number));
    sheet.refuse_types = true;
    EXPECT_TRUE(sheet.ISheet::cell_types(kNothing).empty());
    EXPECT_TRUE(sheet.ISheet::cell_types({0, 5, 0, 1}).empty());
}

} // namespace
} // namespace spreadsheet
