// SPDX-License-Identifier: Apache-2.0
//
// Books from writing to reading: what is written comes back, whatever fails in a save leaves the
// old file whole, partial loads lose nothing, a book goes on after it was saved.
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/files.h"
#include "foundation/output_file.h"
#include "foundation/unicode.h"
#include "tests/failing_output.h"
#include "tests/workbook/scratch_folder.h"
#include "workbook/library.h"
#include "workbook/opc/opc_package.h"
#include "workbook/xlsx/xlsx_book.h"

namespace workbook {
namespace {

namespace files = foundation::files;
using test::ScratchFolder;

/// A cell as it was written, or as it is read.
struct Value {
    CellKind kind = CellKind::Empty;
    double number = 0.0;
    std::u16string text{};
    int num_format = 0;
    bool operator==(const Value& other) const {
        return kind == other.kind && text == other.text && num_format == other.num_format &&
               std::signbit(number) == std::signbit(other.number) && number == other.number;
    }
};

void PrintTo(const Value& value, std::ostream* out) {
    *out << "kind " << static_cast<int>(value.kind) << ", number " << value.number << ", text "
         << testing::PrintToString(value.text) << ", format " << value.num_format;
}

Value read_value(const Sheet& sheet, int row, int column) {
    const Format* format = sheet.cell_format(row, column);
    return {sheet.cell_type(row, column), sheet.read_num(row, column),
            std::u16string(sheet.read_str(row, column)), format ? format->num_format() : 0};
}

bool write_value(Sheet& sheet, int row, int column, const Value& value, const Format* format) {
    switch (value.kind) {
    case CellKind::Number:
        return sheet.write_num(row, column, value.number, format);
    case CellKind::String:
        return sheet.write_str(row, column, value.text, format);
    case CellKind::Boolean:
        return sheet.write_bool(row, column, value.number != 0.0, format);
    default:
        return sheet.write_blank(row, column, format);
    }
}

/// Random cells of every kind, with what is hard to keep: extreme numbers, texts of control
/// characters, lone surrogates, text that looks like an escape.
class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    Value value() {
        switch (below(5)) {
        case 0:
            return {CellKind::String, 0.0, text()};
        case 1:
            return {CellKind::Boolean, static_cast<double>(below(2))};
        case 2:
            return {CellKind::Blank};
        default:
            return {CellKind::Number, number()};
        }
    }
    int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }

  private:
    double number() {
        const double special[] = {0.0,
                                  -0.0,
                                  0.1,
                                  -1e-300,
                                  std::numeric_limits<double>::denorm_min(),
                                  std::numeric_limits<double>::max(),
                                  9007199254740993.0,
                                  1e15,
                                  123456789012345678.0};
        const int choice = below(20);
        if (choice < 9) return special[choice];
        if (choice < 14) return below(2'000'000) - 1'000'000;
        std::uint64_t bits = random_();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        return std::isfinite(value) ? value : 2.5;
    }

    std::u16string text() {
        const std::u16string pieces[] = {
            u"a",  u" ",      u"\n",           u"\r\n",   u"\t",     u"<&>\"'",
            u"é",  u"\u6F22", u"\xD83D\xDE00", u"\xD800", u"\xDC00", u"_x000D_",
            u"_x", u"\x01",   u"\xFFFE",       u"]]>",    u"_"};
        std::u16string text;
        for (int i = below(6); i > 0; --i)
            text += pieces[below(static_cast<int>(std::size(pieces)))];
        return text;
    }

    std::mt19937_64 random_;
};

using Model = std::map<std::pair<int, int>, Value>;

void expect_cells(Book& book, int index, const Model& model, const char* where) {
    Sheet* sheet = book.get_sheet(index);
    ASSERT_NE(sheet, nullptr) << book.error_message();
    for (const auto& [place, value] : model)
        EXPECT_EQ(read_value(*sheet, place.first, place.second), value)
            << where << ", cell " << place.first << ", " << place.second;
}

