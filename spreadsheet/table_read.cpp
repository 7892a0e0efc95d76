// SPDX-License-Identifier: Apache-2.0
//
// Ranges as tables. The cells come in blocks of columns: their types with one call, then their
// values with one call, column after column, so that a column is finished when the next begins.
// Besides the table itself there is a byte for each cell of a block and one column as it was read.
#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <unordered_map>
#include <unordered_set>

#include "foundation/unicode.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/cell_iterator.h"
#include "spreadsheet/column_blocks.h"
#include "spreadsheet/range_walk.h"
#include "spreadsheet/sheet_contents.h"
#include "spreadsheet/table_column.h"
#include "spreadsheet/table_error.h"

namespace spreadsheet {
namespace {

namespace unicode = foundation::unicode;

bool has_value(cell_type type) {
    return type != cell_type::empty && type != cell_type::other;
}

void check_size(const Range& range, std::int64_t max_cells) {
    if (range.count() > max_cells)
        throw table_error(error_id::range_too_large, FailureKind::Limit,
                          "The range has " + std::to_string(range.count()) +
                              " cells; the most that a table takes is " +
                              std::to_string(max_cells) + ". Give a smaller range.");
}

/// What `header_row` and the callbacks make of the cells of a range.
class TableBuilder : public output::CellOutputBuilder {
  public:
    TableBuilder(const Range& range, const TableOptions& options)
        : options_(options),
          missing_(options.missing),
          has_header_(options.header_row >= 0),
          rows_(extent(range.first_row, range.last_row)) {
        table_.range = range;
        table_.rows = rows_ - (has_header_ ? 1 : 0);
    }

    /// Offsets in the range of rows that are in the table; the header's does not matter.
    void keep_rows(const std::vector<bool>& kept) {
        kept_.assign(kept.begin() + (has_header_ ? 1 : 0), kept.end());
        table_.rows = static_cast<std::size_t>(std::count(kept_.begin(), kept_.end(), true));
    }

    /// Begins a column of the range; with `is_kept` false its cells are let go.
    void begin_column(bool is_kept) {
        is_kept_ = is_kept;
        row_ = 0;
        name_.clear();
        cells_.begin(table_.rows);
    }

    void end_column(int column) {
        if (!is_kept_) return;
        names_.push_back(name_);
        collected_columns_.push_back(column);
        ColumnCoercions coercions{};
        const auto given = std::find_if(options_.types.begin(), options_.types.end(),
                                        [&](const auto& pair) { return pair.first == name_; });
        std::optional<ColumnType> type;
        if (given != options_.types.end()) type = given->second;
        table_.columns.push_back(cells_.finish(type, kept_, missing_, coercions));
        for (std::size_t i = 0; i < kCoercions; ++i)
            if (coercions[i].count > 0) add_coercion(static_cast<Coercion>(i), coercions[i]);
    }

    Table take() {
        std::vector<std::string> names = distinct_names(names_);
        for (std::size_t i = 0; i < names.size(); ++i)
            table_.columns[i].name = std::move(names[i]);
        return std::move(table_);
    }

    std::size_t cells_in_column() const { return row_; }

    void begin(std::size_t, std::size_t) override {}
    void add_text(const std::u16string& text) override {
        if (takes_name())
            name_ = unicode::to_utf8(text);
        else if (is_kept_)
            cells_.add_text(text);
    }
    void add_number(double value) override {
        if (takes_name())
            name_ = number_name(value);
        else if (is_kept_)
            cells_.add_number(value);
    }
    void add_date(double serial) override {
        if (takes_name())
            name_ = iso_text_from_microseconds(microseconds_from_serial(serial));
        else if (is_kept_)
            cells_.add_date(serial);
    }
    void add_boolean(bool value) override {
        if (takes_name())
            name_ = value ? "true" : "false";
        else if (is_kept_)
            cells_.add_boolean(value);
    }
    void add_empty() override { add_without_value(false); }
    void add_without_value(bool is_error) {
        if (takes_name() || !is_kept_) return;
        if (is_error)
            cells_.add_error();
        else
            cells_.add_missing();
    }

  private:
    bool takes_name() { return row_++ == 0 && has_header_; }

    static std::string number_name(double value) {
        std::string text(32, '\0');
        const auto [end, failure] = std::to_chars(text.data(), text.data() + text.size(), value);
        text.resize(failure == std::errc() ? static_cast<std::size_t>(end - text.data()) : 0);
        return text;
    }

    void add_coercion(Coercion coercion, const CoercedRows& rows) {
        const int first_row = table_.range.first_row + (has_header_ ? 1 : 0);
        table_.coerced.push_back(
            {table_.columns.size() - 1, coercion, rows.count,
             Cell{first_row + static_cast<int>(rows.first), collected_columns_.back()}});
    }

