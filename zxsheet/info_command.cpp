// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet info`: format, date system and sheets of a book.
#include <algorithm>
#include <numeric>
#include <optional>
#include <vector>

#include "foundation/unicode.h"
#include "spreadsheet/online.h"
#include "zxsheet/book_access.h"
#include "zxsheet/command_table.h"
#include "zxsheet/json_text.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
using foundation::unicode::to_utf8;

struct InfoOptions : BookOptions {
    bool json = false;
};

/// What there is to say about a sheet; only a worksheet has more than a name.
struct SheetInfo {
    std::string name;
    std::string kind; ///< "worksheet", "chart" or "other"
    std::optional<std::string> visibility;
    std::optional<std::string> used_range; ///< empty when no cell is used
    std::optional<bool> is_protected;
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

/// `known` is the used range where it was asked for already.
SheetInfo describe_sheet(const IBook& book, std::size_t index, const std::optional<Range>& known) {
    SheetInfo info;
    info.name = to_utf8(sheet_name(book, index));
    info.kind = kind_of(book, index);
    if (info.kind != "worksheet") return info;
    const auto sheet = book.sheet(index);
    info.visibility = visibility_name(sheet->hidden());
    if (!book.is_interactive()) info.is_protected = sheet->is_protected();
    const Range used = known ? *known : sheet->used_range();
    if (used.count() > 0) info.used_range = to_utf8(range_string(used));
    return info;
}

std::vector<SheetInfo> describe_sheets(const std::shared_ptr<IBook>& book) {
    std::vector<std::size_t> indices(book->num_sheets());
    std::iota(indices.begin(), indices.end(), std::size_t{0});
    std::vector<std::optional<Range>> known(indices.size());
    if (OnlineBook* const online = online_book(book)) {
        const std::vector<Range> used = online->used_ranges(indices); // all by one request
        std::copy(used.begin(), used.end(), known.begin());
    }
    std::vector<SheetInfo> sheets;
    for (const std::size_t index : indices)
        sheets.push_back(describe_sheet(*book, index, known[index]));
    return sheets;
}

std::string date_system(const IBook& book) {
    return book.are_dates_1904() ? "1904" : "1900";
}

std::string json_or_null(const std::optional<std::string>& text) {
    return text ? json_string(*text) : "null";
}

void write_json_info(const std::shared_ptr<IBook>& book, const InfoOptions& options,
                     OutputSink& out) {
    out.write("{\"path\":" + json_string(options.book.text()));
    out.write(",\"format\":" + json_string(to_utf8(book::to_string(book->format()))));
    out.write(",\"date_system\":" + date_system(*book) + ",\"sheets\":[");
    std::size_t index = 0;
    for (const SheetInfo& info : describe_sheets(book)) {
        if (index++ != 0) out.write(',');
        out.write("{\"index\":" + std::to_string(index) + ",\"name\":" + json_string(info.name));
        out.write(",\"kind\":" + json_string(info.kind));
        out.write(",\"visibility\":" + json_or_null(info.visibility));
        out.write(",\"used_range\":" + json_or_null(info.used_range));
        const bool is_protected = info.is_protected.value_or(false);
        out.write(",\"protected\":");
        out.write(!info.is_protected ? "null}" : is_protected ? "true}" : "false}");
    }
    out.write("]}\n");
}

void write_plain_info(const std::shared_ptr<IBook>& book, const InfoOptions& options,
                      OutputSink& out) {
    out.write("path:        " + options.book.text() + '\n');
    out.write("format:      " + to_utf8(book::to_string(book->format())) + '\n');
    out.write("date system: " + date_system(*book) + '\n');
    std::size_t index = 0;
    for (const SheetInfo& info : describe_sheets(book)) {
        out.write("sheet " + std::to_string(++index) + ":     " + info.name);
        out.write(info.kind == "worksheet" ? "  " + info.used_range.value_or("empty")
                                           : " (" + info.kind + " sheet)");
        if (info.visibility.value_or("visible") != "visible") out.write("  " + *info.visibility);
        if (info.is_protected.value_or(false)) out.write("  protected");
        out.write('\n');
    }
}

void run_info(const InfoOptions& options, OutputSink& out) {
    const auto book = open_book(options.book);
    options.json ? write_json_info(book, options, out) : write_plain_info(book, options, out);
}

} // namespace

Command info_command() {
    const auto options = std::make_shared<InfoOptions>();
    return reading_command("info", "Format, date system and sheets of a book", options,
                           {json_flag(options->json)}, run_info);
}

} // namespace zxsheet
