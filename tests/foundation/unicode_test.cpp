// SPDX-License-Identifier: Apache-2.0
//
// Conversions and comparison of texts, with the sequences that decoders get wrong.
#include <gtest/gtest.h>

#include "foundation/unicode.h"

namespace foundation::unicode {
namespace {

std::u16string lone(char16_t unit) {
    return std::u16string(1, unit);
}

TEST(ToUtf16, ReplacesEachByteOutsideWellFormedSequences) {
    const std::u16string bad = u"\uFFFD";
    const struct {
        std::string_view utf8;
        std::u16string utf16;
    } cases[] = {
        {"", u""},
        {"a\xC3\xA9z", u"a\u00E9z"},
        {"\xE2\x82\xAC", u"\u20AC"},
        {"\xF0\x9F\x98\x80", u"\U0001F600"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xED\xA0\x80", lone(0xD800)},
        {"\xED\xBF\xBF", lone(0xDFFF)},
        {std::string_view("\0x", 2), std::u16string(u"\0x", 2)},
        {"\x80", bad},
        {"\xC0\xAF", bad + bad},                     // overlong '/'
        {"\xE0\x80\xAF", bad + bad + bad},           // overlong '/'
        {"\xF0\x8F\xBF\xBF", bad + bad + bad + bad}, // overlong U+FFFF
        {"\xF4\x90\x80\x80", bad + bad + bad + bad}, // beyond U+10FFFF
        {"\xF5\x80", bad + bad},
        {"\xFFz", bad + u"z"},
        {"\xE2\x82", bad + bad}, // cut off at the end
        {"\xE2\x82z", bad + bad + u"z"},
        {"\xC3\xC3\xA9", bad + u"\u00E9"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(to_utf16(c.utf8), c.utf16) << testing::PrintToString(c.utf8);
}

// The blocks of the fast path meet a wide character at every place of texts of every short length.
TEST(Conversions, FindOneWideCharacterAnywhere) {
    std::u16string reused = u"left over from the text before";
    std::string reused_utf8 = "left over from the text before";
    for (std::size_t length = 0; length <= 70; ++length) {
        for (std::size_t wide = 0; wide <= length; ++wide) {
            std::string utf8;
            std::u16string expected;
            for (std::size_t i = 0; i < length; ++i) {
                const char letter = static_cast<char>('a' + i % 26);
                utf8 += i == wide ? std::string("\xC3\xA9") : std::string(1, letter);
                expected += i == wide ? u'\u00E9' : static_cast<char16_t>(letter);
            }
            assign_utf16(reused, utf8);
            ASSERT_EQ(reused, expected) << length << ' ' << wide;
            assign_utf8(reused_utf8, expected);
            ASSERT_EQ(reused_utf8, utf8) << length << ' ' << wide;
        }
    }
}

TEST(Conversions, TakeLongTexts) {
    std::string utf8(100'000, 'x');
    utf8.insert(51'199, "\xF0\x9F\x98\x80");
    const std::u16string utf16 = to_utf16(utf8);
    EXPECT_EQ(utf16.size(), 100'002u);
    EXPECT_EQ(to_generalized_utf8(utf16), utf8);
}

TEST(GeneralizedUtf8, KeepsLoneSurrogatesThatUtf8Replaces) {
    const struct {
        std::u16string utf16;
        std::string generalized;
        std::string utf8;
    } cases[] = {
        {u"a\u00E9\u20AC\U0001F600", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80",
         "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
        {lone(0xD83D), "\xED\xA0\xBD", "\xEF\xBF\xBD"},
        {lone(0xDE00) + lone(0xD83D), "\xED\xB8\x80\xED\xA0\xBD", "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {lone(0xD83D) + u"x", "\xED\xA0\xBDx", "\xEF\xBF\xBDx"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(to_generalized_utf8(c.utf16), c.generalized);
        EXPECT_EQ(to_utf8(c.utf16), c.utf8);
        EXPECT_EQ(to_utf16(c.generalized), c.utf16);
    }
}

TEST(EqualIgnoringCase, UsesSimpleFoldings) {
    const struct {
        std::u16string a, b;
        bool equal;
    } cases[] = {
        {u"Sheet1", u"sHEET1", true},
        {u"", u"", true},
        {u"a", u"", false},
        {u"[", u"{", false}, // 32 apart like letters
        {u"@", u"`", false},
        {u"\u00C4rger", u"\u00E4RGER", true},
        {u"\u0416", u"\u0436", true},
        {u"\u03A3", u"\u03C2", true}, // capital and final sigma
        {u"\u212A", u"k", true},      // Kelvin sign
        {u"\u017F", u"S", true},      // long s
        {u"\u1E9E", u"\u00DF", true}, // sharp s, whose full folding is "ss"
        {u"\u00DF", u"ss", false},
        {u"\u1F88", u"\u1F80", true},
        {u"\u0130", u"i", false}, // Turkic only
        {u"\u0131", u"I", false},
        {u"\U00010400", u"\U00010428", true},
        {u"\U0001F600", u"\U0001F601", false},
        {lone(0xD801), lone(0xD802), false},
        {u"e\u0301", u"\u00E9", false}, // no normalisation
    };
    for (const auto& c : cases) {
        EXPECT_EQ(equal_ignoring_case(c.a, c.b), c.equal) << to_utf8(c.a) << ' ' << to_utf8(c.b);
        EXPECT_EQ(equal_ignoring_case(c.b, c.a), c.equal) << to_utf8(c.b) << ' ' << to_utf8(c.a);
    }
}

} // namespace
} // namespace foundation::unicode
