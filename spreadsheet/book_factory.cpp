// SPDX-License-Identifier: Apache-2.0
//
// Has a back-end make a book, runs its `init_` operation, checks what callers pass.
#include "spreadsheet/book_factory.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string_view>
#include <utility>

#include "foundation/ascii_case.h"
#include "foundation/files.h"
#include "foundation/never_destroyed.h"
#include "foundation/unicode.h"
#include "spreadsheet/back_ends.h"
#include "spreadsheet/book_extras.h"
#include "spreadsheet/exception.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/with_failure.h"

namespace spreadsheet {
namespace {

std::atomic<int> initialize_count{0};

/// Held while the library starts or stops, so that whoever comes second finds it ready, and a stop
/// does not take away what another thread has just started.
std::mutex& start_and_stop() {
    static foundation::NeverDestroyed<std::mutex> instance;
    return instance.get();
}

Exception no_back_end(book::interactive mode, error_id id) {
    if (mode != book::interactive::application) return Exception(id);
    return with_failure(Exception(id),
                        {FailureKind::NoApplication,
                         "This version of the library does not serve spreadsheet applications."});
}

/// Makes a book and runs `init` on it; `Exception` `failure` when there is no loaded book in the
/// end.
template <class Init>
std::shared_ptr<IBook> make_initialized_book(book::interactive mode, error_id failure, Init init) {
    std::shared_ptr<IBook> book = make_book(mode);
    if (!book) throw no_back_end(mode, failure);
    init(*book);
    if (!book->is_loaded()) throw Exception(failure);
    return book;
}

template <class Init>
std::shared_ptr<IBook> load_book(book::interactive mode, Init init) {
    return make_initialized_book(mode, error_id::book_not_loaded, std::move(init));
}

book::format format_from_extension(const std::u16string& path) {
    return book::create_format(foundation::files::extension(path));
}

/// The zero-based index of the sheet of that name; `Exception` 3 when there is none.
std::size_t find_sheet(const std::u16string& path, book::format format, book::interactive mode,
                       const std::u16string& name) {
    const std::shared_ptr<IBook> names =
        load_book(mode, [&](IBook& book) { book.init_from_file_only_sheetNames(path, format); });
    const std::size_t count = names->num_sheets();
    for (std::size_t index = 0; index < count; ++index) {
        const auto candidate = names->get_sheet_name(static_cast<int>(index));
        if (candidate && foundation::unicode::equal_ignoring_case(*candidate, name)) return index;
    }
    throw with_failure(
        Exception(error_id::sheet_not_opened),
        {FailureKind::Missing,
         "The workbook has no sheet named \"" + foundation::unicode::to_utf8(name) + "\".", path});
}

void check_google_sheet_names(const std::u16string& name, const std::u16string& second_name) {
    if (name.empty() || name.size() > kMaxGoogleSheetNameUnits ||
        second_name.size() > kMaxGoogleSheetNameUnits)
        throw Exception(error_id::google_sheet_name_invalid);
}

void check_sheet_names(const std::u16string& name, const std::u16string& second_name) {
    const auto is_valid = [](const std::u16string& text) {
        return text.size() <= kMaxSheetNameUnits &&
               text.find_first_of(kForbiddenInSheetNames) == std::u16string::npos;
    };
    if (name.empty() || !is_valid(name) || !is_valid(second_name))
        throw Exception(error_id::sheet_name_invalid);
}

/// Whether the path ends with '.' and the format's name, in either case. Formats other than XLS ask
/// for at least five units, so '.ods' and '.csv' alone do not count.
bool has_extension_of(std::u16string_view path, book::format format) {
    const std::u16string extension = u"." + book::to_string(format);
    const std::size_t shortest = format == book::format::XLS ? 4 : 5;
    if (path.size() < std::max(shortest, extension.size())) return false;
    return foundation::unicode::equal_ignoring_ascii_case(
        path.substr(path.size() - extension.size()), extension);
}

/// A file name is at least one unit, the dot and the extension.
bool is_compatible_path(const std::u16string& path, book::format format) {
    if (format > book::format::GSHEET) return false;
    if (format != book::format::GSHEET && !has_extension_of(path, format)) return false;
    return foundation::files::file_name(path).size() >= book::to_string(format).size() + 2;
}

} // namespace

std::shared_ptr<IBook> load_book_from_file(const std::u16string& path, book::format format,
                                           book::interactive mode) {
    return load_book(mode, [&](IBook& book) { book.init_from_file(path, format); });
}

std::shared_ptr<IBook> load_book_from_file(const std::u16string& path, book::interactive mode) {
    return load_book_from_file(path, format_from_extension(path), mode);
}

std::shared_ptr<IBook> load_book_from_file_with_range(const std::u16string& path,
                                                      book::format format, book::interactive mode,
                                                      std::size_t sheet_index,
                                                      std::size_t first_row, std::size_t last_row) {
    return load_book(mode, [&](IBook& book) {
        book.init_from_file_with_range(path, format, sheet_index, first_row, last_row);
    });
}

std::shared_ptr<IBook> load_book_from_file_with_range(const std::u16string& path,
                                                      book::interactive mode,
                                                      std::size_t sheet_index,
                                                      std::size_t first_row, std::size_t last_row) {
    return load_book_from_file_with_range(path, format_from_extension(path), mode, sheet_index,
                                          first_row, last_row);
}

std::shared_ptr<IBook> load_book_from_file_with_sheetNames(const std::u16string& path,
                                                           book::format format) {
    const auto mode =
        format == book::format::GSHEET ? book::interactive::google : book::interactive::file;
    return load_book(mode, [&](IBook& book) { book.init_from_file_only_sheetNames(path, format); });
}

std::shared_ptr<IBook> load_book_from_file_with_sheet_index(const std::u16string& path,
                                                            book::format format,
                                                            book::interactive mode,
                                                            std::size_t sheet_index) {
    return load_book(
        mode, [&](IBook& book) { book.init_from_file_with_sheet(path, format, sheet_index); });
}

std::shared_ptr<IBook> load_book_from_file_with_sheet_name(const std::u16string& path,
                                                           book::format format,
                                                           book::interactive mode,
                                                           const std::u16string& name) {
    const std::size_t index = find_sheet(path, format, mode, name);
    return load_book_from_file_with_sheet_index(path, format, mode, index);
}

std::shared_ptr<IBook> load_book_from_file_with_sheet_name(const std::u16string& path,
                                                           book::interactive mode,
                                                           const std::u16string& name) {
    return load_book_from_file_with_sheet_name(path, format_from_extension(path), mode, name);
}

std::shared_ptr<IBook> create_new_book(std::size_t sheet_count, book::format format,
                                       book::interactive mode, const std::u16string& name) {
    return make_initialized_book(mode, error_id::book_not_created,
                                 [&](IBook& book) { book.init_new(sheet_count, format, name); });
}

std::shared_ptr<ISheet> add_sheet(const std::shared_ptr<IBook>& book, std::size_t index,
                                  const std::u16string& name, const std::u16string& second_name) {
    if (book->format() == book::format::GSHEET)
        check_google_sheet_names(name, second_name);
    else
        check_sheet_names(name, second_name);
    return book->add_sheet(index, name, second_name);
}

void reorder_sheet(const std::shared_ptr<IBook>& book, std::size_t from, std::size_t to) {
    auto* const extras = dynamic_cast<IBookExtras*>(book.get());
    if (extras == nullptr) throw Exception(error_id::sheet_not_copied);
    extras->reorder_sheet(from, to);
}

SaveSummary last_save(const std::shared_ptr<IBook>& book) {
    const auto* const extras = dynamic_cast<const IBookExtras*>(book.get());
    return extras != nullptr ? extras->last_save() : SaveSummary{};
}

std::optional<Failure> take_unreported_failure(const std::shared_ptr<IBook>& book) {
    auto* const extras = dynamic_cast<IBookExtras*>(book.get());
    return extras != nullptr ? extras->take_unreported_failure() : std::nullopt;
}

void save_book(const std::shared_ptr<IBook>& book, const std::u16string& path) {
    if (!is_compatible_path(path, book->format()))
        throw Exception(error_id::file_name_incompatible);
    book->save(path);
}

void initialize() {
    const std::scoped_lock lock(start_and_stop());
    if (initialize_count == 0) start_back_ends();
    ++initialize_count; // not when the start has failed
}

void release() {
    const std::scoped_lock lock(start_and_stop());
    if (--initialize_count == 0) stop_back_ends();
}

foundation::log::basic_diagnostic_logger<char>& getLogger() {
    using Logger = foundation::log::basic_diagnostic_logger<char>;
    // Never destroyed: a book that a host keeps until its process ends logs when it goes, after the
    // local statics have gone.
    static Logger& logger = *std::make_unique<Logger>("zentra::io::spreadsheet").release();
    return logger;
}

} // namespace spreadsheet
