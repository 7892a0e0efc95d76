// SPDX-License-Identifier: Apache-2.0
//
// CSV and TSV text as fields.
#include <sstream>
#include <vector>

#include <gtest/gtest.h>

#include "zxsheet/command_error.h"
#include "zxsheet/delimited_reader.h"

namespace zxsheet {
namespace {

using Rows = std::vector<std::vector<std::string>>;

Rows rows_of(const std::string& text, char separator = '\0') {
    std::istringstream in(text);
    TextInput input(in, "data.csv");
    DelimitedReader reader(input, separator);
    Rows rows;
    bool begins_row = true;
    std::string field;
    while (const auto end = reader.next(field)) {
        if (begins_row) rows.emplace_back();
        rows.back().push_back(field);
        begins_row = *end == FieldEnd::Row;
    }
    EXPECT_TRUE(begins_row) << "a row has no end";
    return rows;
}

std::string utf16(const std::u16string& text, bool is_big) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += is_big ? std::string{high, low} : std::string{low, high};
    }
    return bytes;
}

TEST(DelimitedReader, SplitsRowsAndFields) {
    const struct {
        std::string text;
        Rows rows;
    } cases[] = {
        {"", {}},
        {"a", {{"a"}}},
        {"a,b\nc,d\n", {{"a", "b"}, {"c", "d"}}},
        {"a,b\r\nc,d", {{"a", "b"}, {"c", "d"}}},
        {"a\rb\r", {{"a"}, {"b"}}},
        {"a\n\rb", {{"a"}, {""}, {"b"}}},
        {"\n", {{""}}},
        {"a\n\nb\n\n", {{"a"}, {""}, {"b"}, {""}}},
        {"a,", {{"a", ""}}},
        {",\n,,", {{"", ""}, {"", "", ""}}},
        {"a,b,c\nd\ne,f", {{"a", "b", "c"}, {"d"}, {"e", "f"}}},
        {"\"a,b\",\"c\"\"d\"", {{"a,b", "c\"d"}}},
        {"\"two\nlines\",\"three\r\n\rlines\"\n", {{"two\nlines", "three\r\n\rlines"}}},
        {"\"\"", {{""}}},
        {"\"\"\n\"\"\"\"", {{""}, {"\""}}},
        {"5\" pipe,\"a\"b\"c", {{"5\" pipe", "ab\"c"}}},
        {" \"a\"", {{" \"a\""}}},
        {"\xEF\xBB\xBF"
         "a,b",
         {{"a", "b"}}},
        {"\xEF\xBB\xBF\"a\"", {{"a"}}},
        {"a;b\n1,5;2", {{"a", "b"}, {"1,5", "2"}}},
        {"\"a,b\";c", {{"a,b", "c"}}},
        {"a;b,c", {{"a;b", "c"}}},
        {"\"a;b\"\nc;d", {{"a;b"}, {"c;d"}}},
        {std::string("a\0b,c", 5), {{std::string("a\0b", 3), "c"}}},
        {"\xFF\xFE" + utf16(u"\u00E9,b\r\n\U0001F600", false),
         {{"\xC3\xA9", "b"}, {"\xF0\x9F\x98\x80"}}},
        {"\xFE\xFF" + utf16(u"a;\u8868", true), {{"a", "\xE8\xA1\xA8"}}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(rows_of(c.text), c.rows) << testing::PrintToString(c.text);
    EXPECT_EQ(rows_of("a,b;c\td\n\"e\tf\"\t", '\t'), (Rows{{"a,b;c", "d"}, {"e\tf", ""}}));
}

// Characters and line ends that two blocks share.
TEST(DelimitedReader, JoinsBlocks) {
    for (std::size_t before : {65533u, 65534u, 65535u, 65536u, 65537u}) {
        const std::string filler = std::string(60000, 'x') + "," + std::string(before - 60001, 'y');
        const Rows expected{{filler.substr(0, 60000), filler.substr(60001) + "\"\xC3\xA9"}, {"z"}};
        EXPECT_EQ(rows_of(filler + "\"\xC3\xA9\r\nz"), expected) << before;
        const Rows plain{{filler.substr(0, 60000), filler.substr(60001)}, {"z"}};
        EXPECT_EQ(rows_of(filler + "\r\nz"), plain) << before;
    }
    const std::u16string smile = u"\U0001F600";
    for (std::size_t before : {32766u, 32767u, 32768u}) {
        const std::u16string text = std::u16string(before, u',') + smile;
        EXPECT_EQ(rows_of("\xFF\xFE" + utf16(text, false))[0].back(), "\xF0\x9F\x98\x80") << before;
    }
}

// The search for a field's end looks at 16 bytes at once.
TEST(DelimitedReader, FindsEndsAndBadBytesAnywhere) {
    for (std::size_t length = 0; length <= 40; ++length) {
        const std::string field(length, 'x');
        const Rows expected{{field, "\xC3\xA9"}, {field}, {field + "\xC3\xA9"}};
        EXPECT_EQ(rows_of(field + ",\xC3\xA9\n" + field + "\r" + field + "\xC3\xA9"), expected);
        for (std::size_t bad = 0; bad < length; ++bad) {
            std::string text = field + ",b\n";
            text[bad] = '\xE9';
            EXPECT_THROW(rows_of(text), CommandError) << length << ' ' << bad;
        }
    }
}

TEST(DelimitedReader, NamesTheLineOfWhatIsWrong) {
    const struct {
        std::string text;
        const char* mentioned;
    } cases[] = {
        {"a\nb,\"c\nd\n", "Line 2: A field begins with a quote"},
        {"\"a\r\nb\"\r\nc,\"", "Line 3: A field begins with a quote"},
        {"a\rb\xE9\r", "Line 2: The text is not UTF-8"},
        {"\xED\xA0\xBD\xED\xB8\x80", "Line 1: The text is not UTF-8"},
        {"a\n\"" + std::string(200'000, 'b'), "Line 2: A field is longer"},
        {std::string("\xFF\xFE"
                     "a\0b",
                     5),
         "within a character"},
    };
    for (const auto& c : cases) {
        try {
            rows_of(c.text);
            ADD_FAILURE() << "taken: " << c.mentioned;
        } catch (const CommandError& e) {
            EXPECT_EQ(e.code(), ExitCode::Failed);
            EXPECT_NE(std::string(e.what()).find(c.mentioned), std::string::npos) << e.what();
            EXPECT_TRUE(std::string(e.what()).starts_with("data.csv: ")) << e.what();
        }
    }
}

} // namespace
} // namespace zxsheet
