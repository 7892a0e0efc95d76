// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/shared_formulas.h"

#include <algorithm>
#include <optional>

#include "workbook/xls/formula/token_rewriter.h"
#include "workbook/xls/formula/token_stream.h"
#include "workbook/xls/reading/formula_results.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

// A FORMULA record (MS-XLS 2.4.127): place, result, flags, then the formula.
constexpr std::size_t kResult = 6, kFlags = 14, kTokenBytes = 20, kTokens = 22;
constexpr std::uint8_t kExp = 0x01, kTbl = 0x02; ///< tokens that lead to the group's cell
constexpr std::uint16_t kIsShared = 0x0008;      ///< of the flags

/// The place that the formula of a member names.
bool leads_to(const Record& formula, const SharedFormula& group) {
    if (formula.size() < kTokens + 5) return false;
    const std::uint8_t token = formula.u8(kTokens);
    return (token == kExp || token == kTbl) && formula.u16(kTokens + 1) == group.row &&
           formula.u16(kTokens + 3) == group.column;
}

bool is_place_changed(int row, int column, const CellStore& cells, const ClearedCells& cleared) {
    const StoredCell* const cell = cells.find(row, column);
    return (cell != nullptr && cell->is_changed()) ||
           cleared.intersects({row, row, column, column});
}

void append_record(std::uint16_t id, std::string_view place, std::string_view value,
                   std::string& out) {
    append_u16(out, id);
    append_u16(out, static_cast<std::uint16_t>(place.size() + value.size()));
    out.append(place);
    out.append(value);
}

/// The formula's result as a cell of its own. A string's record has the same content after the
/// place, and the same CONTINUE records.
void append_result(std::string_view stream, const CellExtent& cell, const Record& formula,
                   std::string& out) {
    const std::string_view place = formula.data.substr(0, kResult);
    const FormulaResult result = parse_formula_result(formula.data.data() + kResult);
    std::string value;
    switch (result.kind) {
    case ResultKind::Number:
        append_record(record::kNumber, place, formula.data.substr(kResult, 8), out);
        return;
    case ResultKind::Boolean:
    case ResultKind::Error:
        value += static_cast<char>(result.code);
        value += result.kind == ResultKind::Error ? '\1' : '\0';
        append_record(record::kBoolErr, place, value, out);
        return;
    case ResultKind::EmptyString:
        append_record(record::kBlank, place, {}, out);
        return;
    case ResultKind::String:
        break;
    }
    RecordStream records(stream.substr(0, cell.end), cell.begin);
    while (records.next()) {
        if (records.record().id != record::kString) continue;
        const std::string_view text = records.record().data;
        if (text.size() + place.size() > kMaxRecordBytes) break;
        append_record(record::kLabel, place, text, out);
        const std::size_t after =
            records.record().position + RecordStream::kHeaderBytes + records.record().size();
        out.append(stream.substr(after, cell.end - after));
        return;
    }
    append_record(record::kBlank, place, {}, out);
}

/// What a member of a shared formula (MS-XLS 2.4.277 ShrFmla) has on its own: the length of the
/// tokens, then these.
std::optional<std::string> own_formula(const Record& shared, int row, int column) {
    constexpr std::size_t kLength = 8, kFormula = 10;
    if (shared.size() < kFormula) return {};
    const std::uint16_t token_bytes = shared.u16(kLength);
    const auto formula =
        biff::formula_of_cell(shared.data.substr(kFormula), token_bytes, row, column);
    if (!formula) return {};
    std::string result;
    append_u16(result, token_bytes);
    return result + *formula;
}

/// The formula of one cell of an array formula (MS-XLS 2.4.4 Array) as an array formula of its own:
/// the item of the array that the cell shows. An array of one row or column fills all of them:
/// INDEX(array, 1 + row * (ROWS(array) > 1), 1 + column * (COLUMNS(array) > 1)). Nullopt when it
/// cannot be parsed or would be longer than applications take.
class ArrayItem {
  public:
    static std::optional<std::string> record_data(const Record& array, const SharedFormula& group,
                                                  int row, int column) {
        constexpr std::size_t kArea = 6, kOptions = 6;
        if (array.size() < kFormula) return {};
        const std::size_t token_bytes = array.u16(kLength);
        const std::string_view formula = array.data.substr(kFormula);
        if (!biff::parse_tokens(formula, token_bytes)) return {};
        ArrayItem item(formula, token_bytes);
        item.append_array();
        item.append_place(row - group.area.first_row, kRows);
        item.append_place(column - group.area.first_column, kColumns);
        item.append(item.tokens_, {0x62, 3, 29, 0}); // INDEX
        if (item.tokens_.size() > kMostTokenBytes) return {};
        std::string data;
        for (const int value : {row, row, column << 8 | column})
            append_u16(data, static_cast<std::uint16_t>(value));
        data.append(array.data.substr(kArea, kLength - kOptions));
        append_u16(data, static_cast<std::uint16_t>(item.tokens_.size()));
        data += item.tokens_ + item.extra_;
        if (data.size() > kMaxRecordBytes) return {};
        return data;
    }

