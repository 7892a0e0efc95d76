// SPDX-License-Identifier: Apache-2.0
//
// A FORMULA record may be followed by the formula that it shares with others (SHRFMLA, ARRAY) and
// by the string that is its result: a cell is complete when the next record is something else.
#include "workbook/xls/reading/formula_reader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xls/biff_version.h"
#include "workbook/xls/formula/formula_printer.h"
#include "workbook/xls/formula/token_rewriter.h"
#include "workbook/xls/reading/formula_results.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

/// Tokens with their length before them.
struct Formula {
    std::string_view tokens;
    std::size_t token_bytes = 0;
};

/// The formula of a record whose field for the length is at `length_at`.
std::optional<Formula> formula_at(const Record& record, std::size_t length_at) {
    if (record.size() < length_at + 2) return {};
    return Formula{record.data.substr(length_at + 2), record.u16(length_at)};
}

class FormulaReader {
  public:
    FormulaReader(std::string_view stream, std::size_t position, RowSpan rows,
                  const biff::FormulaContext& context, const FormulaVisitor& visit)
        : records_(stream, position), rows_(rows), context_(context), visit_(visit) {}

    void run() {
        records_.next(); // BOF
        for (int depth = 1; depth > 0 && records_.next();) {
            const Record& record = records_.record();
            if (record.id == record::kEof) {
                --depth;
            } else if (record::is_bof(record.id)) {
                if (++depth > kMaxSubstreamDepth)
                    refuse_record(record, "substreams are nested too deeply");
            } else if (depth == 1) {
                read_record(record);
            }
        }
        deliver();
    }

  private:
    using Key = std::uint32_t; ///< row and column

    struct Cell {
        int row = 0, column = 0;
        Formula formula;
        bool has_result = true;
    };

    static Key key_of(std::uint16_t row, std::uint16_t column) {
        return static_cast<Key>(row) << 16 | column;
    }

    void read_record(const Record& record) {
        constexpr std::size_t kSharedLength = 8, kArrayLength = 12;
        switch (record.id) {
        case record::kFormula:
        case record::kFormula3:
        case record::kFormula4:
            deliver();
            read_cell(record);
            return;
        case record::kShrFmla:
            return remember(shared_, record, kSharedLength);
        case record::kArray:
            return remember(arrays_, record, kArrayLength);
        case record::kString:
            if (cell_) cell_->has_result = true;
            return;
        default:
            return;
        }
    }

    void read_cell(const Record& record) {
        constexpr std::size_t kResult = 6, kLength = 20;
        const std::optional<Formula> formula = formula_at(record, kLength);
        if (!formula) return;
        const FormulaResult result = parse_formula_result(record.data.data() + kResult);
        cell_ = {record.u16(0), record.u16(2), *formula, result.kind != ResultKind::String};
    }

    /// The place that a formula names which is somewhere else (PtgExp).
    static std::optional<Key> place_of_group(const Formula& formula) {
        constexpr char kExp = 0x01;
        if (formula.token_bytes != 5 || formula.tokens.size() < 5 || formula.tokens[0] != kExp)
            return {};
        const char* const place = formula.tokens.data() + 1;
        return key_of(load_u16(place), load_u16(place + 2));
    }

    /// A group belongs to the cell before it, and is found by the place that this cell names.
    void remember(std::unordered_map<Key, Formula>& groups, const Record& record,
                  std::size_t length_at) {
        const std::optional<Formula> formula = formula_at(record, length_at);
        const std::optional<Key> place = cell_ ? place_of_group(cell_->formula) : std::nullopt;
        if (!formula || !place) return;
        if (groups.size() >= kMaxFormulaGroups) refuse_record(record, "too many shared formulas");
        groups[*place] = *formula;
    }

    void deliver() {
        if (!cell_) return;
        const Cell cell = *cell_;
        cell_.reset();
        if (!rows_.holds(cell.row)) return;
        if (const auto text = text_of(cell))
            visit_({cell.row, cell.column, *text, cell.has_result});
    }

    std::optional<std::string> text_of(const Cell& cell) const {
        const auto place = place_of_group(cell.formula);
        if (!place) return print(cell.formula.tokens, cell.formula.token_bytes);
        if (const auto found = shared_.find(*place); found != shared_.end()) {
            const auto own = biff::formula_of_cell(found->second.tokens, found->second.token_bytes,
                                                   cell.row, cell.column);
            if (!own) return {};
            return print(*own, found->second.token_bytes);
        }
        const auto found = arrays_.find(*place);
        const Key own =
            key_of(static_cast<std::uint16_t>(cell.row), static_cast<std::uint16_t>(cell.column));
        if (found == arrays_.end() || own != *place) return {};
        return print(found->second.tokens, found->second.token_bytes);
    }

    std::optional<std::string> print(std::string_view tokens, std::size_t token_bytes) const {
        return biff::formula_text(tokens, token_bytes, context_);
    }

    RecordStream records_;
    const RowSpan rows_;
    const biff::FormulaContext& context_;
    const FormulaVisitor& visit_;
    std::optional<Cell> cell_; ///< not yet delivered
    std::unordered_map<Key, Formula> shared_, arrays_;
};

} // namespace

void read_xls_formulas(std::string_view stream, std::size_t position, RowSpan rows,
                       const biff::FormulaContext& context, const FormulaVisitor& visit) {
    FormulaReader(stream, position, rows, context, visit).run();
}

} // namespace workbook
