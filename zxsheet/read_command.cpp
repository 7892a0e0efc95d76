// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet read`: the cells of a range.
#include <filesystem>

#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/row_writers.h"

namespace zxsheet {
namespace {

using spreadsheet::MergedCellColumnRule;
using spreadsheet::MergedCellRowRule;

enum class Format { Csv, Tsv, Json, JsonLines, Table };

struct ReadOptions : BookOptions {
    std::string sheet;
    std::string range;
    Format to = Format::Csv;
    PrintStyle style;
};

/// Writing over the book that is being read would destroy it.
void refuse_own_book(const ReadOptions& options) {
    std::error_code ignored;
    if (!options.output.empty() &&
        std::filesystem::equivalent(options.book.path(), native_path(options.output), ignored))
        throw CommandError(ExitCode::Usage,
                           options.output + ": The output would replace the book itself.");
}

void run_read(const ReadOptions& options, OutputSink& out) {
    refuse_own_book(options);
    const Selection selection = open_selection({options.book, options.sheet, options.range});
    switch (options.to) {
    case Format::Csv:
        return write_separated(selection, options.style, ',', out);
    case Format::Tsv:
        return write_separated(selection, options.style, '\t', out);
    case Format::Json:
        return write_json(selection, options.style, Content::Values, out);
    case Format::JsonLines:
        return write_json_lines(selection, options.style, out);
    case Format::Table:
        return write_table(selection, options.style, out);
    }
}

template <class Rule>
Parameter merged_rule(const char* name, const char* what, std::optional<Rule>& rule) {
    return choice<std::optional<Rule>, Rule>(name, "RULE", what, rule,
                                             {{"first", Rule::first},
                                              {"last", Rule::last},
                                              {"repeat", Rule::repeat},
                                              {"error", Rule::error},
                                              {"omit", Rule::omit}});
}

} // namespace

Command read_command() {
    const auto options = std::make_shared<ReadOptions>();
    PrintStyle& style = options->style;
    return reading_command(
        "read", "Cells of a range", options,
        {sheet_option(options->sheet),
         range_option(options->range, kReadRangeHelp),
         choice<Format, Format>("--to", "FORMAT", "csv (default), tsv, json, jsonl or table",
                                options->to,
                                {{"csv", Format::Csv},
                                 {"tsv", Format::Tsv},
                                 {"json", Format::Json},
                                 {"jsonl", Format::JsonLines},
                                 {"table", Format::Table}}),
         choice<DateStyle, DateStyle>(
             "--dates", "STYLE", "iso (default), or serial: day numbers of the 1900 system",
             style.dates, {{"iso", DateStyle::Iso}, {"serial", DateStyle::Serial}}),
         {"-o,--output", "FILE", "Write into FILE instead of standard output", &options->output},
         merged_rule<MergedCellColumnRule>(
             "--merged-columns", "Cells merged across columns: first, last, repeat, error or omit",
             style.merged.columns),
         merged_rule<MergedCellRowRule>(
             "--merged-rows", "Cells merged across rows: first, last, repeat, error or omit",
             style.merged.rows)},
        run_read);
}

} // namespace zxsheet
