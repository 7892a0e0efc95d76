// SPDX-License-Identifier: Apache-2.0
//
// The workbook library: abstract books, sheets and formats, exactly the operations that the file
// back-end uses. Rows and columns are zero-based, `end_` bounds are one past the last. An operation
// that fails returns false or null, changes nothing and leaves its reason in `Book::error_kind` and
// `Book::error_message`. None throws, except std::bad_alloc; an operation of `Book` that it ends
// has failed with `ErrorKind::Memory`. One thread at a time per book.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/files.h"
#include "foundation/output_file.h"
#include "workbook/error_kind.h"

namespace workbook {

/// What a cell holds.
enum class CellKind {
    Empty = 0, ///< nothing; also every cell outside the used area
    Number = 1,
    String = 2,
    Boolean = 3,
    Blank = 4, ///< a format but no value
    Error = 5,
    StrictDate = 6 ///< an ISO 8601 cell (t="d", ECMA-376 part 1, 18.18.11)
};

/// How a number is shown, as far as its format decides about dates and times.
enum class NumberStyle {
    Number,
    Date,     ///< days, without a time
    Time,     ///< a time of day, without a date
    DateTime, ///< both
    Elapsed   ///< hours, minutes or seconds that are not cut at a day, such as [h]:mm
};

/// The cells of one row: first and last column, both inclusive.
struct RowOfCells {
    int row = 0;
    int first_column = 0;
    int last_column = 0;
};

/// A cell with a formula. The text is UTF-8 without the equals sign and lives until the visitor
/// returns.
struct FormulaCell {
    int row = 0;
    int column = 0;
    std::string_view text;
    bool has_result = true; ///< whether the file has a value for it
};
using FormulaVisitor = std::function<void(const FormulaCell&)>;

/// What keeps applications from reading a text as a formula, for people: `"=1+": something is
/// missing at the end, at character 4`. Empty for a formula that can be written. In UTF-8, without
/// the equals sign; English names, commas between arguments.
std::string formula_problem(std::string_view formula);

/// ST_SheetState (ECMA-376 part 1, 18.18.68).
enum class SheetState { Visible = 0, Hidden = 1, VeryHidden = 2 };

/// What a scan finds in a sheet. `end_` bounds are one past the last, all 0 without such a cell.
struct SheetScan {
    int first_row = 0, end_row = 0, first_column = 0, end_column = 0;
    int first_filled_row = 0, end_filled_row = 0, first_filled_column = 0, end_filled_column = 0;
    std::uint64_t cells = 0; ///< formatted blanks included
    std::uint64_t formulas = 0;
    std::uint64_t formulas_without_result = 0;
    SheetState state = SheetState::Visible;
    bool is_protected = false;
};

/// A defined name or a table whose cells are one rectangle, corners inclusive.
struct NamedCells {
    std::u16string name;
    int sheet = 0;            ///< index of the sheet that the cells are on
    std::optional<int> scope; ///< index of the sheet whose name it is; nullopt for the book's
    bool is_table = false;
    int first_row = 0, last_row = 0, first_column = 0, last_column = 0;
};

/// What is at an index of the book.
enum class SheetKind {
    Worksheet = 0, ///< also dialog and macro sheets, whose cells can be read
    Chart = 1,
    Unknown = 2 ///< nothing that the library knows; also every index out of range
};

/// A cell format. Handles belong to the book and live until the next load or the book's end.
class Format {
  public:
    /// Identifier of the number format: a built-in (ECMA-376 part 1, 18.8.30) or the file's own.
    virtual int num_format() const = 0;
    /// Sets the identifier of the number format.
    virtual void set_num_format(int identifier) = 0;
    /// Whether cells of this format are locked while their sheet is protected.
    virtual bool locked() const = 0;

  protected:
    ~Format() = default;
};

/// A worksheet. Handles belong to the book and live until the next load, the sheet's removal or the
/// book's end.
class Sheet {
  public:
    virtual std::u16string_view name() const = 0;
    virtual SheetState hidden() const = 0;
    virtual bool protect() const = 0;

