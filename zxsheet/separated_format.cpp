// SPDX-License-Identifier: Apache-2.0
//
// CSV and TSV.
#include "zxsheet/output_format.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

class SeparatedFormat final : public OutputFormat {
  public:
    SeparatedFormat(const PrintStyle& style, const SeparatedOptions& options)
        : style_(style), options_(options) {}

    void write(const Selection& selection, OutputSink& out) const override {
        const char separator = options_.separator;
        if (options_.has_mark && selection.range.count() > 0) out.write("\xEF\xBB\xBF");
        std::string line;
        std::string field;
        for_each_row(selection, style_.merged, Content::Values,
                     [&](const std::vector<const CellValue*>& row) {
                         // A line without a comma but with semicolons is taken to be separated by
                         // them.
                         const char also = row.size() == 1 && separator == ',' ? ';' : separator;
                         line.clear();
                         for (std::size_t i = 0; i < row.size(); ++i) {
                             if (i != 0) line.push_back(separator);
                             append_cell(line, field, *row[i], also);
                         }
                         line += options_.has_carriage_return ? "\r\n" : "\n";
                         out.write(line);
                     });
    }

  private:
    /// `field` is room that is used again.
    void append_cell(std::string& line, std::string& field, const CellValue& cell,
                     char also) const {
        const bool is_plain = cell.type == cell_type::number && !style_.text.decimal_comma &&
                              options_.separator == ',';
        if (is_plain) return append_text(line, cell, style_.text);
        if (cell.type == cell_type::text)
            return append_field(line, cell.text, options_.separator, also);
        field.clear();
        append_text(field, cell, style_.text);
        append_field(line, field, options_.separator, also);
    }

    const PrintStyle style_;
    const SeparatedOptions options_;
};

} // namespace

void append_field(std::string& out, std::string_view field, char separator, char also) {
    const char special[] = {separator, '"', '\n', '\r', also};
    if (field.find_first_of(std::string_view(special, sizeof special)) == field.npos) {
        out += field;
        return;
    }
    out.push_back('"');
    for (const char c : field) {
        if (c == '"') out.push_back('"');
        out.push_back(c);
    }
    out.push_back('"');
}

std::unique_ptr<OutputFormat> separated_format(const PrintStyle& style,
                                               const SeparatedOptions& options) {
    return std::make_unique<SeparatedFormat>(style, options);
}

} // namespace zxsheet
