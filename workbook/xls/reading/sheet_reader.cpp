// SPDX-License-Identifier: Apache-2.0
//
// Nothing relies on DIMENSIONS, INDEX or the order of records: many writers leave them out or get
// them wrong. Charts within the sheet are substreams of their own and are passed over.
#include "workbook/xls/reading/sheet_reader.h"

#include <algorithm>
#include <cmath>

#include "workbook/cells/column_width.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

constexpr double kWidthUnit = 1.0 / 256.0;
constexpr std::uint32_t kFormatMask = 0x0FFF;

class SheetReader {
  public:
    SheetReader(std::string_view stream, std::size_t position, const CellContext& context,
                RowSpan rows, ByteText& byte_text, SheetCells& cells, SheetTail& tail)
        : records_(stream, position),
          context_(context),
          rows_(rows),
          strings_(context.version, byte_text),
          cell_records_(context, rows, strings_, cells),
          cells_(cells),
          tail_(tail) {}

    SheetEnd run() {
        if (!records_.next() || !read_bof(records_.record()))
            refuse_record(records_.record(), "a sheet does not begin with a BOF record");
        int depth = 1;
        while (depth > 0 && records_.next()) {
            if (depth == 1 && cell_records_.read(records_)) continue;
            const Record& record = records_.record();
            if (record.id == record::kEof)
                --depth;
            else if (read_bof(record))
                enter(depth, record);
            else if (depth == 1)
                read_other(record);
        }
        cell_records_.finish();
        finish_row_formats();
        return {records_.position(), depth == 0};
    }

  private:
    static void enter(int& depth, const Record& record) {
        if (++depth > kMaxSubstreamDepth) refuse_record(record, "substreams are nested too deeply");
    }

    void read_other(const Record& record) {
        switch (record.id) {
        case record::kRow:
            read_row(record);
            return;
        case record::kColInfo:
            read_columns(record);
            return;
        case record::kColWidth2:
            read_biff2_columns(record);
            return;
        case record::kDefColWidth:
            // The record after it, if there is one, is more exact.
            if (record.size() >= 2 && !has_exact_width_) set_default_width(record.u16(0));
            return;
        case record::kStandardWidth:
            if (record.size() < 2) return;
            has_exact_width_ = true;
            cells_.columns.default_width = record.u16(0) * kWidthUnit;
            return;
        case record::kProtect:
            tail_.is_protected = record.size() >= 2 && record.u16(0) != 0;
            return;
        case record::kMergeCells:
            read_merged_regions(record);
            return;
        default:
            return;
        }
    }

    // Applications add padding and round up to eight pixels, seven of which make a character.
    void set_default_width(unsigned characters) {
        constexpr double kPixels = 7.0, kPadding = 5.0, kStep = 8.0;
        const double pixels = std::ceil((characters * kPixels + kPadding) / kStep) * kStep;
        cells_.columns.default_width =
            std::min(std::trunc(pixels / kPixels / kWidthUnit) * kWidthUnit, kMaxColumnWidth);
    }

    void read_row(const Record& record) {
        constexpr std::uint32_t kHasFormat = 0x80;
        constexpr std::size_t kOptions = 12;
        if (record.size() < kOptions + 4) return;
        const std::uint32_t options = record.u32(kOptions);
        const int row = record.u16(0);
        if ((options & kHasFormat) == 0 || !rows_.holds(row)) return;
        const std::uint32_t format = context_.first_format + (options >> 16 & kFormatMask);
        cells_.row_formats.push_back({row, format});
        cells_.formats_end = std::max(cells_.formats_end, format + 1);
    }

    void finish_row_formats() {
        std::vector<RowFormat>& formats = cells_.row_formats;
        std::stable_sort(formats.begin(), formats.end(),
                         [](const RowFormat& a, const RowFormat& b) { return a.row < b.row; });
        const auto same_row = [](const RowFormat& a, const RowFormat& b) { return a.row == b.row; };
        formats.erase(std::unique(formats.begin(), formats.end(), same_row), formats.end());
    }

    void read_columns(const Record& record) {
        if (record.size() < 8) return;
        add_columns({record.u16(0), record.u16(2), record.u16(4) * kWidthUnit,
                     context_.first_format + record.u16(6), true});
    }

    void read_biff2_columns(const Record& record) {
        if (record.size() < 4) return;
        add_columns({record.u8(0), record.u8(1), record.u16(2) * kWidthUnit, 0, false});
    }

    void add_columns(ColumnSpan span) {
        span.last = std::min(span.last, kXlsLimits.columns - 1);
        span.width = std::min(span.width, kMaxColumnWidth);
        if (span.first <= span.last) cells_.columns.spans.push_back(span);
    }

    void read_merged_regions(const Record& record) {
        constexpr std::size_t kHeader = 2, kEach = 8;
        if (record.size() < kHeader) return;
        const std::size_t stated_end = kHeader + kEach * record.u16(0);
        const std::size_t end = std::min(record.size(), stated_end);
        for (std::size_t at = kHeader; at + kEach <= end; at += kEach) {
            const Rectangle region{record.u16(at), record.u16(at + 2), record.u16(at + 4),
                                   record.u16(at + 6)};
            const bool is_region = region.first_row <= region.last_row &&
                                   region.first_column <= region.last_column &&
                                   region.last_column < kXlsLimits.columns;
            if (is_region) tail_.merged_regions.push_back(region);
        }
    }

    RecordStream records_;
    const CellContext& context_;
    const RowSpan rows_;
    RecordStrings strings_;
    CellRecords cell_records_;
    SheetCells& cells_;
    SheetTail& tail_;
    bool has_exact_width_ = false;
};

} // namespace

SheetEnd read_sheet(std::string_view stream, std::size_t position, const CellContext& context,
                    RowSpan rows, ByteText& byte_text, SheetCells& cells, SheetTail& tail) {
    return SheetReader(stream, position, context, rows, byte_text, cells, tail).run();
}

} // namespace workbook
