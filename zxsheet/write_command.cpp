// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet write`: data from a file or standard input into cells.
#include <filesystem>
#include <fstream>
#include <optional>

#include "zxsheet/book_access.h"
#include "zxsheet/cell_guess.h"
#include "zxsheet/delimited_reader.h"
#include "zxsheet/failure.h"
#include "zxsheet/json_reader.h"
#include "zxsheet/save_book.h"
#include "zxsheet/sheet_writer.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

bool is_standard_input(const Options& options) {
    return options.input.empty() || options.input == "-";
}

DataFormat format_of_input(const Options& options) {
    if (options.from) return *options.from;
    std::u8string ending = native_path(options.input).extension().u8string();
    for (char8_t& c : ending)
        if (c >= u8'A' && c <= u8'Z') c = static_cast<char8_t>(c + (u8'a' - u8'A'));
    if (ending == u8".tsv" || ending == u8".tab") return DataFormat::Tsv;
    return ending == u8".json" ? DataFormat::Json : DataFormat::Csv;
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

void read_input(TextInput& input, const Options& options, CellSink& sink) {
    switch (format_of_input(options)) {
    case DataFormat::Json:
        return read_json(input, sink);
    case DataFormat::Tsv:
        return read_delimited(input, '\t', options.as_text, sink);
    default:
        return read_delimited(input, '\0', options.as_text, sink);
    }
}

std::ifstream open_input(const std::string& name) {
    const std::filesystem::path path = native_path(name);
    std::ifstream file(path, std::ios::binary);
    std::error_code ignored;
    if (file && !std::filesystem::is_directory(path, ignored)) return file;
    const char* const reason =
        std::filesystem::is_directory(path, ignored) ? "It is a folder, not a file."
        : std::filesystem::exists(path, ignored) ? "The file cannot be read; check the permissions."
                                                 : "There is no such file.";
    throw Failure(ExitCode::NotReadable, name + ": " + reason);
}

std::string what_was_done(const SheetWriter& writer) {
    const WriteTarget& target = writer.target();
    if (writer.written().count() <= 0)
        return target.preparation + "nothing to " + quoted_sheet(target.sheet_name);
    return target.preparation + counted(writer.values(), "cell") + " to " +
           place_text(target.sheet_name, writer.written());
}

} // namespace

std::string run_write(const Options& options, ChangeTools& tools) {
    std::ifstream file;
    if (!is_standard_input(options)) file = open_input(options.input);
    TextInput input(file.is_open() ? file : tools.in,
                    file.is_open() ? options.input : "standard input");
    SheetWriter writer(options, tools);
    // JSON may tell where it belongs; anything else need not be read before a wrong target is told.
    if (format_of_input(options) != DataFormat::Json) writer.open();
    tools.progress.set_text("Reading " + input.name());
    read_input(input, options, writer);
    writer.finish();
    return save_changes(writer.target().book, options, tools, what_was_done(writer),
                        writer.target().origin);
}

} // namespace zxsheet
