// SPDX-License-Identifier: Apache-2.0
//
// Decides between an existing and a new book, and between an existing and a new sheet.
#include "zxsheet/write_target.h"

#include <filesystem>

#include "foundation/unicode.h"
#include "spreadsheet/failure.h"
#include "spreadsheet/online.h"
#include "zxsheet/command_error.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/range_reference.h"
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

WantedSheet wanted_sheet(const WriteOptions& options, const DataPlace& place) {
    if (!options.sheet.empty()) return {options.sheet, true};
    if (const auto reference = split_reference(options.range); reference.sheet)
        return {*reference.sheet, false};
    return {place.sheet.value_or(""), false};
}

/// A range that names a sheet must be on the one that is wanted.
void check_one_sheet(const WriteOptions& options, const std::u16string& sheet) {
    const RangeReference reference = split_reference(options.range);
    if (!reference.sheet ||
        unicode::equal_ignoring_case(unicode::to_utf16(*reference.sheet), sheet))
        return;
    throw CommandError(ExitCode::Usage, options.book.text() + ": The range '" + options.range +
                                            "' is on another sheet than '" + options.sheet + "'");
}

/// The cells of a name or table, if the range is one, on whatever sheet it is.
std::optional<NamedRange> named_range_of(const WriteOptions& options,
                                         const std::shared_ptr<IBook>& list) {
    if (!list || options.range.empty() || options.book.is_online()) return {};
    const RangeReference reference = split_reference(options.range);
    if (parse_cells(reference.cells, list->format())) return {};
    const std::string& sheet = reference.sheet ? *reference.sheet : options.sheet;
    std::optional<std::size_t> index;
    if (!sheet.empty()) index = find_sheet(list, options.book, sheet);
    return find_named_range(list, reference.cells, index);
}

/// Whether there is no book to read: the library and the system must agree that there is no file,
/// since a book that cannot be read must never be replaced.
bool is_missing(const BookLocation& location, const Exception& error) {
    std::error_code failure;
    if (std::filesystem::exists(location.path(), failure) || failure) return false;
    const bool is_untried = error.id() == error_id::book_not_created ||
                            error.id() == error_id::format_unsupported; // refused unseen
    return is_untried || failure_of(error).kind == FailureKind::FileNotFound;
}

/// The sheets of the book; null when there is no such file.
std::shared_ptr<IBook> list_if_there(const BookLocation& location) {
    try {
        return open_sheet_list(location);
    } catch (const Exception& e) {
        if (location.is_online() || !is_missing(location, e)) throw;
    }
    return nullptr;
}

WriteTarget make_target(const BookLocation& location, const WantedSheet& wanted) {
    const bool is_number = wanted.may_be_number && sheet_number(wanted.text).has_value();
    if (is_number && sheet_number(wanted.text) != 1)
        throw CommandError(ExitCode::NotFound,
                           location.text() + ": The new book has one sheet; there is no sheet '" +
                               wanted.text + "'.");
    const bool has_name = !wanted.text.empty() && !is_number;
    if (has_name) check_sheet_name(wanted.text, location);
    WriteTarget target;
    Selection& cells = target.cells;
    // An application's book is never without a sheet.
    const bool adds_sheet = has_name && location.is_file();
    cells.book = make_book(location, adds_sheet ? 0 : 1);
    cells.sheet = adds_sheet ? add_sheet(cells.book, 0, unicode::to_utf16(wanted.text), u"")
                             : cells.book->sheet(std::size_t{0});
    if (has_name && !adds_sheet) cells.sheet->name(unicode::to_utf16(wanted.text));
    cells.sheet_name = cells.sheet->name();
    target.origin = Origin::Made;
    target.is_new_sheet = true;
    target.preparation = "Made the book, wrote ";
    return target;
}

