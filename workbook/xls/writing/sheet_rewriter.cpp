// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/sheet_rewriter.h"

#include <algorithm>
#include <vector>

#include "foundation/large_block.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/cell_table.h"
#include "workbook/xls/writing/column_records.h"
#include "workbook/xls/writing/record_writer.h"
#include "workbook/xls/writing/shared_formulas.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

constexpr int kBlockRows = 32;             ///< rows that share a DBCELL record (MS-XLS 2.1.7.20.5)
constexpr std::size_t kMostRegions = 1026; ///< of one MERGECELLS record (MS-XLS 2.4.168)
constexpr std::size_t kRowBytes = 16;      ///< data of a ROW record
constexpr std::uint16_t kDefaultRowHeight = 0x80FF; ///< twips, and that it is the default one
constexpr std::uint16_t kRowOptions = 0x0100;

// The INDEX record (MS-XLS 2.4.144; with 16-bit rows in BIFF5).
constexpr std::size_t index_header(BiffVersion version) {
    return version == BiffVersion::Biff8 ? 16 : 12;
}

class SheetWriter {
  public:
    explicit SheetWriter(const SheetRewrite& sheet)
        : sheet_(sheet),
          table_(survey_cells(sheet.stream, sheet.position, sheet.version)),
          groups_(sheet.stream, sheet.version, table_, sheet.cells, sheet.changes.cleared),
          cleared_(sheet.changes.cleared),
          cells_(sheet.version, sheet.strings, block_),
          records_(out_) {}

    std::string run() {
        // A number, the largest cell but for formulas, has 18 bytes.
        constexpr std::size_t kCellBytes = 18;
        foundation::reserve_to_fill(out_, sheet_.cells.size() * kCellBytes);
        find_rows();
        write_before();
        write_rows();
        finish_dimensions();
        finish_index();
        write_after();
        return std::move(out_);
    }

  private:
    bool has_index() const { return sheet_.version >= BiffVersion::Biff5; }

    void copy(std::uint32_t begin, std::uint32_t end) {
        out_.append(sheet_.stream.substr(begin, end - begin));
    }

    // --- Before the cells

    void find_rows() {
        is_row_.resize(kXlsLimits.rows);
        for (std::size_t row = 0; row < table_.rows.size(); ++row)
            is_row_[row] = table_.rows[row] != 0;
        for (const CellExtent& cell : table_.cells)
            is_row_[cell.row] = true;
        for (std::size_t i = 0; i < sheet_.cells.row_count(); ++i)
            if (const auto row = sheet_.cells.row_at(i); row.has_changes)
                is_row_[static_cast<std::size_t>(row.row)] = true;
        const auto first = std::find(is_row_.begin(), is_row_.end(), true);
        first_row_ = static_cast<int>(first - is_row_.begin());
        const auto last = std::find(is_row_.rbegin(), is_row_.rend(), true);
        end_row_ = static_cast<int>(is_row_.rend() - last);
        if (end_row_ == 0) first_row_ = 0;
    }

    void write_before() {
        const std::vector<OtherExtent>& before = table_.before;
        for (std::size_t i = 0; i < before.size(); ++i) {
            const OtherExtent& other = before[i];
            if (is_after_columns(other.id)) write_columns();
            if (is_after_protection(other.id)) write_protection();
            if (i == table_.dimensions) {
                write_dimensions();
                continue;
            }
            if (i > 0 && is_replaced(other)) continue;
            if (other.id == record::kDefColWidth) column_default_ = out_.size();
            copy(other.begin, other.end);
            const bool is_start = i == 0;
            const bool has_uncalced =
                i + 1 < before.size() && before[i + 1].id == record::kUncalced;
            if (has_index() && ((is_start && !has_uncalced) || other.id == record::kUncalced))
                write_index();
        }
        if (table_.dimensions == CellTable::kNoElement) {
            write_protection();
            write_columns();
            write_dimensions();
        }
    }

    bool is_after_columns(std::uint16_t id) const {
        return id == record::kColInfo || id == dimensions_record(sheet_.version);
    }
    bool is_after_protection(std::uint16_t id) const {
        return is_after_columns(id) || id == record::kDefColWidth || is_protection(id);
    }
    static bool is_protection(std::uint16_t id) {
        return id == record::kProtect || id == record::kObjectProtect ||
               id == record::kScenarioProtect || id == record::kPassword;
    }

    /// Whether a record is not copied, since what it says has changed.
    bool is_replaced(const OtherExtent& other) const {
        const SheetChanges& changes = sheet_.changes;
        if (other.id == record::kColInfo) return !changes.column_widths.empty();
        if (is_protection(other.id)) return changes.is_protected.has_value();
        if (other.id == record::kMergeCells) return changes.merged_regions.has_value();
        return false;
    }

