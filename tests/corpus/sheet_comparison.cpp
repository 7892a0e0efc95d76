// SPDX-License-Identifier: Apache-2.0
//
// Reads sheets in strips of whole rows, so that a far cell costs no memory.
#include "tests/corpus/sheet_comparison.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <sstream>

#include "foundation/unicode.h"
#include "spreadsheet/range.h"

namespace corpus {
namespace {

using spreadsheet::cell_type;
using spreadsheet::ISheet;
using spreadsheet::Range;

constexpr std::int64_t kCellsPerStrip = 200'000;
constexpr double kDateSystemOffsetDays = 1462.0;
constexpr double kDateToleranceDays = 1e-9; // a microsecond is 1.2e-11 days

template <class Strip>
void for_each_strip(const Range& range, Strip strip) {
    const std::int64_t width = std::int64_t{range.last_column} - range.first_column + 1;
    if (range.count() <= 0) return;
    const int height = static_cast<int>(std::max<std::int64_t>(1, kCellsPerStrip / width));
    for (int row = range.first_row; row <= range.last_row; row += height)
        strip(Range{row, range.first_column, std::min(range.last_row, row + height - 1),
                    range.last_column});
}

/// Follows the callbacks of a typed read through a strip and makes an answer of each cell.
class StripReader {
  public:
    StripReader(ISheet& sheet, const Range& strip, bool dates_1904, const Consume& consume)
        : sheet_(sheet),
          strip_(strip),
          dates_1904_(dates_1904),
          consume_(consume),
          types_(static_cast<const ISheet&>(sheet).cell_types(strip)) {}

    void run() {
        sheet_.read(strip_, types_.data(),
                    spreadsheet::CellBuilder{this, on_text, on_number, on_date, on_boolean});
    }

  private:
    static StripReader& of(void* context) { return *static_cast<StripReader*>(context); }

    static void on_text(void* context, const std::u16string& value) {
        StripReader& reader = of(context);
        switch (reader.types_[reader.position_]) {
        case cell_type::empty:
            ++reader.position_;
            break;
        case cell_type::other:
            reader.deliver({'z'});
            break;
        case cell_type::error:
            reader.deliver({'e', 0.0, reader.error_text()});
            break;
        default:
            reader.deliver({'s', 0.0, foundation::unicode::to_utf8(value)});
        }
    }
    static void on_number(void* context, double value) { of(context).deliver({'n', value}); }
    static void on_date(void* context, double serial) {
        of(context).deliver(
            {'d', of(context).dates_1904_ ? serial - kDateSystemOffsetDays : serial});
    }
    static void on_boolean(void* context, bool value) {
        of(context).deliver({'b', value ? 1.0 : 0.0});
    }

    std::string error_text() const {
        std::u16string text;
        const Range cell{row(), column(), row(), column()};
        sheet_.read(
            cell, spreadsheet::StringBuilder{&text, [](void* context, const std::u16string& value) {
                                                 *static_cast<std::u16string*>(context) = value;
                                             }});
        return foundation::unicode::to_utf8(text);
    }

    int rows() const { return strip_.last_row - strip_.first_row + 1; }
    int row() const { return strip_.first_row + static_cast<int>(position_) % rows(); }
    int column() const { return strip_.first_column + static_cast<int>(position_) / rows(); }

    void deliver(const Answer& answer) {
        consume_(row(), column(), answer);
        ++position_;
    }