    /// Outside the sheet's limits: `CellKind::Empty`.
    virtual CellKind cell_type(int row, int column) const = 0;
    /// True for a number cell whose format shows a date or a time.
    virtual bool is_date(int row, int column) const = 0;
    /// How the number of the cell is shown; `Number` for any other kind of cell.
    virtual NumberStyle number_style(int row, int column) const {
        return is_date(row, column) ? NumberStyle::DateTime : NumberStyle::Number;
    }

    /// The number of a number cell, the serial day number of a strict date (in the book's date
    /// system), 1 or 0 of a boolean cell; 0 for any other cell.
    virtual double read_num(int row, int column) const = 0;
    /// True for a boolean cell that holds true; false for any other cell.
    virtual bool read_bool(int row, int column) const = 0;
    /// The text of a string cell, or of an error cell ("#DIV/0!"); a null view for any other cell.
    /// Valid until the next call on the same book.
    virtual std::u16string_view read_str(int row, int column) const = 0;

    /// The format that the cell has or, when it does not exist, would show: its row's, else its
    /// column's. Null when none of them has one.
    virtual const Format* cell_format(int row, int column) const = 0;

    /// Bounds of the cells that exist, formatted blanks included; 0 for all four on an empty sheet.
    virtual int first_row() const = 0;
    virtual int end_row() const = 0;
    virtual int first_column() const = 0;
    virtual int end_column() const = 0;

    /// Bounds of the cells that have a value or a formula; 0 for all four when none has.
    virtual int first_filled_row() const = 0;
    virtual int end_filled_row() const = 0;
    virtual int first_filled_column() const = 0;
    virtual int end_filled_column() const = 0;

    /// The first row at or after `row` that has cells (of the loaded rows); nullopt after the last.
    virtual std::optional<RowOfCells> next_row_of_cells(int row) const {
        row = row < first_row() ? first_row() : row;
        if (row >= end_row()) return std::nullopt;
        return RowOfCells{row, first_column(), end_column() - 1};
    }
    /// Whether the engine knows the text of formulas.
    virtual bool knows_formulas() const { return false; }
    /// Cells of the loaded rows that had a formula and no value when the book was loaded.
    virtual std::uint64_t formulas_without_result() const { return 0; }
    /// Calls `visit` for every cell of rows `first_row` to `last_row` that had a formula when the
    /// book was loaded, in the file's order. Formulas that cells share come as each of them reads
    /// it. False when they cannot be read.
    virtual bool visit_formulas(int first_row, int last_row, const FormulaVisitor& visit) const {
        return static_cast<void>(first_row), static_cast<void>(last_row), static_cast<void>(visit),
               false;
    }

    /// Number of merged regions.
    virtual int merge_size() const = 0;
    /// The merged region `index` (zero-based, corners inclusive); false when there is none.
    virtual bool merge(int index, int& first_row, int& last_row, int& first_column,
                       int& last_column) const = 0;

    /// The cells that a defined name refers to, corners inclusive: first a name of this sheet,
    /// then one of the book that refers to this sheet. False for an unknown name, a name of another
    /// sheet's cells and a name that is not one rectangle. Names compare without regard to case.
    virtual bool named_range(std::u16string_view name, int& first_row, int& last_row,
                             int& first_column, int& last_column) const = 0;

    /// After `Book::load_partially`: reads what that load left in the file, if it has not been read
    /// yet. All reads do this when they need it and then return nothing where the file is damaged
    /// or has changed; these two say so. `need_tail` is for merged regions and protection,
    /// `need_rows` for the cells of rows `first_row` to `last_row` (inclusive). The bounds stay
    /// those of the rows that were loaded. True at once for any other load.
    virtual bool need_tail() const { return true; }
    virtual bool need_rows(int first_row, int last_row) const {
        return static_cast<void>(first_row), static_cast<void>(last_row), true;
    }

    // Changes. They are seen by the reads above at once and reach a file with `Book::save`.

