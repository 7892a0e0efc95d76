// SPDX-License-Identifier: Apache-2.0
//
// Books and sheets beside the emulator of the service: what was asked for is there afterwards.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/book_factory.h"
#include "spreadsheet/online.h"
#include "tests/spreadsheet/gsheet/emulated_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using test::Object;
using test::Value;

constexpr const char* kKinds = "sample-sheet-kinds";
constexpr const char* kTypes = "sample-cell-types";
constexpr const char* kProtection = "sample-protection";
constexpr const char* kBudget = "demo-budget-0000000000000000000000000000001";

/// Hands out cells of one text each, converted to the type that is asked for.
struct Cells {
    std::vector<std::u16string> texts;
    std::size_t next = 0;

    const std::u16string& take() { return texts.at(next++); }
    static Cells& of(void* context) { return *static_cast<Cells*>(context); }
    static double number_of(const std::u16string& text) {
        return std::stod(std::string(text.begin(), text.end()));
    }
    CellProvider provider() {
        next = 0;
        return {this,
                [](void* context) { return of(context).take(); },
                [](void* context) { return number_of(of(context).take()); },
                [](void* context) { return SerialDatenum{number_of(of(context).take())}; },
                [](void* context) { return of(context).take() == u"TRUE"; },
                [](void* context) { of(context).take(); }};
    }
};

std::vector<std::u16string> texts_of(const ISheet& sheet, const Range& range) {
    std::vector<std::u16string> texts;
    sheet.read(range, StringBuilder{
                          &texts, [](void* context, const std::u16string& text) {
                              static_cast<std::vector<std::u16string>*>(context)->push_back(text);
                          }});
    return texts;
}

class EmulatedBook : public test::EmulatedService {
  protected:
    std::string titles(const std::string& id) const {
        std::string joined;
        const Value book = state(id);
        for (const Value& sheet : book.as_object().at("sheets").as_array())
            joined += std::string(sheet.as_object().at("title").as_string().c_str()) + ",";
        return joined;
    }
    static std::string local_titles(const IBook& book) {
        std::string joined;
        for (const std::u16string& name : book.get_sheet_names())
            joined += std::string(name.begin(), name.end()) + ",";
        return joined;
    }
};

TEST_F(EmulatedBook, OpensByIdentifierAndFindsEverySheet) {
    const auto book = open(kKinds);
    EXPECT_EQ(book->num_sheets(), 7u);
    EXPECT_EQ(book->sheet(u"hIDDEN")->hidden(), sheet::hidden::hidden);
    EXPECT_EQ(book->sheet_type(1), sheet::type::chart);
    EXPECT_EQ(thrown_id([&] { book->sheet_type(6); }), 17);
    EXPECT_EQ(book->sheet(std::size_t{6}), nullptr);
    EXPECT_EQ(methods().size(), 1u);
    const struct {
        const char16_t* title;
        const char16_t* text;
    } cases[] = {{u"D3", u"a title like a cell"},
                 {u"Bob's data", u"a title with a quote"},
                 {u"Tabelle äöü \U0001F335", u"a title beyond ASCII"}};
    for (const auto& c : cases) {
        const auto sheet = book->sheet(c.title);
        ASSERT_NE(sheet, nullptr);
        EXPECT_EQ(texts_of(*sheet, {0, 0, 0, 0}), (std::vector<std::u16string>{c.text}));
        EXPECT_EQ(sheet->used_range(), (Range{0, 0, 0, 0}));
    }
    EXPECT_EQ(book->sheet(u"Grid")->used_range(), (Range{0, 0, 1, 1}));
    EXPECT_EQ(book->sheet(u"Hidden")->used_range(), (Range{0, 0, -1, -1}));
    EXPECT_EQ(thrown_id([&] { open("nowhere"); }), 42);
    EXPECT_EQ(thrown_id([&] { open("sample-private"); }), 45);
    EXPECT_EQ(load_book_from_file_with_sheetNames(foundation::unicode::to_utf16(kKinds),
                                                  book::format::GSHEET)
                  ->get_sheet_names()[2],
              u"Hidden");
}