std::string bytes_of(const std::u16string& path) {
    std::ifstream file(files::native_path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(SavedBook, GivesBackWhatWasWritten) {
    const ScratchFolder folder;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Generator generator(seed);
        const std::unique_ptr<Book> book = xlCreateXMLBookW();
        ASSERT_TRUE(book->set_date_1904(seed % 2 == 0));
        Sheet* sheet = book->insert_sheet(0, u"Données & <x>", nullptr);
        ASSERT_NE(sheet, nullptr) << book->error_message();
        Format* date = book->add_format();
        date->set_num_format(22);
        Model model;
        for (int i = 0; i < 400; ++i) {
            const int row = generator.below(30) * (i % 3 == 0 ? 1000 : 1);
            const int column = generator.below(12) * (i % 7 == 0 ? 1000 : 1);
            if (i % 41 == 40) {
                ASSERT_TRUE(sheet->clear(row, row + 5, column, column + 2));
                std::erase_if(model, [&](const auto& cell) {
                    const auto [r, c] = cell.first;
                    return r >= row && r <= row + 5 && c >= column && c <= column + 2;
                });
                continue;
            }
            Value value = generator.value();
            const bool is_date = value.kind == CellKind::Number && i % 4 == 0;
            if (is_date) value.num_format = 22;
            ASSERT_TRUE(write_value(*sheet, row, column, value, is_date ? date : nullptr));
            model[{row, column}] = value;
        }
        expect_cells(*book, 0, model, "in memory");
        const std::u16string path = folder.file("b.xlsx");
        ASSERT_TRUE(book->save(path)) << book->error_message();
        const std::unique_ptr<Book> saved = xlCreateXMLBookW();
        ASSERT_TRUE(saved->load(path)) << saved->error_message();
        EXPECT_EQ(saved->is_date_1904(), seed % 2 == 0);
        EXPECT_EQ(saved->get_sheet_name(0), u"Données & <x>");
        expect_cells(*saved, 0, model, "from the file");
        const Sheet& read = *saved->get_sheet(0);
        EXPECT_EQ(read.end_row(), sheet->end_row());
        EXPECT_EQ(read.end_column(), sheet->end_column());
        EXPECT_EQ(read.end_filled_row(), sheet->end_filled_row());
        EXPECT_EQ(read.first_column(), sheet->first_column());
    }
}

TEST(SavedBook, ClaimsToBeWhatItsNameSays) {
    const ScratchFolder folder;
    for (const char* name : {"a.xlsx", "a.xlsm", "a.xltx", "a.XLTM"}) {
        const std::unique_ptr<Book> book = xlCreateXMLBookW();
        EXPECT_FALSE(book->save(folder.file(name))) << "a book without a sheet";
        ASSERT_NE(book->insert_sheet(0, u"S", nullptr), nullptr);
        ASSERT_TRUE(book->save(folder.file(name))) << book->error_message();
        const std::unique_ptr<Book> saved = xlCreateXMLBookW();
        EXPECT_TRUE(saved->load(folder.file(name))) << saved->error_message();
        EXPECT_EQ(saved->sheet_count(), 1);
    }
}

TEST(SavedBook, GoesOnAfterASaveOverItsOwnFile) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xlsx");
    {
        const std::unique_ptr<Book> book = xlCreateXMLBookW();
        Sheet* sheet = book->insert_sheet(0, u"One", nullptr);
        for (int row = 0; row < 5; ++row)
            ASSERT_TRUE(sheet->write_str(row, 0, u"old", nullptr));
        ASSERT_TRUE(book->save(path));
    }
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    ASSERT_TRUE(book->load(path));
    Model model;
    for (int round = 0; round < 4; ++round) {
        Sheet* sheet = book->get_sheet(0);
        const std::u16string text =
            u"round " + std::u16string(1, static_cast<char16_t>(u'0' + round));
        ASSERT_TRUE(sheet->write_str(round, 1, text, nullptr));
        model[{round, 1}] = {CellKind::String, 0.0, text};
        ASSERT_TRUE(sheet->clear(round, round, 0, 0));
        model[{round, 0}] = {};
        Sheet* added = book->insert_sheet(book->sheet_count(), text, sheet);
        ASSERT_NE(added, nullptr) << book->error_message();
        ASSERT_TRUE(book->save(path)) << book->error_message();
        const std::unique_ptr<Book> saved = xlCreateXMLBookW();
        ASSERT_TRUE(saved->load(path)) << saved->error_message();
        EXPECT_EQ(saved->sheet_count(), round + 2);
        expect_cells(*saved, 0, model, "first sheet");
        expect_cells(*saved, round + 1, model, "its copy");
    }
}

