// SPDX-License-Identifier: Apache-2.0
//
// Tables into sheets. A file takes a column in runs of cells that have a value, so that a missing
// value leaves no empty text behind; elsewhere a request for each run would take long, and the
// whole table goes out at once.
#include <cmath>
#include <limits>

#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/limits.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/table.h"
#include "spreadsheet/table_error.h"

namespace spreadsheet {
namespace {

namespace unicode = foundation::unicode;

std::size_t value_count(const Column& column) {
    switch (column.type) {
    case ColumnType::number:
        return column.numbers.size();
    case ColumnType::boolean:
        return column.booleans.size();
    case ColumnType::date:
        return column.microseconds.size();
    case ColumnType::text:
        return column.codes.size();
    case ColumnType::mixed:
        return column.kinds.size() == column.codes.size() &&
                       column.kinds.size() == column.numbers.size()
                   ? column.kinds.size()
                   : std::numeric_limits<std::size_t>::max();
    }
    return 0;
}

cell_type type_of(const Column& column, std::size_t row) {
    if (!column.has_value(row)) return cell_type::empty;
    switch (column.type) {
    case ColumnType::number:
        return std::isnan(column.numbers[row]) ? cell_type::empty : cell_type::number;
    case ColumnType::boolean:
        return cell_type::boolean;
    case ColumnType::date:
        return column.microseconds[row] == kMissingDate ? cell_type::empty : cell_type::date;
    case ColumnType::text:
        return column.codes[row] == kMissingText ? cell_type::empty : cell_type::text;
    case ColumnType::mixed:
        return column.kinds[row];
    }
    return cell_type::empty;
}

double serial_of(const Column& column, std::size_t row) {
    return column.type == ColumnType::date ? serial_from_microseconds(column.microseconds[row])
                                           : column.numbers[row];
}

/// Refuses what the workbook would store as something else.
class TableCheck {
  public:
    TableCheck(const IBook& book, const Table& table) : book_(book), table_(table) {}

    void run(const Range& values, bool has_header) const {
        for (std::size_t i = 0; i < table_.columns.size(); ++i) {
            const Column& column = table_.columns[i];
            const Cell first{values.first_row, values.first_column + static_cast<int>(i)};
            check_lengths(column);
            if (has_header) check_text(column.name, {first.row - 1, first.column});
            check_values(column, first);
        }
    }

  private:
    void check_lengths(const Column& column) const {
        if (value_count(column) != table_.rows || column.validity.size() < (table_.rows + 7) / 8)
            throw table_error(error_id::write_failed, FailureKind::Refused,
                              "Column '" + column.name + "' has another number of values than " +
                                  std::to_string(table_.rows) + ", the rows of the table.");
    }

    void check_values(const Column& column, const Cell& first) const {
        std::vector<bool> is_too_long;
        for (std::size_t i = 0; i < column.strings.size(); ++i)
            is_too_long.push_back(is_long(column.strings[i]));
        for (std::size_t row = 0; row < table_.rows; ++row) {
            const Cell cell{first.row + static_cast<int>(row), first.column};
            switch (type_of(column, row)) {
            case cell_type::number:
                if (std::isinf(column.numbers[row])) throw infinite_number(cell);
                break;
            case cell_type::date:
                check_date(serial_of(column, row), cell);
                break;
            case cell_type::text:
                check_code(column, row, cell);
                if (is_too_long[static_cast<std::size_t>(column.codes[row])]) refuse_length(cell);
                break;
            default:
                break;
            }
        }
    }

    void check_code(const Column& column, std::size_t row, const Cell& cell) const {
        const std::int32_t code = column.codes[row];
        if (code < 0 || static_cast<std::size_t>(code) >= column.strings.size())
            throw refused_value(cell, "is a text that its column does not have.");
    }

