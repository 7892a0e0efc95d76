// SPDX-License-Identifier: Apache-2.0
//
// Opening books and finding sheets and ranges in them.
#include "zxsheet/book_access.h"

#include <charconv>

#include "foundation/unicode.h"
#include "spreadsheet/gsheet/drive.h"
#include "spreadsheet/online.h"
#include "zxsheet/command_error.h"
#include "zxsheet/online_cells.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;
using namespace spreadsheet;

CommandError not_found(const BookLocation& location, const std::string& what) {
    return {ExitCode::NotFound, location.text() + ": " + what};
}

std::size_t first_worksheet(const IBook& book, const BookLocation& location) {
    for (std::size_t i = 0; i < book.num_sheets(); ++i)
        if (book.sheet_type(i) == sheet::type::worksheet) return i;
    throw not_found(location, "The book has no worksheet.");
}

std::size_t sheet_of_address(const std::shared_ptr<IBook>& book, const BookLocation& location) {
    OnlineBook* const online = online_book(book);
    const auto index =
        online != nullptr ? online->sheet_with_id(*location.sheet_id()) : std::nullopt;
    if (index) return *index;
    throw not_found(location, "There is no sheet with the number " +
                                  std::to_string(*location.sheet_id()) + " (gid).");
}

/// The range, where its text alone says the rows: one or two corners.
std::optional<Range> corners_of(const std::u16string& text, book::format format) {
    try {
        range_type type{};
        const Range range =
            parse_range(text.data(), text.size(), format, {0, 0, -1, -1}, false, &type, nullptr);
        if (type == range_type::two_corner || type == range_type::single_cell) return range;
    } catch (const Exception&) {
        // A defined name, or wrong; the sheet decides.
    }
    return {};
}

/// Whether the text of a range is what is wrong, and not the way to the sheet.
bool is_about_range(error_id id) {
    switch (id) {
    case error_id::trailing_characters:
    case error_id::range_not_parsed:
    case error_id::named_range_not_found:
    case error_id::range_too_large:
    case error_id::cell_out_of_bounds:
    case error_id::google_range_too_large:
    case error_id::google_range_invalid:
    case error_id::google_cell_out_of_bounds:
        return true;
    default:
        return false;
    }
}

struct Rows {
    int first, last;
};

std::shared_ptr<IBook> load_sheet(const BookLocation& location, std::size_t index,
                                  const std::optional<Rows>& rows) {
    if (!rows)
        return load_book_from_file_with_sheet_index(location.library_path(), location.format(),
                                                    location.mode(), index);
    return load_book_from_file_with_range(
        location.library_path(), location.format(), location.mode(), index,
        static_cast<std::size_t>(rows->first), static_cast<std::size_t>(rows->last));
}

/// The ID of the only spreadsheet with the title that stands in the place of an ID; nullopt when
/// there is none or no way to search. Throws `CommandError` for several.
std::optional<std::string> id_by_title(const BookLocation& location) {
    std::vector<gsheet::DriveFile> found;
    try {
        found = gsheet::find_spreadsheets(location.library_path());
    } catch (const std::exception&) {
        return {}; // the refusal of the ID says more
    }
    if (found.empty()) return {};
    if (found.size() == 1) return unicode::to_utf8(found.front().id);
    std::string ids;
    for (const gsheet::DriveFile& file : found)
        ids += (ids.empty() ? "" : ", ") + unicode::to_utf8(file.id);
    throw CommandError(ExitCode::NotReadable, location.text() +
                                                  ": There are several spreadsheets with this "
                                                  "title; give an ID: " +
                                                  ids + ".");
}

std::shared_ptr<IBook> open_online(const BookLocation& location) {
    try {
        return load_sheet(location, 0, {});
    } catch (const Exception& e) {
        if (e.id() != error_id::google_sheet_not_found) throw;
        const auto id = id_by_title(location);
        if (!id) throw;
        return load_sheet(BookLocation::online(*id), 0, {});
    }
}