    void write_columns() {
        if (has_columns_ || sheet_.changes.column_widths.empty()) return;
        has_columns_ = true;
        std::vector<std::string_view> old;
        for (const auto* others : {&table_.before, &table_.after})
            for (const OtherExtent& other : *others)
                if (other.id == record::kColInfo)
                    old.push_back(sheet_.stream.substr(other.begin, other.end - other.begin)
                                      .substr(RecordStream::kHeaderBytes));
        append_column_records(old, sheet_.changes.column_widths, sheet_.version,
                              sheet_.default_format, out_);
    }

    void write_protection() {
        if (has_protection_ || !sheet_.changes.is_protected) return;
        has_protection_ = true;
        if (!*sheet_.changes.is_protected) return;
        for (const std::uint16_t id :
             {record::kProtect, record::kScenarioProtect, record::kObjectProtect}) {
            if (sheet_.version < BiffVersion::Biff5 && id == record::kScenarioProtect) continue;
            records_.record(id, {"\1\0", 2});
        }
    }

    // --- Used range and index: written with room, filled when the rows are there

    void write_dimensions() {
        dimensions_ = out_.size() + RecordStream::kHeaderBytes;
        const bool is_biff2 = sheet_.version == BiffVersion::Biff2;
        const std::size_t bytes = is_biff2 ? 8 : sheet_.version == BiffVersion::Biff8 ? 14 : 10;
        records_.record(dimensions_record(sheet_.version), std::string(bytes, '\0'));
    }

    void finish_dimensions() {
        std::size_t at = dimensions_;
        const auto put_row = [&](int row) {
            if (sheet_.version == BiffVersion::Biff8) {
                records_.set_u32(at, static_cast<std::uint32_t>(row));
                at += 4;
            } else {
                records_.set_u16(at, static_cast<std::uint16_t>(std::min(row, 0xFFFF)));
                at += 2;
            }
        };
        if (end_column_ == 0) return;
        put_row(first_cell_row_);
        put_row(end_cell_row_);
        records_.set_u16(at, static_cast<std::uint16_t>(first_column_));
        records_.set_u16(at + 2, static_cast<std::uint16_t>(end_column_));
    }

    void write_index() {
        const auto blocks =
            static_cast<std::size_t>((end_row_ - first_row_ + kBlockRows - 1) / kBlockRows);
        index_ = out_.size() + RecordStream::kHeaderBytes;
        records_.record(record::kIndex,
                        std::string(index_header(sheet_.version) + 4 * blocks, '\0'));
    }

    void finish_index() {
        if (index_ == 0) return;
        const bool is_biff8 = sheet_.version == BiffVersion::Biff8;
        if (is_biff8) {
            records_.set_u32(index_ + 4, static_cast<std::uint32_t>(first_row_));
            records_.set_u32(index_ + 8, static_cast<std::uint32_t>(end_row_));
            records_.set_u32(index_ + 12, static_cast<std::uint32_t>(column_default_));
        } else {
            records_.set_u16(index_ + 4, static_cast<std::uint16_t>(first_row_));
            records_.set_u16(index_ + 6, static_cast<std::uint16_t>(std::min(end_row_, 0xFFFF)));
            records_.set_u32(index_ + 8, static_cast<std::uint32_t>(column_default_));
        }
        std::size_t at = index_ + index_header(sheet_.version);
        for (const std::size_t block : blocks_) {
            records_.set_u32(at, static_cast<std::uint32_t>(block));
            at += 4;
        }
    }

    // --- Rows and cells

    struct RowPlan {
        int row;
        std::size_t cells_begin; ///< in the block
        int first_column = kXlsLimits.columns, end_column = 0;
    };

    void write_rows() {
        for (int begin = first_row_; begin < end_row_; begin += kBlockRows) {
            const int end = std::min(begin + kBlockRows, end_row_);
            plans_.clear();
            block_.clear();
            for (int row = begin; row < end; ++row)
                if (is_row_[static_cast<std::size_t>(row)]) write_cells(row);
            if (plans_.empty())
                blocks_.push_back(0);
            else
                write_block();
        }
    }

