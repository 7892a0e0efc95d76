// SPDX-License-Identifier: Apache-2.0
//
// The output formats by their names.
#include "zxsheet/command_error.h"
#include "zxsheet/output_format.h"
#include "zxsheet/parameter.h"
#include "zxsheet/save_book.h"

namespace zxsheet {
namespace {

constexpr struct {
    const char* word;
    TextFormat format;
    const char* ending; ///< of a file's name
} kFormats[] = {{"csv", TextFormat::Csv, "csv"},
                {"tsv", TextFormat::Tsv, "tsv"},
                {"json", TextFormat::Json, "json"},
                {"jsonl", TextFormat::JsonLines, "jsonl"},
                {"records", TextFormat::Records, "json"},
                {"cells", TextFormat::Cells, "tsv"},
                {"cells.jsonl", TextFormat::CellsJson, "jsonl"},
                {"table", TextFormat::Table, "txt"}};

} // namespace

Parameter text_format_option(std::optional<TextFormat>& format) {
    std::vector<std::pair<const char*, TextFormat>> words;
    for (const auto& known : kFormats)
        words.emplace_back(known.word, known.format);
    return choice<std::optional<TextFormat>, TextFormat>(
        "--to", "FORMAT",
        "csv, tsv, json, jsonl, records, cells, cells.jsonl or table\n"
        "(default: as the name of the output ends, else csv)",
        format, words);
}

std::optional<TextFormat> text_format_of_name(const std::string& file) {
    const std::string ending = lower_extension(file);
    if (ending == ".tab") return TextFormat::Tsv;
    if (ending == ".ndjson") return TextFormat::JsonLines;
    for (const auto& known : kFormats)
        if (ending == std::string(".") + known.ending && known.word == std::string(known.ending))
            return known.format;
    return std::nullopt;
}

void check_text_file(const BookLocation& book, const std::string& file) {
    refuse_own_file(book, file);
    if (has_book_name(file))
        throw CommandError(ExitCode::Usage, file +
                                                ": A file of this name is a book, and the "
                                                "output is text; 'zxsheet convert' makes books.");
}

std::string ending_of(TextFormat format) {
    for (const auto& known : kFormats)
        if (known.format == format) return known.ending;
    return {};
}

std::unique_ptr<OutputFormat> text_format(const TextOptions& options) {
    SeparatedOptions separated = options.separated;
    const PrintStyle& style = options.style;
    switch (options.format) {
    case TextFormat::Csv:
        // A decimal comma asks for another separator.
        separated.separator = options.delimiter.value_or(style.text.decimal_comma ? ';' : ',');
        return separated_format(style, separated);
    case TextFormat::Tsv:
        separated.separator = '\t';
        return separated_format(style, separated);
    case TextFormat::Json:
        return options.has_header ? records_format(style, RecordLayout::Array)
                                  : json_format(style, Content::Values);
    case TextFormat::JsonLines:
        return options.has_header ? records_format(style, RecordLayout::Lines)
                                  : json_lines_format(style);
    case TextFormat::Records:
        return records_format(style, RecordLayout::Array);
    case TextFormat::Cells:
        return cells_format(style, CellLayout::Tsv, options.bounds);
    case TextFormat::CellsJson:
        return cells_format(style, CellLayout::JsonLines, options.bounds);
    default:
        return table_format(style, options.width);
    }
}

} // namespace zxsheet