TEST_F(EmulatedBook, TellsTypesOfRealCells) {
    const auto sheet = open(kTypes)->sheet(std::size_t{0});
    const struct {
        Range row;
        const char* types;
    } cases[] = {
        {{0, 0, 0, 5}, "124333"}, // entered: number, text, boolean, date, time, both
        {{1, 0, 1, 5}, "124316"}, // computed; date and time together count as a number
        {{2, 0, 2, 1}, "66"},     {{3, 0, 3, 5}, "003331"},
        {{4, 0, 4, 5}, "111112"}, {{5, 0, 5, 4}, "22141"},
    };
    methods();
    for (const auto& c : cases) {
        std::string digits;
        for (const cell_type type : sheet->cell_types(c.row))
            digits += static_cast<char>('0' + static_cast<int>(type));
        EXPECT_EQ(digits, c.types) << c.row.first_row;
    }
    EXPECT_EQ(methods().size(), std::size(cases));
    EXPECT_EQ(texts_of(*sheet, {0, 0, 0, 3}),
              (std::vector<std::u16string>{u"1.5", u"text", u"TRUE", u"45352"}));
    EXPECT_EQ(
        texts_of(*sheet, {5, 0, 5, 4}),
        (std::vector<std::u16string>{u"two\nlines", u"quote \" backslash \\ ümlaut \U0001F335",
                                     u"0", u"FALSE", u"-2.5e-07"}));
    std::vector<double> numbers(6);
    sheet->read({3, 0, 3, 5}, numbers.data());
    EXPECT_EQ(numbers[2], 59);
    EXPECT_EQ(numbers[3], 61);
    EXPECT_EQ(numbers[4], 45352.5);
    EXPECT_EQ(sheet->used_range().last_row, 5);
}

TEST_F(EmulatedBook, ChangesItsListOfSheets) {
    const auto book = create_new_book(1, book::format::GSHEET, book::interactive::google, u"Fresh");
    const std::u16string wide = book->get_file_name(true);
    const std::string id(wide.begin(), wide.end());
    const auto check = [&](const std::string& expected) {
        EXPECT_EQ(titles(id), expected);
        EXPECT_EQ(local_titles(*book), expected);
        EXPECT_EQ(local_titles(*open(id.c_str())), expected);
    };
    check("Sheet1,");
    const auto first = book->sheet(std::size_t{0});
    add_sheet(book, 1, u"C", u"");
    const auto added = add_sheet(book, 0, u"A", u"");
    EXPECT_EQ(added->name(), u"A");
    check("A,Sheet1,C,");
    first->name(u"B");
    check("A,B,C,");
    Cells cells{{u"42"}};
    const cell_type number = cell_type::number;
    first->write({0, 0, 0, 0}, &number, cells.provider(), false);
    const auto copy = add_sheet(book, 1, u"Copy/of B", u"b");
    EXPECT_EQ(texts_of(*copy, {0, 0, 0, 0}), (std::vector<std::u16string>{u"42"}));
    check("A,Copy/of B,B,C,");
    add_sheet(book, 4, u"Last", u"B");
    check("A,Copy/of B,B,C,Last,");
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 0, u"a", u""); }), 47) << "titles are unique";
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 0, u"a", u"B"); }), 47) << "the copy is taken away";
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 0, std::u16string(101, u'x'), u""); }), 41);
    EXPECT_EQ(thrown_id([&] { add_sheet(book, 0, u"x", u"unknown"); }), 6);
    check("A,Copy/of B,B,C,Last,");
    for (const auto& [from, to, expected] :
         {std::tuple<std::size_t, std::size_t, const char*>{0, 4, "Copy/of B,B,C,Last,A,"},
          {4, 0, "A,Copy/of B,B,C,Last,"},
          {1, 3, "A,B,C,Copy/of B,Last,"},
          {3, 2, "A,B,Copy/of B,C,Last,"}}) {
        const auto moved = book->sheet(from);
        reorder_sheet(book, from, to);
        EXPECT_EQ(book->sheet(to), moved);
        check(expected);
    }
    book->remove_sheet(2);
    check("A,B,C,Last,");
    EXPECT_EQ(thrown_id([&] { copy->name(); }), 6);
    EXPECT_EQ(thrown_id([&] { copy->read({0, 0, 0, 0}, static_cast<double*>(nullptr)); }), 6);
    EXPECT_EQ(thrown_id([&] { book->remove_sheet(4); }), 6);
    EXPECT_EQ(book->sheet(std::size_t{1}), first);
    for (int count = 0; count < 3; ++count)
        book->remove_sheet(0);
    EXPECT_EQ(thrown_id([&] { book->remove_sheet(0); }), 46);
    check("Last,");
}