    void check_date(double serial, const Cell& cell) const {
        const bool counts_from_1904 = book_.are_dates_1904();
        const double first = counts_from_1904 ? kDateSystemOffsetDays : 1.0;
        if (!(serial >= first))
            throw refused_value(cell, std::string("is a date before ") +
                                          (counts_from_1904 ? "1904-01-01" : "1900-01-01") +
                                          ", the first that the workbook can count. Write it as "
                                          "text.");
        if (microseconds_from_serial(serial) == kMissingDate)
            throw refused_value(cell, "is a date after the year 9999, the last that a workbook can "
                                      "count. Write it as text.");
    }

    bool is_long(std::string_view text) const {
        return text.size() > kMaxCellTextUnits &&
               unicode::to_utf16(text).size() > kMaxCellTextUnits;
    }

    void check_text(const std::string& text, const Cell& cell) const {
        if (is_long(text)) refuse_length(cell);
    }

    [[noreturn]] void refuse_length(const Cell& cell) const {
        throw refused_value(cell, "is a text of more than " + std::to_string(kMaxCellTextUnits) +
                                      " UTF-16 units, the most that a cell can hold.");
    }

    const IBook& book_;
    const Table& table_;
};

/// Supplies the cells of columns in their order; a header is a row of its own before them.
class TableSource {
  public:
    TableSource(const Table& table, bool has_header) : table_(table), has_header_(has_header) {}

    /// The next cell asked for is this one; `row` -1 is the header.
    void seek(std::size_t column, std::int64_t row) {
        column_ = column;
        row_ = row;
    }

    CellProvider provider() {
        return {this,
                [](void* from) { return self(from).text(); },
                [](void* from) { return self(from).number(); },
                [](void* from) { return self(from).date(); },
                [](void* from) { return self(from).boolean(); },
                [](void* from) { self(from).skip(); }};
    }

  private:
    static TableSource& self(void* context) { return *static_cast<TableSource*>(context); }

    /// Moves on to the next cell, down the column and then to the next one's top.
    std::pair<const Column&, std::int64_t> take() {
        const std::pair<const Column&, std::int64_t> taken{table_.columns[column_], row_};
        if (++row_ == static_cast<std::int64_t>(table_.rows)) {
            row_ = has_header_ ? -1 : 0;
            ++column_;
        }
        return taken;
    }

    std::u16string text() {
        const auto [column, row] = take();
        if (row < 0) return unicode::to_utf16(column.name);
        const auto code = column.codes[static_cast<std::size_t>(row)];
        return unicode::to_utf16(column.strings[static_cast<std::size_t>(code)]);
    }
    double number() {
        const auto [column, row] = take();
        return column.numbers[static_cast<std::size_t>(row)];
    }
    SerialDatenum date() {
        const auto [column, row] = take();
        return {serial_of(column, static_cast<std::size_t>(row))};
    }
    bool boolean() {
        const auto [column, row] = take();
        const auto index = static_cast<std::size_t>(row);
        return column.type == ColumnType::mixed ? column.numbers[index] != 0.0
                                                : column.booleans[index] != 0;
    }
    void skip() { take(); }

    const Table& table_;
    bool has_header_;
    std::size_t column_ = 0;
    std::int64_t row_ = 0;
};

bool has_text(const Column& column, std::size_t row) {
    return !column.strings[static_cast<std::size_t>(column.codes[row])].empty();
}

/// Writes one cell after the other in runs; what has no value is cleared, or with `keep_format`
/// loses its value alone.
class ColumnWriter {
  public:
    ColumnWriter(ISheet& sheet, const Table& table, const Range& values, bool keep_format)
        : sheet_(sheet),
          table_(table),
          source_(table, false),
          values_(values),
          keep_format_(keep_format) {}

    void write_header() {
        std::vector<cell_type> types(table_.columns.size(), cell_type::text);
        struct Names {
            const Column* next;
        } names{table_.columns.data()};
        const Range row{values_.first_row - 1, values_.first_column, values_.first_row - 1,
                        values_.last_column};
        CellProvider provider = source_.provider();
        provider.context = &names;
        provider.text = [](void* from) {
            return unicode::to_utf16(static_cast<Names*>(from)->next++->name);
        };
        sheet_.write(row, types.data(), provider, keep_format_);
    }

