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
        : style_(style),
          options_(options),
          is_usual_(options.separator == '\t' || options.separator == ';' ||
                    (options.separator == ',' && !style.text.decimal_comma)),
          special_(special_bytes(options.separator)),
          special_when_single_(special_) {
        // A line without a comma but with semicolons is taken to be separated by them.
        if (options.separator == ',') special_when_single_.add(';', ';');
    }

    void write(const Selection& selection, OutputSink& out) const override {
        if (options_.has_mark && selection.range.count() > 0) out.write("\xEF\xBB\xBF");
        std::string line;
        std::string field;
        for_each_row(selection, style_.merged, Content::Values,
                     [&](const std::vector<const CellValue*>& row) {
                         const ByteSet& special = row.size() == 1 ? special_when_single_ : special_;
                         line.clear();
                         for (std::size_t i = 0; i < row.size(); ++i) {
                             if (i != 0) line.push_back(options_.separator);
                             append_cell(line, field, *row[i], special);
                         }
                         line += options_.has_carriage_return ? "\r\n" : "\n";
                         out.write(line);
                     });
    }

  private:
    /// `field` is room that is used again.
    void append_cell(std::string& line, std::string& field, const CellValue& cell,
                     const ByteSet& special) const {
        if (is_usual_ && is_plain(cell)) return append_text(line, cell, style_.text);
        if (cell.type == cell_type::text) return append_field(line, cell.text, special);
        field.clear();
        append_text(field, cell, style_.text);
        append_field(line, field, special);
    }

    /// Whether the cell's text consists of what no usual separator is.
    bool is_plain(const CellValue& cell) const {
        return cell.type == cell_type::number || cell.type == cell_type::boolean ||
               (cell.type == cell_type::date && style_.text.dates != TextStyle::Dates::Pattern);
    }

    const PrintStyle style_;
    const SeparatedOptions options_;
    const bool is_usual_; ///< the separator, which no number has in it
    const ByteSet special_;
    ByteSet special_when_single_; ///< in a row of one field
};

} // namespace

ByteSet special_bytes(char separator) {
    return ByteSet("\"\n\r").add(static_cast<unsigned char>(separator),
                                 static_cast<unsigned char>(separator));
}

void append_field(std::string& out, std::string_view field, const ByteSet& special) {
    if (special.find_in(field) == field.size()) {
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
