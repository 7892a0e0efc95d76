// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/formula_records.h"

#include <cstddef>
#include <string_view>

#include "workbook/io/little_endian.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/writing/object_fields.h"

namespace workbook {

namespace {

class FormulaRewriter {
  public:
    FormulaRewriter(std::string& data, const biff::TokenChanges& changes)
        : data_(data), changes_(changes) {}

    /// A formula to the end of the data, whose length is stated before it.
    void rewrite_rest(std::size_t length_at, std::size_t begin) {
        if (begin > data_.size()) return;
        rewrite(begin, data_.size() - begin, load_u16(data_.data() + length_at));
    }

    /// Two formulas without a length before each, next to each other.
    void rewrite_pair(std::size_t begin, std::size_t first_bytes, std::size_t second_bytes) {
        rewrite(begin, first_bytes, first_bytes);
        rewrite(begin + first_bytes, second_bytes, second_bytes);
    }

    /// CF (MS-XLS 2.4.42): the formulas are last.
    void rewrite_conditional_format() {
        constexpr std::size_t kFirstLength = 2, kSecondLength = 4, kHeader = 6;
        if (data_.size() < kHeader) return;
        const std::size_t first = u16(kFirstLength), second = u16(kSecondLength);
        if (kHeader + first + second > data_.size()) return;
        rewrite_pair(data_.size() - first - second, first, second);
    }

    /// CF12 (2.4.43): two formulas after the format, then the one that says whether it applies.
    void rewrite_conditional_format12() {
        constexpr std::size_t kFirstLength = 14, kSecondLength = 16, kFormatBytes = 18,
                              kFormat = 22, kEmptyFormatBytes = 2;
        if (data_.size() < kFormat) return;
        const std::size_t first = u16(kFirstLength), second = u16(kSecondLength);
        const std::uint32_t format = load_u32(data_.data() + kFormatBytes);
        if (format > data_.size()) return;
        const std::size_t begin = kFormat + (format == 0 ? kEmptyFormatBytes : format);
        rewrite_pair(begin, first, second);
        const std::size_t active = begin + first + second;
        if (active + 2 > data_.size()) return;
        rewrite(active + 2, u16(active), u16(active));
    }

    /// DV (2.4.92): options, four strings, two formulas with their lengths, the cells.
    void rewrite_validation() {
        std::size_t at = 4;
        for (int i = 0; i < 4; ++i) {
            if (at + 3 > data_.size()) return;
            const std::size_t width = (static_cast<unsigned char>(data_[at + 2]) & 1) != 0 ? 2 : 1;
            at += 3 + width * u16(at);
        }
        for (int i = 0; i < 2; ++i) {
            constexpr std::size_t kLengthBytes = 4;
            if (at + kLengthBytes > data_.size()) return;
            const std::size_t bytes = u16(at);
            rewrite(at + kLengthBytes, bytes, bytes);
            at += kLengthBytes + bytes;
        }
    }

    /// A text box shows a cell (TxO, 2.4.329).
    void rewrite_text_object() {
        constexpr std::size_t kFormula = 16;
        rewrite_object_formula(kFormula);
    }

    void rewrite_object() {
        for_each_object_field(data_, [this](const ObjectField& field) {
            switch (field.id) {
            case ObjectFieldId::Macro:
            case ObjectFieldId::ScrollLink:
            case ObjectFieldId::CheckLink:
                rewrite_object_formula(field.begin + 2); // its size is that of the field
                break;
            case ObjectFieldId::List:
                rewrite_object_formula(field.begin + ObjectField::kHeaderBytes);
                break;
            default:
                break;
            }
        });
    }

  private:
    std::size_t u16(std::size_t at) const { return load_u16(data_.data() + at); }

    /// ObjFmla (2.5.187): the size of all of it, that of the tokens, four bytes, the tokens.
    void rewrite_object_formula(std::size_t at) {
        constexpr std::size_t kTokens = 8;
        if (at + kTokens > data_.size() || u16(at) < kTokens - 2) return;
        const std::size_t token_bytes = u16(at + 2) & 0x7FFF;
        rewrite(at + kTokens, token_bytes, token_bytes);
    }

    void rewrite(std::size_t begin, std::size_t bytes, std::size_t token_bytes) {
        if (token_bytes == 0 || begin > data_.size() || bytes > data_.size() - begin) return;
        std::string formula = data_.substr(begin, bytes);
        if (biff::rewrite_tokens(formula, token_bytes, changes_))
            data_.replace(begin, bytes, formula);
    }

    std::string& data_;
    const biff::TokenChanges& changes_;
};

} // namespace

void rewrite_formulas(std::uint16_t id, std::string& data, const biff::TokenChanges& changes) {
    if (!changes.any()) return;
    FormulaRewriter rewriter(data, changes);
    switch (id) {
    case record::kFormula:
        rewriter.rewrite_rest(20, 22);
        break;
    case record::kArray:
        rewriter.rewrite_rest(12, 14);
        break;
    case record::kShrFmla:
        rewriter.rewrite_rest(8, 10);
        break;
    case record::kChartReference:
        rewriter.rewrite_rest(6, 8);
        break;
    case record::kConditionalFormat:
        rewriter.rewrite_conditional_format();
        break;
    case record::kConditionalFormat12:
        rewriter.rewrite_conditional_format12();
        break;
    case record::kValidation:
        rewriter.rewrite_validation();
        break;
    case record::kTextObject:
        rewriter.rewrite_text_object();
        break;
    case record::kObject:
        rewriter.rewrite_object();
        break;
    default:
        break;
    }
}

} // namespace workbook
