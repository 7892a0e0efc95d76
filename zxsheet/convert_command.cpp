// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet convert`: a book into another format, or its sheets into text.
#include <algorithm>
#include <filesystem>

#include "foundation/unicode.h"
#include "zxsheet/book_copy.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/output_format.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
namespace unicode = foundation::unicode;

struct ConvertOptions : BookOptions {
    std::string sheet;
    std::string folder; ///< for every sheet; empty for one file
    std::optional<TextFormat> to;
};

void refuse_own_file(const ConvertOptions& options) {
    std::error_code ignored;
    if (std::filesystem::equivalent(options.book.path(), native_path(options.output), ignored))
        throw CommandError(ExitCode::Usage,
                           options.output + ": The output would replace the book itself.");
}

bool is_chart(const IBook& book, std::size_t index) {
    return book.sheet_type(index) == sheet::type::chart;
}

Selection select_sheet(const std::shared_ptr<IBook>& book, std::size_t index) {
    Selection selection;
    selection.book = book;
    selection.sheet = book->sheet(index);
    selection.sheet_name = sheet_name(*book, index);
    selection.sheet_index = index;
    selection.range = filled_range(*selection.sheet);
    return selection;
}

std::uint64_t write_text(const Selection& selection, TextFormat format, const std::string& file,
                         ChangeTools& tools) {
    OutputSink sink(tools.out, file);
    text_format({format, {}, {}, {}, {}})->write(selection, sink);
    sink.finish();
    return static_cast<std::uint64_t>(
        std::max<std::int64_t>(0, selection.range.last_row - selection.range.first_row + 1));
}

std::string convert_to_text(const ConvertOptions& options, TextFormat format, ChangeTools& tools) {
    const Selection selection = open_selection({options.book, options.sheet, {}, Bounds::Filled});
    const std::uint64_t rows = write_text(selection, format, options.output, tools);
    return options.output + ": Wrote " + counted(rows, "row") + " of sheet " +
           quoted_sheet(selection.sheet_name);
}

/// What no system takes in the name of a file.
std::string file_name(const std::u16string& sheet) {
    std::string name = unicode::to_utf8(sheet);
    const auto is_bad = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 ||
               std::string_view("<>:\"/\\|?*").find(c) != std::string_view::npos;
    };
    std::replace_if(name.begin(), name.end(), is_bad, '_');
    return name;
}

std::string convert_each_sheet(const ConvertOptions& options, ChangeTools& tools) {
    const TextFormat format = options.to.value_or(TextFormat::Csv);
    const auto book = open_book(options.book);
    learn_used_ranges(book);
    std::error_code failure;
    std::filesystem::create_directories(native_path(options.folder), failure);
    if (failure)
        throw CommandError(ExitCode::NotWritten, options.folder + ": The folder cannot be made.");
    std::uint64_t files = 0;
    for (std::size_t i = 0; i < book->num_sheets(); ++i) {
        if (is_chart(*book, i)) continue;
        const Selection selection = select_sheet(book, i);
        const std::string file =
            options.folder + '/' + file_name(selection.sheet_name) + '.' + ending_of(format);
        tools.progress.set_text("Writing " + file);
        write_text(selection, format, file, tools);
        ++files;
    }
    return options.folder + ": Wrote " + counted(files, "file");
}

bool are_relatives(book::format a, book::format b) {
    return (a == book::format::XLS) == (b == book::format::XLS);
}

/// The book is saved under the other name, with all that is in it.
std::string convert_whole(const BookLocation& target, const ConvertOptions& options,
                          ChangeTools& tools) {
    const auto book =
        load_book_from_file(options.book.library_path(), target.format(), options.book.mode());
    return save_changes(book, options, tools, "Converted");
}

std::string convert_values(const BookLocation& target, const ConvertOptions& options,
                           ChangeTools& tools) {
    const auto book = open_book(options.book);
    learn_used_ranges(book);
    const auto made = make_book(target, 0);
    std::uint64_t sheets = 0;
    for (std::size_t i = 0; i < book->num_sheets(); ++i) {
        if (is_chart(*book, i)) continue;
        const Selection selection = select_sheet(book, i);
        tools.progress.set_text("Converting " + quoted_sheet(selection.sheet_name));
        const auto sheet = add_sheet(made, made->num_sheets(), selection.sheet_name, u"");
        copy_values(selection, *made, *sheet);
        check_done(made, options);
        ++sheets;
    }
    if (sheets == 0)
        throw CommandError(ExitCode::NotFound,
                           options.book.text() + ": The book has no worksheet.");
    return save_changes(made, options, tools,
                        "Converted the values of " + counted(sheets, "sheet") +
                            "; formulas and formats are not converted",
                        Origin::Made);
}

/// Files of one family keep everything; an application converts between all formats that it knows.
bool keeps_everything(const BookLocation& target, const ConvertOptions& options) {
    if (options.book.is_online() || target.is_online()) return false;
    return !options.book.is_file() || are_relatives(options.book.format(), target.format());
}

std::string run_convert(const ConvertOptions& options, ChangeTools& tools) {
    if (options.output.empty() == options.folder.empty())
        throw CommandError(ExitCode::Usage, "Give either OUT or --each-sheet DIR");
    if (!options.folder.empty()) return convert_each_sheet(options, tools);
    refuse_own_file(options);
    const auto format = options.to ? options.to : text_format_of_name(options.output);
    if (format) return convert_to_text(options, *format, tools);
    if (!options.sheet.empty())
        throw CommandError(ExitCode::Usage, "--sheet is for conversion to text only");
    const BookLocation target(options.output);
    return keeps_everything(target, options) ? convert_whole(target, options, tools)
                                             : convert_values(target, options, tools);
}

} // namespace

Command convert_command() {
    const auto options = std::make_shared<ConvertOptions>();
    Command command = changing_command(
        "", "convert", "Convert a book into another format", options,
        {{"OUT", "", "File; its name ends with the format: xlsx, xlsm, xls, csv, tsv, json, jsonl",
          &options->output},
         sheet_option(options->sheet),
         {"--each-sheet", "DIR", "Write every sheet into a file of this folder", &options->folder},
         text_format_option(options->to)},
        run_convert, "");
    command.footer =
        "Among XLSX, XLSM, XLTX and XLTM everything is kept; between these and XLS the "
        "values go over. With --app the application converts between all formats that it knows, "
        "such as ods.\n\n"
        "Example: zxsheet convert book.xlsx --each-sheet folder --to csv";
    return command;
}

} // namespace zxsheet
