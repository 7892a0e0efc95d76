// SPDX-License-Identifier: Apache-2.0
//
// What all commands that change a book have in common.
#include "zxsheet/save_book.h"

#include <cctype>
#include <filesystem>

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
    return unicode::equal_ignoring_case(unicode::to_utf16(lower_extension(path)),
                                        u"." + book::to_string(format));
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

/// The path that the name of a format is taken from.
const std::string& named_target(const BookOptions& options) {
    return options.output.empty() || options.output == kStream ? options.book.file()
                                                               : options.output;
}

/// By way of a file, since the library writes to nothing else.
void save_to_stream(const std::shared_ptr<IBook>& book, std::ostream& out) {
    TemporaryFolder folder;
    const std::string file =
        folder.file("book." + unicode::to_utf8(book::to_string(book->format())));
    save_book(book, unicode::to_utf16(file));
    send_file(file, out);
}

} // namespace

const std::string& save_target(const BookOptions& options) {
    return options.output.empty() ? options.book.text() : options.output;
}

void refuse_own_file(const BookLocation& book, const std::string& output) {
    std::error_code ignored;
    if (std::filesystem::equivalent(book.path(), native_path(output), ignored))
        throw CommandError(ExitCode::Usage, output + ": The output would replace the book itself.");
}

void refuse_existing(const BookLocation& book) {
    std::error_code ignored;
    if (book.is_online() || !std::filesystem::exists(book.path(), ignored)) return;
    throw CommandError(ExitCode::NotWritten, book.text() +
                                                 ": There is such a file already; 'zxsheet new "
                                                 "--force' replaces it.");
}

bool has_book_name(const std::string& file) {
    const book::format format = BookLocation(file).format();
    return format != book::format::CSV && has_extension(file, format);
}

bool can_be_made(const BookLocation& location) {
    if (!location.is_file()) return true;
    const book::format format = location.format();
    const bool is_writeable = format == book::format::XLS || format == book::format::XLSX ||
                              format == book::format::XLSM || format == book::format::XLTX ||
                              format == book::format::XLTM;
    return is_writeable && has_extension(location.text(), format);
}

std::shared_ptr<IBook> make_book(const BookLocation& location, std::size_t sheet_count) {
    if (can_be_made(location))
        return create_new_book(sheet_count, location.format(), location.mode(), u"");
    throw CommandError(ExitCode::NotWritten,
                       location.text() + ": Such a book cannot be made; give it a name that ends "
                                         "with .xls, .xlsx, .xlsm, .xltx or .xltm.");
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
    if (book.is_online() || has_extension(named_target(options), book.format())) return;
    std::string ending = unicode::to_utf8(book::to_string(book.format()));
    for (char& c : ending)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    throw CommandError(ExitCode::NotWritten,
                       save_target(options) + ": The name must end with ." + ending +
                           ", as the book's format asks; 'zxsheet convert' makes other formats.");
}

bool is_sheet_name(std::u16string_view name, const BookLocation& location) {
    if (location.is_online()) return !name.empty() && name.size() <= kMaxOnlineSheetNameLength;
    return !name.empty() && name.size() <= kMaxSheetNameLength &&
           name.find_first_of(kForbiddenInSheetNames) == name.npos;
}

void check_sheet_name(const std::string& name, const BookLocation& location) {
    if (is_sheet_name(unicode::to_utf16(name), location)) return;
    throw CommandError(ExitCode::Usage,
                       location.text() + ": A sheet cannot be named '" + name + "': names have " +
                           (location.is_online()
                                ? "1 to 100 characters."
                                : "1 to 31 characters, none of them : \\ / ? * [ or ]."));
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
    tools.progress.set_text("Saving " + output_name(target));
    target == kStream ? save_to_stream(book, tools.out)
                      : save_book(book, unicode::to_utf16(target));
    // The application counts none.
    const bool has_parts = options.book.kind() != BookLocation::Kind::Application;
    return output_name(target) + ": " + done +
           (has_parts ? "; " + parts_text(last_save(book), origin) : "");
}

} // namespace zxsheet
