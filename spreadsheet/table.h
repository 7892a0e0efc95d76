// SPDX-License-Identifier: Apache-2.0
//
// Tables: the cells of a range as named columns, each with one type and its values in contiguous
// memory, laid out as Apache Arrow's columnar format has them, so that a numeric environment takes
// them over without a copy. Strings are UTF-8; a lone surrogate of a workbook becomes U+FFFD.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/export.h"
#include "spreadsheet/book.h"
#include "spreadsheet/cell_exchange.h"
#include "spreadsheet/range.h"
#include "spreadsheet/sheet.h"

namespace spreadsheet {

/// What the values of a column are.
enum class ColumnType : std::uint8_t {
    number = 0,
    boolean = 1,
    date = 2, ///< a date with or without a time
    text = 3,
    mixed = 4, ///< each cell keeps its own type
};

/// What `Column::microseconds` holds for a missing date.
inline constexpr std::int64_t kMissingDate = std::numeric_limits<std::int64_t>::min();
/// What `Column::codes` holds for a missing text.
inline constexpr std::int32_t kMissingText = -1;

/// UTF-8 strings one after the other: string i is bytes `offsets[i]` to `offsets[i + 1]`.
class StringList {
  public:
    std::size_t size() const { return offsets.size() - 1; }
    std::string_view operator[](std::size_t index) const {
        const auto begin = static_cast<std::size_t>(offsets[index]);
        return {bytes.data() + begin, static_cast<std::size_t>(offsets[index + 1]) - begin};
    }
    /// `Exception` 18 (kind Limit) when the bytes would exceed 2^31 - 1.
    ZX_API void add(std::string_view text);

    std::vector<std::int32_t> offsets{0};
    std::string bytes{};
};

/// A column of a table. Of the vectors of values, those that its type uses have one element per
/// row; the others are empty.
struct Column {
    std::string name{};
    ColumnType type = ColumnType::number;
    /// number: the value, NaN where it is missing. mixed: of a number its value, of a date the
    /// serial number of the 1900 system, of a boolean 0 or 1, else NaN.
    std::vector<double> numbers{};
    /// boolean: 0 or 1; 0 where it is missing.
    std::vector<std::uint8_t> booleans{};
    /// date: microseconds since 1970-01-01T00:00, without a time zone; `kMissingDate`.
    std::vector<std::int64_t> microseconds{};
    /// text, and the texts of mixed: index into `strings`; `kMissingText` where there is no text.
    std::vector<std::int32_t> codes{};
    /// Distinct, in the order of their first cell.
    StringList strings{};
    /// mixed: number, text, date or boolean; empty where the value is missing.
    std::vector<cell_type> kinds{};
    /// One bit per row, the first in the least significant bit of the first byte: 1 where there is
    /// a value. Bits past the last row are 0.
    std::vector<std::uint8_t> validity{};
    std::size_t null_count = 0; ///< missing values

