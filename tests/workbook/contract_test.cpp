// SPDX-License-Identifier: Apache-2.0
//
// What library.h promises of every engine: the same tests over each creator. Books are made through
// the interface itself; what files of other producers hold is tested for each format.
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/files.h"
#include "foundation/output_file.h"
#include "tests/failing_output.h"
#include "tests/workbook/scratch_folder.h"
#include "workbook/library.h"

namespace workbook {
namespace {

namespace files = foundation::files;
using test::ScratchFolder;
using testing::HasSubstr;

struct Engine {
    const char* name;
    std::unique_ptr<Book> (*create)();
    const char16_t* extension;
    int rows, columns;
};

void PrintTo(const Engine& engine, std::ostream* out) {
    *out << engine.name;
}

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

/// Random cells of every kind, with what is hard to keep: extreme numbers, strings of control
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

class Contract : public testing::TestWithParam<Engine> {
  protected:
    static std::unique_ptr<Book> create() { return GetParam().create(); }
    static std::u16string file_name() { return std::u16string(u"b.") + GetParam().extension; }

    static std::string saved(Book& book) {
        std::string bytes;
        EXPECT_TRUE(book.save(*files::memory_output(bytes), GetParam().extension))
            << book.error_message();
        return bytes;
    }
    static std::unique_ptr<Book> loaded(const std::string& bytes) {
        std::unique_ptr<Book> book = create();
        EXPECT_TRUE(book->load(files::memory_file(bytes))) << book->error_message();
        return book;
    }
    static std::unique_ptr<Book> reloaded(Book& book) { return loaded(saved(book)); }

