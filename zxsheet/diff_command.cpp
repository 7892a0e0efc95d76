// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet diff`: the cells in which two books differ.
#include <algorithm>
#include <exception>
#include <map>
#include <optional>
#include <sstream>
#include <utility>

#include <climits>

#include "foundation/unicode.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/json_text.h"
#include "zxsheet/library_error.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/output_format.h"
#include "zxsheet/streamed_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;

struct DiffOptions : BookOptions {
    BookLocation other;
    std::string sheet;
    bool json = false;
};

/// What two sheets are compared by: a few rows of both at a time.
constexpr int kRowsAtOnce = 256;

using Place = std::pair<int, int>; ///< row and column
using Cells = std::map<Place, CellValue>;

class SheetRows {
  public:
    explicit SheetRows(const Selection* selection) : selection_(selection) {}

    /// The first row from `row` on that has cells.
    std::optional<int> next_row(int row) const {
        if (selection_ == nullptr) return std::nullopt;
        const auto found = next_row_of_cells(*selection_->sheet, row);
        return found ? std::optional(found->first_row) : std::nullopt;
    }
    /// The cells with a value of some rows.
    Cells read(int first_row, int last_row) const {
        Cells cells;
        if (selection_ == nullptr) return cells;
        fetch_ahead(*selection_, first_row);
        Selection rows = *selection_;
        rows.range = {first_row, 0, last_row, INT_MAX - 1};
        for_each_cell(rows, [&cells](int row, int column, const CellValue& cell) {
            if (cell.type != cell_type::other) cells.emplace(Place(row, column), cell);
        });
        return cells;
    }

  private:
    const Selection* selection_; ///< null for a sheet that the book does not have
};

bool are_same(const CellValue& a, const CellValue& b) {
    if (a.type != b.type) return false;
    const bool is_text = a.type == cell_type::text || a.type == cell_type::error;
    return is_text ? a.text == b.text : a.number == b.number;
}

class Comparison {
  public:
    Comparison(const DiffOptions& options, OutputSink& out) : options_(options), out_(out) {}

    void compare_sheets(const Selection* old_sheet, const Selection* new_sheet) {
        const SheetRows before(old_sheet), after(new_sheet);
        name_ = (old_sheet != nullptr ? old_sheet : new_sheet)->sheet_name;
        int row = 0;
        while (const auto next = earliest(before.next_row(row), after.next_row(row))) {
            const int last = *next + kRowsAtOnce - 1;
            compare_cells(before.read(*next, last), after.read(*next, last));
            row = last + 1;
        }
    }

    void finish() {
        if (options_.json) out_.write(count_ == 0 ? "[]\n" : "\n]\n");
        if (count_ != 0) out_.set_exit_code(kDifferent);
    }

  private:
    static constexpr int kDifferent = 1; ///< as programs that compare files have it

    static std::optional<int> earliest(std::optional<int> a, std::optional<int> b) {
        if (!a || !b) return a ? a : b;
        return std::min(*a, *b);
    }

    void compare_cells(const Cells& before, const Cells& after) {
        auto a = before.begin();
        auto b = after.begin();
        while (a != before.end() || b != after.end()) {
            if (b == after.end() || (a != before.end() && a->first < b->first)) {
                report(a->first, &a->second, nullptr);
                ++a;
            } else if (a == before.end() || b->first < a->first) {
                report(b->first, nullptr, &b->second);
                ++b;
            } else {
                if (!are_same(a->second, b->second)) report(a->first, &a->second, &b->second);
                ++a;
                ++b;
            }
        }
    }

    /// Text is in quotes, which distinguishes it from numbers, dates and errors that look the same.
    static std::string shown(const CellValue* cell, TextStyle::Dates dates) {
        if (cell == nullptr) return "null";
        if (cell->type == cell_type::text) return json_string(cell->text);
        const bool is_date = cell->type == cell_type::date;
        return plain_text(*cell, {is_date ? dates : TextStyle::Dates::Serial, {}, false});
    }
    static std::string line(const CellValue* before, const CellValue* after) {
        using Dates = TextStyle::Dates;
        const std::string old_text = shown(before, Dates::Iso), new_text = shown(after, Dates::Iso);
        if (old_text != new_text) return old_text + '\t' + new_text;
        // Parts of a millisecond.
        return shown(before, Dates::Serial) + '\t' + shown(after, Dates::Serial);
    }
    static std::string json(const char* name, const CellValue* cell) {
        const CellValue value = cell != nullptr ? *cell : CellValue();
        std::string text = std::string(",\"") + name + "\":";
        append_json(text, value, {});
        text += std::string(",\"") + name + "_type\":";
        append_json_string(text, type_name(value.type));
        return text;
    }

