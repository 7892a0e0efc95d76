// SPDX-License-Identifier: Apache-2.0
//
// The records of BIFF3 and later begin with row, column and format; those of BIFF2 have three bytes
// of attributes in the format's place. Records come row after row as a rule, but may
// come in any order.
#include "workbook/xls/reading/cell_records.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "workbook/error.h"
#include "workbook/xls/reading/format_records.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

constexpr std::size_t kCellHeader = 6, kBiff2CellHeader = 7;
constexpr std::uint32_t kColumns = kXlsLimits.columns;

double load_double(const char* bytes) {
    const std::uint64_t bits = load_u64(bytes);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

/// MS-XLS 2.5.217 RkNumber: 30 bits of an integer or of a double's upper end, perhaps divided by
/// 100.
double decode_rk(std::uint32_t rk) {
    constexpr std::uint32_t kHundredth = 0x01, kInteger = 0x02;
    double value;
    if ((rk & kInteger) != 0) {
        value = static_cast<std::int32_t>(rk) >> 2;
    } else {
        const std::uint64_t bits = static_cast<std::uint64_t>(rk & ~3u) << 32;
        std::memcpy(&value, &bits, sizeof value);
    }
    return (rk & kHundredth) != 0 ? value / 100.0 : value;
}

[[noreturn]] void refuse_column(int row, std::uint32_t column) {
    throw Error::damaged("row " + std::to_string(row + 1), "it has a cell in column " +
                                                               std::to_string(column + 1) + " of " +
                                                               std::to_string(kColumns));
}

} // namespace

CellRecords::CellRecords(const CellContext& context, RowSpan rows, RecordStrings& strings,
                         SheetCells& cells)
    : context_(context), rows_(rows), strings_(strings), cells_(cells) {}

void CellRecords::finish() {
    if (is_open_row_wanted_) cells_.cells.end_row();
    is_open_row_wanted_ = false;
    open_row_ = -1;
    formula_ = nullptr;
    cells_.cells.finish();
}

bool CellRecords::read(RecordStream& records) {
    const Record& record = records.record();
    switch (record.id) {
    case record::kLabelSst:
        read_shared_string(record);
        return true;
    case record::kNumber:
        require_size(record, kCellHeader + 8, "a NUMBER record");
        add_number(place_of(record), load_double(record.data.data() + kCellHeader));
        return true;
    case record::kRk:
        require_size(record, kCellHeader + 4, "an RK record");
        add_number(place_of(record), decode_rk(record.u32(kCellHeader)));
        return true;
    case record::kMulRk:
        read_several_numbers(record);
        return true;
    case record::kBlank:
        require_size(record, kCellHeader, "a BLANK record");
        keep(add(place_of(record), StoredKind::Blank));
        return true;
    case record::kMulBlank:
        read_several_blanks(record);
        return true;
    case record::kBoolErr:
        require_size(record, kCellHeader + 2, "a BOOLERR record");
        add_boolean_or_error(place_of(record), record.u8(kCellHeader),
                             record.u8(kCellHeader + 1) != 0);
        return true;
    case record::kFormula:
    case record::kFormula3:
    case record::kFormula4:
        read_formula(record);
        return true;
    case record::kString:
        read_formula_string(records, LengthField::TwoBytes);
        return true;
    case record::kLabel:
    case record::kRString:
        require_size(record, kCellHeader + 2, "a LABEL record");
        read_label(records, place_of(record), kCellHeader, LengthField::TwoBytes);
        return true;
    default:
        return context_.version == BiffVersion::Biff2 && read_biff2(records);
    }
}