    /// Sheets "One" to "Three" of 100 rows with a number and a string.
    static std::string three_sheets() {
        const std::unique_ptr<Book> book = create();
        for (const char16_t* name : {u"One", u"Two", u"Three"}) {
            Sheet* sheet = book->insert_sheet(book->sheet_count(), name, nullptr);
            for (int row = 0; row < 100; ++row) {
                EXPECT_TRUE(sheet->write_num(row, 1, row, nullptr));
                EXPECT_TRUE(sheet->write_str(
                    row, 2, name + std::u16string(1, static_cast<char16_t>(u'a' + row / 10)),
                    nullptr));
            }
        }
        return saved(*book);
    }
};

TEST_P(Contract, IsEmptyBeforeALoad) {
    const auto book = create();
    EXPECT_EQ(book->error_kind(), ErrorKind::None);
    EXPECT_STREQ(book->error_message(), "ok");
    EXPECT_FALSE(book->file_problem());
    EXPECT_EQ(book->sheet_count(), 0);
    EXPECT_EQ(book->get_sheet(0), nullptr);
    EXPECT_EQ(book->sheet_type(0), SheetKind::Unknown);
    EXPECT_EQ(book->get_sheet_name(0).data(), nullptr);
    EXPECT_EQ(book->format(0), nullptr);
    EXPECT_FALSE(book->is_date_1904());
    EXPECT_EQ(book->last_save().written, 0u);
    std::string bytes;
    EXPECT_FALSE(book->save(*files::memory_output(bytes), u"")) << "a book without a sheet";
    EXPECT_EQ(book->error_kind(), ErrorKind::Refused);
    EXPECT_TRUE(bytes.empty());
}

TEST_P(Contract, SaysWhyAFileIsNotLoaded) {
    const ScratchFolder folder;
    const std::string good = three_sheets();
    const auto book = loaded(good);
    EXPECT_FALSE(book->load(folder.file("absent")));
    EXPECT_EQ(book->error_kind(), ErrorKind::File);
    EXPECT_EQ(book->file_problem(), files::FileProblem::NotFound);
    EXPECT_EQ(book->sheet_count(), 0) << "a failed load gives up the former book";
    EXPECT_EQ(book->add_format(), nullptr);
    EXPECT_EQ(book->error_kind(), ErrorKind::Refused);
    EXPECT_FALSE(book->file_problem());
    EXPECT_FALSE(book->load_info(folder.path().u16string()));
    EXPECT_EQ(book->file_problem(), files::FileProblem::NotAFile);
    for (const std::string& bad : {std::string(), std::string("name,value\n1,2\n")}) {
        EXPECT_FALSE(book->load(files::memory_file(bad)));
        EXPECT_EQ(book->error_kind(), ErrorKind::NotAWorkbook) << book->error_message();
    }
    for (std::size_t length : {good.size() / 4, good.size() / 2}) {
        EXPECT_FALSE(book->load(files::memory_file(good.substr(0, length))));
        EXPECT_EQ(book->error_kind(), ErrorKind::Damaged) << book->error_message();
    }
    EXPECT_TRUE(book->load(files::memory_file(good))) << "usable after a failed load";
    EXPECT_EQ(book->sheet_count(), 3);
}

TEST_P(Contract, LoadsWhatIsAskedFor) {
    const std::string bytes = three_sheets();
    const auto book = create();
    ASSERT_TRUE(book->load_info(files::memory_file(bytes))) << book->error_message();
    ASSERT_EQ(book->sheet_count(), 3);
    EXPECT_EQ(book->get_sheet_name(2), u"Three");
    EXPECT_EQ(book->sheet_type(2), SheetKind::Worksheet);
    EXPECT_EQ(book->get_sheet(2), nullptr);

    ASSERT_TRUE(book->load_sheet(files::memory_file(bytes), 1)) << book->error_message();
    EXPECT_EQ(book->get_sheet(0), nullptr);
    EXPECT_THAT(book->error_message(), HasSubstr("not loaded"));
    ASSERT_NE(book->get_sheet(1), nullptr);
    EXPECT_EQ(book->get_sheet(1)->end_row(), 100);
    EXPECT_EQ(book->get_sheet_name(0), u"One");

    for (const int index : {3, -1}) {
        EXPECT_FALSE(book->load_sheet(files::memory_file(bytes), index));
        EXPECT_EQ(book->error_kind(), ErrorKind::Missing);
        const auto only = create();
        ASSERT_NE(only->insert_sheet(0, u"Only", nullptr), nullptr);
        EXPECT_TRUE(book->load_sheet(files::memory_file(saved(*only)), index));
        EXPECT_NE(book->get_sheet(0), nullptr) << "the only sheet stands for any index";
    }
}

TEST_P(Contract, KnowsTheOtherRowsOfAPartialLoad) {
    const std::string bytes = three_sheets();
    const auto book = create();
    ASSERT_TRUE(book->load_partially(files::memory_file(bytes), 1, 20, 29))
        << book->error_message();
    Sheet& sheet = *book->get_sheet(1);
    EXPECT_EQ(sheet.first_row(), 20);
    EXPECT_EQ(sheet.end_row(), 30);
    EXPECT_EQ(sheet.read_str(99, 2), u"Twoj") << "strings that no loaded cell refers to";
    EXPECT_EQ(sheet.read_num(0, 1), 0.0);
    EXPECT_EQ(sheet.cell_type(0, 1), CellKind::Number);
    EXPECT_EQ(sheet.cell_type(100, 1), CellKind::Empty);
    EXPECT_TRUE(sheet.need_rows(0, 99));
    EXPECT_TRUE(sheet.need_tail());
    EXPECT_EQ(sheet.end_row(), 30) << "the bounds stay";

    ASSERT_TRUE(sheet.write_num(50, 1, -50.0, nullptr));
    ASSERT_TRUE(sheet.clear(60, 61, 0, 5));
    EXPECT_EQ(sheet.read_num(50, 1), -50.0);
    EXPECT_EQ(sheet.cell_type(60, 2), CellKind::Empty);
    EXPECT_EQ(sheet.cell_type(62, 2), CellKind::String);
    const auto again = reloaded(*book);
    for (int i = 0; i < 3; ++i) {
        const Sheet& whole = *again->get_sheet(i);
        EXPECT_EQ(whole.end_row(), 100) << i;
        EXPECT_EQ(whole.read_num(50, 1), i == 1 ? -50.0 : 50.0) << i;
        EXPECT_EQ(whole.cell_type(60, 2), i == 1 ? CellKind::Empty : CellKind::String) << i;
        EXPECT_EQ(whole.read_num(99, 1), 99.0) << i;
    }
}

TEST_P(Contract, GivesBackWhatWasWritten) {
    const int far_row = GetParam().rows / 64, far_column = GetParam().columns / 16;
    for (unsigned seed = 1; seed <= 20; ++seed) {
        Generator generator(seed);
        const auto book = create();
        ASSERT_TRUE(book->set_date_1904(seed % 2 == 0));
        Sheet* sheet = book->insert_sheet(0, u"Données & <x>", nullptr);
        ASSERT_NE(sheet, nullptr) << book->error_message();
        Format* date = book->add_format();
        date->set_num_format(22);
        Model model;
        for (int i = 0; i < 400; ++i) {
            const int row = generator.below(30) * (i % 3 == 0 ? far_row : 1);
            const int column = generator.below(12) * (i % 7 == 0 ? far_column : 1);
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
        const auto again = reloaded(*book);
        EXPECT_EQ(again->is_date_1904(), seed % 2 == 0);
        EXPECT_EQ(again->get_sheet_name(0), u"Données & <x>");
        expect_cells(*again, 0, model, "from the file");
        const Sheet& read = *again->get_sheet(0);
        EXPECT_EQ(read.end_row(), sheet->end_row());
        EXPECT_EQ(read.end_column(), sheet->end_column());
        EXPECT_EQ(read.end_filled_row(), sheet->end_filled_row());
        EXPECT_EQ(read.first_column(), sheet->first_column());
    }
}

TEST_P(Contract, ReadsEachKindInItsWayOnly) {
    const auto book = create();
    Sheet* sheet = book->insert_sheet(0, u"S", nullptr);
    ASSERT_TRUE(sheet->write_num(1, 0, 2.5, nullptr));
    ASSERT_TRUE(sheet->write_bool(1, 1, true, nullptr));
    ASSERT_TRUE(sheet->write_str(1, 2, u"", nullptr));
    ASSERT_TRUE(sheet->write_blank(4, 3, book->format(0)));
    const auto again = reloaded(*book);
    for (const Sheet* read :
         {static_cast<const Sheet*>(sheet), static_cast<const Sheet*>(again->get_sheet(0))}) {
        EXPECT_EQ(read->read_num(1, 0), 2.5);
        EXPECT_EQ(read->read_num(1, 1), 1.0) << "a boolean is a number";
        EXPECT_EQ(read->read_num(1, 2), 0.0);
        EXPECT_FALSE(read->read_bool(1, 0));
        EXPECT_TRUE(read->read_bool(1, 1));
        EXPECT_EQ(read->read_str(1, 0).data(), nullptr);
        EXPECT_NE(read->read_str(1, 2).data(), nullptr) << "an empty string is a string";
        EXPECT_EQ(read->read_str(4, 3).data(), nullptr);
        EXPECT_EQ(read->cell_type(4, 3), CellKind::Blank);
        for (const auto& [row, column] :
             {std::pair{-1, 0}, {0, -1}, {GetParam().rows, 0}, {0, GetParam().columns}, {90, 90}}) {
            EXPECT_EQ(read->cell_type(row, column), CellKind::Empty);
            EXPECT_EQ(read->read_str(row, column).data(), nullptr);
        }
        EXPECT_EQ(read->first_row(), 1);
        EXPECT_EQ(read->end_row(), 5);
        EXPECT_EQ(read->end_column(), 4);
        EXPECT_EQ(read->end_filled_row(), 2);
        EXPECT_EQ(read->end_filled_column(), 3);
    }
    ASSERT_TRUE(sheet->clear(1, 1, 0, 5));
    EXPECT_EQ(sheet->first_row(), 4);
    EXPECT_EQ(sheet->end_filled_row(), 0);
}

TEST_P(Contract, RefusesWithAReasonAndChangesNothing) {
    const auto book = create(), other = create();
    Sheet* one = book->insert_sheet(0, u"One", nullptr);
    Sheet* two = book->insert_sheet(1, u"Two", nullptr);
    ASSERT_TRUE(two->set_hidden(SheetState::Hidden));
    ASSERT_NE(other->insert_sheet(0, u"Other", nullptr), nullptr);
    const Format* foreign = other->add_format();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const int rows = GetParam().rows, columns = GetParam().columns;
    int number = 0;
    const auto refused = [&](bool done, ErrorKind kind) {
        ++number;
        EXPECT_FALSE(done) << number;
        EXPECT_EQ(book->error_kind(), kind) << number << ": " << book->error_message();
        EXPECT_STRNE(book->error_message(), "ok") << number;
        EXPECT_FALSE(book->file_problem());
        book->get_sheet(9); // another reason
    };
    for (const std::u16string& name :
         {std::u16string(u"TWO"), std::u16string(), std::u16string(32, u'x'),
          std::u16string(u"a:b"), std::u16string(u"a'"), std::u16string(u"'a")}) {
        refused(one->set_name(name), ErrorKind::Refused);
        refused(book->insert_sheet(0, name, nullptr) != nullptr, ErrorKind::Refused);
    }
    refused(one->set_hidden(SheetState::VeryHidden), ErrorKind::Refused);
    refused(book->delete_sheet(0), ErrorKind::Refused);
    refused(book->delete_sheet(2), ErrorKind::Missing);
    refused(book->move_sheet(0, 2), ErrorKind::Missing);
    refused(book->insert_sheet(4, u"x", nullptr) != nullptr, ErrorKind::Missing);
    refused(book->insert_sheet(0, u"x", other->get_sheet(0)) != nullptr, ErrorKind::Missing);
    refused(one->write_num(0, 0, nan, nullptr), ErrorKind::Refused);
    refused(one->write_num(0, 0, infinity, nullptr), ErrorKind::Refused);
    refused(one->write_num(0, 0, 1.0, foreign), ErrorKind::Missing);
    refused(one->write_num(rows, 0, 1.0, nullptr), ErrorKind::Limit);
    refused(one->write_str(0, columns, u"x", nullptr), ErrorKind::Limit);
    refused(one->write_bool(-1, 0, true, nullptr), ErrorKind::Limit);
    refused(one->write_blank(0, -1, nullptr), ErrorKind::Limit);
    refused(one->clear(0, rows, 0, 0), ErrorKind::Limit);
    refused(one->clear(5, 4, 0, 0), ErrorKind::Limit);
    refused(one->delete_merge(0), ErrorKind::Missing);
    refused(one->set_column_width(columns, 10.0), ErrorKind::Limit);
    refused(one->set_column_width(0, 256.0), ErrorKind::Limit);
    refused(one->set_column_width(0, nan), ErrorKind::Limit);
    refused(one->auto_fit_columns(3, 2), ErrorKind::Limit);
    refused(book->format(book->format_size()) != nullptr, ErrorKind::Missing);
    EXPECT_EQ(one->name(), u"One");
    EXPECT_EQ(one->end_row(), 0);
    EXPECT_EQ(book->sheet_count(), 2);
    EXPECT_EQ(book->get_sheet(0), one);
}

TEST_P(Contract, KeepsHandlesWhileSheetsComeGoAndMove) {
    const auto book = create();
    std::vector<Sheet*> sheets;
    for (const char16_t* name : {u"A", u"B", u"C", u"D"})
        sheets.push_back(book->insert_sheet(book->sheet_count(), name, nullptr));
    ASSERT_TRUE(sheets[1]->write_str(0, 0, u"old", nullptr));
    ASSERT_TRUE(book->move_sheet(0, 2)); // B C A D
    ASSERT_TRUE(book->delete_sheet(1));  // B A D
    ASSERT_TRUE(book->move_sheet(2, 0)); // D B A
    Sheet* copy = book->insert_sheet(1, u"E", sheets[1]);
    ASSERT_NE(copy, nullptr) << book->error_message(); // D E B A
    ASSERT_TRUE(copy->write_num(5, 5, 7.0, nullptr));
    ASSERT_TRUE(sheets[1]->write_num(0, 0, 1.0, nullptr));
    ASSERT_TRUE(sheets[0]->set_name(u"a new name"));
    const Sheet* order[] = {sheets[3], copy, sheets[1], sheets[0]};
    const auto again = reloaded(*book);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(book->get_sheet(i), order[i]) << i;
        EXPECT_EQ(book->get_sheet_name(i), order[i]->name()) << i;
        EXPECT_EQ(again->get_sheet_name(i), order[i]->name()) << i;
    }
    EXPECT_EQ(again->get_sheet(1)->read_str(0, 0), u"old") << "a copy's cells are its own";
    EXPECT_EQ(again->get_sheet(1)->read_num(5, 5), 7.0);
    EXPECT_EQ(again->get_sheet(2)->cell_type(5, 5), CellKind::Empty);
    EXPECT_EQ(again->get_sheet(2)->read_num(0, 0), 1.0);
}

TEST_P(Contract, KeepsFormats) {
    const auto book = create();
    Sheet* sheet = book->insert_sheet(0, u"S", nullptr);
    Format* first = book->add_format();
    ASSERT_NE(first, nullptr);
    const int count = book->format_size();
    EXPECT_EQ(first->num_format(), 0);
    EXPECT_TRUE(first->locked());
    ASSERT_TRUE(sheet->write_num(0, 0, 45'000.0, first));
    EXPECT_FALSE(sheet->is_date(0, 0));
    first->set_num_format(14);
    EXPECT_TRUE(sheet->is_date(0, 0)) << "a format applies to the cells that have it";
    ASSERT_TRUE(sheet->write_str(0, 1, u"no date", first));
    EXPECT_FALSE(sheet->is_date(0, 1));
    for (int i = 0; i < 100; ++i)
        ASSERT_NE(book->add_format(), nullptr);
    EXPECT_EQ(book->format(count - 1), first) << "handles survive an addition";
    EXPECT_EQ(sheet->cell_format(0, 0), first);
    EXPECT_EQ(sheet->cell_format(7, 7), nullptr);
    const auto again = reloaded(*book);
    ASSERT_NE(again->get_sheet(0)->cell_format(0, 1), nullptr);
    EXPECT_EQ(again->get_sheet(0)->cell_format(0, 1)->num_format(), 14);
    EXPECT_TRUE(again->get_sheet(0)->is_date(0, 0));
}

TEST_P(Contract, SavesWhatIsAroundTheCells) {
    const auto book = create();
    Sheet* sheet = book->insert_sheet(0, u"S", nullptr);
    Sheet* hidden = book->insert_sheet(1, u"H", nullptr);
    ASSERT_TRUE(hidden->set_hidden(SheetState::VeryHidden));
    ASSERT_TRUE(sheet->set_protect(true));
    ASSERT_TRUE(sheet->set_column_width(1, 30.0));
    ASSERT_TRUE(sheet->write_num(0, 0, 5.0, nullptr));
    ASSERT_TRUE(sheet->write_blank(0, 1, nullptr));
    ASSERT_TRUE(sheet->write_str(0, 2, u"a text that needs a good deal of room", nullptr));
    ASSERT_TRUE(sheet->auto_fit_columns(0, 2));
    EXPECT_LT(sheet->column_width(0), sheet->column_width(3));
    EXPECT_EQ(sheet->column_width(1), 30.0) << "nothing in it to fit";
    EXPECT_GT(sheet->column_width(2), 30.0);
    const auto again = reloaded(*book);
    Sheet& read = *again->get_sheet(0);
    EXPECT_TRUE(read.protect());
    EXPECT_FALSE(again->get_sheet(1)->protect());
    EXPECT_EQ(again->get_sheet(1)->hidden(), SheetState::VeryHidden);
    for (int column = 0; column < 4; ++column)
        EXPECT_EQ(read.column_width(column), sheet->column_width(column)) << column;
    ASSERT_TRUE(read.set_protect(false));
    EXPECT_FALSE(reloaded(*again)->get_sheet(0)->protect());
}

TEST_P(Contract, GoesOnAfterASaveOverItsOwnFile) {
    const ScratchFolder folder;
    const std::u16string path = folder.path().u16string() + u"/" + file_name();
    {
        const auto book = create();
        Sheet* sheet = book->insert_sheet(0, u"One", nullptr);
        for (int row = 0; row < 5; ++row)
            ASSERT_TRUE(sheet->write_str(row, 0, u"old", nullptr));
        ASSERT_TRUE(book->save(path));
    }
    const auto book = create();
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
        EXPECT_GT(book->last_save().written, 0u);
        const auto again = create();
        ASSERT_TRUE(again->load(path)) << again->error_message();
        EXPECT_EQ(again->sheet_count(), round + 2);
        expect_cells(*again, 0, model, "first sheet");
        expect_cells(*again, round + 1, model, "its copy");
    }
}

TEST_P(Contract, CanBeSavedAgainAfterASaveThatFailed) {
    const std::string before = three_sheets();
    const auto book = loaded(before);
    ASSERT_TRUE(book->get_sheet(0)->write_str(1, 0, u"new", nullptr));
    ASSERT_NE(book->insert_sheet(1, u"Added", book->get_sheet(2)), nullptr);
    std::string bytes;
    int failures = 0;
    for (;; ++failures) {
        ASSERT_LT(failures, 10'000);
        files::test::FailingOutput out(files::memory_output(bytes), failures);
        if (book->save(out, GetParam().extension)) break;
        EXPECT_EQ(book->error_kind(), ErrorKind::File);
        EXPECT_EQ(book->file_problem(), files::FileProblem::DiskFull);
        EXPECT_EQ(book->last_save().written, 0u) << "of the last save that succeeded";
    }
    EXPECT_GT(failures, 3) << "the operations of a save";
    const auto again = loaded(bytes);
    EXPECT_EQ(again->sheet_count(), 4);
    EXPECT_EQ(again->get_sheet(0)->read_str(1, 0), u"new");
    EXPECT_EQ(again->get_sheet(1)->read_str(99, 2), u"Threej");
}

INSTANTIATE_TEST_SUITE_P(Engines, Contract,
                         testing::Values(Engine{"xlsx", xlCreateXMLBookW, u"xlsx", 1'048'576,
                                                16'384},
                                         Engine{"xls", xlCreateBookW, u"xls", 65'536, 256}),
                         [](const auto& engine) { return std::string(engine.param.name); });

} // namespace
} // namespace workbook