    /// 1 to 31 UTF-16 units, none of :\/?*[], no apostrophe at either end, not the name of another
    /// sheet in whatever case. What refers to the sheet by name follows.
    virtual bool set_name(std::u16string_view name) = 0;
    /// Refuses to hide the last visible sheet: no application opens such a book.
    virtual bool set_hidden(SheetState state) = 0;
    /// Protection without a password and with the default options, or none at all.
    virtual bool set_protect(bool on) = 0;

    /// That cells of this rectangle (corners inclusive) are about to be written, so that room is
    /// made for them once. Changes nothing that can be seen.
    virtual void expect_cells(int first_row, int last_row, int first_column, int last_column) = 0;
    /// The four writes put a cell in the place of whatever was there, a formula included. `format`
    /// is one of this book's or null for none; outside the sheet's limits they fail. A number that
    /// is not finite fails. A string may be empty; lone surrogates and control characters are kept.
    virtual bool write_num(int row, int column, double value, const Format* format) = 0;
    virtual bool write_str(int row, int column, std::u16string_view text, const Format* format) = 0;
    virtual bool write_bool(int row, int column, bool value, const Format* format) = 0;
    virtual bool write_blank(int row, int column, const Format* format) = 0;
    /// Likewise a formula without a result: `Blank` until an application has computed it. In A1
    /// notation, UTF-8, without the equals sign. Fails for what applications do not read as a
    /// formula and where the engine cannot write any.
    virtual bool write_formula(int row, int column, std::string_view formula,
                               const Format* format) {
        return static_cast<void>(row), static_cast<void>(column), static_cast<void>(formula),
               static_cast<void>(format), false;
    }
    /// Removes the cells of a rectangle, values and formats; corners inclusive. False when it is
    /// not within the sheet's limits.
    virtual bool clear(int first_row, int last_row, int first_column, int last_column) = 0;
    /// Splits the merged region `index`; those after it move one down.
    virtual bool delete_merge(int index) = 0;

    /// In characters of the default font (ECMA-376 part 1, 18.3.1.13); the sheet's default for a
    /// column without a width of its own.
    virtual double column_width(int column) const = 0;
    /// 0 to 255.
    virtual bool set_column_width(int column, double width) = 0;
    /// Makes each column that has a text or number as wide as its widest one.
    virtual bool auto_fit_columns(int first_column, int last_column) = 0;

  protected:
    ~Sheet() = default;
};

/// Parts of the file that a save made.
struct SaveCounts {
    std::size_t kept = 0;    ///< taken over from the loaded file byte for byte
    std::size_t written = 0; ///< new or changed
    std::size_t dropped = 0; ///< of the loaded file, no longer there
};

/// What a book is loaded from: a path or an open file (`foundation::files::memory_file` for bytes
/// in memory); converts from either.
struct BookSource {
    template <class Path>
    requires std::is_convertible_v<const Path&, std::u16string_view>
    BookSource(const Path& file_path) : path(file_path) {}
    BookSource(std::unique_ptr<foundation::files::RandomAccessFile> open_file)
        : file(std::move(open_file)) {}

    std::u16string path; ///< empty for a file that the book keeps open as long as it needs it
    std::unique_ptr<foundation::files::RandomAccessFile> file; ///< null: the book opens `path`
};

/// A workbook. A creator below makes an empty one, without any sheet; a load replaces it by a
/// file's and invalidates every sheet and format handed out before.
class Book {
  public:
    virtual ~Book() = default;

    /// Loads the whole file. Its content decides about the format, not its name.
    virtual bool load(BookSource source) = 0;
    /// Loads the cells of one sheet; the other sheets keep their names, kinds and places. An index
    /// that does not exist loads the only sheet of a book with one sheet and fails for any other.
    virtual bool load_sheet(BookSource source, int sheet_index) = 0;
    /// As `load_sheet`, with the cells of rows `first_row` to `last_row` (inclusive) only; what was
    /// left in the file is read when a call needs it, see `Sheet::need_rows`.
    virtual bool load_partially(BookSource source, int sheet_index, int first_row,
                                int last_row) = 0;
    /// Loads names, kinds and states of the sheets, the date system and the defined names; no cell.
    virtual bool load_info(BookSource source) = 0;
    /// What the last load found missing and did without, one sentence in UTF-8 each.
    virtual std::vector<std::string> load_warnings() const { return {}; }