bool CellRecords::read_biff2(RecordStream& records) {
    const Record& record = records.record();
    switch (record.id) {
    case record::kBlank2:
        require_size(record, kBiff2CellHeader, "a BLANK record");
        keep(add(biff2_place_of(record), StoredKind::Blank));
        return true;
    case record::kInteger2:
        require_size(record, kBiff2CellHeader + 2, "an INTEGER record");
        add_number(biff2_place_of(record), record.u16(kBiff2CellHeader));
        return true;
    case record::kNumber2:
        require_size(record, kBiff2CellHeader + 8, "a NUMBER record");
        add_number(biff2_place_of(record), load_double(record.data.data() + kBiff2CellHeader));
        return true;
    case record::kLabel2:
        require_size(record, kBiff2CellHeader + 1, "a LABEL record");
        read_label(records, biff2_place_of(record), kBiff2CellHeader, LengthField::OneByte);
        return true;
    case record::kBoolErr2:
        require_size(record, kBiff2CellHeader + 2, "a BOOLERR record");
        add_boolean_or_error(biff2_place_of(record), record.u8(kBiff2CellHeader),
                             record.u8(kBiff2CellHeader + 1) != 0);
        return true;
    case record::kString2:
        read_formula_string(records, LengthField::OneByte);
        return true;
    case record::kIxfe2:
        if (record.size() >= 2) biff2_next_format_ = record.u16(0);
        return true;
    default:
        return false;
    }
}

inline CellRecords::Place CellRecords::place_of(const Record& record) const {
    return {record.u16(0), record.u16(2), context_.first_format + record.u16(4)};
}

CellRecords::Place CellRecords::biff2_place_of(const Record& record) {
    constexpr std::uint8_t kFormatMask = 0x3F, kFormatInIxfe = 0x3F;
    const std::uint8_t first = record.u8(4), second = record.u8(5);
    std::uint32_t format = biff2_format(first, second);
    if (context_.has_xf_records) {
        format = first & kFormatMask;
        if (format == kFormatInIxfe) format = biff2_next_format_;
    }
    return {record.u16(0), record.u16(2), format};
}

/// The cell at a place, to be filled and kept; null when its row is not wanted.
inline StoredCell* CellRecords::add(const Place& place, StoredKind kind) {
    formula_ = nullptr;
    if (place.row != open_row_) change_row(place.row);
    if (!is_open_row_wanted_) return nullptr;
    if (place.column >= kColumns) refuse_column(place.row, place.column);
    StoredCell* cell = cells_.cells.next_cell();
    if (cell == nullptr) {
        // More cells than columns: some come twice, and the store keeps the last ones.
        change_row(place.row);
        cell = cells_.cells.next_cell();
    }
    cell->column = place.column;
    cell->format = place.format & kMaxStoredFormat;
    cell->kind = static_cast<std::uint32_t>(kind);
    cells_.formats_end = std::max(cells_.formats_end, place.format + 1);
    return cell;
}

void CellRecords::change_row(int row) {
    if (is_open_row_wanted_) cells_.cells.end_row();
    open_row_ = row;
    is_open_row_wanted_ = rows_.holds(row);
    if (is_open_row_wanted_) cells_.cells.begin_row(row);
}

inline void CellRecords::add_number(const Place& place, double value) {
    StoredCell* cell = add(place, StoredKind::Number);
    if (cell == nullptr) return;
    cell->value.number = value;
    cells_.cells.keep_cell();
}

void CellRecords::add_text(const Place& place, std::string_view text) {
    StoredCell* cell = add(place, StoredKind::OwnString);
    if (cell == nullptr) return;
    cell->value.text = cells_.own_strings.add(text);
    cells_.cells.keep_cell();
}

void CellRecords::add_boolean_or_error(const Place& place, std::uint8_t value, bool is_error) {
    StoredCell* cell = add(place, is_error ? StoredKind::Error : StoredKind::Boolean);
    if (cell == nullptr) return;
    if (is_error)
        cell->value.text = error_index(value);
    else
        cell->value.number = value != 0 ? 1.0 : 0.0;
    cells_.cells.keep_cell();
}

