// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/formula/token_stream.h"

#include <array>

#include "workbook/io/little_endian.h"

namespace workbook::biff {

namespace {

constexpr signed char kUnknown = -1;
constexpr signed char kVaries = -2; ///< see `body_bytes`

/// Bytes after the first one of tokens 0x00 to 0x3F (MS-XLS 2.5.198.25 and the tokens' own
/// clauses).
constexpr std::array<signed char, 0x40> kBodyBytes{
    // 0x00: PtgExp, PtgTbl, operators
    kUnknown, 4, 4, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    // 0x10: operators, parenthesis, missing argument, string, extended, attribute, constants
    0, 0, 0, 0, 0, 0, 0, kVaries, kVaries, kVaries, kUnknown, kUnknown, 1, 1, 2, 8,
    // 0x20: array, functions, name, references, memory tokens, errors, relative references
    7, 2, 3, 4, 4, 8, 6, 6, 6, 2, 4, 8, 4, 8, 2, 2,
    // 0x30: external name, references with a sheet
    kUnknown, kUnknown, kUnknown, kUnknown, kUnknown, kUnknown, kUnknown, kUnknown, kUnknown, 6, 6,
    10, 6, 10, kUnknown, kUnknown};

/// Bytes of a string whose length field was read: flags and characters of one or two bytes.
std::size_t string_bytes(unsigned flags, std::size_t characters) {
    return 1 + ((flags & 1) != 0 ? 2 * characters : characters);
}

class TokenParser {
  public:
    TokenParser(std::string_view formula, std::size_t token_bytes)
        : formula_(formula), end_(token_bytes), extra_(token_bytes) {}

    std::optional<std::vector<FormulaToken>> parse() {
        if (end_ > formula_.size()) return {};
        for (std::size_t at = 0; at < end_; at = tokens_.back().end())
            if (!add_token(at)) return {};
        for (FormulaToken& token : tokens_)
            if (!place_extra(token)) return {};
        return std::move(tokens_);
    }

  private:
    bool add_token(std::size_t at) {
        FormulaToken token;
        token.code = static_cast<std::uint8_t>(formula_[at]);
        token.body = at + 1;
        const auto number = static_cast<std::size_t>(token.id());
        if (token.code >= 0x80) return false;
        const std::optional<std::size_t> count = kBodyBytes[number] >= 0
                                                     ? static_cast<std::size_t>(kBodyBytes[number])
                                                     : varying_bytes(token);
        if (!count || *count > end_ - token.body) return false;
        token.body_bytes = *count;
        tokens_.push_back(token);
        return true;
    }

    std::optional<std::size_t> varying_bytes(const FormulaToken& token) const {
        const std::size_t left = end_ - token.body;
        switch (token.id()) {
        case TokenId::String:
            if (left < 2) return {};
            return 1 + string_bytes(byte(token.body + 1), byte(token.body));
        case TokenId::Extended:
            return 5; // its own number and four bytes
        case TokenId::Attribute: {
            constexpr unsigned kChoose = 4;
            if (left < 3) return {};
            if ((byte(token.body) & kChoose) == 0) return 3;
            // One jump for each choice and one past the function (MS-XLS 2.5.198.35).
            return 3 + 2 * (std::size_t{load_u16(formula_.data() + token.body + 1)} + 1);
        }
        default:
            return {};
        }
    }

    bool place_extra(FormulaToken& token) {
        token.extra = extra_;
        if (token.id() == TokenId::Array) {
            if (!skip_array()) return false;
        } else if (token.id() == TokenId::MemoryArea) {
            // A count and rectangles of four numbers (MS-XLS 2.5.198.57).
            if (formula_.size() - extra_ < 2) return false;
            if (!skip(2 + std::size_t{8} * load_u16(formula_.data() + extra_))) return false;
        } else if (token.id() == TokenId::Extended && keeps_cells(byte(token.body))) {
            // A count of 30 bits and that many cells (MS-XLS 2.5.198.45).
            if (formula_.size() - extra_ < 4) return false;
            const std::uint32_t count = load_u32(formula_.data() + extra_) & 0x3FFFFFFF;
            if (!skip(4 + std::size_t{4} * count)) return false;
        }
        token.extra_bytes = extra_ - token.extra;
        return true;
    }

    /// Natural-language references to several cells: PtgElfRadicalS, PtgElfColS, PtgElfColSV.
    static bool keeps_cells(unsigned extended) {
        return extended == 0x0B || extended == 0x0D || extended == 0x0F;
    }

    /// Columns and rows less one, then that many values (MS-XLS 2.5.198.43).
    bool skip_array() {
        if (formula_.size() - extra_ < 3) return false;
        const std::size_t columns = byte(extra_) + std::size_t{1};
        const std::size_t rows = load_u16(formula_.data() + extra_ + 1) + std::size_t{1};
        extra_ += 3;
        for (std::size_t i = 0; i < columns * rows; ++i)
            if (!skip_array_value()) return false;
        return true;
    }

    bool skip_array_value() {
        constexpr unsigned kString = 2;
        constexpr std::size_t kOtherBytes = 9;
        if (extra_ == formula_.size()) return false;
        if (byte(extra_) != kString) return skip(kOtherBytes);
        if (formula_.size() - extra_ < 4) return false;
        return skip(3 + string_bytes(byte(extra_ + 3), load_u16(formula_.data() + extra_ + 1)));
    }

    bool skip(std::size_t count) {
        if (count > formula_.size() - extra_) return false;
        extra_ += count;
        return true;
    }

    unsigned byte(std::size_t position) const {
        return static_cast<unsigned char>(formula_[position]);
    }

    std::string_view formula_;
    std::size_t end_;   ///< of the tokens
    std::size_t extra_; ///< end of the extra data so far
    std::vector<FormulaToken> tokens_;
};

} // namespace

std::optional<std::vector<FormulaToken>> parse_tokens(std::string_view formula,
                                                      std::size_t token_bytes) {
    return TokenParser(formula, token_bytes).parse();
}

} // namespace workbook::biff
