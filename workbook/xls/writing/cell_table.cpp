// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/cell_table.h"

#include <algorithm>

#include "workbook/xls/record_ids.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

using record::is_bof;

class Survey {
  public:
    Survey(std::string_view stream, std::size_t position, BiffVersion version)
        : records_(stream, position), version_(version) {
        table_.rows.resize(kXlsLimits.rows);
    }

    CellTable run() {
        while (records_.next()) {
            const Record& record = records_.record();
            if (depth_ > 1 || (depth_ == 1 && is_bof(record.id)))
                pass_substream(record);
            else if (!read_cells(record))
                read_other(record);
            if (is_at_end_) break;
        }
        const auto is_before = [](const CellExtent& one, const CellExtent& other) {
            return one.row != other.row ? one.row < other.row
                                        : one.first_column < other.first_column;
        };
        if (!std::is_sorted(table_.cells.begin(), table_.cells.end(), is_before))
            std::stable_sort(table_.cells.begin(), table_.cells.end(), is_before);
        return std::move(table_);
    }

  private:
    enum class Last { Other, Cell };

    std::uint32_t begin_of(const Record& record) const {
        return static_cast<std::uint32_t>(record.position);
    }
    std::uint32_t end_of(const Record& record) const {
        return static_cast<std::uint32_t>(record.position + RecordStream::kHeaderBytes +
                                          record.size());
    }

    /// Where a record goes that is not about cells.
    std::vector<OtherExtent>& others() { return is_after_ ? table_.after : table_.before; }

    void pass_substream(const Record& record) {
        if (is_bof(record.id)) {
            if (depth_ == 1) others().push_back({begin_of(record), end_of(record), record.id});
            ++depth_;
        } else if (record.id == record::kEof) {
            --depth_;
        }
        others().back().end = end_of(record);
        last_ = Last::Other;
    }

    void read_other(const Record& record) {
        if (record.id == record::kContinue && has_last_) {
            extend(record);
            return;
        }
        if (is_bof(record.id)) depth_ = 1;
        if (record.id == record::kIndex || record.id == record::kIndex2 ||
            record.id == record::kDbCell) {
            has_last_ = false;
            return;
        }
        is_at_end_ = record.id == record::kEof;
        const bool is_dimensions = record.id == dimensions_record(version_);
        if (is_dimensions && is_after_) { // comes too late, and once is enough
            has_last_ = false;
            return;
        }
        if (is_dimensions) table_.dimensions = table_.before.size();
        is_after_ |= is_at_end_ || record.id == record::kWindow2;
        others().push_back({begin_of(record), end_of(record), record.id});
        is_after_ |= is_dimensions;
        last_ = Last::Other;
        has_last_ = true;
    }

    void extend(const Record& record) {
        if (last_ == Last::Cell)
            table_.cells.back().end = end_of(record);
        else
            others().back().end = end_of(record);
    }

    bool read_cells(const Record& record) {
        switch (record.id) {
        case record::kRow:
        case record::kRow2:
            if (record.size() < 2) return false;
            is_after_ = true;
            table_.rows[record.u16(0)] = begin_of(record);
            has_last_ = false;
            return true;
        case record::kIxfe2:
            if (version_ != BiffVersion::Biff2) return false;
            pending_begin_ = begin_of(record);
            return true;
        case record::kMulRk:
        case record::kMulBlank:
            if (record.size() < 6) return false;
            add(record, record.u16(record.size() - 2));
            return true;
        case record::kShrFmla:
        case record::kArray:
        case record::kTable:
        case record::kString:
            return attach(record);
        case record::kArray2:
        case record::kTable2:
        case record::kString2:
            return version_ == BiffVersion::Biff2 && attach(record);
        case record::kBlank:
        case record::kNumber:
        case record::kLabel:
        case record::kBoolErr:
        case record::kFormula:
        case record::kFormula3:
        case record::kFormula4:
        case record::kRk:
        case record::kRString:
        case record::kLabelSst:
            if (record.size() < 4) return false;
            add(record, record.u16(2));
            return true;
        case record::kBlank2:
        case record::kInteger2:
        case record::kNumber2:
        case record::kLabel2:
        case record::kBoolErr2:
            if (version_ != BiffVersion::Biff2 || record.size() < 4) return false;
            add(record, record.u16(2));
            return true;
        default:
            return false;
        }
    }

    void add(const Record& record, std::uint16_t last_column) {
        const std::uint16_t first_column = record.u16(2);
        const std::uint32_t begin = pending_begin_ != 0 ? pending_begin_ : begin_of(record);
        pending_begin_ = 0;
        is_after_ = true;
        table_.cells.push_back({begin, end_of(record), record.u16(0), first_column,
                                std::max(first_column, last_column)});
        last_ = Last::Cell;
        has_last_ = true;
    }

    /// A record that belongs to the formula before it.
    bool attach(const Record& record) {
        if (table_.cells.empty() || last_ != Last::Cell) return false;
        table_.cells.back().end = end_of(record);
        constexpr std::size_t kAreaBytes = 6;
        const bool is_group = record.id == record::kShrFmla || record.id == record::kArray ||
                              record.id == record::kTable;
        if (is_group && version_ >= BiffVersion::Biff5 && record.size() >= kAreaBytes) {
            const SharedFormula::Kind kind =
                record.id == record::kShrFmla ? SharedFormula::Kind::Shared
                : record.id == record::kArray ? SharedFormula::Kind::Array
                                              : SharedFormula::Kind::DataTable;
            const CellExtent& cell = table_.cells.back();
            table_.groups.push_back({kind,
                                     {record.u16(0), record.u16(2), record.u8(4), record.u8(5)},
                                     cell.row,
                                     cell.first_column,
                                     begin_of(record)});
        }
        return true;
    }

    RecordStream records_;
    const BiffVersion version_;
    CellTable table_;
    int depth_ = 0;
    bool is_after_ = false; ///< the place of the cells has been passed
    bool is_at_end_ = false;
    Last last_ = Last::Other;
    bool has_last_ = false;           ///< whether a CONTINUE record has something to continue
    std::uint32_t pending_begin_ = 0; ///< of a record that belongs to the next cell
};

} // namespace

CellTable survey_cells(std::string_view stream, std::size_t position, BiffVersion version) {
    return Survey(stream, position, version).run();
}

} // namespace workbook