/// The rows to load; nullopt for all of them. At least one row has to be loaded.
std::optional<Rows> rows_to_load(Extent extent, const std::optional<Range>& corners) {
    if (extent == Extent::NoCells) return Rows{0, 0};
    if (extent == Extent::WholeSheet || !corners) return {};
    return Rows{corners->first_row, corners->last_row};
}

} // namespace

std::shared_ptr<IBook> open_book(const BookLocation& location) {
    // A spreadsheet online is never loaded as a whole; it hands all of its sheets out.
    if (location.is_online()) return open_online(location);
    return load_book_from_file(location.library_path(), location.format(), location.mode());
}

std::shared_ptr<IBook> open_sheet_list(const BookLocation& location) {
    if (!location.is_file()) return open_book(location);
    return load_book_from_file_with_sheetNames(location.library_path(), location.format());
}

std::u16string sheet_name(const IBook& book, std::size_t index) {
    if (const auto name = book.get_sheet_name(static_cast<int>(index))) return *name;
    // A book in an application has its names at its sheets.
    const auto sheet = book.sheet(index);
    return sheet ? sheet->name() : std::u16string();
}

std::optional<std::size_t> find_sheet_name(const IBook& book, const std::u16string& name) {
    for (std::size_t i = 0; i < book.num_sheets(); ++i)
        if (unicode::equal_ignoring_case(sheet_name(book, i), name)) return i;
    return {};
}

std::optional<std::size_t> sheet_number(const std::string& text) {
    std::size_t number = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (failure != std::errc() || end != text.data() + text.size() || number == 0) return {};
    return number;
}

std::size_t find_sheet(const std::shared_ptr<IBook>& book, const BookLocation& location,
                       const std::string& wanted) {
    if (wanted.empty() && location.sheet_id()) return sheet_of_address(book, location);
    if (wanted.empty()) return first_worksheet(*book, location);
    if (const auto index = find_sheet_name(*book, unicode::to_utf16(wanted))) return *index;
    const auto number = sheet_number(wanted);
    if (number && *number <= book->num_sheets()) return *number - 1;
    throw not_found(location, "There is no sheet '" + wanted + "'.");
}

Range range_on_sheet(const std::string& text, Selection& selection, const BookLocation& location) {
    if (location.is_online()) return find_online_range(text, selection, location);
    const std::u16string units = unicode::to_utf16(text);
    try {
        return sheet_range(units.data(), units.size(), selection.sheet, selection.book->format(),
                           false, nullptr, nullptr);
    } catch (const Exception& e) {
        if (!is_about_range(e.id())) throw;
        throw not_found(location, "There is no range or name '" + text + "' on sheet '" +
                                      unicode::to_utf8(selection.sheet_name) + "'.");
    }
}

Selection open_selection(const CellSelector& wanted, Extent extent) {
    return open_selection(open_sheet_list(wanted.book), wanted, extent);
}

Selection open_selection(const std::shared_ptr<IBook>& list, const CellSelector& wanted,
                         Extent extent) {
    const BookLocation& location = wanted.book;
    Selection selection;
    const std::size_t index = find_sheet(list, location, wanted.sheet);
    selection.sheet_name = sheet_name(*list, index);
    if (list->sheet_type(index) == sheet::type::chart)
        throw not_found(location, "The sheet '" + unicode::to_utf8(selection.sheet_name) +
                                      "' is a chart sheet, which has no cells.");
    const auto corners = corners_of(unicode::to_utf16(wanted.range), location.format());
    selection.book =
        location.is_file() ? load_sheet(location, index, rows_to_load(extent, corners)) : list;
    selection.sheet = selection.book->sheet(selection.book->is_sheet_loaded() ? 0 : index);
    if (!selection.sheet) throw Exception(error_id::sheet_not_opened);
    selection.sheet_index = index;
    if (extent == Extent::NoCells) return selection;
    if (location.is_online()) {
        selection.range = wanted.range.empty()
                              ? used_online_range(selection)
                              : find_online_range(wanted.range, selection, location);
        check_in_grid(selection, location);
        return selection;
    }
    selection.range = corners                ? *corners
                      : wanted.range.empty() ? selection.sheet->used_range()
                                             : range_on_sheet(wanted.range, selection, location);
    return selection;
}

} // namespace zxsheet
