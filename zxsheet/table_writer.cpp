// SPDX-License-Identifier: Apache-2.0
//
// The table for people: one pass finds the widths of the columns, a second one writes.
#include <algorithm>

#include "foundation/unicode.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/row_writers.h"

namespace zxsheet {
namespace {

constexpr std::size_t kMaxWidth = 40;

bool begins_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// Number of characters that UTF-8 text shows, roughly: one for each code point.
std::size_t width_of(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

/// At most `kMaxWidth` characters; an ellipsis in place of the rest.
std::string clipped(const std::string& text) {
    std::size_t characters = 0;
    std::size_t cut = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!begins_character(text[i])) continue;
        if (++characters == kMaxWidth) cut = i;
        if (characters > kMaxWidth) return text.substr(0, cut) + "\xE2\x80\xA6";
    }
    return text;
}

/// The cell on one line.
std::string shown(const CellValue& cell, DateStyle dates) {
    std::string text = plain_text(cell, dates);
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
    return clipped(text);
}

std::string column_letters(int column) {
    const std::u16string cell = spreadsheet::range_string({0, column, 0, column});
    const std::string text = foundation::unicode::to_utf8(cell);
    return text.substr(0, text.size() - 1);
}

bool is_number(const CellValue& cell) {
    return cell.type == spreadsheet::cell_type::number;
}

class TableWriter {
  public:
    TableWriter(const Selection& selection, const PrintStyle& style, OutputSink& out)
        : selection_(selection), style_(style), out_(out) {}

    void write() {
        measure();
        if (widths_.empty()) return;
        const std::size_t number_width = std::to_string(selection_.range.last_row + 1).size();
        write_heads(number_width);
        int row_number = selection_.range.first_row + 1;
        visit([&](const std::vector<const CellValue*>& row) {
            const std::string number = numbered_ ? std::to_string(row_number++) : std::string();
            write_line(number, number_width, row);
        });
    }

  private:
    void visit(const RowVisitor& visitor) {
        for_each_row(selection_, style_.merged, Content::Values, visitor);
    }

    void measure() {
        std::size_t rows = 0;
        visit([&](const std::vector<const CellValue*>& row) {
            ++rows;
            widths_.resize(std::max(widths_.size(), row.size()), 1);
            for (std::size_t i = 0; i < row.size(); ++i)
                widths_[i] = std::max(widths_[i], width_of(shown(*row[i], style_.dates)));
        });
        // With rows or columns left out, the names of those that remain are not known.
        const spreadsheet::Range& range = selection_.range;
        numbered_ = static_cast<std::int64_t>(rows * widths_.size()) == range.count();
    }

    void write_heads(std::size_t number_width) {
        if (!numbered_) return;
        std::string line(number_width, ' ');
        for (std::size_t i = 0; i < widths_.size(); ++i) {
            const int column = selection_.range.first_column + static_cast<int>(i);
            const std::string letters = column_letters(column);
            widths_[i] = std::max(widths_[i], letters.size());
            line += "  " + letters + std::string(widths_[i] - letters.size(), ' ');
        }
        end_line(line);
    }

    void write_line(const std::string& number, std::size_t number_width,
                    const std::vector<const CellValue*>& row) {
        std::string line = std::string(number_width - number.size(), ' ') + number;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const std::string text = shown(*row[i], style_.dates);
            const std::string padding(widths_[i] - width_of(text), ' ');
            line += "  " + (is_number(*row[i]) ? padding + text : text + padding);
        }
        end_line(line);
    }

    void end_line(std::string& line) {
        line.erase(line.find_last_not_of(' ') + 1);
        out_.write(line);
        out_.write('\n');
    }

    const Selection& selection_;
    const PrintStyle& style_;
    OutputSink& out_;
    std::vector<std::size_t> widths_;
    bool numbered_ = true;
};

} // namespace

void write_table(const Selection& selection, const PrintStyle& style, OutputSink& out) {
    TableWriter(selection, style, out).write();
}

} // namespace zxsheet