  private:
    static constexpr std::size_t kLength = 12, kFormula = 14;
    static constexpr std::size_t kMostTokenBytes = 1800;
    static constexpr int kRows = 76, kColumns = 77; ///< functions

    ArrayItem(std::string_view formula, std::size_t token_bytes)
        : array_(formula.substr(0, token_bytes)), array_extra_(formula.substr(token_bytes)) {}

    static void append(std::string& out, std::initializer_list<int> bytes) {
        for (const int byte : bytes)
            out += static_cast<char>(byte);
    }

    void append_array() {
        constexpr std::string_view kVolatile("\x19\1\0\0", 4); // said once
        const bool repeats = !tokens_.empty() && array_.starts_with(kVolatile);
        tokens_.append(array_.substr(repeats ? kVolatile.size() : 0));
        extra_.append(array_extra_);
    }

    void append_integer(int value) { append(tokens_, {0x1E, value & 0xFF, value >> 8}); }

    void append_place(int offset, int count_function) {
        append_integer(1);
        if (offset == 0) return;
        append_integer(offset);
        append_array();
        append(tokens_, {0x61, count_function, 0});
        append_integer(1);
        append(tokens_, {0x0D, 0x15, 0x05, 0x03}); // > () * +
    }

    const std::string_view array_, array_extra_;
    std::string tokens_, extra_;
};

} // namespace

SharedFormulas::SharedFormulas(std::string_view stream, BiffVersion version, const CellTable& table,
                               const CellStore& cells, const ClearedCells& cleared)
    : stream_(stream), version_(version) {
    for (const SharedFormula& group : table.groups) {
        if (!has_lost(group, cells, cleared)) continue;
        if (broken_.empty()) {
            first_row_ = group.area.first_row;
            last_row_ = group.area.last_row;
        }
        first_row_ = std::min({first_row_, group.area.first_row, group.row});
        last_row_ = std::max({last_row_, group.area.last_row, group.row});
        broken_.push_back(group);
    }
}

bool SharedFormulas::has_lost(const SharedFormula& group, const CellStore& cells,
                              const ClearedCells& cleared) const {
    if (is_place_changed(group.row, group.column, cells, cleared)) return true;
    if (group.kind == SharedFormula::Kind::Shared) return false;
    if (cleared.intersects(group.area)) return true;
    for (std::size_t i = cells.row_from(group.area.first_row); i < cells.row_count(); ++i) {
        const CellStore::RowCells row = cells.row_at(i);
        if (row.row > group.area.last_row) return false;
        if (!row.has_changes) continue;
        const bool is_lost = std::any_of(row.begin, row.end, [&](const StoredCell& cell) {
            return cell.is_changed() && group.area.holds(row.row, static_cast<int>(cell.column));
        });
        if (is_lost) return true;
    }
    return false;
}

bool SharedFormulas::adjust(const CellExtent& cell, std::string& out) const {
    RecordStream records(stream_.substr(0, cell.end), cell.begin);
    if (!records.next() || records.record().id != record::kFormula) return false;
    const Record formula = records.record();
    const auto group = std::find_if(broken_.begin(), broken_.end(), [&](const SharedFormula& one) {
        return leads_to(formula, one);
    });
    if (group == broken_.end()) return false;
    RecordStream master(stream_, group->record);
    master.next();
    const bool is_array = group->kind == SharedFormula::Kind::Array;
    std::optional<std::string> own;
    if (version_ == BiffVersion::Biff8 && is_array)
        own = ArrayItem::record_data(master.record(), *group, cell.row, cell.first_column);
    else if (version_ == BiffVersion::Biff8 && group->kind == SharedFormula::Kind::Shared)
        own = own_formula(master.record(), cell.row, cell.first_column);
    if (!own || kTokenBytes + own->size() > kMaxRecordBytes) {
        append_result(stream_, cell, formula, out);
        return true;
    }
    std::string data(formula.data.substr(0, kTokenBytes));
    const auto flags = static_cast<std::uint16_t>(formula.u16(kFlags) & ~kIsShared);
    RecordWriter(data).set_u16(kFlags, flags);
    if (is_array) {
        append_u16(data, 5);
        data += static_cast<char>(kExp);
        append_u16(data, cell.row);
        append_u16(data, cell.first_column);
        append_record(record::kFormula, data, {}, out);
        append_record(record::kArray, *own, {}, out);
    } else {
        append_record(record::kFormula, data, *own, out); // with its length in front
    }
    append_string(cell, out);
    return true;
}

/// The string that the formula of a cell has as its result.
void SharedFormulas::append_string(const CellExtent& cell, std::string& out) const {
    RecordStream records(stream_.substr(0, cell.end), cell.begin);
    while (records.next())
        if (records.record().id == record::kString) {
            out.append(
                stream_.substr(records.record().position, cell.end - records.record().position));
            return;
        }
}

} // namespace workbook