    void write_column(std::size_t index) {
        const Column& column = table_.columns[index];
        std::vector<cell_type> types(table_.rows);
        for (std::size_t row = 0; row < table_.rows; ++row) {
            types[row] = type_of(column, row);
            if (types[row] == cell_type::text && !has_text(column, row))
                types[row] = cell_type::empty;
        }
        for (std::size_t first = 0; first < table_.rows;) {
            const bool is_gap = types[first] == cell_type::empty;
            std::size_t end = first + 1;
            while (end < table_.rows && (types[end] == cell_type::empty) == is_gap)
                ++end;
            const Range run = run_of(index, first, end);
            if (is_gap) {
                leave_without_value(run);
            } else {
                source_.seek(index, static_cast<std::int64_t>(first));
                sheet_.write(run, types.data() + first, source_.provider(), keep_format_);
            }
            first = end;
        }
    }

  private:
    Range run_of(std::size_t column, std::size_t first, std::size_t end) const {
        const int place = values_.first_column + static_cast<int>(column);
        return {values_.first_row + static_cast<int>(first), place,
                values_.first_row + static_cast<int>(end) - 1, place};
    }

    void leave_without_value(const Range& run) {
        if (!keep_format_) return sheet_.clear(run);
        // A number that is none blanks a cell and keeps its format.
        std::vector<cell_type> types(static_cast<std::size_t>(run.count()), cell_type::number);
        CellProvider provider = source_.provider();
        provider.number = [](void*) { return std::numeric_limits<double>::quiet_NaN(); };
        sheet_.write(run, types.data(), provider, true);
    }

    ISheet& sheet_;
    const Table& table_;
    TableSource source_;
    Range values_;
    bool keep_format_;
};

void write_at_once(ISheet& sheet, const Table& table, const Range& cells, bool has_header,
                   bool keep_format) {
    std::vector<cell_type> types;
    types.reserve(static_cast<std::size_t>(cells.count()));
    for (const Column& column : table.columns) {
        if (has_header) types.push_back(cell_type::text);
        for (std::size_t row = 0; row < table.rows; ++row)
            types.push_back(type_of(column, row));
    }
    TableSource source(table, has_header);
    source.seek(0, has_header ? -1 : 0);
    sheet.write(cells, types.data(), source.provider(), keep_format);
}

} // namespace

Range write_table(const std::shared_ptr<IBook>& book, ISheet& sheet, Cell at, const Table& table,
                  const TableWriteOptions& options) {
    const std::size_t lines = table.rows + (options.header ? 1 : 0);
    if (table.columns.empty() || lines == 0) return {at.row, at.column, at.row - 1, at.column - 1};
    const auto end_row = at.row + static_cast<std::int64_t>(lines);
    const auto end_column = at.column + static_cast<std::int64_t>(table.columns.size());
    if (at.row < 0 || at.column < 0 || end_row > std::numeric_limits<int>::max() ||
        end_column > std::numeric_limits<int>::max())
        throw Exception(error_id::range_too_large);
    const Range cells{at.row, at.column, static_cast<int>(end_row) - 1,
                      static_cast<int>(end_column) - 1};
    if (!is_within_limits(cells, book->format())) throw Exception(error_id::range_too_large);
    Range values = cells;
    if (options.header) ++values.first_row;
    TableCheck(*book, table).run(values, options.header);

    if (book->is_interactive() || book->format() == book::format::GSHEET) {
        write_at_once(sheet, table, cells, options.header, options.keep_format);
        return cells;
    }
    ColumnWriter writer(sheet, table, values, options.keep_format);
    if (options.header) writer.write_header();
    for (std::size_t column = 0; column < table.columns.size(); ++column)
        writer.write_column(column);
    return cells;
}

} // namespace spreadsheet