    void write_block() {
        const std::size_t first_row_record = out_.size();
        for (const RowPlan& plan : plans_)
            write_row(plan);
        const std::size_t cells = out_.size();
        out_ += block_;
        if (!has_index()) return;
        const std::size_t db_cell = out_.size();
        blocks_.push_back(db_cell);
        records_.begin(record::kDbCell);
        records_.u32(static_cast<std::uint32_t>(db_cell - first_row_record));
        // Each row's cells count from those of the row before, the first row's from the second ROW
        // record.
        std::size_t from = first_row_record + RecordStream::kHeaderBytes + kRowBytes;
        for (const RowPlan& plan : plans_) {
            const std::size_t at = cells + plan.cells_begin;
            records_.u16(static_cast<std::uint16_t>(std::min<std::size_t>(at - from, 0xFFFF)));
            from = at;
        }
        records_.end();
    }

    void write_row(const RowPlan& plan) {
        const std::uint32_t old = table_.rows[static_cast<std::size_t>(plan.row)];
        const bool is_empty = plan.end_column == 0;
        const int first_column = is_empty ? 0 : plan.first_column;
        if (old != 0) {
            RecordStream records(sheet_.stream, old);
            records.next();
            const std::size_t at = out_.size() + RecordStream::kHeaderBytes;
            records_.record(records.record().id, records.record().data);
            if (records.record().size() < 6) return;
            records_.set_u16(at + 2, static_cast<std::uint16_t>(first_column));
            records_.set_u16(at + 4, static_cast<std::uint16_t>(plan.end_column));
        } else if (sheet_.version >= BiffVersion::Biff3) {
            records_.begin(record::kRow);
            for (const int value : {plan.row, first_column, plan.end_column, int{kDefaultRowHeight},
                                    0, 0, int{kRowOptions}, int{sheet_.default_format}})
                records_.u16(static_cast<std::uint16_t>(value));
            records_.end();
        }
    }

    void write_cells(int row) {
        RowPlan plan{row, block_.size()};
        const std::size_t store_row = sheet_.cells.row_from(row);
        CellStore::RowCells stored;
        if (store_row < sheet_.cells.row_count()) stored = sheet_.cells.row_at(store_row);
        if (stored.row != row || !stored.has_changes) stored.end = stored.begin;
        const bool has_cleared = cleared_.move_to(row);
        const bool may_adjust = groups_.may_adjust(row);

        cells_.set_row(row);
        const StoredCell* written = stored.begin;
        for (; next_cell_ < table_.cells.size() && table_.cells[next_cell_].row <= row;
             ++next_cell_) {
            const CellExtent& cell = table_.cells[next_cell_];
            if (cell.row < row) continue; // cannot be: every such row is written
            written = write_changed(written, stored.end, cell.first_column, plan);
            if (!has_cleared && !is_overwritten(stored, cell)) {
                cells_.flush();
                widen(plan, cell.first_column, cell.last_column);
                if (!may_adjust || !groups_.adjust(cell, block_))
                    block_.append(sheet_.stream.substr(cell.begin, cell.end - cell.begin));
            } else {
                written = write_remaining(written, stored, cell, has_cleared, plan);
            }
        }
        write_changed(written, stored.end, kXlsLimits.columns, plan);
        cells_.flush();
        plans_.push_back(plan);
        if (plan.end_column == 0) return;
        if (end_column_ == 0) first_cell_row_ = row;
        end_cell_row_ = row + 1;
        first_column_ = std::min(first_column_, plan.first_column);
        end_column_ = std::max(end_column_, plan.end_column);
    }

    static void widen(RowPlan& plan, int first, int last) {
        plan.first_column = std::min(plan.first_column, first);
        plan.end_column = std::max(plan.end_column, last + 1);
    }

    /// Writes changed cells before `end_column` and returns the next.
    const StoredCell* write_changed(const StoredCell* cell, const StoredCell* end, int end_column,
                                    RowPlan& plan) {
        for (; cell != end && static_cast<int>(cell->column) < end_column; ++cell) {
            if (!cell->is_changed()) continue;
            const auto column = static_cast<int>(cell->column);
            widen(plan, column, column);
            cells_.write(*cell);
        }
        return cell;
    }

    /// The first cell of the row from `column` on.
    static const StoredCell* cell_from(const CellStore::RowCells& row, int column) {
        return std::lower_bound(row.begin, row.end, column, [](const StoredCell& one, int wanted) {
            return static_cast<int>(one.column) < wanted;
        });
    }

    /// Whether a changed cell takes one of the places of `old`. Some producers have a place in two
    /// records, so the cell may have been written with an earlier one.
    static bool is_overwritten(const CellStore::RowCells& stored, const CellExtent& old) {
        return std::any_of(cell_from(stored, old.first_column),
                           cell_from(stored, old.last_column + 1),
                           [](const StoredCell& one) { return one.is_changed(); });
    }

