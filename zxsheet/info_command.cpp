// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet info`: format, date system, sheets, names and tables of a book. A file is looked through
// sheet by sheet, and no cell of it is kept.
#include <algorithm>
#include <exception>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/command_table.h"
#include "zxsheet/input_file.h"
#include "zxsheet/json_text.h"
#include "zxsheet/several_books.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
using foundation::unicode::to_utf8;

struct InfoOptions : BookOptions {
    bool json = false;
    bool all_cells = false;
    std::vector<std::string> more;
};

/// What there is to say about a sheet; only a worksheet has more than a name.
struct SheetInfo {
    std::string name;
    std::string kind; ///< "worksheet", "chart" or "other"
    std::optional<std::string> visibility;
    std::optional<std::string> range; ///< empty when there is no such cell
    std::optional<bool> is_protected;
    std::optional<SheetSummary> summary; ///< of a file
    std::exception_ptr failure;          ///< why the sheet cannot be read
};

struct BookInfo {
    std::string format;
    std::string date_system;
    std::vector<SheetInfo> sheets;
    std::optional<std::vector<NamedRange>> named;
};

std::string visibility_name(sheet::hidden state) {
    if (state == sheet::hidden::visible) return "visible";
    return state == sheet::hidden::hidden ? "hidden" : "very hidden";
}

std::string kind_of(const IBook& book, std::size_t index) {
    try {
        return book.sheet_type(index) == sheet::type::chart ? "chart" : "worksheet";
    } catch (const Exception& e) {
        if (e.id() != error_id::sheet_type_unknown) throw;
        return "other"; // online: connected to a source of data
    }
}

std::optional<std::string> range_text(const Range& range) {
    if (range.count() <= 0) return std::nullopt;
    return to_utf8(range_string(range));
}

void look_through(const std::shared_ptr<IBook>& book, std::size_t index, bool all_cells,
                  SheetInfo& info) {
    info.summary = summarize_sheet(book, index);
    if (!info.summary) return;
    info.visibility = visibility_name(info.summary->hidden);
    info.range = range_text(all_cells ? info.summary->used : info.summary->filled);
    info.is_protected = info.summary->is_protected;
}

/// `known` is the used range where it was asked for already.
void ask_sheet(const IBook& book, std::size_t index, const std::optional<Range>& known,
               SheetInfo& info) {
    const auto sheet = book.sheet(index);
    info.visibility = visibility_name(sheet->hidden());
    if (!book.is_interactive()) info.is_protected = sheet->is_protected();
    info.range = range_text(known ? *known : sheet->used_range());
}

SheetInfo describe_sheet(const std::shared_ptr<IBook>& book, std::size_t index,
                         const std::optional<Range>& known, const InfoOptions& options) {
    SheetInfo info;
    info.name = to_utf8(sheet_name(*book, index));
    info.kind = kind_of(*book, index);
    if (info.kind != "worksheet") return info;
    if (!options.book.is_file()) {
        ask_sheet(*book, index, known, info);
        return info;
    }
    try {
        look_through(book, index, options.all_cells, info);
    } catch (const Exception&) {
        info.failure = std::current_exception();
    }
    return info;
}

/// The used range of each sheet of a spreadsheet online, all by one request; nothing elsewhere.
std::vector<std::optional<Range>> known_ranges(const std::shared_ptr<IBook>& book) {
    std::vector<std::size_t> indices(book->num_sheets());
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    std::vector<std::optional<Range>> known(indices.size());
    OnlineBook* const online = online_book(book);
    if (online == nullptr) return known;
    const std::vector<Range> used = online->used_ranges(indices);
    std::copy(used.begin(), used.end(), known.begin());
    return known;
}

/// The first failure of a sheet; null when all could be read.
std::exception_ptr first_failure(const BookInfo& info) {
    for (const SheetInfo& sheet : info.sheets)
        if (sheet.failure) return sheet.failure;
    return nullptr;
}

/// The content decides about the family, whatever the name says.
std::string format_name(const IBook& book, const BookLocation& location) {
    const std::string named = to_utf8(book::to_string(book.format()));
    if (!location.is_file()) return named;
    const bool is_zip = container_of_file(location.file()) == Container::Zip;
    if (is_zip == (book.format() != book::format::XLS)) return named;
    return is_zip ? "XLSX" : "XLS";
}

BookInfo describe_book(const InfoOptions& options) {
    const auto book = open_sheet_list(options.book);
    BookInfo info;
    info.format = format_name(*book, options.book);
    info.date_system = book->are_dates_1904() ? "1904" : "1900";
    const std::vector<std::optional<Range>> known = known_ranges(book);
    for (std::size_t i = 0; i < known.size(); ++i)
        info.sheets.push_back(describe_sheet(book, i, known[i], options));
    const bool has_good = std::any_of(info.sheets.begin(), info.sheets.end(),
                                      [](const SheetInfo& sheet) { return !sheet.failure; });
    if (!has_good && first_failure(info)) std::rethrow_exception(first_failure(info));
    info.named = named_ranges(book);
    return info;
}

// --- JSON

std::string json_or_null(const std::optional<std::string>& text) {
    return text ? json_string(*text) : "null";
}

