// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet sheet ...`: adding, removing, renaming, moving, hiding and protecting sheets. Sheets
// whose cells do not matter are not loaded.
#include "foundation/unicode.h"
#include "spreadsheet/online.h"
#include "zxsheet/book_access.h"
#include "zxsheet/command_error.h"
#include "zxsheet/command_table.h"
#include "zxsheet/save_book.h"
#include "zxsheet/wording.h"

namespace zxsheet {
namespace {

using namespace spreadsheet;
namespace unicode = foundation::unicode;

struct SheetOptions : BookOptions {
    std::string sheet;
};

struct AddOptions : BookOptions {
    std::string name;
    std::optional<std::size_t> position; ///< from 1
    std::string copied_sheet;            ///< empty for a new, empty sheet
};

struct RenameOptions : SheetOptions {
    std::string new_name;
};

struct MoveOptions : SheetOptions {
    std::optional<std::size_t> position; ///< from 1
};

struct HideOptions : SheetOptions {
    bool very_hidden = false;
};

/// A book whose sheets are known by name, and one of them.
struct ListedSheet {
    std::shared_ptr<IBook> book;
    std::size_t index;
    std::u16string name;
};

ListedSheet list_sheet(const SheetOptions& options) {
    ListedSheet listed{open_sheet_list(options.book), 0, {}};
    check_target(options);
    listed.index = find_sheet(listed.book, options.book, options.sheet);
    listed.name = sheet_name(*listed.book, listed.index);
    return listed;
}

/// The sheet itself, without its cells.
Selection open_sheet(const SheetOptions& options) {
    Selection selection = open_selection({options.book, options.sheet}, Extent::NoCells);
    check_target(options);
    return selection;
}

/// The service says so as well, but after the request and with the name cut.
void check_name_is_free(const IBook& book, const std::string& name, const BookLocation& location,
                        std::optional<std::size_t> own_index = {}) {
    if (!location.is_online()) return;
    const auto index = find_sheet_name(book, unicode::to_utf16(name));
    if (!index || index == own_index) return;
    throw CommandError(ExitCode::NotWritten,
                       location.text() + ": There is a sheet " +
                           quoted_sheet(sheet_name(book, *index)) +
                           " already; names differ by more than upper and lower case.");
}

/// The index that `--at` or `--to` means; there are `places`.
std::size_t wanted_index(std::size_t position, std::size_t places, const BookLocation& location) {
    if (position <= places) return position - 1;
    throw CommandError(ExitCode::NotFound, location.text() + ": There is no place " +
                                               grouped(position) + " for a sheet; the last is " +
                                               grouped(places) + ".");
}

std::string set_visibility(const SheetOptions& options, ChangeTools& tools, sheet::hidden state,
                           const std::string& adjective) {
    const Selection selection = open_sheet(options);
    if (OnlineSheet* const online = online_sheet(selection.sheet); online != nullptr) {
        if (state == sheet::hidden::very_hidden)
            throw CommandError(ExitCode::Usage, options.book.text() +
                                                    ": A sheet online is hidden or visible; leave "
                                                    "--very out.");
        online->set_hidden(state == sheet::hidden::hidden);
    } else {
        selection.sheet->hidden(state);
    }
    if (selection.sheet->hidden() != state) throw Exception(error_id::hidden_state_not_set);
    return save_changes(selection.book, options, tools,
                        "Made sheet " + quoted_sheet(selection.sheet_name) + ' ' + adjective);
}

std::string set_protection(const SheetOptions& options, ChangeTools& tools, bool on) {
    const Selection selection = open_sheet(options);
    // Protection that exists may have a password, which must stay.
    // An application does not say; it is asked to, whatever there is.
    const bool changes = selection.book->is_interactive() || selection.sheet->is_protected() != on;
    if (changes) selection.sheet->set_protected(on);
    check_done(selection.book, options);
    const std::string name = quoted_sheet(selection.sheet_name);
    const std::string unchanged =
        "Sheet " + name + (on ? " was protected already" : " was not protected");
    const std::string changed = (on ? "Protected sheet " : "Unprotected sheet ") + name;
    return save_changes(selection.book, options, tools, changes ? changed : unchanged);
}

std::string run_add(const AddOptions& options, ChangeTools& tools) {
    check_sheet_name(options.name, options.book);
    std::shared_ptr<IBook> book;
    std::u16string source;
    std::size_t source_index = 0;
    if (options.copied_sheet.empty()) {
        book = open_sheet_list(options.book);
    } else {
        const Selection selection =
            open_selection({options.book, options.copied_sheet},
                           options.book.is_online() ? Extent::NoCells : Extent::WholeSheet);
        book = selection.book;
        source = selection.sheet_name;
        source_index = selection.sheet_index;
    }
    check_target(options);
    const std::size_t count = book->num_sheets();
    const std::size_t index =
        options.position ? wanted_index(*options.position, count + 1, options.book) : count;
    const std::u16string name = unicode::to_utf16(options.name);
    check_name_is_free(*book, options.name, options.book);
    if (OnlineBook* const online = online_book(book); online != nullptr && !source.empty())
        online->copy_sheet(source_index, index, name);
    else
        add_sheet(book, index, name, source);
    std::string done = "Added sheet " + quoted_sheet(name) + " as number " + grouped(index + 1);
    if (!source.empty()) done += ", a copy of " + quoted_sheet(source);
    return save_changes(book, options, tools, done);
}

std::string run_remove(const SheetOptions& options, ChangeTools& tools) {
    const ListedSheet listed = list_sheet(options);
    listed.book->remove_sheet(listed.index);
    return save_changes(listed.book, options, tools, "Removed sheet " + quoted_sheet(listed.name));
}

std::string run_rename(const RenameOptions& options, ChangeTools& tools) {
    check_sheet_name(options.new_name, options.book);
    const Selection selection = open_sheet(options);
    const std::u16string name = unicode::to_utf16(options.new_name);
    check_name_is_free(*selection.book, options.new_name, options.book, selection.sheet_index);
    selection.sheet->name(name);
    check_done(selection.book, options);
    if (selection.sheet->name() != name) throw Exception(error_id::sheet_name_invalid);
    return save_changes(selection.book, options, tools,
                        "Renamed sheet " + quoted_sheet(selection.sheet_name) + " to " +
                            quoted_sheet(name));
}

std::string run_move(const MoveOptions& options, ChangeTools& tools) {
    const ListedSheet listed = list_sheet(options);
    const std::size_t index =
        wanted_index(*options.position, listed.book->num_sheets(), options.book);
    reorder_sheet(listed.book, listed.index, index);
    return save_changes(listed.book, options, tools,
                        "Moved sheet " + quoted_sheet(listed.name) + " to place " +
                            grouped(index + 1));
}

std::string run_hide(const HideOptions& options, ChangeTools& tools) {
    const auto state = options.very_hidden ? sheet::hidden::very_hidden : sheet::hidden::hidden;
    return set_visibility(options, tools, state, options.very_hidden ? "very hidden" : "hidden");
}

std::string run_show(const SheetOptions& options, ChangeTools& tools) {
    return set_visibility(options, tools, sheet::hidden::visible, "visible");
}

std::string run_protect(const SheetOptions& options, ChangeTools& tools) {
    return set_protection(options, tools, true);
}

std::string run_unprotect(const SheetOptions& options, ChangeTools& tools) {
    return set_protection(options, tools, false);
}

/// A command for one sheet; `more` is between SHEET and the output.
template <class Options>
Command sheet_command(const char* name, const char* summary,
                      const std::shared_ptr<Options>& options, const std::vector<Parameter>& more,
                      std::string (*run)(const Options&, ChangeTools&), const char* example) {
    std::vector<Parameter> parameters{
        Parameter{"SHEET", "", "Name of the sheet, or its number from 1", &options->sheet}
            .required(),
        save_option(options->output)};
    parameters.insert(parameters.end(), more.begin(), more.end());
    return changing_command("sheet", name, summary, options, std::move(parameters), run, example);
}

Command add_command() {
    const auto options = std::make_shared<AddOptions>();
    return changing_command(
        "sheet", "add", "Add an empty sheet or a copy of one", options,
        {Parameter{"NAME", "", "Name of the new sheet", &options->name}.required(),
         {"--at", "N", "Its place from 1 (default: the end)", &options->position, false,
          kMaxSheets},
         {"--copy", "SHEET", "Copy this sheet", &options->copied_sheet},
         save_option(options->output)},
        run_add, "sheet add book.xlsx Results --at 1");
}

Command rename_command() {
    const auto options = std::make_shared<RenameOptions>();
    return sheet_command("rename", "Rename a sheet", options,
                         {Parameter{"NAME", "", "The new name", &options->new_name}.required()},
                         run_rename, "sheet rename book.xlsx Sheet1 Data");
}

Command move_command() {
    const auto options = std::make_shared<MoveOptions>();
    return sheet_command(
        "move", "Move a sheet", options,
        {{"--to", "N", "Its new place, from 1", &options->position, true, kMaxSheets}}, run_move,
        "sheet move book.xlsx Results --to 1");
}

Command hide_command() {
    const auto options = std::make_shared<HideOptions>();
    return sheet_command(
        "hide", "Hide a sheet", options,
        {{"--very", "", "So that a user cannot show it again", &options->very_hidden}}, run_hide,
        "sheet hide book.xlsx Results");
}

Command simple_command(const char* name, const char* summary,
                       std::string (*run)(const SheetOptions&, ChangeTools&), const char* example) {
    return sheet_command(name, summary, std::make_shared<SheetOptions>(), {}, run, example);
}

} // namespace

std::vector<Command> sheet_commands() {
    return {
        add_command(),
        simple_command("remove", "Remove a sheet", run_remove, "sheet remove book.xlsx Results"),
        rename_command(),
        move_command(),
        hide_command(),
        simple_command("show", "Make a hidden sheet visible", run_show,
                       "sheet show book.xlsx Results"),
        simple_command("protect", "Protect a sheet, without a password", run_protect,
                       "sheet protect book.xlsx Results"),
        simple_command("unprotect", "Lift the protection of a sheet", run_unprotect,
                       "sheet unprotect book.xlsx Results")};
}

} // namespace zxsheet