    /// Of an old record with cells that were changed or cleared, what stays of it, between changed
    /// cells.
    const StoredCell* write_remaining(const StoredCell* written, const CellStore::RowCells& stored,
                                      const CellExtent& old, bool has_cleared, RowPlan& plan) {
        RecordStream records(sheet_.stream, old.begin);
        records.next();
        const Record record = records.record();
        const bool is_shared_record = record.id == record::kMulRk || record.id == record::kMulBlank;
        for (int column = old.first_column; column <= old.last_column; ++column) {
            written = write_changed(written, stored.end, column, plan);
            const StoredCell* const now = cell_from(stored, column);
            const bool is_changed =
                now != stored.end && static_cast<int>(now->column) == column && now->is_changed();
            if (is_changed || (has_cleared && cleared_.holds(column))) continue;
            cells_.flush();
            widen(plan, column, column);
            if (is_shared_record)
                append_one(record, column);
            else if (!groups_.adjust(old, block_))
                block_.append(sheet_.stream.substr(old.begin, old.end - old.begin));
        }
        return written;
    }

    /// One cell of a MULRK or MULBLANK record as a record of its own.
    void append_one(const Record& shared, int column) {
        const bool is_number = shared.id == record::kMulRk;
        const std::size_t each = is_number ? 6 : 2;
        const std::size_t at = 4 + each * static_cast<std::size_t>(column - shared.u16(2));
        if (at + each > shared.size()) return;
        append_u16(block_, is_number ? record::kRk : record::kBlank);
        append_u16(block_, static_cast<std::uint16_t>(4 + each));
        block_.append(shared.data.substr(0, 2));
        append_u16(block_, static_cast<std::uint16_t>(column));
        block_.append(shared.data.substr(at, each));
    }

    // --- After the cells

    void write_after() {
        for (const OtherExtent& other : table_.after) {
            if (other.id == record::kEof || other.id == record::kMergeCells) write_regions();
            if (!is_replaced(other)) copy(other.begin, other.end);
        }
        if (table_.after.empty() || table_.after.back().id != record::kEof)
            records_.record(record::kEof, {});
    }

    void write_regions() {
        if (has_regions_ || !sheet_.changes.merged_regions) return;
        has_regions_ = true;
        const std::vector<Rectangle>& regions = *sheet_.changes.merged_regions;
        for (std::size_t begin = 0; begin < regions.size(); begin += kMostRegions) {
            const std::size_t end = std::min(begin + kMostRegions, regions.size());
            records_.begin(record::kMergeCells);
            records_.u16(static_cast<std::uint16_t>(end - begin));
            for (std::size_t i = begin; i < end; ++i)
                for (const int value : {regions[i].first_row, regions[i].last_row,
                                        regions[i].first_column, regions[i].last_column})
                    records_.u16(static_cast<std::uint16_t>(value));
            records_.end();
        }
    }

    const SheetRewrite& sheet_;
    const CellTable table_;
    const SharedFormulas groups_;
    ClearedCells::Walk cleared_;
    std::string out_;
    std::string block_; ///< cells of the rows that share a DBCELL record
    CellRecordWriter cells_;
    RecordWriter records_;

    std::vector<bool> is_row_;
    int first_row_ = 0, end_row_ = 0; ///< of all rows
    std::size_t next_cell_ = 0;
    std::vector<RowPlan> plans_;
    std::vector<std::size_t> blocks_; ///< positions of the DBCELL records

    std::size_t index_ = 0, dimensions_ = 0, column_default_ = 0; ///< positions in `out_`
    int first_cell_row_ = 0, end_cell_row_ = 0;                   ///< of rows with cells
    int first_column_ = kXlsLimits.columns, end_column_ = 0;
    bool has_columns_ = false, has_protection_ = false, has_regions_ = false;
};

} // namespace

std::string rewrite_sheet(const SheetRewrite& sheet) {
    return SheetWriter(sheet).run();
}

void move_index(std::string& substream, BiffVersion version, std::int64_t distance) {
    if (version < BiffVersion::Biff5) return;
    RecordStream records(substream, 0);
    for (int i = 0; i < 3 && records.next(); ++i) {
        const Record& record = records.record();
        if (record.id != record::kIndex) continue;
        const std::size_t header = index_header(version);
        RecordWriter writer(substream);
        const std::size_t data = record.position + RecordStream::kHeaderBytes;
        for (std::size_t at = header - 4; at + 4 <= record.size(); at += 4)
            if (const std::uint32_t position = record.u32(at); position != 0)
                writer.set_u32(data + at, static_cast<std::uint32_t>(position + distance));
        return;
    }
}

} // namespace workbook
