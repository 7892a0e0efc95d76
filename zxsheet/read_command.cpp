// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet read`: the cells of a range.
#include <charconv>

#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/json_text.h"
#include "zxsheet/output_format.h"
#include "zxsheet/several_books.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using spreadsheet::MergedCellColumnRule;
using spreadsheet::MergedCellRowRule;

using Format = TextFormat;

/// More cells are printed only where somebody asks for them: nearly all of them would be empty.
constexpr std::int64_t kMostCellsUnasked = 50'000'000;

struct ReadOptions : BookOptions {
    std::string sheet;
    std::string range;
    std::optional<Format> to;
    PrintStyle style;
    SeparatedOptions separated;
    std::optional<char> delimiter;
    std::optional<std::size_t> width;
    bool has_header = false;
    bool all_cells = false;
    bool formulas = false;
    std::vector<std::string> more;

    Bounds bounds() const { return all_cells ? Bounds::Used : Bounds::Filled; }
};

Format format_of(const ReadOptions& options) {
    if (options.to) return *options.to;
    return text_format_of_name(options.output).value_or(Format::Csv);
}

void check_options(const ReadOptions& options, Format format) {
    const bool is_separated = format == Format::Csv || format == Format::Tsv;
    const bool is_cells = format == Format::Cells || format == Format::CellsJson;
    const bool has_names =
        format == Format::Json || format == Format::JsonLines || format == Format::Records;
    const SeparatedOptions& separated = options.separated;
    const MergedRules& merged = options.style.merged;
    const struct {
        bool is_wrong;
        const char* option;
        const char* formats;
    } rules[] = {
        {options.delimiter && format != Format::Csv, "--delimiter", "csv"},
        {options.style.text.decimal_comma && !is_separated && format != Format::Table,
         "--decimal-comma", "csv, tsv and table"},
        {separated.has_mark && !is_separated, "--bom", "csv and tsv"},
        {separated.has_carriage_return && !is_separated, "--crlf", "csv and tsv"},
        {options.width && format != Format::Table, "--width", "table"},
        {options.has_header && !has_names, "--header", "json, jsonl and records"},
        {(merged.columns || merged.rows) && (is_cells || options.formulas),
         "A rule for merged cells", "values in rows"},
    };
    for (const auto& rule : rules)
        if (rule.is_wrong)
            throw CommandError(ExitCode::Usage,
                               std::string(rule.option) + " is for " + rule.formats + " only");
}

void check_size(const Selection& selection, const ReadOptions& options, Format format) {
    const bool is_sparse = format == Format::Cells || format == Format::CellsJson;
    const std::int64_t count = selection.range.count();
    if (is_sparse || !options.range.empty() || count <= kMostCellsUnasked) return;
    throw CommandError(ExitCode::Usage,
                       options.book.text() + ": " +
                           place_text(selection.sheet_name, selection.range) + " has " +
                           grouped(static_cast<std::uint64_t>(count)) +
                           " cells, most of them surely empty; print those that are there with "
                           "--to cells, or name a range with --range.");
}

void note_missing_results(const Selection& selection, const ReadOptions& options, OutputSink& out) {
    const std::uint64_t count = spreadsheet::formulas_without_result(*selection.sheet);
    if (count == 0 || options.formulas) return;
    out.note(options.book.text() + ": " + quoted_sheet(selection.sheet_name) + " has " +
             counted(count, "formula") +
             " without a stored result, printed as empty; --app lets the spreadsheet application "
             "compute them, --formulas prints them.");
}

void print_book(const ReadOptions& options, Format format, OutputSink& out) {
    Selection selection =
        open_selection({options.book, options.sheet, options.range, options.bounds()});
    selection.range = with_repeated_cells(selection, options.style.merged, options.range.empty());
    check_size(selection, options, format);
    if (options.formulas)
        selection.formulas = std::make_shared<FormulaTexts>(selection, options.book);
    text_format({format, options.style, options.separated, options.delimiter, options.width,
                 options.has_header, options.bounds()})
        ->write(selection, out);
    note_missing_results(selection, options, out);
}

/// What lines of a format begin with that name their book; no value for a format of more than
/// lines.
std::optional<LineKind> line_kind(Format format) {
    switch (format) {
    case Format::Csv:
    case Format::Tsv:
    case Format::Cells:
        return LineKind::Separated;
    case Format::JsonLines:
    case Format::CellsJson:
        return LineKind::Json;
    default:
        return std::nullopt;
    }
}

std::string line_prefix(const ReadOptions& options, Format format, const std::string& book) {
    const bool is_array = format == Format::JsonLines && !options.has_header;
    if (line_kind(format) == LineKind::Json)
        return (is_array ? "" : "\"file\":") + json_string(book) + ',';
    const char comma = options.style.text.decimal_comma ? ';' : ',';
    const char separator = format == Format::Csv ? options.delimiter.value_or(comma) : '\t';
    std::string prefix;
    append_field(prefix, book, special_bytes(separator));
    return prefix + separator;
}