    ISheet& sheet_;
    const Range strip_;
    const bool dates_1904_;
    const Consume& consume_;
    const std::vector<cell_type> types_;
    std::size_t position_ = 0;
};

std::string describe(const Answer& answer) {
    std::ostringstream text;
    text.precision(17);
    text << answer.kind;
    if (answer.kind == 'n' || answer.kind == 'd' || answer.kind == 'b')
        text << ' ' << answer.number;
    if (answer.kind == 's' || answer.kind == 'e') text << " \"" << answer.text.substr(0, 60) << '"';
    return text.str();
}

std::string describe_cell(int row, int column) {
    const std::u16string text = spreadsheet::range_string({row, column, row, column});
    return {text.begin(), text.end()};
}

/// A time of day without a date counts as a number.
bool is_same(const Answer& found, Answer expected) {
    if (expected.kind == 'd' && expected.number < 1.0) expected.kind = 'n';
    if (found.kind != expected.kind) return false;
    switch (found.kind) {
    case 'd':
        return std::abs(found.number - expected.number) <= kDateToleranceDays;
    case 'n':
    case 'b':
        return found.number == expected.number;
    case 's':
    case 'e':
        return found.text == expected.text;
    default:
        return true;
    }
}

bool has_no_text(const Answer& answer) {
    return answer.kind == 'z' || answer.kind == '-' || (answer.kind == 's' && answer.text.empty());
}

bool is_one_of(const Answer& found, const std::vector<Answer>& answers) {
    return std::any_of(answers.begin(), answers.end(),
                       [&](const Answer& answer) { return is_same(found, answer); });
}

/// Whether readers differ over the cell only in what they call a cell without text.
bool differs_in_blank_only(const Expectation& expectation) {
    return !expectation.others.empty() &&
           std::all_of(expectation.others.begin(), expectation.others.end(), has_no_text);
}

void judge(const std::string& place, const Answer& found, const Expectation& expectation,
           Verdict verdict, Report& wrong, Report& disputed) {
    if (is_same(found, expectation.answer)) return;
    if (has_no_text(found) && has_no_text(expectation.answer) && !expectation.others.empty())
        return;
    if (differs_in_blank_only(expectation) && has_no_text(found)) return;
    const std::string text =
        place + ": " + describe(found) + ", expected " + describe(expectation.answer);
    const bool is_disputed = verdict != Verdict::Agree && !expectation.others.empty();
    if (!is_disputed)
        wrong.add(text);
    else if (!is_one_of(found, expectation.others))
        disputed.add(text);
}

} // namespace

void read_sheet(ISheet& sheet, bool dates_1904, const Consume& consume) {
    for_each_strip(sheet.used_range(), [&](const Range& strip) {
        StripReader(sheet, strip, dates_1904, consume).run();
    });
}

void compare_cells(ISheet& sheet, bool dates_1904, const ExpectedSheet& expected, Verdict verdict,
                   Report& wrong, Report& disputed) {
    auto missing = expected.cells;
    read_sheet(sheet, dates_1904, [&](int row, int column, const Answer& found) {
        const std::string place = "'" + expected.name + "'!" + describe_cell(row, column);
        const auto cell = expected.cells.find(cell_key(row, column));
        if (cell == expected.cells.end()) {
            if (expected.has_all_cells && found.kind != 'z')
                wrong.add(place + ": " + describe(found) + ", expected nothing");
            return;
        }
        judge(place, found, cell->second, verdict, wrong, disputed);
        missing.erase(cell->first);
    });
    for (const auto& [key, expectation] : missing) {
        const std::string place =
            "'" + expected.name + "'!" +
            describe_cell(static_cast<int>(key >> 32), static_cast<int>(key & 0xffffffffu));
        judge(place, Answer{}, expectation, verdict, wrong, disputed);
    }
}

void compare_merged_cells(ISheet& sheet, const ExpectedSheet& expected, Report& wrong) {
    Range all = sheet.used_range();
    for (const Range& region : expected.merged) {
        all.last_row = std::max(all.last_row, region.last_row + 1);
        all.last_column = std::max(all.last_column, region.last_column + 1);
    }
    all.first_row = all.first_column = 0;
    for_each_strip(all, [&](const Range& strip) {
        const int rows = strip.last_row - strip.first_row + 1;
        std::vector<bool> flags(static_cast<std::size_t>(strip.count()));
        for (const Range& region : expected.merged)
            for (int column = region.first_column; column <= region.last_column; ++column)
                for (int row = std::max(region.first_row, strip.first_row);
                     row <= std::min(region.last_row, strip.last_row); ++row)
                    flags[static_cast<std::size_t>(column - strip.first_column) *
                              static_cast<std::size_t>(rows) +
                          static_cast<std::size_t>(row - strip.first_row)] = true;
        std::vector<cell_type> types(flags.size());
        sheet.cell_types(strip, types.data(), spreadsheet::MergedCellColumnRule::repeat,
                         spreadsheet::MergedCellRowRule::repeat);
        const std::vector<bool> found = sheet.get_merged_cells_vector();
        if (found == flags) return;
        const std::u16string place = spreadsheet::range_string(strip);
        wrong.add("'" + expected.name + "': merged cells differ within " +
                  std::string(place.begin(), place.end()));
    });
}

} // namespace corpus
