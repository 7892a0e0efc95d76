// SPDX-License-Identifier: Apache-2.0
//
// Names are compared without regard to case, as applications compare those of tables.
#include "zxsheet/column_matcher.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/command_error.h"
#include "zxsheet/suggestion.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;

std::vector<std::string> names_of_sheet(const WriteTarget& target) {
    Selection header = target.cells;
    header.range = *target.header;
    std::vector<std::string> names;
    for_each_row(header, {}, Content::Values, [&names](const auto& row) {
        for (const CellValue* cell : row)
            names.push_back(plain_text(*cell));
    });
    return names;
}

} // namespace

void ColumnMatcher::begin() {
    writer_.open();
    const bool matches = has_header_ && writer_.target().header.has_value();
    state_ = matches ? State::Header : State::Unchanged;
}

void ColumnMatcher::add(const CellValue& cell) {
    if (state_ == State::Begin) begin();
    if (state_ == State::Unchanged) return next_.add(cell);
    row_.push_back(cell);
}

void ColumnMatcher::end_row() {
    if (state_ == State::Begin) begin();
    if (state_ == State::Unchanged) return next_.end_row();
    if (state_ == State::Header) {
        match_names();
        state_ = State::Matched;
    } else {
        if (row_.size() > columns_.size())
            throw CommandError(ExitCode::Failed, location_.text() +
                                                     ": A row of the data has more cells than its "
                                                     "first row has names.");
        std::vector<const CellValue*> placed(width_);
        for (std::size_t i = 0; i < row_.size(); ++i)
            placed[columns_[i]] = &row_[i];
        const CellValue nothing;
        for (const CellValue* cell : placed)
            next_.add(cell != nullptr ? *cell : nothing);
        next_.end_row();
    }
    row_.clear();
}

void ColumnMatcher::match_names() {
    const std::vector<std::string> names = names_of_sheet(writer_.target());
    width_ = names.size();
    for (const CellValue& cell : row_) {
        const std::u16string wanted = unicode::to_utf16(plain_text(cell));
        std::size_t column = 0;
        const auto is_free = [this](std::size_t i) {
            return std::find(columns_.begin(), columns_.end(), i) == columns_.end();
        };
        while (column < width_ &&
               !(is_free(column) &&
                 unicode::equal_ignoring_case(unicode::to_utf16(names[column]), wanted)))
            ++column;
        if (column == width_) {
            const std::string similar = suggestion(plain_text(cell), names);
            throw CommandError(ExitCode::NotFound,
                               location_.text() + ": " +
                                   quoted_sheet(writer_.target().cells.sheet_name) +
                                   " has no column '" + plain_text(cell) + "'" +
                                   (similar.empty() ? "." : similar));
        }
        columns_.push_back(column);
    }
}

} // namespace zxsheet
