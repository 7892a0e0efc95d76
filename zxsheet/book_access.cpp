// SPDX-License-Identifier: Apache-2.0
//
// Opening books and finding sheets and ranges in them.
#include "zxsheet/book_access.h"

#include <charconv>
#include <string_view>

#include "foundation/unicode.h"
#include "zxsheet/failure.h"

namespace zxsheet {
namespace {

namespace unicode = foundation::unicode;
using namespace spreadsheet;

constexpr std::string_view kGooglePrefix = "gsheet:";

/// What the library takes as the path.
std::u16string location_of(const Options& options) {
    return unicode::to_utf16(google_id(options.book).value_or(options.book));
}

std::size_t first_worksheet(const IBook& book) {
    for (std::size_t i = 0; i < book.num_sheets(); ++i)
        if (book.sheet_type(i) == sheet::type::worksheet) return i;
    throw Exception(error_id::sheet_not_found, "The book has no worksheet.");
}

/// The rows of a range that can be told without the sheet: one or two corners.
std::optional<Range> corners_of(const std::u16string& text, book::format format) {
    try {
        range_type type{};
        const Range range =
            parse_range(text.data(), text.size(), format, {0, 0, -1, -1}, false, &type, nullptr);
        if (type == range_type::two_corner || type == range_type::single_cell) return range;
    } catch (const Exception&) {
        // A defined name, or wrong; the sheet will tell.
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

Range find_range(const Selection& selection, const Options& options, book::format format) {
    if (options.range.empty()) return selection.sheet->used_range();
    return range_on_sheet(options.range, selection.sheet, selection.sheet_name, format);
}

struct Rows {
    int first, last;
};

std::shared_ptr<IBook> load_sheet(const Options& options, std::size_t index,
                                  const std::optional<Rows>& rows) {
    const std::u16string path = location_of(options);
    const book::format format = format_of(options);
    if (!rows) return load_book_from_file_with_sheet_index(path, format, mode_of(options), index);
    return load_book_from_file_with_range(path, format, mode_of(options), index,
                                          static_cast<std::size_t>(rows->first),
                                          static_cast<std::size_t>(rows->last));
}

/// The rows to load; all of them when there is none. Rows cannot be left out altogether.
std::optional<Rows> rows_to_load(Extent extent, const std::optional<Range>& corners) {
    if (extent == Extent::NoCells) return Rows{0, 0};
    if (extent == Extent::WholeSheet || !corners) return {};
    return Rows{corners->first_row, corners->last_row};
}

} // namespace

std::optional<std::string> google_id(const std::string& book) {
    if (book.rfind(kGooglePrefix, 0) != 0) return {};
    return book.substr(kGooglePrefix.size());
}

std::filesystem::path native_path(const std::string& path) {
    return std::filesystem::path(std::u8string(path.begin(), path.end()));
}

book::interactive mode_of(const Options& options) {
    if (google_id(options.book)) return book::interactive::google;
    return options.application ? book::interactive::application : book::interactive::file;
}

book::format format_of(const Options& options) {
    if (google_id(options.book)) return book::format::GSHEET;
    const std::u8string extension = native_path(options.book).extension().u8string();
    const std::u16string dotted =
        unicode::to_utf16(std::string(extension.begin(), extension.end()));
    if (dotted.empty()) return book::format::XLSX;
    try {
        const book::format format = book::create_format(dotted.substr(1));
        return format == book::format::GSHEET ? book::format::XLSX : format;
    } catch (const Exception&) {
        return book::format::XLSX;
    }
}

std::shared_ptr<IBook> open_book(const Options& options) {
    // A spreadsheet online is never loaded as a whole; it hands all of its sheets out.
    if (google_id(options.book)) return load_sheet(options, 0, {});
    return load_book_from_file(location_of(options), format_of(options), mode_of(options));
}

std::shared_ptr<IBook> open_sheet_list(const Options& options) {
    if (options.application || google_id(options.book)) return open_book(options);
    return load_book_from_file_with_sheetNames(location_of(options), format_of(options));
}

std::u16string sheet_name(const IBook& book, std::size_t index) {
    return book.get_sheet_name(static_cast<int>(index)).value_or(u"");
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

std::size_t find_sheet(const IBook& book, const std::string& wanted) {
    if (wanted.empty()) return first_worksheet(book);
    if (const auto index = find_sheet_name(book, unicode::to_utf16(wanted))) return *index;
    const auto number = sheet_number(wanted);
    if (number && *number <= book.num_sheets()) return *number - 1;
    throw Exception(error_id::sheet_not_found, "There is no sheet '" + wanted + "'.");
}

Range range_on_sheet(const std::string& text, const std::shared_ptr<ISheet>& sheet,
                     const std::u16string& name_of_sheet, book::format format) {
    const std::u16string units = unicode::to_utf16(text);
    try {
        return sheet_range(units.data(), units.size(), sheet, format, false, nullptr, nullptr);
    } catch (const Exception& e) {
        if (!is_about_range(e.id())) throw;
        throw Exception(e.id(), "There is no range or name '" + text + "' on sheet '" +
                                    unicode::to_utf8(name_of_sheet) + "'.");
    }
}

Selection open_selection(const Options& options, Extent extent) {
    Selection selection;
    const bool is_online = google_id(options.book).has_value();
    const auto list = open_sheet_list(options);
    const std::size_t index = find_sheet(*list, options.sheet);
    selection.sheet_name = sheet_name(*list, index);
    if (list->sheet_type(index) == sheet::type::chart)
        throw Exception(error_id::chart_sheet_unsupported,
                        "The sheet '" + unicode::to_utf8(selection.sheet_name) +
                            "' is a chart sheet, which has no cells.");
    const auto corners = corners_of(unicode::to_utf16(options.range), format_of(options));
    selection.book = is_online ? list : load_sheet(options, index, rows_to_load(extent, corners));
    selection.sheet = selection.book->sheet(selection.book->is_sheet_loaded() ? 0 : index);
    if (!selection.sheet) throw Exception(error_id::sheet_not_opened);
    if (extent == Extent::NoCells) return selection;
    selection.range = corners ? *corners : find_range(selection, options, format_of(options));
    return selection;
}

} // namespace zxsheet
