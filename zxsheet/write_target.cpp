// SPDX-License-Identifier: Apache-2.0
#include "zxsheet/write_target.h"

#include <filesystem>

#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/failure.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
namespace unicode = foundation::unicode;

/// The sheet that is asked for.
struct WantedSheet {
    std::string text; ///< empty for the first one
    bool may_be_number;
};

WantedSheet wanted_sheet(const Options& options, const DataPlace& place) {
    if (!options.sheet.empty()) return {options.sheet, true};
    return {place.sheet.value_or(""), false};
}

/// Whether there is no book to read: the library and the system must agree that there is nothing,
/// since a book that cannot be read must never be replaced.
bool is_missing(const Options& options, const Exception& error, const std::string& cause) {
    std::error_code failure;
    if (std::filesystem::exists(native_path(options.book), failure) || failure) return false;
    const bool is_untried = error.id() == error_id::book_not_created ||
                            error.id() == error_id::format_unsupported; // refused unseen
    return is_untried || cause.starts_with("There is no such file");
}

/// The sheets of the book; null when there is no such file.
std::shared_ptr<IBook> list_if_there(const Options& options, ChangeTools& tools) {
    try {
        return open_sheet_list(options);
    } catch (const Exception& e) {
        if (mode_of(options) != book::interactive::file ||
            !is_missing(options, e, tools.log.cause()))
            throw;
    }
    tools.log.forget();
    return nullptr;
}

WriteTarget make_target(const Options& options, const WantedSheet& wanted) {
    const bool is_number = wanted.may_be_number && sheet_number(wanted.text).has_value();
    if (is_number && sheet_number(wanted.text) != 1)
        throw Failure(ExitCode::NotFound, options.book +
                                              ": The new book has one sheet; there is no sheet '" +
                                              wanted.text + "'.");
    const bool has_name = !wanted.text.empty() && !is_number;
    if (has_name) check_sheet_name(wanted.text, options);
    WriteTarget target;
    target.book = make_book(options, has_name ? 0 : 1);
    target.sheet = has_name ? add_sheet(target.book, 0, unicode::to_utf16(wanted.text), u"")
                            : target.book->sheet(std::size_t{0});
    target.sheet_name = target.sheet->name();
    target.origin = Origin::Made;
    target.preparation = "Made the book, wrote ";
    return target;
}

WriteTarget add_target(const Options& options, const std::string& name, std::size_t count) {
    check_sheet_name(name, options);
    // A sheet that is loaded brings the date format with it.
    Options first = options;
    first.sheet.clear();
    WriteTarget target;
    target.book = open_selection(first, Extent::NoCells).book;
    target.sheet_name = unicode::to_utf16(name);
    target.sheet = add_sheet(target.book, count, target.sheet_name, u"");
    target.preparation = "Added sheet " + quoted_sheet(target.sheet_name) + ", wrote ";
    return target;
}

WriteTarget open_target(const Options& options, const WantedSheet& wanted, const IBook& list) {
    const bool is_missing = !wanted.text.empty() &&
                            !(wanted.may_be_number && sheet_number(wanted.text)) &&
                            !find_sheet_name(list, unicode::to_utf16(wanted.text));
    if (is_missing) return add_target(options, wanted.text, list.num_sheets());
    Options existing = options;
    if (!wanted.may_be_number && !wanted.text.empty())
        existing.sheet = wanted.text; // names come before numbers
    existing.range.clear();
    const Selection selection = open_selection(existing, Extent::WholeSheet);
    return {selection.book, selection.sheet, selection.sheet_name, {}, Origin::Loaded, "Wrote "};
}

/// From the cell on to the end of the sheet.
Range room_from(const Range& cell, book::format format) {
    return {cell.first_row, cell.first_column, book::get_row_limit(format),
            book::get_col_limit(format)};
}

Range find_room(const Options& options, const DataPlace& place, const WriteTarget& target) {
    const book::format format = target.book->format();
    const bool from_data = options.range.empty();
    const std::string range_text = from_data ? place.range.value_or("A1") : options.range;
    const Range range = range_on_sheet(range_text, target.sheet, target.sheet_name, format);
    return from_data || range.count() == 1 ? room_from(range, format) : range;
}

} // namespace

WriteTarget open_write_target(const Options& options, const DataPlace& place, ChangeTools& tools) {
    const WantedSheet wanted = wanted_sheet(options, place);
    const auto list = list_if_there(options, tools);
    WriteTarget target = list ? open_target(options, wanted, *list) : make_target(options, wanted);
    check_target(options);
    target.room = find_room(options, place, target);
    return target;
}

} // namespace zxsheet
