// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/cell_record_writer.h"

#include <cmath>
#include <cstring>

#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"

namespace workbook {

namespace {

// The two lowest bits of an RkNumber.
constexpr std::uint32_t kTimes100 = 1, kInteger = 2;
constexpr double kLargestInteger = 536'870'911.0, kSmallestInteger = -536'870'912.0;

std::uint64_t bits_of(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

/// `value` as an integer of 30 bits. Negative zero is not one.
std::optional<std::uint32_t> small_integer(double value) {
    if (!(value >= kSmallestInteger && value <= kLargestInteger)) return {};
    const auto integer = static_cast<std::int32_t>(value);
    if (bits_of(static_cast<double>(integer)) != bits_of(value)) return {};
    return static_cast<std::uint32_t>(integer) << 2 | kInteger;
}

void append_f64(std::string& out, double value) {
    append_u64(out, bits_of(value));
}

} // namespace

std::optional<std::uint32_t> rk_number(double value) {
    if (const auto integer = small_integer(value)) return integer;
    const std::uint64_t bits = bits_of(value);
    constexpr std::uint64_t kLowBits = (std::uint64_t{1} << 34) - 1;
    if ((bits & kLowBits) == 0) return static_cast<std::uint32_t>(bits >> 32);
    const double hundredfold = std::round(value * 100.0);
    const auto integer = small_integer(hundredfold);
    if (integer && bits_of(hundredfold / 100.0) == bits) return *integer | kTimes100;
    return {};
}

void CellRecordWriter::set_row(int row) {
    flush();
    row_ = static_cast<std::uint16_t>(row);
}

void CellRecordWriter::begin_cell(std::uint16_t id, std::size_t value_bytes, std::uint32_t column,
                                  std::uint16_t format) {
    char start[10];
    const std::uint16_t parts[] = {id, static_cast<std::uint16_t>(6 + value_bytes), row_,
                                   static_cast<std::uint16_t>(column), format};
    char* out = start;
    for (const std::uint16_t part : parts) {
        *out++ = static_cast<char>(part & 0xFF);
        *out++ = static_cast<char>(part >> 8);
    }
    out_.append(start, sizeof start);
}

void CellRecordWriter::join_run(Run kind, const StoredCell& cell, std::uint32_t number) {
    const bool is_next = run_ == kind && cell.column == run_column_ + pending_.size();
    if (!is_next) {
        flush();
        run_ = kind;
        run_column_ = cell.column;
    }
    pending_.push_back({format_of(cell), number});
}

void CellRecordWriter::flush() {
    if (pending_.empty()) return;
    const bool is_numbers = run_ == Run::Numbers;
    const std::size_t each = is_numbers ? 6 : 2;
    if (pending_.size() > 1 && version_ >= BiffVersion::Biff5) {
        append_u16(out_, is_numbers ? record::kMulRk : record::kMulBlank);
        append_u16(out_, static_cast<std::uint16_t>(6 + each * pending_.size()));
        append_u16(out_, row_);
        append_u16(out_, static_cast<std::uint16_t>(run_column_));
        for (const Pending& cell : pending_) {
            append_u16(out_, cell.format);
            if (is_numbers) append_u32(out_, cell.number);
        }
        append_u16(out_, static_cast<std::uint16_t>(run_column_ + pending_.size() - 1));
    } else {
        std::uint32_t column = run_column_;
        for (const Pending& cell : pending_) {
            begin_cell(is_numbers ? record::kRk : record::kBlank, each - 2, column++, cell.format);
            if (is_numbers) append_u32(out_, cell.number);
        }
    }
    pending_.clear();
    run_ = Run::None;
}

void CellRecordWriter::write(const StoredCell& cell) {
    if (version_ == BiffVersion::Biff2) {
        write_biff2(cell);
        return;
    }
    switch (cell.stored_kind()) {
    case StoredKind::Number:
        if (const auto number = rk_number(cell.value.number)) {
            join_run(Run::Numbers, cell, *number);
            return;
        }
        flush();
        begin_cell(record::kNumber, 8, cell.column, format_of(cell));
        append_f64(out_, cell.value.number);
        break;
    case StoredKind::Boolean:
        flush();
        begin_cell(record::kBoolErr, 2, cell.column, format_of(cell));
        append_u16(out_, cell.value.number != 0.0 ? 1 : 0);
        break;
    case StoredKind::AddedString:
        flush();
        write_string(cell);
        break;
    default:
        join_run(Run::Blanks, cell, 0);
    }
}

void CellRecordWriter::write_string(const StoredCell& cell) {
    if (version_ == BiffVersion::Biff8) {
        begin_cell(record::kLabelSst, 4, cell.column, format_of(cell));
        append_u32(out_, strings_.first_index + static_cast<std::uint32_t>(cell.value.text));
        return;
    }
    const std::string bytes = strings_.bytes(cell.value.text);
    begin_cell(record::kLabel, 2 + bytes.size(), cell.column, format_of(cell));
    append_u16(out_, static_cast<std::uint16_t>(bytes.size()));
    out_ += bytes;
}

// A cell of BIFF2 has three bytes of attributes; their first six bits are the format's index.
void CellRecordWriter::write_biff2(const StoredCell& cell) {
    std::string value;
    std::uint16_t id = record::kBlank2;
    switch (cell.stored_kind()) {
    case StoredKind::Number:
        id = record::kNumber2;
        append_f64(value, cell.value.number);
        break;
    case StoredKind::Boolean:
        id = record::kBoolErr2;
        append_u16(value, cell.value.number != 0.0 ? 1 : 0);
        break;
    case StoredKind::AddedString: {
        id = record::kLabel2;
        const std::string bytes = strings_.bytes(cell.value.text);
        value += static_cast<char>(bytes.size());
        value += bytes;
        break;
    }
    default:
        break;
    }
    constexpr std::size_t kPlaceBytes = 7;
    constexpr std::uint32_t kFormatBits = 0x3F;
    append_u16(out_, id);
    append_u16(out_, static_cast<std::uint16_t>(kPlaceBytes + value.size()));
    append_u16(out_, row_);
    append_u16(out_, static_cast<std::uint16_t>(cell.column));
    out_ += static_cast<char>(cell.format & kFormatBits);
    out_.append(2, '\0');
    out_ += value;
}

} // namespace workbook
