// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet write`: data from a file or standard input into cells.
#include <filesystem>
#include <fstream>
#include <optional>

#include "zxsheet/cell_guess.h"
#include "zxsheet/cells_reader.h"
#include "zxsheet/cells_writer.h"
#include "zxsheet/column_matcher.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/delimited_reader.h"
#include "zxsheet/formula_sink.h"
#include "zxsheet/input_file.h"
#include "zxsheet/json_reader.h"
#include "zxsheet/output_format.h"
#include "zxsheet/save_book.h"
#include "zxsheet/sheet_writer.h"
#include "zxsheet/wording.h"
#include "zxsheet/write_target.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

enum class Format { Csv, Tsv, Json, JsonLines, Cells, CellsJson };

/// No sheet has more rows.
constexpr std::size_t kMaxRows = 10'000'000;

struct DataOptions : WriteOptions {
    std::string input;            ///< the data; empty or "-" for standard input
    std::optional<Format> from{}; ///< of the data; by the name of `input` when not given
    bool as_text = false;         ///< guess no types
    bool has_header = false;      ///< the first row has names
};

bool is_standard_input(const DataOptions& options) {
    return options.input.empty() || options.input == kStream;
}

Format format_of_input(const DataOptions& options) {
    if (options.from) return *options.from;
    const std::string extension = lower_extension(options.input);
    if (extension == ".tsv" || extension == ".tab") return Format::Tsv;
    if (extension == ".jsonl" || extension == ".ndjson") return Format::JsonLines;
    return extension == ".json" ? Format::Json : Format::Csv;
}

void refuse_workbook(TextInput& input) {
    if (container_of(input.ahead()) == Container::None) return;
    throw CommandError(ExitCode::Usage,
                       input.name() + ": This is a workbook, and write takes CSV, TSV and JSON; "
                                      "'zxsheet read BOOK --to json | zxsheet write OTHER --from "
                                      "json' copies a sheet, 'zxsheet convert' a book.");
}

void read_delimited(TextInput& input, char separator, bool as_text, CellSink& sink) {
    DelimitedReader reader(input, separator);
    CellValue cell;
    while (const auto end = reader.next(cell.text)) {
        if (as_text)
            cell.type = cell.text.empty() ? cell_type::empty : cell_type::text;
        else
            guess_cell(cell);
        sink.add(cell);
        if (*end == FieldEnd::Row) sink.end_row();
    }
}

void read_input(TextInput& input, const DataOptions& options, CellSink& sink) {
    const bool guess_dates = !options.as_text;
    switch (format_of_input(options)) {
    case Format::Json:
        return read_json(input, sink, JsonLayout::Document, guess_dates);
    case Format::JsonLines:
        return read_json(input, sink, JsonLayout::Lines, guess_dates);
    case Format::Tsv:
        return read_delimited(input, '\t', options.as_text, sink);
    default:
        return read_delimited(input, '\0', options.as_text, sink);
    }
}

std::string summary_of(const SheetWriter& writer) {
    const WriteTarget& target = writer.target();
    if (writer.written().count() <= 0)
        return target.preparation + "nothing to " + quoted_sheet(target.cells.sheet_name);
    return target.preparation + counted(writer.values(), "cell") + " to " +
           place_text(target.cells.sheet_name, writer.written());
}

bool is_addressed(Format format) {
    return format == Format::Cells || format == Format::CellsJson;
}

std::string write_cells(TextInput& input, const DataOptions& options, ChangeTools& tools) {
    if (options.has_header || options.as_text)
        throw CommandError(ExitCode::Usage,
                           std::string(options.has_header ? "--header" : "--text") +
                               " has no meaning for cells, which have their "
                               "types.");
    CellsWriter writer(options, tools);
    const CellLayout layout =
        format_of_input(options) == Format::Cells ? CellLayout::Tsv : CellLayout::JsonLines;
    read_cells(input, layout, [&writer](int row, int column, const CellValue& cell) {
        writer.add(row, column, cell);
    });
    writer.finish();
    const WriteTarget& target = writer.target();
    if (target.origin == Origin::Made && options.output.empty()) refuse_existing(options.book);
    return save_changes(target.cells.book, options, tools,
                        target.preparation + counted(writer.values(), "cell") + " to " +
                            quoted_sheet(target.cells.sheet_name),
                        target.origin);
}

