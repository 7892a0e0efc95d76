// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet sheet ...`: adding, removing, renaming, moving, hiding and protecting sheets. Sheets
// whose cells do not matter are not loaded.
#include "foundation/unicode.h"
#include "zxsheet/book_access.h"
#include "zxsheet/failure.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
namespace unicode = foundation::unicode;

/// A book whose sheets are known by name, and one of them.
struct ListedSheet {
    std::shared_ptr<IBook> book;
    std::size_t index;
    std::u16string name;
};

ListedSheet list_sheet(const Options& options) {
    ListedSheet listed{open_sheet_list(options), 0, {}};
    check_target(options);
    listed.index = find_sheet(*listed.book, options.sheet);
    listed.name = sheet_name(*listed.book, listed.index);
    return listed;
}

/// The sheet itself, without its cells.
Selection open_sheet(const Options& options) {
    Selection selection = open_selection(options, Extent::NoCells);
    check_target(options);
    return selection;
}

/// The index that `--at` or `--to` means; `places` are there.
std::size_t wanted_index(const Options& options, std::size_t places) {
    if (*options.position <= places) return *options.position - 1;
    throw Failure(ExitCode::NotFound, options.book + ": There is no place " +
                                          grouped(*options.position) +
                                          " for a sheet; the last is " + grouped(places) + ".");
}

std::string set_visibility(const Options& options, ChangeTools& tools, sheet::hidden state,
                           const std::string& adjective) {
    const Selection selection = open_sheet(options);
    selection.sheet->hidden(state);
    return save_changes(selection.book, options, tools,
                        "Made sheet " + quoted_sheet(selection.sheet_name) + ' ' + adjective);
}

std::string set_protection(const Options& options, ChangeTools& tools, bool on) {
    const Selection selection = open_sheet(options);
    tools.log.forget();
    // Protection that is there may have a password, which must stay.
    const bool changes = selection.sheet->is_protected() != on;
    if (changes) selection.sheet->set_protected(on);
    if (selection.sheet->is_protected() != on) check_log(options, tools);
    const std::string name = quoted_sheet(selection.sheet_name);
    const std::string unchanged =
        "Sheet " + name + (on ? " was protected already" : " was not protected");
    const std::string changed = (on ? "Protected sheet " : "Unprotected sheet ") + name;
    return save_changes(selection.book, options, tools, changes ? changed : unchanged);
}

} // namespace

std::string run_sheet_add(const Options& options, ChangeTools& tools) {
    check_sheet_name(options.new_name);
    std::shared_ptr<IBook> book;
    std::u16string source;
    if (options.copied_sheet.empty()) {
        book = open_sheet_list(options);
    } else {
        Options source_options = options;
        source_options.sheet = options.copied_sheet;
        const Selection selection = open_selection(source_options, Extent::WholeSheet);
        book = selection.book;
        source = selection.sheet_name;
    }
    check_target(options);
    const std::size_t count = book->num_sheets();
    const std::size_t index = options.position ? wanted_index(options, count + 1) : count;
    const std::u16string name = unicode::to_utf16(options.new_name);
    add_sheet(book, index, name, source);
    std::string done = "Added sheet " + quoted_sheet(name) + " as number " + grouped(index + 1);
    if (!source.empty()) done += ", a copy of " + quoted_sheet(source);
    return save_changes(book, options, tools, done);
}

std::string run_sheet_remove(const Options& options, ChangeTools& tools) {
    const ListedSheet listed = list_sheet(options);
    listed.book->remove_sheet(listed.index);
    return save_changes(listed.book, options, tools, "Removed sheet " + quoted_sheet(listed.name));
}

std::string run_sheet_rename(const Options& options, ChangeTools& tools) {
    check_sheet_name(options.new_name);
    const Selection selection = open_sheet(options);
    const std::u16string name = unicode::to_utf16(options.new_name);
    tools.log.forget();
    selection.sheet->name(name);
    // The interface has no answer; the name itself tells.
    if (selection.sheet->name() != name) {
        check_log(options, tools);
        throw Exception(error_id::sheet_name_invalid);
    }
    return save_changes(selection.book, options, tools,
                        "Renamed sheet " + quoted_sheet(selection.sheet_name) + " to " +
                            quoted_sheet(name));
}

std::string run_sheet_move(const Options& options, ChangeTools& tools) {
    const ListedSheet listed = list_sheet(options);
    const std::size_t index = wanted_index(options, listed.book->num_sheets());
    reorder_sheet(listed.book, listed.index, index);
    return save_changes(listed.book, options, tools,
                        "Moved sheet " + quoted_sheet(listed.name) + " to place " +
                            grouped(index + 1));
}

std::string run_sheet_hide(const Options& options, ChangeTools& tools) {
    const auto state = options.very_hidden ? sheet::hidden::very_hidden : sheet::hidden::hidden;
    return set_visibility(options, tools, state, options.very_hidden ? "very hidden" : "hidden");
}

std::string run_sheet_show(const Options& options, ChangeTools& tools) {
    return set_visibility(options, tools, sheet::hidden::visible, "visible");
}

std::string run_sheet_protect(const Options& options, ChangeTools& tools) {
    return set_protection(options, tools, true);
}

std::string run_sheet_unprotect(const Options& options, ChangeTools& tools) {
    return set_protection(options, tools, false);
}

} // namespace zxsheet
