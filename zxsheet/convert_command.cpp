// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet convert`: a book into another format, or its sheets into text.
#include <algorithm>
#include <filesystem>

#include "foundation/unicode.h"
#include "zxsheet/book_copy.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/input_file.h"
#include "zxsheet/library_error.h"
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

CommandError no_worksheet(const ConvertOptions& options) {
    return {ExitCode::NotFound, options.book.text() + ": The book has no worksheet."};
}

bool is_chart(const IBook& book, std::size_t index) {
    return book.sheet_type(index) == sheet::type::chart;
}

Selection filled_cells(const std::shared_ptr<IBook>& book, std::size_t index) {
    Selection selection = select_sheet(book, index);
    selection.range = filled_range(*selection.sheet);
    return selection;
}

/// Returns the number of rows.
std::uint64_t write_text(const Selection& selection, TextFormat format, const std::string& file,
                         const ConvertOptions& options, ChangeTools& tools) {
    OutputSink sink(tools.out, file, [&] {
        if (file == kStream) tools.progress.finish();
    });
    print_data(sink, options, [&] {
        text_format({format, {}, {}, {}, {}})->write(selection, sink);
    });
    return static_cast<std::uint64_t>(
        std::max<std::int64_t>(0, selection.range.last_row - selection.range.first_row + 1));
}

std::string convert_to_text(const ConvertOptions& options, TextFormat format, ChangeTools& tools) {
    const Selection selection = open_selection({options.book, options.sheet, {}, Bounds::Filled});
    const std::uint64_t rows = write_text(selection, format, options.output, options, tools);
    return output_name(options.output) + ": Wrote " + counted(rows, "row") + " of sheet " +
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
    return name.empty() ? "_" : name;
}

/// A name that none of the others is: those of sheets may differ in what files cannot have in
/// theirs.
std::string new_name(const std::string& wanted, std::vector<std::u16string>& taken) {
    std::string name = wanted;
    const auto is_taken = [&](const std::u16string& other) {
        return unicode::equal_ignoring_case(other, unicode::to_utf16(name));
    };
    for (int i = 2; std::any_of(taken.begin(), taken.end(), is_taken); ++i)
        name = wanted + " (" + std::to_string(i) + ')';
    taken.push_back(unicode::to_utf16(name));
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
    std::vector<std::u16string> names;
    for (std::size_t i = 0; i < book->num_sheets(); ++i) {
        if (is_chart(*book, i)) continue;
        const Selection selection = filled_cells(book, i);
        const std::string file = options.folder + '/' +
                                 new_name(file_name(selection.sheet_name), names) + '.' +
                                 ending_of(format);
        refuse_own_file(options.book, file);
        tools.progress.set_text("Writing " + file);
        write_text(selection, format, file, options, tools);
    }
    if (names.empty()) throw no_worksheet(options);
    return options.folder + ": Wrote " + counted(names.size(), "file");
}

bool may_have_macros(book::format format) {
    return format == book::format::XLSM || format == book::format::XLTM;
}

/// The book is saved under the other name, with all that is in it.
std::string convert_whole(const BookLocation& target, const ConvertOptions& options,
                          ChangeTools& tools) {
    const auto book =
        load_book_from_file(options.book.library_path(), target.format(), options.book.mode());
    const bool names_macros = may_have_macros(options.book.format()) &&
                              !may_have_macros(target.format()) && options.book.is_file();
    return save_changes(book, options, tools,
                        names_macros ? "Converted; macros are kept, but applications may refuse "
                                       "them under this ending"
                                     : "Converted");
}

std::string convert_values(const BookLocation& target, const ConvertOptions& options,
                           ChangeTools& tools) {
    const auto book = open_book(options.book);
    learn_used_ranges(book);
    const auto made = make_book(target, 0);
    std::uint64_t sheets = 0;
    for (std::size_t i = 0; i < book->num_sheets(); ++i) {
        if (is_chart(*book, i)) continue;
        const Selection selection = filled_cells(book, i);
        tools.progress.set_text("Converting " + quoted_sheet(selection.sheet_name));
        if (!is_sheet_name(selection.sheet_name, target))
            throw CommandError(ExitCode::NotWritten,
                               options.book.text() + ": The name of sheet " +
                                   quoted_sheet(selection.sheet_name) +
                                   " is not allowed in a new book; rename the sheet first.");
        const auto sheet = add_sheet(made, made->num_sheets(), selection.sheet_name, u"");
        copy_values(selection, *made, *sheet);
        check_done(made, options);
        ++sheets;
    }
    if (sheets == 0) throw no_worksheet(options);
    return save_changes(made, options, tools,
                        "Converted the values of " + counted(sheets, "sheet") +
                            "; formulas and formats are not converted",
                        Origin::Made);
}

/// A file of the family that the book's content has keeps everything, whatever the book is called;
/// an application converts between all formats that it knows.
bool keeps_everything(const BookLocation& target, const ConvertOptions& options) {
    if (!options.book.is_file()) return !options.book.is_online();
    const bool is_zip = container_of_file(options.book.file()) == Container::Zip;
    return is_zip != (target.format() == book::format::XLS);
}

/// The book that OUT names. What goes to standard output has the format that BOOK's name says.
BookLocation target_of(const ConvertOptions& options) {
    if (options.output == kStream) {
        const BookLocation alike(options.book.file());
        return alike.is_file() && can_be_made(alike) ? alike : BookLocation("book.xlsx");
    }
    BookLocation target(options.output);
    if (target.is_online())
        throw CommandError(ExitCode::Usage, target.text() + ": 'zxsheet google upload --convert' "
                                                            "makes spreadsheets online.");
    const bool is_application = options.book.kind() == BookLocation::Kind::Application;
    const bool is_known = is_application ? has_book_name(options.output) : can_be_made(target);
    if (!is_known)
        throw CommandError(ExitCode::NotWritten,
                           target.text() + ": The name has to end with the format: .xlsx, .xlsm, "
                                           ".xltx, .xltm, .xls, .csv, .tsv, .json or .jsonl; --app "
                                           "knows others.");
    return target;
}

std::string run_convert(const ConvertOptions& options, ChangeTools& tools) {
    if (options.output.empty() == options.folder.empty())
        throw CommandError(ExitCode::Usage, "Give either OUT or --each-sheet DIR");
    const auto format = options.to ? options.to : text_format_of_name(options.output);
    if (!options.sheet.empty() && (!options.folder.empty() || !format))
        throw CommandError(ExitCode::Usage, "--sheet is for conversion into one text file only");
    if (!options.folder.empty()) return convert_each_sheet(options, tools);
    if (format) {
        check_text_file(options.book, options.output);
        return convert_to_text(options, *format, tools);
    }
    refuse_own_file(options.book, options.output);
    const BookLocation target = target_of(options);
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
