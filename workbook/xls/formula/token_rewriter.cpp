// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/formula/token_rewriter.h"

#include <utility>
#include <vector>

#include "workbook/io/little_endian.h"
#include "workbook/xls/formula/token_stream.h"

namespace workbook::biff {

namespace {

constexpr char kRefError = 0x17; ///< #REF! (MS-XLS 2.5.10)

void store_u16(std::string& bytes, std::size_t position, std::uint16_t value) {
    bytes[position] = static_cast<char>(value & 0xFF);
    bytes[position + 1] = static_cast<char>(value >> 8);
}

void set_id(std::string& formula, const FormulaToken& token, TokenId id) {
    constexpr std::uint8_t kClassBits = 0x60;
    const auto number = static_cast<std::uint8_t>(id);
    formula[token.body - 1] = static_cast<char>((token.code & kClassBits) | (number & 0x1F));
}

class Rewriter {
  public:
    Rewriter(std::string& formula, std::vector<FormulaToken> tokens, const TokenChanges& changes)
        : formula_(formula), tokens_(std::move(tokens)), changes_(changes) {}

    bool rewrite() {
        // From the end, so that a memory token knows what became of its expression, and positions
        // of extra data before what is removed stay right.
        for (std::size_t i = tokens_.size(); i-- > 0;)
            rewrite_token(tokens_[i]);
        return is_changed_;
    }

  private:
    void rewrite_token(const FormulaToken& token) {
        switch (token.id()) {
        case TokenId::Name:
            if (changes_.name) replace_name(token.body, changes_.name(name_at(token.body)));
            break;
        case TokenId::ExternalName:
            rewrite_external_name(token);
            break;
        case TokenId::Reference3d:
            if (!replace_extern_sheet(token)) lose(token, TokenId::ReferenceError3d);
            break;
        case TokenId::Area3d:
            if (!replace_extern_sheet(token)) lose(token, TokenId::AreaError3d);
            break;
        case TokenId::MemoryArea:
            check_memory(token);
            break;
        default:
            break;
        }
    }

    std::uint32_t name_at(std::size_t position) const {
        return load_u32(formula_.data() + position);
    }

    void replace_name(std::size_t position, std::uint32_t now) {
        if (now == name_at(position)) return;
        store_u16(formula_, position, static_cast<std::uint16_t>(now & 0xFFFF));
        store_u16(formula_, position + 2, static_cast<std::uint16_t>(now >> 16));
        is_changed_ = true;
    }

    void rewrite_external_name(const FormulaToken& token) {
        constexpr std::size_t kEntryBytes = 2;
        const std::size_t name = token.body + kEntryBytes;
        const std::uint16_t entry = load_u16(formula_.data() + token.body);
        replace_extern_sheet(token);
        if (changes_.extern_name) replace_name(name, changes_.extern_name(entry, name_at(name)));
    }

    /// False when the sheets are gone.
    bool replace_extern_sheet(const FormulaToken& token) {
        if (!changes_.extern_sheet) return true;
        const std::uint16_t old = load_u16(formula_.data() + token.body);
        const std::optional<std::uint16_t> now = changes_.extern_sheet(old);
        if (!now) return false;
        if (*now != old) {
            store_u16(formula_, token.body, *now);
            is_changed_ = true;
        }
        return true;
    }

    void lose(const FormulaToken& token, TokenId error) {
        set_id(formula_, token, error);
        lost_.push_back(token.body - 1);
        is_changed_ = true;
    }

    /// The rectangles that a memory token keeps are no longer those of its expression.
    void check_memory(const FormulaToken& token) {
        const std::size_t end = token.end() + load_u16(formula_.data() + token.body + 4);
        bool lost = false;
        for (const std::size_t position : lost_)
            lost = lost || (position >= token.end() && position < end);
        if (!lost) return;
        set_id(formula_, token, TokenId::MemoryError);
        formula_.replace(token.body, 4, std::string{kRefError, 0, 0, 0});
        formula_.erase(token.extra, token.extra_bytes);
    }

    std::string& formula_;
    std::vector<FormulaToken> tokens_;
    const TokenChanges& changes_;
    std::vector<std::size_t> lost_; ///< positions of references that became errors
    bool is_changed_ = false;
};

constexpr std::uint16_t kRelativeRow = 0x8000;
constexpr std::uint16_t kRelativeColumn = 0x4000;

/// A row and a column field, the latter with both flags.
struct Corner {
    std::uint16_t row = 0, column = 0;
};

/// Makes offsets from a cell a reference.
Corner seen_from(Corner corner, int row, int column) {
    constexpr unsigned kLastColumn = 0xFF;
    if ((corner.column & kRelativeRow) != 0)
        corner.row = static_cast<std::uint16_t>(corner.row + row);
    const unsigned flags = corner.column & (kRelativeRow | kRelativeColumn);
    unsigned number = corner.column & kLastColumn;
    if ((flags & kRelativeColumn) != 0)
        number = (number + static_cast<unsigned>(column)) & kLastColumn;
    corner.column = static_cast<std::uint16_t>(flags | number);
    return corner;
}

/// A wrapped rectangle begins at the smaller number; each number keeps its flag.
void put_in_order(Corner& first, Corner& last) {
    constexpr unsigned kColumn = 0x3FFF | kRelativeColumn;
    if (first.row > last.row) {
        std::swap(first.row, last.row);
        const unsigned flag = first.column & kRelativeRow;
        first.column = static_cast<std::uint16_t>((first.column & ~kRelativeRow) |
                                                  (last.column & kRelativeRow));
        last.column = static_cast<std::uint16_t>((last.column & ~kRelativeRow) | flag);
    }
    if ((first.column & 0x3FFF) > (last.column & 0x3FFF)) {
        const unsigned column = first.column & kColumn;
        first.column =
            static_cast<std::uint16_t>((first.column & ~kColumn) | (last.column & kColumn));
        last.column = static_cast<std::uint16_t>((last.column & ~kColumn) | column);
    }
}

} // namespace

bool rewrite_tokens(std::string& formula, std::size_t token_bytes, const TokenChanges& changes) {
    auto tokens = parse_tokens(formula, token_bytes);
    return tokens && Rewriter(formula, std::move(*tokens), changes).rewrite();
}

std::optional<std::string> formula_of_cell(std::string_view shared, std::size_t token_bytes,
                                           int row, int column) {
    const auto tokens = parse_tokens(shared, token_bytes);
    if (!tokens) return {};
    std::string formula{shared};
    for (const FormulaToken& token : *tokens) {
        const auto field = [&](std::size_t index) {
            return load_u16(shared.data() + token.body + 2 * index);
        };
        const auto store = [&](std::size_t index, std::uint16_t value) {
            store_u16(formula, token.body + 2 * index, value);
        };
        if (token.id() == TokenId::RelativeReference) {
            const Corner cell = seen_from({field(0), field(1)}, row, column);
            store(0, cell.row);
            store(1, cell.column);
            set_id(formula, token, TokenId::Reference);
        } else if (token.id() == TokenId::RelativeArea) {
            Corner first = seen_from({field(0), field(2)}, row, column);
            Corner last = seen_from({field(1), field(3)}, row, column);
            put_in_order(first, last);
            store(0, first.row);
            store(1, last.row);
            store(2, first.column);
            store(3, last.column);
            set_id(formula, token, TokenId::Area);
        }
    }
    return formula;
}

} // namespace workbook::biff
