// SPDX-License-Identifier: Apache-2.0
//
// JSON at its limits: what is no value, what nests too deep, numbers that JSON does not have.
#include <limits>

#include <gtest/gtest.h>

#include "foundation/json.h"

namespace foundation::json {
namespace {

std::string nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(ParseJson, TakesOneValueAndWhiteSpace) {
    EXPECT_EQ(parse(" \r\n {\"a\": [1, 2.5, \"\\u00e4\", null, true]} \t\n"),
              (Value{{"a", {1, 2.5, "ä", nullptr, true}}}));
    EXPECT_EQ(parse("\"text\""), "text");
    EXPECT_EQ(parse("0"), 0);
    EXPECT_NO_THROW(parse(nested(512)));
}

TEST(ParseJson, TellsWhatIsWrong) {
    const struct {
        std::string text;
        const char* reason;
    } cases[] = {
        {"", "incomplete JSON"},
        {"   ", "incomplete JSON"},
        {"{\"a\":1", "incomplete JSON"},
        {"{\"a\":1}garbage", "Parse incomplete"},
        {"{} {}", "Parse incomplete"},
        {"1 2", "Parse incomplete"},
        {"RATE_LIMIT_EXCEEDED", "syntax error"},
        {"{\"a\":NaN}", "syntax error"},
        {"[1,]", "syntax error"},
        {"\"line\nfeed\"", "syntax error"},
        {"\"\xFF\"", "syntax error"},
        {nested(513), "too deep"},
        {std::string(1'000'000, '['), "too deep"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text.substr(0, 40));
        try {
            parse(c.text);
            ADD_FAILURE() << "was taken";
        } catch (const ParseError& failure) {
            EXPECT_EQ(std::string(failure.what()), c.reason);
        }
    }
}

TEST(JsonText, HasNoNumbersThatJsonLacks) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(to_text({{"a", {nan, -infinity, infinity}}, {"b", nan}}),
              R"({"a":[null,null,null],"b":null})");
    EXPECT_EQ(to_text(nan), "null");
    EXPECT_EQ(to_text({{"text", "a\"\\\n/ä"}, {"number", 345}}),
              R"({"text":"a\"\\\n/ä","number":345})");
}

TEST(JsonText, GivesNumbersBackExactly) {
    for (const double number : {0.1, 1.0 / 3, 45352.5, 1e300, -2.5e-7, 5e-324, 9007199254740993.0})
        EXPECT_EQ(parse(to_text(number)).to_number<double>(), number);
}

} // namespace
} // namespace foundation::json