    virtual int sheet_count() const = 0;
    /// The worksheet at `index`; null for a chart sheet, an unknown sheet, a worksheet whose cells
    /// were not loaded and an index out of range.
    virtual Sheet* get_sheet(int index) = 0;
    /// A null view for an index out of range. Lives until the next load.
    virtual std::u16string_view get_sheet_name(int index) const = 0;
    virtual SheetKind sheet_type(int index) const = 0;

    /// Reads the worksheet at `index` once more from the file, whatever was loaded, and keeps no
    /// cell: memory does not grow with the sheet. Nullopt for any other sheet and when it cannot be
    /// read.
    virtual std::optional<SheetScan> scan_sheet(int index) {
        return static_cast<void>(index), std::nullopt;
    }
    /// The names and tables of the file in its order, without hidden ones and without names that
    /// are not one rectangle.
    virtual std::vector<NamedCells> named_cells() { return {}; }

    virtual int format_size() const = 0;
    /// Null for an index out of range.
    virtual Format* format(int index) = 0;
    /// Adds a format with number format 0; null when the book can hold no more.
    virtual Format* add_format() = 0;

    /// Whether serial dates count from 1904.
    virtual bool is_date_1904() const = 0;
    /// Changes the meaning of the dates that are there already.
    virtual bool set_date_1904(bool on) = 0;

    /// Inserts a sheet at `index` (`sheet_count` appends): an empty one, or a copy of `source`, a
    /// sheet of this book, with all that belongs to it. Null for a bad index or name (see
    /// `Sheet::set_name`).
    virtual Sheet* insert_sheet(int index, std::u16string_view name, const Sheet* source) = 0;
    /// Removes the sheet at `index`, whatever its kind, and what belongs to it alone. References to
    /// it become #REF!. Fails for the only sheet and the only visible one.
    virtual bool delete_sheet(int index) = 0;
    /// Moves the sheet at `from` so that it is at `to`. Handles and references stay valid.
    virtual bool move_sheet(int from, int to) = 0;

    /// Writes the book to a file, in whose place it steps when it is complete; until then, and when
    /// it fails, the old file stays as it is. The ending of the name (.xlsx, .xlsm, .xltx, .xltm in
    /// any case) decides which Open XML format the file claims to be. The book stays loaded and can
    /// be changed and saved again. Whatever was not changed, loaded or not, is kept. Cells in the
    /// header of a table that were written or cleared become different strings if they are not:
    /// applications accept nothing else.
    virtual bool save(std::u16string_view path) = 0;
    /// Writes the book to `out` and commits it. `extension` is what the ending of a name decides in
    /// the other overload ("xlsm"); where it is empty, the file claims what it claimed before.
    virtual bool save(foundation::files::OutputFile& out, std::u16string_view extension) = 0;
    /// What the last save that succeeded did; all 0 before.
    virtual SaveCounts last_save() const = 0;

    /// The kind of the last failure, `None` when there was none.
    virtual ErrorKind error_kind() const = 0;
    /// The platform's problem where the kind is `File` and the platform had one; else nullopt.
    virtual std::optional<foundation::files::FileProblem> file_problem() const = 0;
    /// The reason of the last failure in UTF-8, "ok" when there was none. Lives until the next.
    virtual const char* error_message() const = 0;
};

/// Creates a book for XLS files; null when memory is exhausted. New ones are BIFF8.
std::unique_ptr<Book> xlCreateBookW();

/// Creates a book for XLSX, XLSM, XLTX and XLTM files; null when memory is exhausted.
std::unique_ptr<Book> xlCreateXMLBookW();

} // namespace workbook