void print_books(const ReadOptions& options, Format format, OutputSink& out) {
    const std::optional<LineKind> kind = line_kind(format);
    if (!kind)
        throw CommandError(ExitCode::Usage, "Several books can be read --to csv, tsv, jsonl, cells "
                                            "and cells.jsonl, whose lines name their book.");
    ReadOptions own = options;
    own.separated.has_mark = false;
    if (options.separated.has_mark) out.write("\xEF\xBB\xBF");
    for_each_book(options, options.more, out, [&](const BookLocation& book) {
        check_text_file(book, options.output);
        own.book = book;
        LinePrefixer prefixer(out, *kind, line_prefix(options, format, book.text()));
        OutputSink lines(prefixer.stream(), {});
        try {
            print_book(own, format, lines);
            lines.finish();
        } catch (const std::exception&) {
            if (prefixer.failure()) std::rethrow_exception(prefixer.failure());
            throw;
        }
        for (const std::string& note : lines.notes())
            out.note(note);
    });
}

void run_read(const ReadOptions& options, OutputSink& out) {
    check_text_file(options.book, options.output);
    const Format format = format_of(options);
    check_options(options, format);
    options.more.empty() ? print_book(options, format, out) : print_books(options, format, out);
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

Parameter dates_option(TextStyle& style) {
    const auto take = [&style](const std::string& text) {
        if (text == "iso" || text == "serial") {
            style.dates = text == "iso" ? TextStyle::Dates::Iso : TextStyle::Dates::Serial;
            return;
        }
        if (text.find('%') == std::string::npos)
            throw CommandError(ExitCode::Usage, "--dates: '" + text +
                                                    "' is not iso, serial or a pattern such as "
                                                    "%d.%m.%Y");
        const std::string unknown = unknown_conversion(text);
        if (!unknown.empty())
            throw CommandError(ExitCode::Usage,
                               "--dates: '" + unknown + "' is not a conversion that is known");
        style.dates = TextStyle::Dates::Pattern;
        style.pattern = text;
    };
    return {"--dates", "STYLE",
            "iso (default), serial (day numbers of the 1900 system),\n"
            "or a pattern such as %d.%m.%Y",
            take};
}

Parameter delimiter_option(std::optional<char>& delimiter) {
    const auto take = [&delimiter](const std::string& text) {
        delimiter = text == "tab" || text == "\\t" ? '\t' : text.size() == 1 ? text[0] : '\0';
        if (delimiter == '\0' || delimiter == '"' || delimiter == '\n' || delimiter == '\r')
            throw CommandError(ExitCode::Usage,
                               "--delimiter: '" + text + "' is not one character, or tab");
    };
    return {"--delimiter", "C", "What separates the fields of csv, or tab", take};
}

Parameter width_option(std::optional<std::size_t>& width) {
    const auto take = [&width](const std::string& text) {
        std::size_t number = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, failure] = std::from_chars(text.data(), end, number);
        const bool is_number = failure == std::errc() && stop == end && number > 0;
        if (!is_number && text != "none")
            throw CommandError(ExitCode::Usage,
                               "--width: '" + text + "' is neither a number nor none");
        width = is_number ? number : 0;
    };
    return {"--width", "N", "Characters of a table's line, or none (default: the terminal's)",
            take};
}

constexpr const char* kFooter =
    "Formats: csv, tsv, json (types and values), jsonl (an array a row), records (objects by\n"
    "the names in the first row), cells or cells.jsonl (one line for each cell that is there),\n"
    "or table. A number that is shown as a time of day or an elapsed time prints as 13:05:00;\n"
    "JSON keeps the number. Of several books each line begins with the book's path, in objects as\n"
    "the member file; what one of them fails for does not keep the others from being read.";

} // namespace

Command read_command() {
    const auto options = std::make_shared<ReadOptions>();
    PrintStyle& style = options->style;
    Command command = reading_command(
        "read", "Cells of a range", options,
        {more_books_argument(options->more),
         sheet_option(options->sheet),
         range_option(options->range, kReadRangeHelp),
         text_format_option(options->to),
         {"--header", "", "The first row has the names: objects in json and jsonl",
          &options->has_header},
         all_cells_flag(options->all_cells),
         {"--formulas", "", "The text of formulas instead of their results", &options->formulas},
         dates_option(style.text),
         delimiter_option(options->delimiter),
         {"--decimal-comma", "", "Numbers as 1,5; csv is separated by semicolons then",
          &style.text.decimal_comma},
         {"--bom", "", "Begin csv and tsv with a byte order mark", &options->separated.has_mark},
         {"--crlf", "", "End lines of csv and tsv with CR LF",
          &options->separated.has_carriage_return},
         width_option(options->width),
         {"-o,--output", "FILE", "Write into FILE instead of standard output", &options->output},
         merged_rule<MergedCellColumnRule>(
             "--merged-columns", "Cells merged across columns: first, last, repeat, error or omit",
             style.merged.columns),
         merged_rule<MergedCellRowRule>(
             "--merged-rows", "Cells merged across rows: first, last, repeat, error or omit",
             style.merged.rows)},
        run_read);
    command.footer = kFooter;
    return command;
}

} // namespace zxsheet
