// SPDX-License-Identifier: Apache-2.0
//
// JSON as one object, as one array a line, and as records.
#include <algorithm>

#include "foundation/unicode.h"
#include "zxsheet/json_text.h"
#include "zxsheet/output_format.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;

using Row = std::vector<const CellValue*>;

void append_values(std::string& out, const Row& row, const TextStyle& style) {
    out.push_back('[');
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i != 0) out.push_back(',');
        append_json(out, *row[i], style);
    }
    out.push_back(']');
}

void append_types(std::string& out, const Row& row) {
    out.push_back('[');
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (i != 0) out.push_back(',');
        out.push_back('"');
        out += type_name(row[i]->type);
        out.push_back('"');
    }
    out.push_back(']');
}

class JsonFormat final : public OutputFormat {
  public:
    JsonFormat(const PrintStyle& style, Content content) : style_(style), content_(content) {}

    void write(const Selection& selection, OutputSink& out) const override {
        const std::string range = unicode::to_utf8(spreadsheet::range_string(selection.range));
        out.write("{\"sheet\":" + json_string(unicode::to_utf8(selection.sheet_name)));
        out.write(",\"range\":" + (range.empty() ? "null" : json_string(range)));
        out.write(",\"types\":");
        write_matrix(selection, Content::Types, out);
        if (content_ == Content::Values) {
            out.write(",\"values\":");
            write_matrix(selection, Content::Values, out);
        }
        out.write("}\n");
    }

  private:
    void write_matrix(const Selection& selection, Content content, OutputSink& out) const {
        std::string text;
        bool first = true;
        out.write('[');
        for_each_row(selection, style_.merged, content, [&](const Row& row) {
            text = first ? "" : ",";
            first = false;
            content == Content::Types ? append_types(text, row)
                                      : append_values(text, row, style_.text);
            out.write(text);
        });
        out.write(']');
    }

    const PrintStyle style_;
    const Content content_;
};

class JsonLinesFormat final : public OutputFormat {
  public:
    explicit JsonLinesFormat(const PrintStyle& style) : style_(style) {}

    void write(const Selection& selection, OutputSink& out) const override {
        std::string line;
        for_each_row(selection, style_.merged, Content::Values, [&](const Row& row) {
            line.clear();
            append_values(line, row, style_.text);
            line.push_back('\n');
            out.write(line);
        });
    }

  private:
    const PrintStyle style_;
};

class RecordsFormat final : public OutputFormat {
  public:
    RecordsFormat(const PrintStyle& style, RecordLayout layout)
        : style_(style), is_array_(layout == RecordLayout::Array) {}

    void write(const Selection& selection, OutputSink& out) const override {
        std::vector<std::string> keys; ///< with quotes and colon
        bool is_header = true;
        bool is_first = true;
        std::string line;
        for_each_row(selection, style_.merged, Content::Values, [&](const Row& row) {
            if (is_header) {
                keys = keys_of(row);
                is_header = false;
                return;
            }
            line = !is_array_ ? "" : is_first ? "[\n" : ",\n";
            is_first = false;
            append_record(line, keys, row);
            if (!is_array_) line.push_back('\n');
            out.write(line);
        });
        if (is_array_) out.write(is_first ? "[]\n" : "\n]\n");
    }

  private:
    std::vector<std::string> keys_of(const Row& row) const {
        std::vector<std::string> names;
        for (const CellValue* cell : row)
            names.push_back(plain_text(*cell, style_.text));
        std::vector<std::string> keys = spreadsheet::distinct_names(names);
        for (std::string& key : keys)
            key = json_string(key) + ':';
        return keys;
    }

    void append_record(std::string& out, const std::vector<std::string>& keys,
                       const Row& row) const {
        out.push_back('{');
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i != 0) out.push_back(',');
            out += keys[i];
            append_json(out, *row[i], style_.text);
        }
        out.push_back('}');
    }

    const PrintStyle style_;
    const bool is_array_;
};

} // namespace

std::unique_ptr<OutputFormat> json_format(const PrintStyle& style, Content content) {
    return std::make_unique<JsonFormat>(style, content);
}

std::unique_ptr<OutputFormat> json_lines_format(const PrintStyle& style) {
    return std::make_unique<JsonLinesFormat>(style);
}

std::unique_ptr<OutputFormat> records_format(const PrintStyle& style, RecordLayout layout) {
    return std::make_unique<RecordsFormat>(style, layout);
}

} // namespace zxsheet
