// SPDX-License-Identifier: Apache-2.0
//
// Changing sheets of a spreadsheet application: state, values, filters.
#include <limits>

#include "spreadsheet/com/text_prefix.h"
#include "tests/spreadsheet/com/com_fixture.h"

namespace spreadsheet {
namespace {

using ::testing::ElementsAre;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Supplies each cell by its number within the range.
struct Supply {
    int at = 0;
    std::u16string text = u"text";
    CellProvider provider() {
        return {this,
                [](void* self) {
                    ++static_cast<Supply*>(self)->at;
                    return static_cast<Supply*>(self)->text;
                },
                [](void* self) { return double(static_cast<Supply*>(self)->at++); },
                [](void* self) { return SerialDatenum{100.0 + static_cast<Supply*>(self)->at++}; },
                [](void* self) { return static_cast<Supply*>(self)->at++ % 2 == 1; },
                [](void* self) { ++static_cast<Supply*>(self)->at; }};
    }
};

class ComSheetWrite : public ComTest {
  protected:
    std::shared_ptr<ISheet> sheet() {
        if (!book) book = open();
        return book->sheet(0);
    }
    void TearDown() override {
        book.reset();
        ComTest::TearDown();
    }
    /// What a cell holds, in a few letters.
    std::string cell(int row, int column) {
        const VARIANT& value = model().at(row, column).value.get();
        switch (value.vt) {
        case VT_EMPTY:
            return "";
        case VT_R8:
            return "n" + std::to_string(value.dblVal);
        case VT_DATE:
            return "d" + std::to_string(value.date);
        case VT_BOOL:
            return value.boolVal ? "true" : "false";
        default: {
            const auto text = foundation::automation::text_in(value).value_or(u"?");
            return "t" + std::string(text.begin(), text.end());
        }
        }
    }
    std::shared_ptr<IBook> book;
};

TEST_F(ComSheetWrite, NamesAndHides) {
    sheet()->name(u"N\u00e4me");
    EXPECT_EQ(model().name, u"N\u00e4me");
    EXPECT_EQ(thrown_id([&] { sheet()->name(u"a:b"); }), 26);
    foundation::automation::replace_bstr_allocation(
        [](const OLECHAR*, UINT) -> BSTR { return nullptr; });
    EXPECT_EQ(thrown_id([&] { sheet()->name(u"x"); }), 18);
    EXPECT_THROW(book->save(kRoot + u"x.xlsx"), std::bad_alloc);
    foundation::automation::replace_bstr_allocation(nullptr);
    const std::pair<sheet::hidden, LONG> kStates[] = {
        {sheet::hidden::very_hidden, 2}, {sheet::hidden::hidden, 0}, {sheet::hidden::visible, -1}};
    for (const auto& [state, number] : kStates) {
        sheet()->hidden(state);
        EXPECT_EQ(model().visible, number);
        EXPECT_EQ(sheet()->hidden(), state);
    }
    model().visible = 1;
    EXPECT_EQ(thrown_id([&] { sheet()->hidden(); }), 19);
    EXPECT_FALSE(sheet()->is_protected());
    EXPECT_EQ(thrown_id([&] { sheet()->set_protected(true); }), 18);
}

TEST_F(ComSheetWrite, WritesBlocksColumnByColumn) {
    const Range range{1, 1, 2, 2};
    const auto cells = [&] {
        return std::vector<std::string>{cell(1, 1), cell(2, 1), cell(1, 2), cell(2, 2)};
    };
    const double numbers[] = {1.0, kNaN, 3.0, 4.0};
    sheet()->write(range, numbers);
    EXPECT_THAT(cells(), ElementsAre("n1.000000", "", "n3.000000", "n4.000000"));
    const SerialDatenum dates[] = {{1.0}, {2.0}, {kNaN}, {4.5}};
    sheet()->write(range, dates);
    EXPECT_THAT(cells(), ElementsAre("d1.000000", "d2.000000", "", "d4.500000"));
    const bool booleans[] = {true, false, false, true};
    sheet()->write(range, booleans);
    EXPECT_THAT(cells(), ElementsAre("true", "false", "false", "true"));
    const unsigned char bytes[] = {0, 1, 255, 0};
    sheet()->write(range, bytes);
    EXPECT_THAT(cells(), ElementsAre("false", "true", "true", "false"));
    int next = 0;
    sheet()->write(range,
                   StringProvider{&next, [](void* at) {
                                      const char16_t* const texts[] = {u"a", u"", u"c", u"d"};
                                      return std::u16string(texts[(*static_cast<int*>(at))++]);
                                  }});
    EXPECT_THAT(cells(), ElementsAre("ta", "", "tc", "td"));
    Supply supply;
    using enum cell_type;
    const cell_type types[] = {number, text, error, date};
    sheet()->write(range, types, supply.provider(), true);
    EXPECT_THAT(cells(), ElementsAre("n0.000000", "ttext", "", "d103.000000"));
    EXPECT_EQ(supply.at, 4) << "one element for each cell";
    EXPECT_TRUE(model().done.empty()) << "formats were to be kept";
    supply.at = 0;
    sheet()->write(Range{2, 2, 2, 2}, types, supply.provider(), false);
    EXPECT_THAT(model().done, ElementsAre("Clear C3"));
    EXPECT_EQ(cell(2, 2), "n0.000000") << "one cell is a block too";
    sheet()->write(Range{0, 0, -1, -1}, numbers);
}

TEST_F(ComSheetWrite, KeepsTextText) {
    for (const char16_t* text :
         {u"007", u"1/2",   u"2024-03-01", u"TRUE",      u"true",    u"wahr",     u"=A1",
          u"+x",  u"-",     u"@x",         u"#N/A",      u"'quoted", u"Mar 5",    u"5%",
          u"1e5", u"12:30", u"plain",      u"Total sum", u"a=b",     u"caf\u00e9"}) {
        Supply supply;
        supply.text = text;
        const cell_type type = cell_type::text;
        sheet()->write(Range{}, &type, supply.provider(), true);
        EXPECT_EQ(foundation::automation::text_in(model().at(0, 0).value.get()), text);
    }
}

TEST(NeedsApostrophe, IsTrueOfTextThatCouldBeSomethingElse) {
    for (const char16_t* text : {u"plain", u"Total sum", u"a=b", u"", u"truely"})
        EXPECT_FALSE(com::needs_apostrophe(text));
    EXPECT_FALSE(com::needs_apostrophe(std::u16string(60, u'x') + u" in 2024"));
    EXPECT_TRUE(com::needs_apostrophe(std::u16string(70, u'1') + u"E5"));
    for (const char16_t* text : {u"007", u"wahr", u"\uff11", u"Mar 5", u"#NV", u"'x"})
        EXPECT_TRUE(com::needs_apostrophe(text));
}

TEST_F(ComSheetWrite, RefusesWhatACellCannotHold) {
    Supply supply;
    supply.text.assign(32'768, u'x');
    const cell_type type = cell_type::text;
    EXPECT_EQ(thrown_id([&] { sheet()->write(Range{}, &type, supply.provider(), false); }), 28);
    EXPECT_TRUE(model().done.empty()) << "cleared before the values were known";
    supply.text.pop_back();
    EXPECT_EQ(thrown_id([&] { sheet()->write(Range{}, &type, supply.provider(), false); }), -1);
    model().is_protected = true;
    const double number = 1.0;
    EXPECT_EQ(thrown_id([&] { sheet()->write(Range{}, &number); }), 28);
    EXPECT_EQ(thrown_id([&] { sheet()->write(Range{}, &type, supply.provider(), false); }), 10);
    EXPECT_EQ(thrown_id([&] { sheet()->write(Range{0, 0, 0, 1 << 14}, &number); }), 22);
}

TEST_F(ComSheetWrite, SaysWhetherCellsMayBeWritten) {
    const Range range{0, 0, 1, 0};
    EXPECT_TRUE(sheet()->is_range_writeable(range));
    model().is_protected = true;
    EXPECT_FALSE(sheet()->is_range_writeable(range));
    model().at(0, 0).locked = false;
    EXPECT_FALSE(sheet()->is_range_writeable(range)) << "a mixture";
    model().at(1, 0).locked = false;
    EXPECT_TRUE(sheet()->is_range_writeable(range));
    for (const char* member : {"Worksheet.ProtectContents", "Worksheet.Range", "Range.Locked"}) {
        script.refused = {{member, E_FAIL}};
        EXPECT_FALSE(sheet()->is_range_writeable(range)) << member;
    }
}

TEST_F(ComSheetWrite, ClearsUnmergesAndFits) {
    model().at(0, 0).value = Variant::number(1.0);
    sheet()->clear(Cell{0, 0});
    sheet()->clear(Range{0, 0, 1, 1});
    sheet()->unmerge(Range{0, 0, 1, 1});
    sheet()->auto_fit_column_widths(Range{0, 1, 5, 2});
    EXPECT_THAT(model().done,
                ElementsAre("Clear A1", "Clear A1:B2", "UnMerge A1:B2", "AutoFit B1:C6"));
    const struct {
        const char* member;
        std::function<void()> action;
        int id;
    } kCases[] = {{"Range.Clear", [&] { sheet()->clear(Range{}); }, 10},
                  {"Range.UnMerge", [&] { sheet()->unmerge(Range{}); }, 27},
                  {"Range.Columns", [&] { sheet()->auto_fit_column_widths(Range{}); }, 18},
                  {"Range.AutoFit", [&] { sheet()->auto_fit_column_widths(Range{}); }, 18},
                  {"Worksheet.Range", [&] { sheet()->clear(Range{}); }, 22},
                  {"Worksheet.Visible", [&] { sheet()->hidden(); }, 19},
                  {"Worksheet.Visible", [&] { sheet()->hidden(sheet::hidden::hidden); }, 19}};
    for (const auto& expected : kCases) {
        script.refused = {{expected.member, scripted::kRefused}};
        EXPECT_EQ(thrown_id(expected.action), expected.id) << expected.member;
    }
}

// --- Filters

class ComSheetFilter : public ComSheetWrite {
  protected:
    ComSheetFilter() {
        model().filter = scripted::FilterModel{Range{0, 0, 9, 3}, {}};
        auto& columns = model().filter->columns;
        columns[2].first = Variant::text(u"=x");
        columns[4].first = Variant::text(u">1");
        columns[4].combination = 2;
        columns[4].second = Variant::text(u"<0");
    }
    int write() {
        Supply supply;
        const cell_type type = cell_type::number;
        return thrown_id([&] { sheet()->write(Range{}, &type, supply.provider(), true); });
    }
    static std::u16string text(const Variant& value) {
        return std::u16string(foundation::automation::text_in(value.get()).value_or(u""));
    }
    void expect_filter_is_back() {
        ASSERT_TRUE(model().filter);
        EXPECT_EQ(model().filter->area, (Range{0, 0, 9, 3}));
        auto& columns = model().filter->columns;
        ASSERT_EQ(columns.size(), 2u);
        EXPECT_EQ(text(columns[2].first), u"=x");
        EXPECT_EQ(columns[2].combination, 0);
        EXPECT_EQ(text(columns[4].first), u">1");
        EXPECT_EQ(columns[4].combination, 2);
        EXPECT_EQ(text(columns[4].second), u"<0");
    }
};

TEST_F(ComSheetFilter, IsTakenOffForAWriteAndPutBack) {
    EXPECT_EQ(write(), -1);
    EXPECT_EQ(cell(0, 0), "n0.000000");
    expect_filter_is_back();
    model().filter->columns[4].combination = 1;
    EXPECT_EQ(write(), -1);
    EXPECT_EQ(model().filter->columns[4].combination, 1);
    model().filter->columns.clear();
    EXPECT_EQ(write(), -1);
    EXPECT_TRUE(model().filter && model().filter->columns.empty()) << "its buttons alone";
    EXPECT_EQ(model().filter->area, (Range{0, 0, 9, 3}));
}

TEST_F(ComSheetFilter, IsPutBackWhenTheWriteFails) {
    script.refused["Range.Value"] = scripted::kRefused;
    EXPECT_EQ(write(), 28);
    expect_filter_is_back();
}

TEST_F(ComSheetFilter, ThatCannotBePutBackStopsTheWrite) {
    for (const LONG combination : {3, 7, 8}) {
        model().filter->columns[4].combination = combination;
        EXPECT_EQ(write(), 37);
        EXPECT_EQ(cell(0, 0), "");
        EXPECT_TRUE(model().filter);
    }
}

TEST_F(ComSheetFilter, FailsWithTheErrorOfEachStep) {
    const std::pair<const char*, int> kMembers[] = {{"Worksheet.AutoFilterMode", 18},
                                                    {"Worksheet.AutoFilter", 18},
                                                    {"AutoFilter.Filters", 18},
                                                    {"Filters.Count", 18},
                                                    {"Filters.Item", 18},
                                                    {"Filter.On", 18},
                                                    {"Filter.Operator", 18},
                                                    {"Filter.Criteria1", 18},
                                                    {"Filter.Criteria2", 18},
                                                    {"AutoFilter.Range", 18},
                                                    {"Range.Address", 18}};
    for (const auto& [member, id] : kMembers) {
        script.refused = {{member, scripted::kRefused}};
        EXPECT_EQ(write(), id) << member;
        script.refused = {{member, E_OUTOFMEMORY}};
        EXPECT_THROW(write(), std::bad_alloc) << member;
        EXPECT_EQ(cell(0, 0), "") << member;
        EXPECT_TRUE(model().filter) << member;
    }
    script.refused = {{"Range.AutoFilter", scripted::kRefused}};
    EXPECT_EQ(write(), 18);
}

} // namespace
} // namespace spreadsheet
