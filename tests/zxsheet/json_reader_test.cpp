// SPDX-License-Identifier: Apache-2.0
//
// JSON data as cells, and where JSON is wrong.
#include <sstream>

#include <gtest/gtest.h>

#include "zxsheet/cell_text.h"
#include "zxsheet/command_error.h"
#include "zxsheet/json_reader.h"

namespace zxsheet {
namespace {

/// Notes cells as "type:value", rows with '|' behind them.
class Notes : public CellSink {
  public:
    void set_place(const DataPlace& place) override {
        text += '<' + place.sheet.value_or("-") + ' ' + place.range.value_or("-") + '>';
    }
    void add(const CellValue& cell) override {
        text += ' ' + std::string(type_name(cell.type)) + ':' +
                plain_text(cell, {TextStyle::Dates::Serial, {}, false});
    }
    void end_row() override { text += '|'; }

    std::string text;
};

std::string noted(const std::string& json) {
    std::istringstream in(json);
    TextInput input(in, "data.json");
    Notes notes;
    read_json(input, notes);
    return notes.text;
}

TEST(ReadJson, TakesWhatReadPrints) {
    const struct {
        const char* json;
        const char* expected;
    } cases[] = {
        {R"({"sheet":"Data","range":"B2:C3","types":[["number","text"],["date","boolean"]],)"
         R"("values":[[1.5,"7"],["2024-03-01",true]]})",
         "<Data B2:C3> number:1.5 text:7| date:45352 boolean:true|"},
        {R"({"sheet":"2","range":null,"types":[],"values":[]})", "<2 ->"},
        {R"({"types":[["date","date","error","other","empty","number"]],)"
         R"("values":[[60,"1900-02-29T12:00:00","#N/A",null,null,null]]})",
         "<- -> date:60 date:60.5 text:#N/A empty: empty: empty:|"},
        // By kind, and rows of any length.
        {R"({"values":[[1,-2,1e3,18446744073709551615],["2024-03-01","1"],[],[null,false]]})",
         "<- -> number:1 number:-2 number:1000 number:1.8446744073709552e+19| "
         "text:2024-03-01 text:1|| empty: boolean:false|"},
        // To the last place, and what is nearly nothing.
        {R"({"values":[[0.30000000000000004,9007199254740993,1.7976931348623157e308,1e-999]]})",
         "<- -> number:0.30000000000000004 number:9.007199254740992e+15 "
         "number:1.7976931348623157e+308 number:0|"},
        {"\xEF\xBB\xBF {\"note\":{\"values\":[[1]],\"x\":[[[[2]]]]},\"values\":[[\"\xC3\xA9\"]]}\n",
         "<- -> text:\xC3\xA9|"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(noted(c.json), c.expected) << c.json;
    EXPECT_EQ(noted(R"({"values":[["a\u0000\ud83d\ude00"]],"more":1})"),
              std::string("<- -> text:a\0\xF0\x9F\x98\x80|", 18));
}

TEST(ReadJson, NamesLineAndColumnOfWhatIsWrong) {
    const struct {
        const char* json;
        const char* mentioned;
    } cases[] = {
        {"", "Line 1, column 0: This is not JSON: unexpected end of input"},
        {"{\"values\":[[1,\n 2,,3]]}", "Line 2, column 4: This is not JSON: unexpected ','"},
        {"{\"values\":[[1]]} x", "Line 1, column 18: This is not JSON"},
        {"{\"values\":[[1]]", "column 15: This is not JSON"},
        {"{\"values\":[[\"\xE9\"]]}", "column 14: This is not JSON: the text is not UTF-8"},
        {"{\"values\":[[\"\\ud800\"]]}", "not JSON"},
        {"{\"values\":[[1e999]]}", "too large"},
        {"1", "The data must be an object"},
        {"{}", "no \"values\""},
        {"{\"sheet\":\"a\",\"types\":[[\"number\"]]}", "no \"values\""},
        {"{\"values\":[1]}", "An array is expected here, not a number"},
        {"{\"values\":{}}", "An object does not belong here"},
        {"{\"values\":[[[1]]]}", "An array does not belong here"},
        {"{\"sheet\":1,\"values\":[]}", "Text is expected here"},
        {"{\"types\":[[\"money\"]],\"values\":[]}", "no type 'money'"},
        {"{\"types\":[[null]],\"values\":[]}", "name of a type"},
        {"{\"values\":[[1]],\"types\":[[\"number\"]]}", "before \"values\""},
        {"{\"values\":[[1]],\"values\":[[1]]}", "\"values\" already"},
        {"[{\"a\":1,\"b\":2,\"a\":3}]", "column 17: The object has \"a\" twice"},
        {"{\"types\":[[\"number\"]],\"values\":[[\"1\"]]}",
         "column 36: The value is not of the type 'number'"},
        {"{\"types\":[[\"text\"]],\"values\":[[1]]}", "type 'text'"},
        {"{\"types\":[[\"empty\"]],\"values\":[[0]]}", "type 'empty'"},
        {"{\"types\":[[\"date\"]],\"values\":[[\"1.3.2024\"]]}", "not an ISO 8601 date"},
        {"{\"types\":[[\"number\"]],\"values\":[[1,2]]}", "more values than types"},
        {"{\"types\":[[\"number\",\"text\"]],\"values\":[[1]]}", "1 values but 2 types"},
        {"{\"types\":[[\"number\"]],\"values\":[[1],[]]}", "2 rows of values but 1"},
    };
    for (const auto& c : cases) {
        try {
            ADD_FAILURE() << "taken: " << c.json << " as " << noted(c.json);
        } catch (const CommandError& e) {
            EXPECT_EQ(e.code(), ExitCode::Failed);
            EXPECT_NE(std::string(e.what()).find(c.mentioned), std::string::npos)
                << c.json << " gave " << e.what();
        }
    }
    const std::string deep = "{\"x\":" + std::string(100'000, '[');
    EXPECT_THROW(noted(deep), CommandError);
    for (const char* beginning : {"{\"values\":[[\"", "{\"x\":1", "{\"values\":[[1", "{\"1"})
        EXPECT_THROW(noted(beginning + std::string(2'000'000, '1')), CommandError) << beginning;
    std::string many = "{\"values\":[[1";
    for (int i = 0; i < 1'000'000; ++i)
        many += ",1";
    EXPECT_NO_THROW(noted(many + "]]}")) << "only single values are limited";
}

} // namespace
} // namespace zxsheet
