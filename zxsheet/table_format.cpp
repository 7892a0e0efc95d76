// SPDX-License-Identifier: Apache-2.0
//
// The table for people: one pass finds the widths of the columns, a second one writes.
#include <algorithm>
#include <limits>

#include "foundation/unicode.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/output_format.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

/// Of a cell, unless all of it is asked for.
constexpr std::size_t kMaxWidth = 40;

bool begins_character(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

/// Number of characters that UTF-8 text shows, roughly: one for each code point.
std::size_t width_of(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins_character));
}

/// At most `width` characters; an ellipsis in place of the rest.
std::string clipped(const std::string& text, std::size_t width) {
    std::size_t characters = 0;
    std::size_t cut = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!begins_character(text[i])) continue;
        if (++characters == width) cut = i;
        if (characters > width) return text.substr(0, cut) + "\xE2\x80\xA6";
    }
    return text;
}

/// The cell on one line, at most `width` characters of it.
std::string shown(const CellValue& cell, const TextStyle& style, std::size_t width) {
    return clipped(one_line(plain_text(cell, style)), width);
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
    /// `line_width` is that of a line, 0 for any.
    TableWriter(const Selection& selection, const PrintStyle& style, std::size_t line_width,
                std::size_t cell_width, OutputSink& out)
        : selection_(selection),
          style_(style),
          line_width_(line_width),
          cell_width_(cell_width),
          out_(out) {}

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
                widths_[i] =
                    std::max(widths_[i], width_of(shown(*row[i], style_.text, cell_width_)));
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
            const std::string text = shown(*row[i], style_.text, cell_width_);
            const std::string padding(widths_[i] - width_of(text), ' ');
            line += "  " + (is_number(*row[i]) ? padding + text : text + padding);
        }
        end_line(line);
    }

    void end_line(std::string& line) {
        line.erase(line.find_last_not_of(' ') + 1);
        out_.write(line_width_ == 0 ? line : clipped(line, line_width_));
        out_.write('\n');
    }

    const Selection& selection_;
    const PrintStyle& style_;
    const std::size_t line_width_;
    const std::size_t cell_width_;
    OutputSink& out_;
    std::vector<std::size_t> widths_;
    bool numbered_ = true;
};

class TableFormat final : public OutputFormat {
  public:
    TableFormat(const PrintStyle& style, std::optional<std::size_t> width)
        : style_(style), width_(width) {}

    void write(const Selection& selection, OutputSink& out) const override {
        const std::size_t line_width = width_.value_or(out.terminal_width());
        const std::size_t cell_width =
            width_ == 0u ? std::numeric_limits<std::size_t>::max() : kMaxWidth;
        TableWriter(selection, style_, line_width, cell_width, out).write();
    }

  private:
    const PrintStyle style_;
    const std::optional<std::size_t> width_;
};

} // namespace

std::unique_ptr<OutputFormat> table_format(const PrintStyle& style,
                                           std::optional<std::size_t> width) {
    return std::make_unique<TableFormat>(style, width);
}

} // namespace zxsheet