TEST(SavedBook, HasNoPartThatOnlyAnEarlierSaveNeeded) {
    const ScratchFolder folder;
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    ASSERT_NE(book->insert_sheet(0, u"Stays", nullptr), nullptr);
    Sheet* goes = book->insert_sheet(1, u"Goes", nullptr);
    ASSERT_TRUE(goes->write_str(0, 0, u"shared", nullptr));
    ASSERT_TRUE(book->save(folder.file("full.xlsx")));
    ASSERT_TRUE(book->delete_sheet(1));
    ASSERT_TRUE(book->save(folder.file("again.xlsx")));
    OpcPackage package(files::open_for_reading(folder.file("again.xlsx")));
    for (const Relationship& relationship : package.relationships("xl/workbook.xml"))
        EXPECT_TRUE(package.has_part(relationship.target)) << relationship.target;
    EXPECT_EQ(package.content_types().find_part(
                  [](std::string_view type) { return type.find("sharedstrings") != type.npos; }),
              "");
}

TEST(SavedBook, HasTheFormatsOfASheetAddedToNames) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xlsx");
    std::unique_ptr<Book> book = xlCreateXMLBookW();
    Sheet* sheet = book->insert_sheet(0, u"One", nullptr);
    for (const int identifier : {14, 9}) {
        Format* format = book->add_format();
        format->set_num_format(identifier);
        ASSERT_TRUE(sheet->write_num(0, 0, 1.0, format));
    }
    ASSERT_TRUE(book->save(path));
    ASSERT_TRUE(book->load_info(path));
    EXPECT_EQ(book->format_size(), 3);
    Sheet* added = book->insert_sheet(1, u"Two", nullptr);
    ASSERT_NE(added, nullptr) << book->error_message();
    Format* date = book->add_format();
    date->set_num_format(22);
    ASSERT_TRUE(added->write_num(0, 0, 45'000.0, date));
    ASSERT_TRUE(book->save(path)) << book->error_message();
    ASSERT_TRUE(book->load(path));
    expect_cells(*book, 0, {{{0, 0}, {CellKind::Number, 1.0, u"", 9}}}, "as it was");
    expect_cells(*book, 1, {{{0, 0}, {CellKind::Number, 45'000.0, u"", 22}}}, "added");
}

TEST(FailedSave, LeavesTheOldFileWholeAndNothingElse) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xlsx");
    {
        const std::unique_ptr<Book> book = xlCreateXMLBookW();
        book->insert_sheet(0, u"One", nullptr)->write_str(0, 0, u"old", nullptr);
        ASSERT_TRUE(book->save(path));
    }
    const std::string before = bytes_of(path);
    int operations_left = 0;
    XlsxBook book([&](std::u16string_view target) {
        return std::make_unique<files::test::FailingOutput>(files::replace_file(target),
                                                            operations_left);
    });
    ASSERT_TRUE(book.load(path));
    ASSERT_TRUE(book.get_sheet(0)->write_str(1, 0, u"new", nullptr));
    int failures = 0;
    for (;; ++failures) {
        ASSERT_LT(failures, 10'000);
        operations_left = failures;
        if (book.save(path)) break;
        EXPECT_STREQ(book.error_message(), "The disk is full.");
        EXPECT_EQ(bytes_of(path), before) << failures;
        EXPECT_EQ(folder.file_count(), 1u) << failures;
    }
    EXPECT_GT(failures, 10) << "the operations of a save";
    XlsxBook saved;
    ASSERT_TRUE(saved.load(path)) << saved.error_message();
    EXPECT_EQ(saved.get_sheet(0)->read_str(1, 0), u"new");
}

TEST(FailedSave, NoticesThatTheFileWasChangedSinceItWasLoaded) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xlsx");
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    Sheet* sheet = book->insert_sheet(0, u"One", nullptr);
    ASSERT_TRUE(sheet->write_num(0, 0, 1.0, nullptr));
    ASSERT_TRUE(book->save(path));
    XlsxBook loaded;
    ASSERT_TRUE(loaded.load(path));
    { // in place, as a careless copy does; the loaded book would copy parts from wrong places
        std::fstream file(files::native_path(path),
                          std::ios::in | std::ios::out | std::ios::binary);
        file << std::string(2000, 'x');
    }
    std::filesystem::resize_file(files::native_path(path), 2000);
    EXPECT_FALSE(loaded.save(folder.file("c.xlsx")));
    EXPECT_NE(std::string(loaded.error_message()).find("changed"), std::string::npos)
        << loaded.error_message();
    EXPECT_EQ(folder.file_count(), 1u);
}

TEST(SheetChanges, AreRefusedWithASentenceAndChangeNothing) {
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    Sheet* one = book->insert_sheet(0, u"One", nullptr);
    Sheet* two = book->insert_sheet(1, u"Two", nullptr);
    ASSERT_TRUE(two->set_hidden(SheetState::Hidden));
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        bool done;
    } cases[] = {
        {"a name that is taken", one->set_name(u"TWO")},
        {"no name", one->set_name(u"")},
        {"a name of 32 units", one->set_name(std::u16string(32, u'x'))},
        {"a colon", one->set_name(u"a:b")},
        {"an apostrophe at the end", one->set_name(u"a'")},
        {"hiding the last visible sheet", one->set_hidden(SheetState::VeryHidden)},
        {"a row below the last", one->write_num(1'048'576, 0, 1.0, nullptr)},
        {"a column behind the last", one->write_str(0, 16'384, u"x", nullptr)},
        {"a negative row", one->write_bool(-1, 0, true, nullptr)},
        {"not a number", one->write_num(0, 0, nan, nullptr)},
        {"clearing beyond the sheet", one->clear(0, 1'048'576, 0, 0)},
        {"clearing backwards", one->clear(5, 4, 0, 0)},
        {"a merged region that is not there", one->delete_merge(0)},
        {"a width of no column", one->set_column_width(-1, 10.0)},
        {"too wide", one->set_column_width(0, 256.0)},
        {"a sheet behind the end", book->insert_sheet(4, u"x", nullptr) != nullptr},
        {"an inserted name that is taken", book->insert_sheet(0, u"one", nullptr) != nullptr},
        {"removing the last visible sheet", book->delete_sheet(0)},
        {"removing no sheet", book->delete_sheet(2)},
        {"moving no sheet", book->move_sheet(0, 2)},
    };
    for (const auto& test : cases)
        EXPECT_FALSE(test.done) << test.what;
    EXPECT_STRNE(book->error_message(), "ok");
    EXPECT_EQ(one->name(), u"One");
    EXPECT_EQ(one->end_row(), 0);
    EXPECT_EQ(book->sheet_count(), 2);
    EXPECT_EQ(book->get_sheet(0), one);
}

TEST(SheetHandles, SurviveSheetsThatComeGoAndMove) {
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    std::vector<Sheet*> sheets;
    for (const char16_t* name : {u"A", u"B", u"C", u"D"})
        sheets.push_back(book->insert_sheet(book->sheet_count(), name, nullptr));
    ASSERT_TRUE(book->move_sheet(0, 2)); // B C A D
    ASSERT_TRUE(book->delete_sheet(1));  // B A D
    ASSERT_TRUE(book->move_sheet(2, 0)); // D B A
    Sheet* copy = book->insert_sheet(1, u"E", sheets[1]);
    ASSERT_NE(copy, nullptr) << book->error_message(); // D E B A
    const Sheet* order[] = {sheets[3], copy, sheets[1], sheets[0]};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(book->get_sheet(i), order[i]) << i;
        EXPECT_EQ(book->get_sheet_name(i), order[i]->name()) << i;
    }
    ASSERT_TRUE(sheets[0]->write_num(3, 3, 7.0, nullptr));
    EXPECT_EQ(book->get_sheet(3)->read_num(3, 3), 7.0);
}

} // namespace
} // namespace workbook
