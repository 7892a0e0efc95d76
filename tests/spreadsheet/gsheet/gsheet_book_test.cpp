// SPDX-License-Identifier: Apache-2.0
//
// Books of the service against a script: what each operation sends, what it makes of the reply, and
// that nothing changes when a request fails.
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "spreadsheet/book_factory.h"
#include "spreadsheet/gsheet/gsheet_book.h"
#include "tests/spreadsheet/gsheet/scripted_service.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {
namespace {

using book::format;
using book::interactive;
using test::metadata;
using test::refusal;
using test::Sent;
using test::sheet_json;

const char* const kAllFields =
    "/book?fields=properties(title),sheets.properties(title,sheetId,sheetType,index,hidden,"
    "gridProperties),sheets.protectedRanges";

/// A sheet of another type than a grid.
std::string typed_sheet(const std::string& title, int id, const std::string& type) {
    return R"({"properties": {"title": ")" + title + R"(", "sheetId": )" + std::to_string(id) +
           R"(, "sheetType": ")" + type + R"("}})";
}

constexpr int kTimeOut = 1000;

/// The number of the exception that an action ends with.
int outcome_of(const std::function<void()>& action) {
    try {
        return thrown_id(action);
    } catch (const foundation::http::HttpRequestTimeoutException&) {
        return kTimeOut;
    }
}

class GSheetBook : public test::ScriptedService {
  protected:
    /// A book with the sheets "A", "B", ... and the identifiers 0, 1, ...
    std::shared_ptr<IBook> open_letters(int count) {
        std::vector<std::string> sheets;
        for (int index = 0; index < count; ++index)
            sheets.push_back(sheet_json(std::string(1, static_cast<char>('A' + index)), index));
        return open(metadata(sheets));
    }
    static std::u16string names(const IBook& book) {
        std::u16string joined;
        for (const std::u16string& name : book.get_sheet_names())
            joined += name + u" ";
        return joined;
    }
    /// Names as the sheets' objects tell them.
    static std::u16string names_of_objects(const IBook& book) {
        std::u16string joined;
        for (std::size_t index = 0; book.sheet(index) != nullptr; ++index)
            joined += book.sheet(index)->name() + u" ";
        return joined;
    }
};

TEST_F(GSheetBook, LoadsInEveryModeThatTheServiceKnows) {
    const std::string sheets = metadata({sheet_json("One", 0), sheet_json("Two", 5)});
    const std::string names_only =
        R"({"sheets": [{"properties": {"title": "One", "sheetId": 0}}, {"properties": {"title": "Two", "sheetId": 5}}]})";
    const Sent all{"GET", kAllFields};
    const Sent only_names{"GET", "/book?fields=sheets.properties(title,sheetId)"};
    constexpr auto google = interactive::google;
    const auto by_name = [](const char16_t* name) {
        return load_book_from_file_with_sheet_name(u"book", format::GSHEET, google, name);
    };
    const struct {
        std::function<std::shared_ptr<IBook>()> load;
        std::vector<test::Reply> replies;
        std::vector<Sent> sent;
    } cases[] = {
        {[] { return load_book_from_file_with_sheet_index(u"book", format::XLSX, google, 1); },
         {{sheets}},
         {all}},
        {[] { return load_book_from_file_with_range(u"book", format::GSHEET, google, 0, 0, 9); },
         {{sheets}},
         {all}},
        {[&] { return by_name(u"tWO"); }, {{names_only}, {sheets}}, {only_names, all}},
        {[] { return load_book_from_file_with_sheetNames(u"book", format::GSHEET); },
         {{names_only}},
         {only_names}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        answer(c.replies);
        const auto book = c.load();
        const bool has_names_only = c.sent.back() == only_names;
        EXPECT_TRUE(book->is_loaded());
        EXPECT_FALSE(book->is_interactive());
        EXPECT_FALSE(book->is_sheet_loaded());
        EXPECT_FALSE(book->are_dates_1904());
        EXPECT_EQ(book->format(), format::GSHEET);
        EXPECT_EQ(book->get_file_name(true), u"book");
        EXPECT_EQ(book->sheet_names_only_required(), has_names_only);
        EXPECT_EQ(book->num_sheets(), 2u);
        EXPECT_EQ(names(*book), u"One Two ");
        EXPECT_EQ(book->get_sheet_name(1), u"Two");
        EXPECT_EQ(book->get_sheet_name(2), std::nullopt);
        EXPECT_EQ(book->get_sheet_name(-1), std::nullopt);
        EXPECT_EQ(book->sheet(std::size_t{0}) == nullptr, has_names_only);
        EXPECT_EQ(requests(), c.sent);
    }
    answer(names_only);
    EXPECT_EQ(thrown_id([&] { by_name(u"Three"); }), 3);
    requests();
}

TEST_F(GSheetBook, FetchesTypesWhenOnlyNamesAreThere) {
    answer({{R"({"sheets": [{"properties": {"title": "One", "sheetId": 3}}]})"},
            {metadata({typed_sheet("One", 3, "OBJECT")})}});
    const auto book = load_book_from_file_with_sheetNames(u"book", format::GSHEET);
    EXPECT_EQ(book->sheet_type(0), sheet::type::chart);
    EXPECT_EQ(requests().size(), 2u);
}

TEST_F(GSheetBook, CreatesASpreadsheet) {
    answer({{R"({"spreadsheetId": "new-one", "properties": {"title": "Größe"}})"},
            {metadata({sheet_json("Sheet1", 0)})}});
    const auto book = create_new_book(3, format::GSHEET, interactive::google, u"Größe");
    EXPECT_EQ(book->get_file_name(false), u"new-one");
    EXPECT_EQ(book->num_sheets(), 1u);
    const auto sent = requests();
    ASSERT_EQ(sent.size(), 2u);
    EXPECT_EQ(sent[0], (Sent{"POST", "", R"({"properties": {"title": "Größe"}})"}));
    EXPECT_EQ(sent[1].target.rfind("/new-one?fields=properties(title)", 0), 0u);

    answer(R"({"properties": {"title": "no identifier"}})");
    EXPECT_EQ(thrown_id([] { create_new_book(1, format::GSHEET, interactive::google, u"x"); }), 18);
}

TEST_F(GSheetBook, RefusesWhatHasNoMeaning) {
    GSheetWorkbook book;
    std::vector<unsigned char> bytes;
    const struct {
        int id;
        const char* line;
        std::function<void()> action;
    } cases[] = {
        {43, "Loading the entire spreadsheet from Google Sheets is not supported.",
         [] { load_book_from_file(u"book", format::GSHEET, interactive::google); }},
        {15, "Loading from memory is not supported with Google Sheets.",
         [&] { book.init_from_memory(nullptr, 0, format::GSHEET); }},
        {14, "Saving to memory is not a supported operation with Google Sheets.",
         [&] { book.save_to_memory(bytes); }},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(thrown_id(c.action), c.id) << c.line;
        EXPECT_TRUE(is_logged(c.line)) << c.line;
    }
    EXPECT_FALSE(book.is_loaded());
    EXPECT_EQ(book.get_file_name(true), u"");
    EXPECT_EQ(thrown_id([&] { book.num_sheets(); }), 9);
    EXPECT_TRUE(requests().empty());
}

TEST_F(GSheetBook, ListsSheetsUpToTheFirstOfAnotherKind) {
    const auto book =
        open(metadata({sheet_json("Grid", 0), typed_sheet("Chart", 1, "OBJECT"),
                       typed_sheet("Source", 2, "DATA_SOURCE"), sheet_json("Behind", 3)}));
    EXPECT_EQ(book->num_sheets(), 4u);
    EXPECT_EQ(book->sheet_type(0), sheet::type::worksheet);
    EXPECT_EQ(book->sheet_type(1), sheet::type::chart);
    EXPECT_EQ(thrown_id([&] { book->sheet_type(2); }), 17);
    EXPECT_EQ(thrown_id([&] { book->sheet_type(4); }), 6);
    EXPECT_EQ(book->sheet(u"gRID"), book->sheet(std::size_t{0}));
    EXPECT_EQ(book->sheet(u"CHART"), book->sheet(std::size_t{1}));
    EXPECT_EQ(thrown_id([&] { book->sheet(u"chart")->name(); }), 31);
    EXPECT_EQ(book->sheet(std::size_t{2}), nullptr);
    EXPECT_EQ(book->sheet(u"Behind"), nullptr);
    EXPECT_EQ(book->sheet(u"Nowhere"), nullptr);
    EXPECT_EQ(book->get_sheet_name(3), u"Behind");
    EXPECT_TRUE(is_logged("Unsupported sheet type."));
    save_book(book, u"any name");
    EXPECT_TRUE(requests().empty()) << "everything is known, and there is nothing to save";
}

TEST_F(GSheetBook, FindsItsSheetsAfterAnAdditionWithoutMetadata) {
    const struct {
        const char* about;
        const char16_t* source;
        std::vector<test::Reply> replies;
        int id;
    } cases[] = {
        {"a copy", u"B", {{R"({"sheetId": 77})"}, {"{}"}, refusal(500, "x")}, 47},
        {"a copy that stays where it was put",
         u"B",
         {{R"({"sheetId": 77})"}, refusal(500, "x"), refusal(503, "x")},
         47},
        {"an empty sheet", u"", {{"{}"}, refusal(503, "x")}, 48},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.about);
        const auto book = open_letters(2);
        const auto second = book->sheet(std::size_t{1});
        answer(c.replies);
        EXPECT_EQ(thrown_id([&] { add_sheet(book, 0, u"New", c.source); }), c.id);
        requests();
        answer(metadata({sheet_json("New", 77), sheet_json("A", 0), sheet_json("B", 1)}));
        EXPECT_EQ(book->sheet(u"b"), second);
        EXPECT_EQ(names_of_objects(*book), u"New A B ");
        EXPECT_EQ(names(*book), u"New A B ");
        EXPECT_EQ(requests(), (std::vector<Sent>{{"GET", kAllFields}}));
    }
}

TEST_F(GSheetBook, MovesNothingWithoutNeed) {
    const auto book = open_letters(3);
    auto& spreadsheet = dynamic_cast<GSheetWorkbook&>(*book);
    const auto sheet = book->sheet(std::size_t{1});
    EXPECT_EQ(spreadsheet.move_sheet(sheet, 1), sheet);
    EXPECT_EQ(thrown_id([&] { spreadsheet.move_sheet(sheet, 3); }), 32);
    EXPECT_EQ(thrown_id([&] { spreadsheet.move_sheet(nullptr, 3); }), 32);
    EXPECT_EQ(thrown_id([&] { spreadsheet.move_sheet(nullptr, 0); }), 6);
    EXPECT_EQ(thrown_id([&] { reorder_sheet(book, 3, 0); }), 6);
    EXPECT_EQ(thrown_id([&] { reorder_sheet(book, 0, 3); }), 6);
    EXPECT_TRUE(requests().empty());
    answer("{}");
    reorder_sheet(book, 2, 0);
    EXPECT_EQ(names(*book), u"C A B ");
    requests();
}

TEST_F(GSheetBook, StaysAsItWasWhenARequestFails) {
    const std::pair<test::Reply, int> failures[] = {
        {refusal(503, "x"), 48}, {{"{}", 201}, 47}, {{"{} x", 200}, 18}, {{"", 0, true}, kTimeOut}};
    for (const auto& [reply, id] : failures) {
        const auto book = open_letters(3);
        auto& spreadsheet = dynamic_cast<GSheetWorkbook&>(*book);
        const auto sheet = book->sheet(std::size_t{0});
        const std::function<void()> actions[] = {
            [&] { add_sheet(book, 0, u"New", u""); },
            [&] { add_sheet(book, 0, u"New", u"A"); },
            [&] { book->remove_sheet(0); },
            [&] { spreadsheet.move_sheet(sheet, 2); },
            [&] { sheet->name(u"New"); },
            [&] { sheet->set_protected(true); },
            [&] { sheet->set_protected(false); },
            [&] { book->init_from_file_with_sheet(u"other", format::GSHEET, 0); },
            [&] { book->init_from_file_only_sheetNames(u"other", format::GSHEET); },
            [&] { book->init_new(1, format::GSHEET, u"other"); },
        };
        for (const auto& action : actions) {
            answer({reply});
            EXPECT_EQ(outcome_of(action), id);
            EXPECT_EQ(requests().size(), 1u);
        }
        EXPECT_EQ(names(*book), u"A B C ");
        EXPECT_EQ(names_of_objects(*book), u"A B C ");
        EXPECT_EQ(book->sheet(std::size_t{0}), sheet);
        EXPECT_FALSE(sheet->is_protected());
        EXPECT_EQ(book->get_file_name(true), u"book");
        EXPECT_FALSE(book->sheet_names_only_required());
    }
}

TEST_F(GSheetBook, IsNotMadeFromAReplyAboutSomethingElse) {
    answer({{"{}"}, {R"({"sheets": 5})"}});
    for (int attempt = 0; attempt < 2; ++attempt)
        EXPECT_EQ(thrown_id([] {
                      load_book_from_file_with_sheet_index(u"book", format::GSHEET,
                                                           interactive::google, 0);
                  }),
                  18);
    requests();
}

TEST_F(GSheetBook, TakesOddMetadata) {
    const auto book = open(metadata(
        {R"({"properties": {"title": 5, "sheetId": "x", "sheetType": "GRID", "gridProperties": {
             "rowCount": 99999999999999999999, "columnCount": -4}}, "protectedRanges": [5, {}]})",
         "7", R"({"properties": []})"}));
    EXPECT_EQ(book->num_sheets(), 2u);
    EXPECT_EQ(book->get_sheet_name(0), u"");
    EXPECT_EQ(thrown_id([&] { book->sheet_type(1); }), 17);
}

TEST_F(GSheetBook, TracesItsOperations) {
    answer(metadata({sheet_json("A", 0)}));
    const auto book =
        load_book_from_file_with_sheet_index(u"book", format::GSHEET, interactive::google, 0);
    EXPECT_FALSE(log_lines("gsheet/gsheet_book").empty());
    EXPECT_FALSE(log_lines("init_from_file_with_sheet").empty());
    book->sheet(std::size_t{0})->hidden();
    EXPECT_FALSE(log_lines("gsheet/gsheet_sheet").empty());
    requests();
}

} // namespace
} // namespace spreadsheet
