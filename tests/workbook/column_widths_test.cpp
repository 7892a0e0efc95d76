// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "workbook/cells/column_width.h"
#include "workbook/xlsx/reading/column_widths.h"

namespace workbook {
namespace {

TEST(ColumnSpans, AreRead) {
    const auto spans = read_column_spans(
        "<x:cols><x:col min=\"1\" max=\"2\" width=\"9.5\" style=\"3\"/><x:col min=\"4\" "
        "max=\"99999\"/><x:col min=\"0\" max=\"2\"/><x:col min=\"5\" max=\"4\"/><x:col max=\"4\"/>"
        "<x:col min=\"8\" max=\"8\" width=\"nan\"/></x:cols>");
    ASSERT_EQ(spans.size(), 3u);
    EXPECT_EQ(spans[0].first, 0);
    EXPECT_EQ(spans[0].last, 1);
    EXPECT_EQ(spans[0].width, 9.5);
    EXPECT_TRUE(spans[0].has_format);
    EXPECT_EQ(spans[0].format, 3u);
    EXPECT_EQ(spans[1].last, 16'383);
    EXPECT_FALSE(spans[1].has_format);
    EXPECT_EQ(spans[2].width, 0.0);
    EXPECT_TRUE(read_column_spans("").empty());
    EXPECT_TRUE(read_column_spans("<cols><col").empty());
}

TEST(ColumnWidths, AreSetWithinSpans) {
    const struct {
        const char* what;
        std::string before;
        std::map<int, double> widths;
        std::string after;
    } cases[] = {
        {"new element",
         "",
         {{2, 10.5}},
         "<cols><col min=\"3\" max=\"3\" width=\"10.5\" customWidth=\"1\"/></cols>"},
        {"neighbours of one width join",
         "",
         {{0, 8}, {1, 8}, {3, 8}},
         "<cols><col min=\"1\" max=\"2\" width=\"8\" customWidth=\"1\"/><col min=\"4\" max=\"4\" "
         "width=\"8\" customWidth=\"1\"/></cols>"},
        {"split in three, other attributes stay",
         "<cols><col min=\"1\" max=\"5\" width=\"9\" style=\"2\" hidden=\"1\"/></cols>",
         {{2, 20}},
         "<cols><col min=\"1\" max=\"2\" width=\"9\" style=\"2\" hidden=\"1\"/><col min=\"3\" "
         "max=\"3\" width=\"20\" style=\"2\" hidden=\"1\" customWidth=\"1\"/><col min=\"4\" "
         "max=\"5\" width=\"9\" style=\"2\" hidden=\"1\"/></cols>"},
        {"first and last of a span, and between spans",
         "<cols><col min=\"2\" max=\"3\" style=\"1\"/><col min=\"6\" max=\"6\" "
         "style=\"4\"/></cols>",
         {{1, 5}, {2, 6}, {4, 7}, {6, 8}},
         "<cols><col min=\"2\" max=\"2\" style=\"1\" width=\"5\" customWidth=\"1\"/><col min=\"3\" "
         "max=\"3\" style=\"1\" width=\"6\" customWidth=\"1\"/><col min=\"5\" max=\"5\" "
         "width=\"7\" customWidth=\"1\"/><col min=\"6\" max=\"6\" style=\"4\"/><col min=\"7\" "
         "max=\"7\" width=\"8\" customWidth=\"1\"/></cols>"},
        {"prefix",
         "<x:cols><x:col min=\"1\" max=\"1\" width=\"9\"/></x:cols>",
         {{0, 1.25}},
         "<x:cols><x:col min=\"1\" max=\"1\" width=\"1.25\" customWidth=\"1\"/></x:cols>"},
        {"overlapping and unsorted",
         "<cols><col min=\"4\" max=\"6\" width=\"2\"/><col min=\"1\" max=\"4\" "
         "width=\"1\"/></cols>",
         {},
         "<cols><col min=\"1\" max=\"4\" width=\"1\"/><col min=\"5\" max=\"6\" "
         "width=\"2\"/></cols>"},
        {"last column",
         "<cols><col min=\"1\" max=\"16384\" style=\"1\"/></cols>",
         {{16'383, 3}},
         "<cols><col min=\"1\" max=\"16383\" style=\"1\"/><col min=\"16384\" max=\"16384\" "
         "style=\"1\" width=\"3\" customWidth=\"1\"/></cols>"},
        {"nothing", "", {}, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(set_column_widths(c.before, "", c.widths), c.after) << c.what;
    EXPECT_EQ(set_column_widths("", "y:", {{0, 1}}),
              "<y:cols><y:col min=\"1\" max=\"1\" width=\"1\" customWidth=\"1\"/></y:cols>");
}

TEST(TextWidth, FollowsTheCharacters) {
    // ECMA-376 part 1, 18.3.1.13: n digits of 7 pixels and 5 of padding, in 256ths.
    for (int n = 1; n < 30; ++n)
        EXPECT_EQ(text_width(std::u16string(static_cast<std::size_t>(n), u'8')),
                  static_cast<int>((n * 7 + 5) / 7.0 * 256) / 256.0);
    const struct {
        std::u16string narrower, wider;
    } cases[] = {
        {u"illill", u"888888"},
        {u"888888", u"MWMWMW"},
        {u"abcdef", u"ABCDEF"},
        {u"abc", u"\u65E5\u672C\u8A9E"},
        {u"abc\u65E5", u"abc\u65E5\u672C"},
        {u"ab", u"\U0001F600\U0001F600"},
        {u"", u"i"},
    };
    for (const auto& c : cases)
        EXPECT_LT(text_width(c.narrower), text_width(c.wider));
    EXPECT_EQ(text_width(u"88\u4E2D88"), text_width(u"888888")) << "an ideograph is two wide";
    EXPECT_EQ(text_width(u"e\u0301"), text_width(u"e")) << "accents stand above";
    EXPECT_EQ(text_width(u"888\n88888\n8"), text_width(u"88888")) << "the widest line counts";
    EXPECT_EQ(text_width(std::u16string(32'767, u'W')), 255.0);
    EXPECT_GT(text_width(u"\xD800"), text_width(u""));
}

TEST(NumberWidth, FollowsWhatIsShown) {
    const struct {
        double value;
        bool is_date;
        std::u16string shown;
    } cases[] = {
        {0, false, u"0"},
        {-1234.5, false, u"-1234.5"},
        {0.1, false, u"0.1"},
        {1.0 / 3, false, u"0.3333333333"},
        {1e10, false, u"10000000000"},
        {1e300, false, u"1e+300"},
        {45000, true, u"00/00/0000"},
        {45000.5, true, u"00/00/0000 00:00"},
        {0.25, true, u"00:00:00"},
    };
    for (const auto& c : cases)
        EXPECT_NEAR(number_width(c.value, c.is_date), text_width(c.shown), 0.0) << c.value;
}

} // namespace
} // namespace workbook
