// SPDX-License-Identifier: Apache-2.0
//
// Arguments of the commands that make and change books.
#include "zxsheet/arguments.h"

namespace zxsheet {
namespace {

constexpr int kMaxSheets = 65'535;

/// What is the same for the commands that change a book.
class Commands {
  public:
    Commands(Options& options, ChosenCommand& chosen) : options_(options), chosen_(chosen) {}

    CLI::App& add(CLI::App& parent, const char* name, const char* what,
                  std::string (*function)(const Options&, ChangeTools&), const char* example) {
        CLI::App* added = parent.add_subcommand(name, what);
        added->callback([&chosen = chosen_, function] { chosen.change = function; });
        added->footer(std::string("Example: zxsheet ") + example);
        add_book(*added, options_);
        return *added;
    }

    void add_output(CLI::App& command) {
        command
            .add_option("-o,--output", options_.output,
                        "Save to FILE, of the same format, instead of BOOK")
            ->option_text("FILE");
    }

    /// A command that takes a sheet by position.
    CLI::App& add_for_sheet(CLI::App& parent, const char* name, const char* what,
                            std::string (*function)(const Options&, ChangeTools&),
                            const char* example) {
        CLI::App& command = add(parent, name, what, function, example);
        command.add_option("SHEET", options_.sheet, "Name of the sheet, or its number from 1")
            ->required()
            ->option_text(" ");
        add_output(command);
        return command;
    }

    /// A command that takes a sheet and a range by options.
    CLI::App& add_for_range(CLI::App& parent, const char* name, const char* what,
                            std::string (*function)(const Options&, ChangeTools&),
                            const char* example) {
        CLI::App& command = add(parent, name, what, function, example);
        command
            .add_option("-s,--sheet", options_.sheet,
                        "Name of the sheet, or its number from 1 (default: the first worksheet)")
            ->option_text("SHEET");
        command.add_option("-r,--range", options_.range, "A1:D20, B3, A:C, 2:10 or a defined name")
            ->option_text("RANGE");
        add_output(command);
        return command;
    }

    void add_position(CLI::App& command, const char* name, const char* what, bool is_required) {
        command.add_option(name, options_.position, what)
            ->check(CLI::Range(1, kMaxSheets))
            ->required(is_required)
            ->option_text("N");
    }

    Options& options() { return options_; }

  private:
    Options& options_;
    ChosenCommand& chosen_;
};

void add_new(CLI::App& app, Commands& commands) {
    CLI::App& command = commands.add(app, "new", "Make a book of empty sheets", run_new,
                                     "new book.xlsx --sheets 3");
    command.add_option("--sheets", commands.options().sheet_count, "Number of sheets (default: 1)")
        ->check(CLI::Range(1, kMaxSheets))
        ->option_text("N");
    command.add_flag("--force", commands.options().force, "Replace a file that is there");
}

constexpr const char* kWriteHelp =
    "Fields become numbers (12, -2.5, .5, 1e3), dates (2024-03-01, 2024-03-01T13:05:00) and\n"
    "true or false, also when they are quoted; empty ones leave the cell empty. What would lose\n"
    "something stays text: leading zeros and plus signs, whole numbers of more than 15 digits,\n"
    "1,234 and 1,5, surrounding blanks. CSV may have semicolons instead of commas, and UTF-16.\n"
    "JSON is what 'zxsheet read --to json' prints; its sheet and range count unless -s and -r are\n"
    "given, and its errors become text.\n\n"
    "Example: zxsheet write book.xlsx -s Data -r B2 data.csv";

void add_write(CLI::App& app, Commands& commands) {
    Options& options = commands.options();
    CLI::App& command =
        commands.add(app, "write", "Write data into a new or existing book", run_write, "");
    command.footer(kWriteHelp);
    command.add_option("FILE", options.input, "The data; standard input when missing or -")
        ->option_text(" ");
    command
        .add_option("-s,--sheet", options.sheet,
                    "Name of the sheet, made if there is none, or its number from 1\n"
                    "(default: the first worksheet)")
        ->option_text("SHEET");
    command
        .add_option("-r,--range", options.range,
                    "First cell (default: A1), or a range that the data must fit into")
        ->option_text("CELL");
    command
        .add_option("--from", options.from, "csv, tsv or json (default: as FILE ends, else csv)")
        ->transform(one_of<DataFormat>(
            "FORMAT",
            {{"csv", DataFormat::Csv}, {"tsv", DataFormat::Tsv}, {"json", DataFormat::Json}}))
        ->option_text("FORMAT");
    command.add_flag("--text", options.as_text, "Write every field of CSV and TSV as text");
    command.add_flag("--keep-format", options.keep_format, "Cells keep the formats that they have");
    commands.add_output(command);
}

void add_ranges(CLI::App& app, Commands& commands) {
    commands
        .add_for_range(app, "clear", "Empty the cells of a range", run_clear,
                       "clear book.xlsx -s Data -r A2:D20")
        .get_option("--range")
        ->required();
    commands
        .add_for_range(app, "unmerge", "Split the merged cells in a range", run_unmerge,
                       "unmerge book.xlsx -r A1:D1")
        .get_option("--range")
        ->required();
    commands.add_for_range(app, "autofit",
                           "Make columns as wide as their contents (default: all used)",
                           run_autofit, "autofit book.xlsx -r A:D");
}

void add_sheet_commands(CLI::App& app, Commands& commands) {
    Options& options = commands.options();
    CLI::App& sheet = *app.add_subcommand("sheet", "Add, remove and change sheets");
    sheet.require_subcommand(1);
    CLI::App& add = commands.add(sheet, "add", "Add an empty sheet or a copy of one", run_sheet_add,
                                 "sheet add book.xlsx Results --at 1");
    add.add_option("NAME", options.new_name, "Name of the new sheet")->required()->option_text(" ");
    commands.add_position(add, "--at", "Its place from 1 (default: the end)", false);
    add.add_option("--copy", options.copied_sheet, "Copy this sheet")->option_text("SHEET");
    commands.add_output(add);
    commands.add_for_sheet(sheet, "remove", "Remove a sheet", run_sheet_remove,
                           "sheet remove book.xlsx Results");
    commands
        .add_for_sheet(sheet, "rename", "Rename a sheet", run_sheet_rename,
                       "sheet rename book.xlsx Sheet1 Data")
        .add_option("NAME", options.new_name, "The new name")
        ->required()
        ->option_text(" ");
    CLI::App& move = commands.add_for_sheet(sheet, "move", "Move a sheet", run_sheet_move,
                                            "sheet move book.xlsx Results --to 1");
    commands.add_position(move, "--to", "Its new place, from 1", true);
    commands
        .add_for_sheet(sheet, "hide", "Hide a sheet", run_sheet_hide,
                       "sheet hide book.xlsx Results")
        .add_flag("--very", options.very_hidden, "So that a user cannot show it again");
    commands.add_for_sheet(sheet, "show", "Make a hidden sheet visible", run_sheet_show,
                           "sheet show book.xlsx Results");
    commands.add_for_sheet(sheet, "protect", "Protect a sheet, without a password",
                           run_sheet_protect, "sheet protect book.xlsx Results");
    commands.add_for_sheet(sheet, "unprotect", "Lift the protection of a sheet",
                           run_sheet_unprotect, "sheet unprotect book.xlsx Results");
}

} // namespace

void add_changing_commands(CLI::App& app, Options& options, ChosenCommand& chosen) {
    Commands commands(options, chosen);
    add_new(app, commands);
    add_write(app, commands);
    add_sheet_commands(app, commands);
    add_ranges(app, commands);
}

} // namespace zxsheet