std::string json_sheet(const SheetInfo& info, std::size_t number) {
    std::string text =
        "{\"index\":" + std::to_string(number) + ",\"name\":" + json_string(info.name) +
        ",\"kind\":" + json_string(info.kind) + ",\"visibility\":" + json_or_null(info.visibility) +
        ",\"used_range\":" + json_or_null(info.range) + ",\"protected\":";
    text += !info.is_protected ? "null" : *info.is_protected ? "true" : "false";
    if (info.summary)
        text +=
            ",\"cells\":" + std::to_string(info.summary->cells) +
            ",\"formulas\":" + std::to_string(info.summary->formulas) +
            ",\"formulas_without_result\":" + std::to_string(info.summary->formulas_without_result);
    if (info.failure) text += ",\"readable\":false";
    return text + '}';
}

std::string json_named(const NamedRange& named, const BookInfo& info) {
    std::string text = "{\"name\":" + json_string(to_utf8(named.name)) +
                       ",\"sheet\":" + json_string(info.sheets[named.sheet].name) +
                       ",\"range\":" + json_or_null(range_text(named.range));
    if (!named.is_table)
        text += ",\"scope\":" +
                (named.scope ? json_string(info.sheets[*named.scope].name) : std::string("null"));
    return text + '}';
}

void write_json_named(const BookInfo& info, const char* member, bool is_table, OutputSink& out) {
    out.write(std::string(",\"") + member + "\":[");
    bool is_first = true;
    for (const NamedRange& named : *info.named) {
        if (named.is_table != is_table) continue;
        if (!is_first) out.write(',');
        is_first = false;
        out.write(json_named(named, info));
    }
    out.write(']');
}

void write_json_info(const BookInfo& info, const InfoOptions& options, OutputSink& out) {
    out.write("{\"path\":" + json_string(options.book.text()));
    out.write(",\"format\":" + json_string(info.format));
    out.write(",\"date_system\":" + info.date_system + ",\"sheets\":[");
    for (std::size_t i = 0; i < info.sheets.size(); ++i) {
        if (i != 0) out.write(',');
        out.write(json_sheet(info.sheets[i], i + 1));
    }
    out.write(']');
    if (info.named) {
        write_json_named(info, "names", false, out);
        write_json_named(info, "tables", true, out);
    }
    out.write("}\n");
}

// --- For people

std::string plain_sheet(const SheetInfo& info) {
    if (info.failure) return info.name + "  cannot be read";
    if (info.kind != "worksheet") return info.name + " (" + info.kind + " sheet)";
    std::string text = info.name + "  " + info.range.value_or("empty");
    if (info.summary && info.summary->formulas > 0) {
        text += "  " + counted(info.summary->formulas, "formula");
        if (info.summary->formulas_without_result > 0)
            text += ", " + grouped(info.summary->formulas_without_result) + " without a result";
    }
    if (info.visibility.value_or("visible") != "visible") text += "  " + *info.visibility;
    if (info.is_protected.value_or(false)) text += "  protected";
    return text;
}

void write_plain_info(const BookInfo& info, const InfoOptions& options, OutputSink& out) {
    out.write("path:        " + one_line(options.book.text()) + '\n');
    out.write("format:      " + info.format + '\n');
    out.write("date system: " + info.date_system + '\n');
    for (std::size_t i = 0; i < info.sheets.size(); ++i)
        out.write("sheet " + std::to_string(i + 1) + ":     " +
                  one_line(plain_sheet(info.sheets[i])) + '\n');
    for (const NamedRange& named : info.named.value_or(std::vector<NamedRange>())) {
        const std::u16string sheet = foundation::unicode::to_utf16(info.sheets[named.sheet].name);
        std::string line = to_utf8(named.name) + "  " + place_text(sheet, named.range);
        if (named.scope) line += "  of sheet '" + info.sheets[*named.scope].name + '\'';
        out.write((named.is_table ? "table:       " : "name:        ") + one_line(line));
        out.write('\n');
    }
}

/// A sheet that cannot be read is reported once the others have been described.
void write_info(const InfoOptions& options, bool is_first, OutputSink& out) {
    BookInfo info = describe_book(options);
    if (!is_first && !options.json) out.write('\n');
    if (info.named) // a damaged file may name sheets that it does not have
        std::erase_if(*info.named, [&info](const NamedRange& named) {
            return named.sheet >= info.sheets.size() ||
                   named.scope.value_or(0) >= info.sheets.size();
        });
    options.json ? write_json_info(info, options, out) : write_plain_info(info, options, out);
    const std::exception_ptr failure = first_failure(info);
    if (!failure) return;
    if (options.more.empty()) out.finish();
    std::rethrow_exception(failure);
}

void run_info(const InfoOptions& options, OutputSink& out) {
    bool is_first = true;
    for_each_book(options, options.more, out, [&](const BookLocation& book) {
        InfoOptions own = options;
        own.book = book;
        const bool was_first = std::exchange(is_first, false);
        try {
            write_info(own, was_first, out);
        } catch (const std::exception&) {
            is_first = was_first && out.is_empty();
            throw;
        }
    });
}

} // namespace

Command info_command() {
    const auto options = std::make_shared<InfoOptions>();
    return reading_command("info", "Format, date system, sheets, names and tables of a book",
                           options,
                           {more_books_argument(options->more), all_cells_flag(options->all_cells),
                            json_flag(options->json)},
                           run_info);
}

} // namespace zxsheet
