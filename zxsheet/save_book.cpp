// SPDX-License-Identifier: Apache-2.0
//
// What all commands that change a book have in common.
#include "zxsheet/save_book.h"

#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/failure.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
namespace unicode = foundation::unicode;

constexpr std::u16string_view kForbiddenInSheetNames = u":\\/?*[]";
constexpr std::size_t kMaxSheetNameLength = 31;

bool has_ending(const std::string& path, book::format format) {
    const std::u8string ending = native_path(path).extension().u8string();
    const std::u16string dotted = unicode::to_utf16(std::string(ending.begin(), ending.end()));
    return unicode::equal_ignoring_case(dotted, u"." + book::to_string(format));
}

bool can_be_made(book::format format) {
    return format == book::format::XLSX || format == book::format::XLSM ||
           format == book::format::XLTX || format == book::format::XLTM;
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

} // namespace

const std::string& target_of(const Options& options) {
    return options.output.empty() ? options.book : options.output;
}

std::shared_ptr<IBook> make_book(const Options& options, std::size_t sheet_count) {
    const book::format format = format_of(options);
    const book::interactive mode = mode_of(options);
    if (mode == book::interactive::file &&
        (!can_be_made(format) || !has_ending(options.book, format)))
        throw Failure(ExitCode::NotWritten,
                      options.book + ": Such a book cannot be made; give it a name that ends with "
                                     ".xlsx, .xlsm, .xltx or .xltm.");
    return create_new_book(sheet_count, format, mode, u"");
}

void check_target(const Options& options) {
    if (mode_of(options) == book::interactive::file &&
        !has_ending(target_of(options), format_of(options)))
        throw Exception(error_id::file_name_incompatible);
}

void check_sheet_name(const std::string& name) {
    const std::u16string units = unicode::to_utf16(name);
    if (units.empty() || units.size() > kMaxSheetNameLength ||
        units.find_first_of(kForbiddenInSheetNames) != std::u16string::npos)
        throw Exception(error_id::sheet_name_invalid);
}

void check_unlocked(ISheet& sheet, const Range& range, const Options& options) {
    if (sheet.is_range_writeable(range)) return;
    throw Failure(ExitCode::NotWritten, options.book + ": " + place_text(sheet.name(), range) +
                                            " is protected; 'zxsheet sheet unprotect' lifts the "
                                            "protection.");
}

void check_log(const Options& options, const ChangeTools& tools) {
    const std::string cause = tools.log.cause();
    if (!cause.empty())
        throw Failure(ExitCode::NotWritten, options.book + ": " + as_sentence(cause));
}

std::string save_changes(const std::shared_ptr<IBook>& book, const Options& options,
                         ChangeTools& tools, const std::string& done, Origin origin) {
    const std::string& target = target_of(options);
    tools.progress.set_text("Saving " + target);
    tools.log.forget();
    save_book(book, unicode::to_utf16(target));
    return target + ": " + done + "; " + parts_text(last_save(book), origin);
}

} // namespace zxsheet
