// SPDX-License-Identifier: Apache-2.0
//
// Arguments of the commands that read.
#include "zxsheet/arguments.h"

namespace zxsheet {
namespace {

using spreadsheet::MergedCellColumnRule;
using spreadsheet::MergedCellRowRule;

void add_selection(CLI::App& command, Options& options) {
    command
        .add_option("-s,--sheet", options.sheet,
                    "Name of the sheet, or its number from 1 (default: the first worksheet)")
        ->option_text("SHEET");
    command
        .add_option("-r,--range", options.range,
                    "A1:D20, B3, A:C, 2:10 or a defined name (default: the used range)")
        ->option_text("RANGE");
}

template <class Rule>
CLI::Validator merged_rule() {
    return one_of<Rule>("RULE", {{"first", Rule::first},
                                 {"last", Rule::last},
                                 {"repeat", Rule::repeat},
                                 {"error", Rule::error},
                                 {"omit", Rule::omit}});
}

void add_merged_rules(CLI::App& command, Options& options) {
    command
        .add_option("--merged-columns", options.merged_columns,
                    "Cells merged across columns: first, last, repeat, error or omit")
        ->transform(merged_rule<MergedCellColumnRule>())
        ->option_text("RULE");
    command
        .add_option("--merged-rows", options.merged_rows,
                    "Cells merged across rows: first, last, repeat, error or omit")
        ->transform(merged_rule<MergedCellRowRule>())
        ->option_text("RULE");
}

void add_output(CLI::App& command, Options& options) {
    command.add_option("--to", options.to, "csv (default), tsv, json, jsonl or table")
        ->transform(one_of<DataFormat>("FORMAT", {{"csv", DataFormat::Csv},
                                                  {"tsv", DataFormat::Tsv},
                                                  {"json", DataFormat::Json},
                                                  {"jsonl", DataFormat::JsonLines},
                                                  {"table", DataFormat::Table}}))
        ->option_text("FORMAT");
    command
        .add_option("--dates", options.dates,
                    "iso (default), or serial: day numbers of the 1900 system")
        ->transform(
            one_of<DateStyle>("STYLE", {{"iso", DateStyle::Iso}, {"serial", DateStyle::Serial}}))
        ->option_text("STYLE");
    command.add_option("-o,--output", options.output, "Write into FILE instead of standard output")
        ->option_text("FILE");
}

} // namespace

void add_book(CLI::App& command, Options& options) {
    command.add_option("BOOK", options.book, "Path of the workbook, or gsheet:ID")
        ->required()
        ->option_text(" ");
    command.add_flag("--app", options.application, "Let the spreadsheet application open the file");
}

void add_reading_commands(CLI::App& app, Options& options, ChosenCommand& chosen) {
    const auto add = [&](const char* name, const char* what, auto function) {
        CLI::App* added = app.add_subcommand(name, what);
        added->callback([&chosen, function] { chosen.read = function; });
        add_book(*added, options);
        return added;
    };
    CLI::App* info = add("info", "Format, date system and sheets of a book", run_info);
    info->add_flag("--json", options.json, "Print JSON");
    add("sheets", "Names of the sheets, one a line", run_sheets);
    CLI::App* types = add("types", "Types of the cells of a range", run_types);
    add_selection(*types, options);
    types->add_flag("--json", options.json, "Print JSON");
    CLI::App* read = add("read", "Cells of a range", run_read);
    add_selection(*read, options);
    add_output(*read, options);
    add_merged_rules(*read, options);
}

} // namespace zxsheet