WriteTarget add_target(const BookLocation& location, const std::string& name,
                       const std::shared_ptr<IBook>& list) {
    check_sheet_name(name, location);
    WriteTarget target;
    // A sheet that is loaded brings the date format with it.
    target.cells = open_selection(list, {location}, Extent::NoCells);
    target.cells.sheet_name = unicode::to_utf16(name);
    target.cells.sheet =
        add_sheet(target.cells.book, target.cells.book->num_sheets(), target.cells.sheet_name, u"");
    target.is_new_sheet = true;
    target.preparation = "Added sheet " + quoted_sheet(target.cells.sheet_name) + ", wrote ";
    return target;
}

WriteTarget open_target(const BookLocation& location, const WantedSheet& wanted,
                        const std::shared_ptr<IBook>& list) {
    const bool is_missing = !wanted.text.empty() &&
                            !(wanted.may_be_number && sheet_number(wanted.text)) &&
                            !find_sheet_name(*list, unicode::to_utf16(wanted.text));
    if (is_missing) return add_target(location, wanted.text, list);
    // Names come before numbers.
    WriteTarget target;
    const Extent extent = location.is_online() ? Extent::NoCells : Extent::WholeSheet;
    target.cells = open_selection(list, {location, wanted.text}, extent);
    target.preparation = "Wrote ";
    return target;
}

/// From the cell to the end of the sheet.
Range room_from(const Range& cell, book::format format) {
    return {cell.first_row, cell.first_column, book::get_row_limit(format),
            book::get_col_limit(format)};
}

Range filled_cells(const Selection& cells) {
    return online_sheet(cells.sheet) != nullptr ? used_online_range(cells)
                                                : filled_range(*cells.sheet);
}

Range find_room(const WriteOptions& options, const DataPlace& place,
                const std::optional<NamedRange>& named, WriteTarget& target) {
    Selection& cells = target.cells;
    const book::format format = cells.book->format();
    if (options.append) {
        const Range filled = filled_cells(cells);
        if (filled.count() <= 0) return room_from({0, 0, 0, 0}, format);
        target.header = {filled.first_row, filled.first_column, filled.first_row,
                         filled.last_column};
        return room_from({filled.last_row + 1, filled.first_column, 0, 0}, format);
    }
    const bool from_data = options.range.empty();
    if (named) return named->range.count() == 1 ? room_from(named->range, format) : named->range;
    const std::string text = from_data ? place.range.value_or("A1") : options.range;
    const Range range = range_on_sheet(split_reference(text).cells, cells, options.book);
    return from_data || range.count() == 1 ? room_from(range, format) : range;
}

void check_choice(const WriteOptions& options) {
    const bool has_two = (options.append && (options.replace || !options.range.empty()));
    if (has_two)
        throw CommandError(ExitCode::Usage, options.replace ? "Give either --append or --replace"
                                                            : "Give either --append or --range");
}

/// Nobody's values are overwritten because something was forgotten.
void check_asked_for(const WriteOptions& options, const DataPlace& place, const Selection& cells) {
    const bool is_told = !options.sheet.empty() || !options.range.empty() || options.append ||
                         options.replace || place.sheet || place.range;
    if (is_told || filled_cells(cells).count() <= 0) return;
    throw CommandError(ExitCode::Usage,
                       options.book.text() + ": " + quoted_sheet(cells.sheet_name) +
                           " has values already; say where to write with --sheet or --range, or "
                           "choose --append or --replace.");
}

} // namespace

WriteTarget open_write_target(const WriteOptions& options, const DataPlace& place) {
    check_choice(options);
    WantedSheet wanted = wanted_sheet(options, place);
    const auto list = list_if_there(options.book);
    const auto named = named_range_of(options, list);
    if (named) wanted = {unicode::to_utf8(sheet_name(*list, named->sheet)), false};
    WriteTarget target =
        list ? open_target(options.book, wanted, list) : make_target(options.book, wanted);
    check_target(options);
    check_asked_for(options, place, target.cells);
    check_one_sheet(options, target.cells.sheet_name);
    target.cells.range = find_room(options, place, named, target);
    return target;
}

} // namespace zxsheet