    const TableOptions& options_;
    MissingValues missing_;
    Table table_;
    ColumnCollector cells_;
    std::vector<bool> kept_;
    std::vector<std::string> names_;
    std::vector<int> collected_columns_;
    std::string name_;
    bool has_header_;
    bool is_kept_ = true;
    std::size_t rows_;
    std::size_t row_ = 0;
};

/// Passes the cells of a block on to the builder, one column after the other.
class ColumnSplitter : public output::CellOutputBuilder {
  public:
    ColumnSplitter(TableBuilder& builder, const Range& block, const std::vector<cell_type>& types,
                   const std::vector<bool>& kept_columns, int first_column,
                   const InterruptCheck& interrupt)
        : builder_(builder),
          rows_(extent(block.first_row, block.last_row)),
          column_(block.first_column),
          types_(types),
          kept_columns_(kept_columns),
          first_column_(first_column),
          interrupt_(interrupt) {}

    /// Whether the cells after an interrupt were let go.
    bool is_interrupted() const { return is_interrupted_; }

    void begin(std::size_t, std::size_t) override {}
    void add_text(const std::u16string& text) override {
        const cell_type type = types_[next_];
        pass([&] {
            if (type == cell_type::text)
                builder_.add_text(text);
            else
                builder_.add_without_value(type == cell_type::error);
        });
    }
    void add_number(double value) override {
        pass([&] { builder_.add_number(value); });
    }
    void add_date(double serial) override {
        pass([&] { builder_.add_date(serial); });
    }
    void add_boolean(bool value) override {
        pass([&] { builder_.add_boolean(value); });
    }
    void add_empty() override {
        const bool is_error = types_[next_] == cell_type::error;
        pass([&] { builder_.add_without_value(is_error); });
    }

    CellBuilder callbacks() {
        return {this,
                [](void* to, const std::u16string& text) {
                    static_cast<ColumnSplitter*>(to)->ColumnSplitter::add_text(text);
                },
                [](void* to, double value) {
                    static_cast<ColumnSplitter*>(to)->ColumnSplitter::add_number(value);
                },
                [](void* to, double serial) {
                    static_cast<ColumnSplitter*>(to)->ColumnSplitter::add_date(serial);
                },
                [](void* to, bool value) {
                    static_cast<ColumnSplitter*>(to)->ColumnSplitter::add_boolean(value);
                }};
    }

  private:
    template <class Add>
    void pass(Add add) {
        ++next_;
        if (is_interrupted_) return;
        if (row_ == 0) begin_column();
        add();
        if (++row_ < rows_) return;
        builder_.end_column(column_++);
        row_ = 0;
    }

    void begin_column() {
        is_interrupted_ =
            interrupt_.is_interrupted != nullptr && interrupt_.is_interrupted(interrupt_.context);
        builder_.begin_column(kept_columns_.empty() ||
                              kept_columns_[static_cast<std::size_t>(column_ - first_column_)]);
    }

    TableBuilder& builder_;
    std::size_t rows_;
    int column_;
    const std::vector<cell_type>& types_;
    const std::vector<bool>& kept_columns_;
    int first_column_;
    InterruptCheck interrupt_;
    std::size_t row_ = 0;
    std::size_t next_ = 0;
    bool is_interrupted_ = false;
};

[[noreturn]] void throw_interrupted() {
    throw table_error(error_id::internal, FailureKind::Unknown, "The operation was interrupted.");
}

/// Reads one range. Which rows and columns stay is decided before a value is read.
class TableReader {
  public:
    TableReader(ISheet& sheet, const Range& range, const TableOptions& options)
        : sheet_(sheet),
          range_(range),
          options_(options),
          // What the merged-cell rules leave out is known for the last call alone.
          blocks_(options.merged ? std::vector<Range>{range} : column_blocks(range)) {}

    Table read() {
        decide_what_stays();
        TableBuilder builder(range_, options_);
        if (!kept_rows_.empty()) builder.keep_rows(kept_rows_);
        for (const Range& block : blocks_)
            read_block(block, builder);
        Table table = builder.take();
        check_types(table);
        return table;
    }

  private:
    void load_types(const Range& block) {
        if (loaded_ == block && !types_.empty()) return;
        types_.assign(static_cast<std::size_t>(block.count()), cell_type::empty);
        if (options_.merged)
            sheet_.cell_types(block, types_.data(), options_.merged->columns,
                              options_.merged->rows);
        else
            std::as_const(sheet_).cell_types(block, types_.data());
        loaded_ = block;
    }

    std::size_t columns() const { return extent(range_.first_column, range_.last_column); }
    std::size_t rows() const { return extent(range_.first_row, range_.last_row); }

    void decide_what_stays() {
        if (options_.drop_blank_columns || options_.merged) kept_columns_.assign(columns(), true);
        if (options_.drop_blank_rows || options_.merged) kept_rows_.assign(rows(), true);
        if (options_.drop_blank_rows || options_.drop_blank_columns) drop_blank();
        if (options_.merged) {
            load_types(range_);
            for (const int row : sheet_.get_omit_rows_vector())
                kept_rows_[static_cast<std::size_t>(row)] = false;
            for (const int column : sheet_.get_omit_vars_vector())
                kept_columns_[static_cast<std::size_t>(column)] = false;
        }
    }