std::string run_write(const DataOptions& options, ChangeTools& tools) {
    if (is_standard_input(options) && options.book.text() == "standard input")
        throw CommandError(ExitCode::Usage, "Standard input can be the book or the data, not both");
    std::ifstream file;
    if (!is_standard_input(options)) file = open_input_file(options.input);
    TextInput input(file.is_open() ? file : tools.in,
                    file.is_open() ? options.input : "standard input");
    refuse_workbook(input);
    if (is_addressed(format_of_input(options))) return write_cells(input, options, tools);
    SheetWriter writer(options, tools);
    FormulaSink formulas(writer, options);
    CellSink& values = options.formulas ? static_cast<CellSink&>(formulas) : writer;
    ColumnMatcher matcher(writer, values, options.book, options.has_header);
    // JSON may say where it belongs; with anything else a wrong target is reported before the data
    // is read.
    if (format_of_input(options) != Format::Json) writer.open();
    tools.progress.set_text("Reading " + input.name());
    // Rows go straight to the writer unless their columns may have to be found.
    CellSink& sink = options.append ? static_cast<CellSink&>(matcher) : values;
    read_input(input, options, sink);
    formulas.finish();
    // Somebody may have made it since the writer looked.
    if (writer.target().origin == Origin::Made && options.output.empty())
        refuse_existing(options.book);
    return save_changes(writer.target().cells.book, options, tools, summary_of(writer),
                        writer.target().origin);
}

constexpr const char* kFooter =
    "Fields become numbers (12, -2.5, .5, 1e3), dates (2024-03-01, 2024-03-01T13:05:00) and\n"
    "true or false, also when they are quoted; empty ones leave the cell empty. What would lose\n"
    "something stays text: leading zeros and plus signs, whole numbers of more than 15 digits,\n"
    "1,234 and 1,5, surrounding blanks. CSV may have semicolons instead of commas, and UTF-16.\n"
    "JSON is what 'zxsheet read' prints: an object with values, whose sheet and range count\n"
    "unless -s and -r are given, an array of arrays, or an array of objects, whose names\n"
    "become the first row; jsonl has one array or object a line. Cells go where their addresses\n"
    "say, and the others of the sheet stay. Formulas (--formulas) are in English, with commas.\n"
    "A sheet that has values asks for -s, -r, --append or --replace.\n\n"
    "Example: zxsheet write book.xlsx -s Data -r B2 data.csv";

} // namespace

Command write_command() {
    const auto options = std::make_shared<DataOptions>();
    Command command = changing_command(
        "", "write", "Write data into a new or existing book", options,
        {{"FILE", "", "The data; standard input when missing or -", &options->input},
         {"-s,--sheet", "SHEET",
          "Name of the sheet, made if there is none, or its number from 1\n"
          "(default: the first worksheet)",
          &options->sheet},
         {"-r,--range", "CELL", "First cell (default: A1), or a range that the data must fit into",
          &options->range},
         choice<std::optional<Format>, Format>(
             "--from", "FORMAT",
             "csv, tsv, json, jsonl, cells or cells.jsonl\n(default: as FILE ends, else csv)",
             options->from,
             {{"csv", Format::Csv},
              {"tsv", Format::Tsv},
              {"json", Format::Json},
              {"jsonl", Format::JsonLines},
              {"cells", Format::Cells},
              {"cells.jsonl", Format::CellsJson}}),
         {"--append", "", "Write after the last row that has a value", &options->append},
         {"--header", "", "The first row of the data has names: --append finds their columns",
          &options->has_header},
         {"--replace", "", "Leave no other cell on the sheet", &options->replace},
         {"--formulas", "", "Text that begins with = becomes a formula; otherwise it stays text",
          &options->formulas},
         {"--text", "", "Write every field of CSV and TSV, and dates in JSON, as text",
          &options->as_text},
         {"--skip", "N", "Leave out the first N rows of the data", &options->skip, false, kMaxRows},
         {"--plain", "", "Cells lose the formats that they have", &options->plain},
         save_option(options->output)},
        run_write, "");
    command.footer = kFooter;
    return command;
}

} // namespace zxsheet