    bool has_value(std::size_t row) const { return ((validity[row / 8] >> (row % 8)) & 1U) != 0; }
};

/// What became of cells that a column cannot have as they are.
enum class Coercion : std::uint8_t {
    error_dropped,     ///< an error cell, such as `#DIV/0!`, is missing
    converted,         ///< a value of another type was converted to the type asked for
    not_convertible,   ///< a value that is not of the type asked for is missing
    no_such_date,      ///< serial 60 is 1900-02-29, a day that never was: read as 1900-02-28
    date_out_of_range, ///< a serial number outside the years 1 to 9999 is missing
};

/// Cells of a column that were changed in the same way.
struct CoercedCells {
    std::size_t column = 0; ///< index in `Table::columns`
    Coercion coercion = Coercion::converted;
    std::size_t count = 0;
    Cell first{}; ///< on the sheet
};

struct Table {
    std::vector<Column> columns{};
    std::size_t rows = 0; ///< without the header
    /// The cells that were read, the header among them; with last indices before the first where
    /// the sheet has no value.
    Range range{0, 0, -1, -1};
    std::vector<CoercedCells> coerced{};
};

/// How merged cells are read; see `MergedCellColumnRule`.
struct MergedCellRules {
    MergedCellColumnRule columns = MergedCellColumnRule::first;
    MergedCellRowRule rows = MergedCellRowRule::first;
    bool operator==(const MergedCellRules&) const = default;
};

/// Asked between steps of a long operation; true ends it. Copied freely; the context stays the
/// caller's.
struct InterruptCheck {
    void* context = nullptr;
    bool (*is_interrupted)(void* context) = nullptr;
};

inline constexpr int kNoHeader = -1;

/// How a range becomes a table. By default nothing of the sheet is lost.
struct TableOptions {
    /// The row of the range, from 0, that has the names; the rows above it are not read. With
    /// `kNoHeader` columns are named "column1", "column2" ...
    int header_row = 0;
    bool drop_blank_rows = false;
    bool drop_blank_columns = false;
    /// Texts that stand for a missing value, compared as a whole and with case. One that is a
    /// number, such as "-999", stands for that number too.
    std::vector<std::string> missing{};
    /// Types of columns by name. Other columns get the type that all their values have, or `mixed`.
    std::vector<std::pair<std::string, ColumnType>> types{};
    /// Without rules each cell is read as it is stored, and only a region's first cell has a value
    /// as a rule. Rules need a back-end that knows merged regions (`Exception` 40, 43). With `omit`
    /// the rows and columns that the rules leave out are not in the table.
    std::optional<MergedCellRules> merged{};
    /// The most cells that a range may have; `Exception` 24 (kind Limit) beyond.
    std::int64_t max_cells = std::int64_t{1} << 28;
    InterruptCheck interrupt{};
};

/// Reads a range as a table. All rows decide about a type. Throws what `ISheet::cell_types` and
/// `read` throw; 24 for too many cells; 12 (kind Missing) when a name in `options.types` or
/// `options.header_row` is not in the range; 18 when interrupted.
///
///     const Table table = read_table(*book->sheet(0), parse(u"A1:C9"), {});
///     for (const Column& column : table.columns) plot(column.name, column.numbers);
ZX_API Table read_table(ISheet& sheet, Range range, const TableOptions& options);

/// As above, over all cells of the sheet that have a value (`filled_range`).
ZX_API Table read_table(ISheet& sheet, const TableOptions& options);

/// As above by names: `sheet` is a name, or empty for the first worksheet; `range` is A1 text or a
/// defined name, or empty for all cells with a value. Throws also 6 (kind Missing) when there is no
/// such sheet, and what `sheet_range` throws.
ZX_API Table read_table(const std::shared_ptr<IBook>& book, std::string_view sheet,
                        std::string_view range, const TableOptions& options);

/// Names of columns as tables and records have them, none empty and no two alike: an empty one
/// becomes "column" and its one-based number, one that came before gets ".1", ".2" ...
ZX_API std::vector<std::string> distinct_names(const std::vector<std::string>& names);

/// How a table enters a sheet.
struct TableWriteOptions {
    bool header = true;       ///< the names in a row above the values
    bool keep_format = false; ///< cells that are there keep their formats
};

/// Writes a table with its first cell at `at` and returns the cells that were written, an empty
/// range for a table without columns. A missing value and an empty text leave a cell without a
/// value. Everything is checked before the first cell is changed: throws `Exception` 24 where the
/// table would pass the end of the sheet, 28 (kind Refused) for vectors of the wrong length, a
/// number that is infinite, a text longer than a cell can hold and a date before the first that the
/// workbook can count.
ZX_API Range write_table(const std::shared_ptr<IBook>& book, ISheet& sheet, Cell at,
                         const Table& table, const TableWriteOptions& options);

/// How a matrix lies in memory: column after column, or row after row.
enum class MatrixOrder : std::uint8_t { columns_first, rows_first };

/// Reads a range into `range.count()` doubles: numbers, serial numbers of dates in the 1900 system,
/// booleans as 0 and 1, NaN for every other cell. (`ISheet::read` stores 0 there.)
ZX_API void read_numbers(ISheet& sheet, Range range, double* out, MatrixOrder order,
                         const InterruptCheck& interrupt = {});

/// Writes a matrix of `range.count()` doubles; NaN leaves a cell without a value. Throws
/// `Exception` 24 where the range passes the end of the sheet, 28 (kind Refused) for an infinite
/// number; no cell is changed then.
ZX_API void write_numbers(const std::shared_ptr<IBook>& book, ISheet& sheet, Range range,
                          const double* values, MatrixOrder order);

/// A date or time of ISO 8601, such as "2024-03-01" or "2024-03-01T13:05:00.25", in microseconds
/// since 1970-01-01; `kMissingDate` for any other text. A space may stand for the T.
ZX_API std::int64_t microseconds_from_iso_text(std::string_view text);

/// The text of ISO 8601: without the time at midnight, fractions of a second only where there are
/// any. Empty for `kMissingDate`.
ZX_API std::string iso_text_from_microseconds(std::int64_t microseconds);

/// Microseconds since 1970-01-01 of a serial number of the 1900 system, rounded; `kMissingDate`
/// outside the years 1 to 9999. Serials below 60 count from 1899-12-31, so that 1 is 1900-01-01;
/// serial 60, the day 1900-02-29 that never was, gives 1900-02-28. A serial number that was stored
/// with 15 digits gives the millisecond that it stands for.
ZX_API std::int64_t microseconds_from_serial(double serial);

/// The serial number of a time. `microseconds_from_serial` returns the same time again up to the
/// year 2079; later a double is coarser than a microsecond.
ZX_API double serial_from_microseconds(std::int64_t microseconds);

} // namespace spreadsheet