TEST_F(EmulatedBook, WritesAndReadsBack) {
    const Range range{1, 1, 3, 2};
    const cell_type types[] = {cell_type::number,  cell_type::text, cell_type::date,
                               cell_type::boolean, cell_type::date, cell_type::empty};
    const std::vector<std::u16string> texts{
        u"0.1", u"ü \"x\" \U0001F335", u"45352.5", u"TRUE", u"61", u""};
    for (const bool preserve_format : {false, true}) {
        service.reset("samples");
        const auto sheet = open(kKinds)->sheet(u"Bob's data");
        Cells cells{texts};
        sheet->write(range, types, cells.provider(), preserve_format);
        EXPECT_EQ(texts_of(*sheet, range), texts);
        EXPECT_EQ(sheet->cell_types(range), (std::vector<cell_type>(types, types + 6)));
        EXPECT_EQ(sheet->used_range(), (Range{0, 0, 3, 2}));
        EXPECT_TRUE(sheet->is_range_writeable(range));
        sheet->clear(range);
        EXPECT_EQ(texts_of(*sheet, range), (std::vector<std::u16string>(6)));
        EXPECT_EQ(open(kKinds)->sheet(u"Bob's data")->used_range(), (Range{0, 0, 0, 0}));
    }
}

TEST_F(EmulatedBook, KeepsOtherFormatsOnlyWhenAskedTo) {
    for (const bool preserve_format : {false, true}) {
        service.reset("samples");
        const auto sheet = open(kBudget)->sheet(u"Expenses");
        const cell_type number = cell_type::number;
        Cells cells{{u"99"}};
        sheet->write({3, 2, 3, 2}, &number, cells.provider(), preserve_format);
        const Value cell = sheet_state(kBudget, 0).as_object().at("cells").as_object().at("C4");
        EXPECT_EQ(cell.as_object().contains("format"), preserve_format);
        EXPECT_EQ(cell.as_object().at("value"), Value(Object({{"numberValue", 99}})));
    }
}

