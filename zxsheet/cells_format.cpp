// SPDX-License-Identifier: Apache-2.0
//
// One line for each cell.
#include "foundation/unicode.h"
#include "zxsheet/json_text.h"
#include "zxsheet/output_format.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

class CellsFormat final : public OutputFormat {
  public:
    CellsFormat(const PrintStyle& style, CellLayout layout, Bounds bounds)
        : style_(style), is_json_(layout == CellLayout::JsonLines), bounds_(bounds) {}

    void write(const Selection& selection, OutputSink& out) const override {
        std::string line;
        for_each_cell(selection, [&](int row, int column, const CellValue& cell) {
            if (cell.type == cell_type::other && bounds_ == Bounds::Filled) return;
            line.clear();
            append_line(line, row, column, cell);
            out.write(line);
        });
    }

  private:
    void append_line(std::string& line, int row, int column, const CellValue& cell) const {
        const std::string address =
            foundation::unicode::to_utf8(spreadsheet::range_string({row, column, row, column}));
        if (is_json_) {
            line += "{\"cell\":\"" + address + "\",\"type\":";
            append_json_string(line, type_name(cell.type));
            line += ",\"value\":";
            append_json(line, cell, style_.text);
            line += "}\n";
        } else {
            line += address + '\t';
            line += type_name(cell.type);
            line.push_back('\t');
            append_field(line, plain_text(cell, style_.text), special_);
            line.push_back('\n');
        }
    }

    const PrintStyle style_;
    const bool is_json_;
    const ByteSet special_ = special_bytes('\t');
    const Bounds bounds_;
};

} // namespace

std::unique_ptr<OutputFormat> cells_format(const PrintStyle& style, CellLayout layout,
                                           Bounds bounds) {
    return std::make_unique<CellsFormat>(style, layout, bounds);
}

} // namespace zxsheet