    /// The header does not count: a column with a name alone is blank.
    void drop_blank() {
        std::vector<bool> filled_rows(rows()), filled_columns(columns());
        for (const Range& block : blocks_) {
            load_types(block);
            const cell_type* type = types_.data();
            for (std::int64_t column = block.first_column; column <= block.last_column; ++column)
                for (std::size_t row = 0; row < rows(); ++row, ++type) {
                    if (!has_value(*type)) continue;
                    filled_rows[row] = true;
                    if (row > 0 || options_.header_row < 0)
                        filled_columns[static_cast<std::size_t>(column - range_.first_column)] =
                            true;
                }
        }
        if (options_.drop_blank_rows) kept_rows_ = std::move(filled_rows);
        if (options_.drop_blank_columns) kept_columns_ = std::move(filled_columns);
    }

    void read_block(const Range& block, TableBuilder& builder) {
        load_types(block);
        ColumnSplitter splitter(builder, block, types_, kept_columns_, range_.first_column,
                                options_.interrupt);
        if (options_.merged)
            read_with_rules(block, splitter);
        else
            sheet_.read(block, types_.data(), splitter.callbacks());
        if (splitter.is_interrupted()) throw_interrupted();
    }

    void read_with_rules(const Range& block, ColumnSplitter& splitter) {
        std::vector<int> all(columns());
        std::iota(all.begin(), all.end(), block.first_column);
        CellTypeIterator cells({block.first_row, block.last_row}, std::move(all), types_.data(),
                               types_.size());
        sheet_.read_cell_array(cells, splitter, false, options_.merged->columns,
                               options_.merged->rows);
    }

    /// Types of columns that are not there would go unnoticed.
    void check_types(const Table& table) const {
        for (const auto& [name, type] : options_.types) {
            const auto has_name = [&, &wanted = name](const Column& c) { return c.name == wanted; };
            if (std::none_of(table.columns.begin(), table.columns.end(), has_name))
                throw table_error(error_id::types_size_mismatch, FailureKind::Missing,
                                  "A type was given for column '" + name +
                                      "', which the table does not have.");
        }
    }

    ISheet& sheet_;
    Range range_;
    const TableOptions& options_;
    std::vector<Range> blocks_;
    std::vector<cell_type> types_; ///< of the cells of `loaded_`
    Range loaded_{0, 0, -1, -1};
    std::vector<bool> kept_rows_, kept_columns_; ///< empty where all are kept
};

std::shared_ptr<ISheet> first_worksheet(const IBook& book) {
    if (book.is_sheet_loaded()) return book.sheet(std::size_t{0});
    for (std::size_t i = 0; i < book.num_sheets(); ++i)
        if (book.sheet_type(i) == sheet::type::worksheet) return book.sheet(i);
    return nullptr;
}

std::shared_ptr<ISheet> find_sheet(const IBook& book, std::string_view name) {
    auto sheet = name.empty() ? first_worksheet(book) : book.sheet(unicode::to_utf16(name));
    if (!sheet)
        throw table_error(error_id::sheet_not_found, FailureKind::Missing,
                          name.empty() ? "The book has no worksheet."
                                       : "There is no sheet '" + std::string(name) + "'.");
    return sheet;
}

} // namespace

std::vector<std::string> distinct_names(const std::vector<std::string>& names) {
    const std::unordered_set<std::string> taken(names.begin(), names.end());
    std::unordered_set<std::string> used;
    std::unordered_map<std::string, int> last_number; // so that many equal names are quick
    std::vector<std::string> distinct;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string name = names[i].empty() ? "column" + std::to_string(i + 1) : names[i];
        std::string wanted = name;
        // A number that another column has by itself is passed over.
        while (used.contains(wanted) || (wanted != names[i] && taken.contains(wanted)))
            wanted = name + '.' + std::to_string(++last_number[name]);
        used.insert(wanted);
        distinct.push_back(std::move(wanted));
    }
    return distinct;
}

Table read_table(ISheet& sheet, Range range, const TableOptions& options) {
    Table empty;
    empty.range = range;
    if (is_empty(range)) return empty;
    check_size(range, options.max_cells);
    if (options.header_row >= 0) {
        if (options.header_row > range.last_row - range.first_row)
            throw table_error(error_id::types_size_mismatch, FailureKind::Missing,
                              "The header is past the last row of the range.");
        range.first_row += options.header_row;
    }
    return TableReader(sheet, range, options).read();
}

Table read_table(ISheet& sheet, const TableOptions& options) {
    return read_table(sheet, filled_range(sheet), options);
}

Table read_table(const std::shared_ptr<IBook>& book, std::string_view sheet, std::string_view range,
                 const TableOptions& options) {
    const auto found = find_sheet(*book, sheet);
    if (range.empty()) return read_table(*found, options);
    const std::u16string text = unicode::to_utf16(range);
    return read_table(
        *found,
        sheet_range(text.data(), text.size(), found, book->format(), false, nullptr, nullptr),
        options);
}

} // namespace spreadsheet