TEST_F(EmulatedBook, FitsTheGrid) {
    const auto sheet = open(kKinds)->sheet(std::size_t{0}); // 20 by 5
    const auto size = [&] {
        const Object grid = sheet_state(kKinds, 0).as_object();
        return std::vector<std::int64_t>{grid.at("rows").as_int64(), grid.at("columns").as_int64()};
    };
    const cell_type number = cell_type::number;
    Cells cells{{u"1"}};
    for (const Range& beyond : {Range{29, 6, 29, 6}, Range{29, 0, 29, 0}, Range{0, 6, 0, 6}})
        EXPECT_TRUE(sheet->is_range_writeable(beyond)) << range_string(beyond).size();
    sheet->write({29, 6, 29, 6}, &number, cells.provider(), true);
    EXPECT_EQ(size(), (std::vector<std::int64_t>{30, 7}));
    sheet->write({29, 6, 29, 6}, &number, cells.provider(), false);
    EXPECT_EQ(size(), (std::vector<std::int64_t>{30, 7}));
    EXPECT_EQ(texts_of(*sheet, {29, 6, 29, 6}), (std::vector<std::u16string>{u"1"}));

    service.control(
        foundation::http::HttpMethod::Post, "files",
        Object({{"id", "tall"},
                {"sheets", test::Array({Object(
                               {{"title", "Tall"}, {"rows", 1'000'000}, {"columns", 9}})})}}));
    const auto tall = open("tall")->sheet(std::size_t{0});
    const std::vector<cell_type> types(20, number);
    Cells row{std::vector<std::u16string>(20, u"7")};
    tall->write({0, 0, 0, 19}, types.data(), row.provider(), false);
    const Object grid = sheet_state("tall", 0).as_object();
    EXPECT_EQ(grid.at("rows"), Value(500'000));
    EXPECT_EQ(grid.at("columns"), Value(20));

    const Object used({{"A600", Object({{"value", Object({{"numberValue", 1}})}})}});
    const Object sheet_of_wide(
        {{"title", "Wide"}, {"rows", 1000}, {"columns", 5000}, {"cells", used}});
    service.control(foundation::http::HttpMethod::Post, "files",
                    Object({{"id", "wide"}, {"sheets", test::Array({sheet_of_wide})}}));
    const auto wide = open("wide")->sheet(std::size_t{0});
    const std::vector<cell_type> many(18'277, number);
    Cells long_row{std::vector<std::u16string>(many.size(), u"7")};
    EXPECT_EQ(
        thrown_id([&] {
            online_sheet(wide)->replace({0, 0, 0, 18'276}, many.data(), long_row.provider(), false);
        }),
        52)
        << "no row that is in use is deleted";
}

TEST_F(EmulatedBook, ProtectsAndTakesProtectionAway) {
    const auto book = open(kProtection);
    const auto whole = book->sheet(std::size_t{0});
    const auto part = book->sheet(std::size_t{1});
    EXPECT_TRUE(whole->is_protected());
    EXPECT_FALSE(part->is_protected());
    EXPECT_FALSE(whole->is_range_writeable({1, 1, 3, 2}));
    EXPECT_TRUE(part->is_range_writeable({0, 0, 1, 4}));
    whole->set_protected(false);
    EXPECT_TRUE(whole->is_range_writeable({0, 0, 9, 4}));
    part->set_protected(true);
    EXPECT_TRUE(part->is_protected());
    EXPECT_TRUE(open(kProtection)->sheet(std::size_t{1})->is_protected());
    EXPECT_EQ(thrown_id([&] { part->set_protected(true); }), 47) << "once is enough";
    part->set_protected(false);
    EXPECT_FALSE(part->is_protected());
    EXPECT_FALSE(part->is_range_writeable({2, 0, 2, 0})) << "the rows stay protected";
}

TEST_F(EmulatedBook, DissolvesMergesFitsColumnsAndFindsNames) {
    const auto book = open(kBudget);
    const auto sheet = book->sheet(u"Expenses");
    EXPECT_EQ(sheet_state(kBudget, 0).as_object().at("merges").as_array().size(), 1u);
    sheet->unmerge({0, 0, 9, 4});
    EXPECT_TRUE(sheet_state(kBudget, 0).as_object().at("merges").as_array().empty());
    sheet->auto_fit_column_widths({0, 1, 9, 2});
    const Value widths = sheet_state(kBudget, 0).as_object().at("columnPixels");
    EXPECT_TRUE(widths.as_object().contains("B") && widths.as_object().contains("C"));
    EXPECT_EQ(widths.as_object().size(), 2u);
    EXPECT_EQ(sheet->named_range(u"aMOUNTS"), (Range{3, 2, 8, 2}));
    EXPECT_EQ(thrown_id([&] { sheet->named_range(u"Income_by_source"); }), 23);
    EXPECT_EQ(book->sheet(u"Income")->named_range(u"Income_by_source"), (Range{1, 0, 2, 1}));
    EXPECT_EQ(thrown_id([&] { sheet->named_range(u"Unknown"); }), 23);
    const std::u16string name = u"Amounts";
    EXPECT_EQ(
        sheet_range(name.data(), name.size(), sheet, book::format::GSHEET, false, nullptr, nullptr),
        (Range{3, 2, 8, 2}));
}

TEST_F(EmulatedBook, AsksOnceForALargeRange) {
    service.control(foundation::http::HttpMethod::Post, "fill",
                    Object({{"file", kTypes}, {"rows", 3000}, {"columns", 4}}));
    const auto sheet = open(kTypes)->sheet(std::size_t{0});
    methods();
    const Range range{0, 0, 2999, 3};
    const auto types = sheet->cell_types(range);
    std::vector<double> numbers(12'000, std::numeric_limits<double>::quiet_NaN());
    sheet->read(range, numbers.data());
    EXPECT_EQ(texts_of(*sheet, range).size(), 12'000u);
    EXPECT_EQ(methods(), (std::vector<std::string>{"GET"}));
    EXPECT_EQ(std::count(types.begin(), types.end(), cell_type::empty), 0);
    EXPECT_EQ(std::count_if(numbers.begin(), numbers.end(), [](double x) { return std::isnan(x); }),
              std::count_if(types.begin(), types.end(), [](cell_type type) {
                  return type != cell_type::number && type != cell_type::date;
              }));
}

} // namespace
} // namespace spreadsheet
