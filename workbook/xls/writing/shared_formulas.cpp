// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/shared_formulas.h"

#include <algorithm>
#include <optional>

#include "workbook/xls/formula/token_rewriter.h"
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
    if (group->kind != SharedFormula::Kind::Shared) {
        append_result(stream_, cell, formula, out);
        return true;
    }
    RecordStream master(stream_, group->record);
    master.next();
    const auto tokens = version_ == BiffVersion::Biff8
                            ? own_formula(master.record(), cell.row, cell.first_column)
                            : std::nullopt;
    if (!tokens || kTokenBytes + tokens->size() > kMaxRecordBytes) {
        append_result(stream_, cell, formula, out);
        return true;
    }
    std::string data(formula.data.substr(0, kTokenBytes));
    const auto flags = static_cast<std::uint16_t>(formula.u16(kFlags) & ~kIsShared);
    data[kFlags] = static_cast<char>(flags & 0xFF);
    data[kFlags + 1] = static_cast<char>(flags >> 8);
    data += *tokens; // with its length in front
    append_record(record::kFormula, data, {}, out);
    const std::size_t after = formula.position + RecordStream::kHeaderBytes + formula.size();
    out.append(stream_.substr(after, cell.end - after));
    return true;
}

} // namespace workbook
