// SPDX-License-Identifier: Apache-2.0
//
// Until a formula is written its cell has a number, which leaves nothing behind in the file;
// online, where a failure may come between, the text.
#include "zxsheet/formula_sink.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "zxsheet/command_error.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {

using namespace spreadsheet;

void FormulaSink::add(const CellValue& cell) {
    const bool is_formula =
        cell.type == cell_type::text && cell.text.size() > 1 && cell.text.front() == '=';
    if (!is_formula || is_skipped()) {
        writer_.add(cell);
    } else {
        keep(cell.text.substr(1));
        if (options_.book.is_online())
            writer_.add(cell);
        else
            writer_.add({cell_type::number, 0.0, {}});
    }
    ++column_;
}

void FormulaSink::end_row() {
    writer_.end_row();
    ++row_;
    column_ = 0;
}

void FormulaSink::keep(const std::string& text) {
    const auto row = static_cast<int>(row_ - options_.skip.value_or(0));
    const auto column = static_cast<int>(column_);
    const std::string problem = formula_problem(text);
    if (problem.empty()) {
        formulas_.push_back({row, column, text});
        return;
    }
    writer_.open(); // to know the place
    const Selection& target = writer_.target().cells;
    const int at_row = target.range.first_row + row;
    const int at_column = target.range.first_column + column;
    throw CommandError(ExitCode::NotWritten,
                       options_.book.text() + ": " +
                           place_text(target.sheet_name, {at_row, at_column, at_row, at_column}) +
                           ": Not a formula: " + problem + '.');
}

void FormulaSink::finish() {
    try {
        writer_.finish();
    } catch (const CommandError&) {
        if (options_.book.is_online() && writer_.written().count() > 0) write_formulas();
        throw;
    }
    write_formulas();
}

/// Formulas below each other go at once.
void FormulaSink::write_formulas() {
    const Range written = writer_.written();
    std::sort(formulas_.begin(), formulas_.end(), [](const Formula& a, const Formula& b) {
        return std::tie(a.column, a.row) < std::tie(b.column, b.row);
    });
    ISheet* const sheet = writer_.target().cells.sheet.get();
    std::vector<std::string_view> texts;
    for (std::size_t first = 0; first < formulas_.size(); first += texts.size()) {
        const Formula& begin = formulas_[first];
        texts.clear();
        for (std::size_t i = first; i < formulas_.size(); ++i) {
            const Formula& next = formulas_[i];
            if (next.column != begin.column || next.row - begin.row != static_cast<int>(i - first))
                break;
            texts.push_back(next.text);
        }
        Range range{written.first_row + begin.row, written.first_column + begin.column, 0, 0};
        range.last_row =
            std::min(range.first_row + static_cast<int>(texts.size()) - 1, written.last_row);
        range.last_column = range.first_column;
        if (range.first_row > range.last_row) continue;
        if (!spreadsheet::write_formulas(*sheet, range, texts.data()))
            throw CommandError(ExitCode::NotWritten,
                               options_.book.text() + ": Such a book takes no formulas.");
        check_done(writer_.target().cells.book, options_);
    }
}

} // namespace zxsheet