std::uint64_t CellRecords::error_index(std::uint8_t code) {
    std::uint32_t& known = error_index_plus_1_[code];
    if (known == 0) known = cells_.own_strings.add(error_text(code)) + 1;
    return known - 1;
}

std::uint64_t CellRecords::empty_string_index() {
    if (empty_index_plus_1_ == 0) empty_index_plus_1_ = cells_.own_strings.add("") + 1;
    return empty_index_plus_1_ - 1;
}

void CellRecords::read_shared_string(const Record& record) {
    require_size(record, kCellHeader + 4, "a LABELSST record");
    StoredCell* cell = add(place_of(record), StoredKind::String);
    if (cell == nullptr) return;
    const std::uint64_t index = record.u32(kCellHeader);
    cell->value.text = index;
    if (index >= cells_.shared_strings_end) cells_.shared_strings_end = index + 1;
    cells_.cells.keep_cell();
}

void CellRecords::read_several_numbers(const Record& record) {
    constexpr std::size_t kHeader = 4, kEach = 6, kLastColumn = 2;
    require_size(record, kHeader + kEach + kLastColumn, "a MULRK record");
    Place place{record.u16(0), record.u16(2), 0};
    const std::size_t end = record.size() - kLastColumn;
    for (std::size_t at = kHeader; at + kEach <= end; at += kEach, ++place.column) {
        place.format = context_.first_format + record.u16(at);
        add_number(place, decode_rk(record.u32(at + 2)));
    }
}

void CellRecords::read_several_blanks(const Record& record) {
    constexpr std::size_t kHeader = 4, kEach = 2, kLastColumn = 2;
    require_size(record, kHeader + kEach + kLastColumn, "a MULBLANK record");
    Place place{record.u16(0), record.u16(2), 0};
    const std::size_t end = record.size() - kLastColumn;
    for (std::size_t at = kHeader; at + kEach <= end; at += kEach, ++place.column) {
        place.format = context_.first_format + record.u16(at);
        keep(add(place, StoredKind::Blank));
    }
}

void CellRecords::read_label(RecordStream& records, const Place& place, std::size_t length_at,
                             LengthField length_field) {
    if (!rows_.holds(place.row)) return;
    ContinuedRecord record(records);
    record.advance(length_at);
    add_text(place, strings_.read(record, length_field));
}

void CellRecords::read_formula(const Record& record) {
    constexpr std::size_t kResultBytes = 8;
    const bool is_biff2 = context_.version == BiffVersion::Biff2;
    const std::size_t header = is_biff2 ? kBiff2CellHeader : kCellHeader;
    require_size(record, header + kResultBytes, "a FORMULA record");
    const Place place = is_biff2 ? biff2_place_of(record) : place_of(record);
    const FormulaResult result = parse_formula_result(record.data.data() + header);
    if (rows_.holds(place.row)) ++cells_.formulas;
    switch (result.kind) {
    case ResultKind::Number:
        add_number(place, result.number);
        return;
    case ResultKind::Boolean:
        add_boolean_or_error(place, result.code, false);
        return;
    case ResultKind::Error:
        add_boolean_or_error(place, result.code, true);
        return;
    case ResultKind::EmptyString:
        add_text(place, "");
        return;
    case ResultKind::String:
        // Empty until its string comes: some writers leave it out.
        if (StoredCell* cell = add(place, StoredKind::OwnString)) {
            cell->value.text = empty_string_index();
            cells_.cells.keep_cell();
            formula_ = cell;
            ++cells_.formulas_without_result;
        }
    }
}

void CellRecords::read_formula_string(RecordStream& records, LengthField length_field) {
    if (formula_ == nullptr) return;
    StoredCell* cell = formula_;
    formula_ = nullptr;
    --cells_.formulas_without_result;
    ContinuedRecord record(records);
    if (record.at_end()) return;
    cell->value.text = cells_.own_strings.add(strings_.read(record, length_field));
}

} // namespace workbook