    void report(const Place& at, const CellValue* before, const CellValue* after) {
        const std::string place = place_text(name_, {at.first, at.second, at.first, at.second});
        if (options_.json)
            out_.write((count_ == 0 ? "[\n" : ",\n") + std::string("{\"cell\":") +
                       json_string(place) + json("old", before) + json("new", after) + '}');
        else
            out_.write(place + '\t' + line(before, after) + '\n');
        ++count_;
    }

    const DiffOptions& options_;
    OutputSink& out_;
    std::u16string name_;
    std::uint64_t count_ = 0;
};

/// The worksheets of a book by their names, in its order.
std::vector<Selection> worksheets(const BookLocation& location, const std::string& wanted) {
    const auto book = open_book(location);
    learn_used_ranges(book);
    std::vector<Selection> sheets;
    const std::size_t only = wanted.empty() ? 0 : find_sheet(book, location, wanted);
    for (std::size_t i = 0; i < book->num_sheets(); ++i) {
        if (book->sheet_type(i) == sheet::type::chart || (!wanted.empty() && i != only)) continue;
        sheets.push_back(select_sheet(book, i));
    }
    if (sheets.empty() && !wanted.empty())
        throw CommandError(ExitCode::NotFound, location.text() + ": The sheet '" + wanted +
                                                   "' is a chart sheet, which has no cells.");
    return sheets;
}

const Selection* find_sheet_of(const std::vector<Selection>& sheets, const std::u16string& name) {
    for (const Selection& sheet : sheets)
        if (foundation::unicode::equal_ignoring_case(sheet.sheet_name, name)) return &sheet;
    return nullptr;
}

/// The other book, copied into a file if it comes from a pipe. Failures name it.
std::vector<Selection> other_worksheets(BookLocation other, const std::string& wanted,
                                        StreamedBook& streamed) {
    if (other.text() == kStream)
        throw CommandError(ExitCode::Usage, "Standard input can be BOOK only, not OTHER");
    std::istringstream nothing;
    try {
        streamed.fetch(other, {}, nothing);
        return worksheets(other, wanted);
    } catch (const std::exception&) {
        throw as_command_error(std::current_exception(), {other, {}});
    }
}

void run_diff(const DiffOptions& options, OutputSink& out) {
    const std::vector<Selection> before = worksheets(options.book, options.sheet);
    StreamedBook streamed;
    BookLocation other = options.other;
    other.use_mode_of(options.book);
    const std::vector<Selection> after = other_worksheets(other, options.sheet, streamed);
    Comparison comparison(options, out);
    if (!options.sheet.empty()) { // whatever the two are called
        comparison.compare_sheets(&before.front(), &after.front());
        return comparison.finish();
    }
    for (const Selection& sheet : before)
        comparison.compare_sheets(&sheet, find_sheet_of(after, sheet.sheet_name));
    for (const Selection& sheet : after)
        if (find_sheet_of(before, sheet.sheet_name) == nullptr)
            comparison.compare_sheets(nullptr, &sheet);
    comparison.finish();
}

} // namespace

Command diff_command() {
    const auto options = std::make_shared<DiffOptions>();
    const auto take = [options](const std::string& text) { options->other.set_text(text); };
    const auto take_format = [options](const std::string& text) { options->json = text == "json"; };
    Parameter format{"--to", "FORMAT", "tsv (default) or json", take_format};
    format.choices = {"tsv", "json"};
    Command command = reading_command(
        "diff", "Cells in which two books differ: address, old value, new value", options,
        {Parameter{"OTHER", "", "The book to compare with", take}.required(),
         sheet_option(options->sheet), format},
        run_diff);
    command.footer = "Sheets are compared by their names (with -s, one of each book), values and "
                     "their types; formats and "
                     "formulas are not.\n"
                     "Exit codes: 0 the same; 1 different; others as those of every command.";
    return command;
}

} // namespace zxsheet
