// SPDX-License-Identifier: Apache-2.0
//
// What all commands that change a book have in common.
#include "zxsheet/save_book.h"

#include "foundation/unicode.h"
#include "spreadsheet/online.h"
#include "zxsheet/command_error.h"
#include "zxsheet/library_error.h"
#include "zxsheet/streamed_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
namespace unicode = foundation::unicode;

constexpr std::u16string_view kForbiddenInSheetNames = u":\\/?*[]";
constexpr std::size_t kMaxSheetNameLength = 31;
constexpr std::size_t kMaxOnlineSheetNameLength = 100;

bool has_extension(const std::string& path, book::format format) {
    const std::u8string extension = native_path(path).extension().u8string();
    const std::u16string dotted =
        unicode::to_utf16(std::string(extension.begin(), extension.end()));
    return unicode::equal_ignoring_case(dotted, u"." + book::to_string(format));
}

bool can_be_made(book::format format) {
    return format == book::format::XLS || format == book::format::XLSX ||
           format == book::format::XLSM || format == book::format::XLTX ||
           format == book::format::XLTM;
}

std::string parts_text(const SaveSummary& parts, Origin origin) {
    // What a new book has of its own counts as kept.
    if (origin == Origin::Made)
        return counted(parts.parts_kept + parts.parts_written, "part") + " written";
    std::string text;
    if (parts.parts_kept > 0) text += counted(parts.parts_kept, "part") + " kept, ";
    text += (text.empty() ? counted(parts.parts_written, "part") : grouped(parts.parts_written)) +
            " written";
    if (parts.parts_dropped > 0) text += ", " + grouped(parts.parts_dropped) + " dropped";
    return text;
}

/// Online the book knows without asking, and knows as well what the caller is an editor of.
bool may_write(const std::shared_ptr<ISheet>& sheet, const Range& range) {
    const OnlineSheet* const online = online_sheet(sheet);
    return online != nullptr ? online->may_write(range) : sheet->is_range_writeable(range);
}

} // namespace

const std::string& save_target(const BookOptions& options) {
    return options.output.empty() ? options.book.text() : options.output;
}

namespace {

/// The path that the name of a format is taken from.
const std::string& named_target(const BookOptions& options) {
    return options.output.empty() || options.output == kStream ? options.book.file()
                                                               : options.output;
}

/// By way of a file, since the library writes to nothing else.
void save_to_stream(const std::shared_ptr<IBook>& book, std::ostream& out) {
    const TemporaryFolder folder;
    const std::string file =
        folder.file("book." + unicode::to_utf8(book::to_string(book->format())));
    save_book(book, unicode::to_utf16(file));
    send_file(file, out);
}

} // namespace

std::shared_ptr<IBook> make_book(const BookLocation& location, std::size_t sheet_count) {
    const book::format format = location.format();
    if (location.is_file() && (!can_be_made(format) || !has_extension(location.text(), format)))
        throw CommandError(ExitCode::NotWritten,
                           location.text() + ": Such a book cannot be made; give it a name that "
                                             "ends with .xls, .xlsx, .xlsm, .xltx or .xltm.");
    return create_new_book(sheet_count, format, location.mode(), u"");
}

void check_target(const BookOptions& options) {
    const BookLocation& book = options.book;
    if (book.is_online() && !options.output.empty())
        throw CommandError(ExitCode::Usage, book.text() +
                                                ": A spreadsheet online is changed in place; leave "
                                                "--output out.");
    if (options.output.empty() && book.file() != book.text())
        throw CommandError(ExitCode::Usage, book.text() +
                                                ": A book from a stream cannot be changed in "
                                                "place; name a file with --output, or - for "
                                                "standard output.");
    if (!book.is_online() && !has_extension(named_target(options), book.format()))
        throw Exception(error_id::file_name_incompatible);
}

void check_sheet_name(const std::string& name, const BookLocation& location) {
    const std::u16string units = unicode::to_utf16(name);
    if (location.is_online()) {
        if (units.empty() || units.size() > kMaxOnlineSheetNameLength)
            throw Exception(error_id::google_sheet_name_invalid);
        return;
    }
    if (units.empty() || units.size() > kMaxSheetNameLength ||
        units.find_first_of(kForbiddenInSheetNames) != std::u16string::npos)
        throw Exception(error_id::sheet_name_invalid);
}

void check_unlocked(const std::shared_ptr<ISheet>& sheet, const Range& range,
                    const BookLocation& location) {
    if (may_write(sheet, range)) return;
    throw CommandError(ExitCode::NotWritten,
                       location.text() + ": " + place_text(sheet->name(), range) +
                           (location.is_online()
                                ? " is protected, and this account is not among its editors; ask "
                                  "the owner of the spreadsheet."
                                : " is protected; 'zxsheet sheet unprotect' lifts the "
                                  "protection."));
}

void check_done(const std::shared_ptr<IBook>& book, const BookOptions& options) {
    if (const auto failure = take_unreported_failure(book))
        throw command_error(error_id::write_failed, *failure, options);
}

std::string save_changes(const std::shared_ptr<IBook>& book, const BookOptions& options,
                         ChangeTools& tools, const std::string& done, Origin origin) {
    if (online_book(book) != nullptr) return options.book.text() + ": " + done; // saved already
    const std::string& target = save_target(options);
    tools.progress.set_text("Saving " + target);
    const bool is_stream = target == kStream;
    is_stream ? save_to_stream(book, tools.out) : save_book(book, unicode::to_utf16(target));
    if (is_stream) return "standard output: " + done + "; " + parts_text(last_save(book), origin);
    const bool has_parts = options.book.kind() != BookLocation::Kind::Application;
    if (!has_parts) return target + ": " + done; // the application counts none
    return target + ": " + done + "; " + parts_text(last_save(book), origin);
}

} // namespace zxsheet
