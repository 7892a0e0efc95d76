// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet write`: data from a file or standard input into cells.
#include <filesystem>
#include <fstream>
#include <optional>

#include "zxsheet/cell_guess.h"
#include "zxsheet/command_table.h"
#include "zxsheet/delimited_reader.h"
#include "zxsheet/input_file.h"
#include "zxsheet/json_reader.h"
#include "zxsheet/save_book.h"
#include "zxsheet/sheet_writer.h"
#include "zxsheet/wording.h"
#include "zxsheet/write_target.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

enum class Format { Csv, Tsv, Json };

/// No sheet has more rows.
constexpr std::size_t kMaxRows = 10'000'000;

struct DataOptions : WriteOptions {
    std::string input;            ///< the data; empty or "-" for standard input
    std::optional<Format> from{}; ///< of the data; by the name of `input` when not given
    bool as_text = false;         ///< guess no types
};

bool is_standard_input(const DataOptions& options) {
    return options.input.empty() || options.input == "-";
}

Format format_of_input(const DataOptions& options) {
    if (options.from) return *options.from;
    std::u8string extension = native_path(options.input).extension().u8string();
    for (char8_t& c : extension)
        if (c >= u8'A' && c <= u8'Z') c = static_cast<char8_t>(c + (u8'a' - u8'A'));
    if (extension == u8".tsv" || extension == u8".tab") return Format::Tsv;
    return extension == u8".json" ? Format::Json : Format::Csv;
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
    switch (format_of_input(options)) {
    case Format::Json:
        return read_json(input, sink);
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

std::string run_write(const DataOptions& options, ChangeTools& tools) {
    std::ifstream file;
    if (!is_standard_input(options)) file = open_input_file(options.input);
    TextInput input(file.is_open() ? file : tools.in,
                    file.is_open() ? options.input : "standard input");
    SheetWriter writer(options, tools);
    // JSON may say where it belongs; with anything else a wrong target is reported before the data
    // is read.
    if (format_of_input(options) != Format::Json) writer.open();
    tools.progress.set_text("Reading " + input.name());
    read_input(input, options, writer);
    writer.finish();
    return save_changes(writer.target().cells.book, options, tools, summary_of(writer),
                        writer.target().origin);
}

constexpr const char* kFooter =
    "Fields become numbers (12, -2.5, .5, 1e3), dates (2024-03-01, 2024-03-01T13:05:00) and\n"
    "true or false, also when they are quoted; empty ones leave the cell empty. What would lose\n"
    "something stays text: leading zeros and plus signs, whole numbers of more than 15 digits,\n"
    "1,234 and 1,5, surrounding blanks. CSV may have semicolons instead of commas, and UTF-16.\n"
    "JSON is what 'zxsheet read --to json' prints; its sheet and range count unless -s and -r are\n"
    "given, and its errors become text.\n\n"
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
             "--from", "FORMAT", "csv, tsv or json (default: as FILE ends, else csv)",
             options->from, {{"csv", Format::Csv}, {"tsv", Format::Tsv}, {"json", Format::Json}}),
         {"--text", "", "Write every field of CSV and TSV as text", &options->as_text},
         {"--skip", "N", "Leave out the first N rows of the data", &options->skip, false, kMaxRows},
         {"--keep-format", "", "Cells keep the formats that they have", &options->keep_format},
         save_option(options->output)},
        run_write, "");
    command.footer = kFooter;
    return command;
}

} // namespace zxsheet
