// SPDX-License-Identifier: Apache-2.0
//
// Opening books and finding sheets and ranges in them.
#include "zxsheet/book_access.h"

#include <charconv>
#include <utility>

#include "foundation/unicode.h"
#include "spreadsheet/gsheet/drive.h"
#include "spreadsheet/online.h"
#include "zxsheet/command_error.h"
#include "zxsheet/online_cells.h"
#include "zxsheet/range_reference.h"
#include "zxsheet/suggestion.h"

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
std::optional<Rows> rows_to_load(Extent extent, const std::optional<Range>& cells) {
    if (extent == Extent::NoCells) return Rows{0, 0};
    if (extent == Extent::WholeSheet || !cells) return {};
    return Rows{cells->first_row, cells->last_row};
}

std::vector<std::string> sheet_names(const IBook& book) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < book.num_sheets(); ++i)
        names.push_back(unicode::to_utf8(sheet_name(book, i)));
    return names;
}

/// What the command line asks for, as far as the list of sheets answers it.
struct WantedCells {
    std::size_t sheet = 0;
    std::string text;               ///< of the range; empty for all cells
    std::optional<CellsText> cells; ///< for A1 notation, and for a name that the book knows
};

void check_one_sheet(const std::shared_ptr<IBook>& list, const CellSelector& wanted,
                     const std::string& named) {
    if (wanted.sheet.empty()) return;
    if (find_sheet(list, wanted.book, wanted.sheet) == find_sheet(list, wanted.book, named)) return;
    throw CommandError(ExitCode::Usage, wanted.book.text() + ": The range '" + wanted.range +
                                            "' is on another sheet than '" + wanted.sheet + "'");
}

/// A name may mean whole columns or rows.
range_type shape_of(const Range& range, book::format format) {
    if (range.first_row == 0 && range.last_row >= book::get_row_limit(format))
        return range_type::column_only;
    if (range.first_column == 0 && range.last_column >= book::get_col_limit(format))
        return range_type::row_only;
    return range_type::named;
}

CommandError no_such_name(const CellSelector& wanted, const std::string& text) {
    return not_found(wanted.book, "There is no range '" + text + "' and no name '" + text +
                                      "' in the spreadsheet.");
}

WantedCells resolve(const std::shared_ptr<IBook>& list, const CellSelector& wanted) {
    const RangeReference reference = split_reference(wanted.range);
    WantedCells found;
    found.text = reference.cells;
    if (reference.sheet) check_one_sheet(list, wanted, *reference.sheet);
    const std::string& sheet = reference.sheet ? *reference.sheet : wanted.sheet;
    const bool has_sheet = !sheet.empty();
    if (!found.text.empty()) found.cells = parse_cells(found.text, list->format());
    if (found.cells || found.text.empty()) {
        found.sheet = find_sheet(list, wanted.book, sheet);
        return found;
    }
    const auto index =
        has_sheet ? std::optional(find_sheet(list, wanted.book, sheet)) : std::nullopt;
    if (OnlineBook* const online = online_book(list)) {
        const auto cells = online->find_name(unicode::to_utf16(found.text));
        if (!cells) throw no_such_name(wanted, found.text);
        found.sheet = cells->sheet_index;
        found.cells = CellsText{cells->range, range_type::named};
        return found;
    }
    const auto named = find_named_range(list, found.text, index);
    found.sheet = named ? named->sheet : find_sheet(list, wanted.book, sheet);
    if (named) found.cells = CellsText{named->range, shape_of(named->range, list->format())};
    return found;
}

Range bounds_of(const Selection& selection, Bounds bounds) {
    if (online_sheet(selection.sheet) != nullptr) return used_online_range(selection);
    const ISheet& sheet = *selection.sheet;
    return bounds == Bounds::Filled ? filled_range(sheet) : sheet.used_range();
}

/// The cells, whole columns and rows ended at the bounds of the sheet; none on an empty sheet.
Range close_off(const CellsText& cells, const Selection& selection, Bounds wanted) {
    Range range = cells.range;
    if (cells.has_rows() && cells.has_columns()) return range;
    const Range bounds = bounds_of(selection, wanted);
    if (bounds.count() <= 0) return {0, 0, -1, -1};
    if (!cells.has_rows()) {
        range.first_row = bounds.first_row;
        range.last_row = bounds.last_row;
    } else {
        range.first_column = bounds.first_column;
        range.last_column = bounds.last_column;
    }
    return range;
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
    const std::string similar = suggestion(wanted, sheet_names(*book));
    throw not_found(location,
                    "There is no sheet '" + wanted + "'" + (similar.empty() ? "." : similar));
}

Selection select_sheet(const std::shared_ptr<IBook>& book, std::size_t index) {
    Selection selection;
    selection.book = book;
    selection.sheet = book->sheet(index);
    selection.sheet_name = sheet_name(*book, index);
    selection.sheet_index = index;
    return selection;
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

Selection open_selection(std::shared_ptr<IBook> list, const CellSelector& wanted, Extent extent) {
    const BookLocation& location = wanted.book;
    const WantedCells found = resolve(list, wanted);
    Selection selection;
    selection.sheet_name = sheet_name(*list, found.sheet);
    if (list->sheet_type(found.sheet) == sheet::type::chart)
        throw not_found(location, "The sheet '" + unicode::to_utf8(selection.sheet_name) +
                                      "' is a chart sheet, which has no cells.");
    const bool has_rows = found.cells && found.cells->has_rows();
    const auto rows =
        rows_to_load(extent, has_rows ? std::optional(found.cells->range) : std::nullopt);
    if (location.is_file()) {
        list.reset(); // it may hold all of the file's bytes
        selection.book = load_sheet(location, found.sheet, rows);
    } else {
        selection.book = std::move(list);
    }
    selection.sheet = selection.book->sheet(selection.book->is_sheet_loaded() ? 0 : found.sheet);
    if (!selection.sheet) throw Exception(error_id::sheet_not_opened);
    selection.sheet_index = found.sheet;
    if (extent == Extent::NoCells) return selection;
    selection.range = found.cells          ? close_off(*found.cells, selection, wanted.bounds)
                      : found.text.empty() ? bounds_of(selection, wanted.bounds)
                                           : range_on_sheet(found.text, selection, location);
    check_in_grid(selection, location);
    return selection;
}

} // namespace zxsheet
