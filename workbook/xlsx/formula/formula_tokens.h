// SPDX-License-Identifier: Apache-2.0
//
// Cuts the text of a formula into tokens, as far as references and sheet names ask for it (ECMA-376
// part 1, 18.17.2.2; without the equals sign). All tokens together are the text.
#pragma once

#include <string>
#include <string_view>

namespace workbook {

enum class FormulaTokenKind {
    SheetPrefix, ///< up to and with the '!': "Sheet1!", "'It''s'!", "A:C!", "'A:C'!"
    OtherPrefix, ///< a prefix that names another book or a link: "[1]Sheet1!", "'[B.xlsx]S'!"
    Reference,   ///< a cell, an area, whole columns or rows: "$A1", "A1:B2", "$A:C", "1:3"
    Name,        ///< a name, a constant or a structured reference: "Rate", "TRUE", "Table1[Col]"
    Function,    ///< a name right before a '('
    Error,       ///< "#REF!", "#N/A"
    Other        ///< everything else, strings and numbers included
};

struct FormulaToken {
    FormulaTokenKind kind = FormulaTokenKind::Other;
    std::string_view text; ///< empty at the end of the formula
};

class FormulaTokenizer {
  public:
    /// `formula` must outlive this and its tokens.
    explicit FormulaTokenizer(std::string_view formula) : rest_(formula) {}

    FormulaToken next();

    /// Whether a string, a quoted name or a bracket has no end: the text is not a formula.
    bool is_broken() const { return is_broken_; }

  private:
    FormulaToken take(FormulaTokenKind kind, std::size_t count);
    FormulaToken take_operand();
    FormulaToken take_bracket();
    FormulaToken take_broken();

    std::string_view rest_;
    FormulaTokenKind last_kind_ = FormulaTokenKind::Other;
    char last_character_ = 0;
    bool is_broken_ = false;
};

/// The names that a `SheetPrefix` holds, without quotes; `last` is empty when it is not a span.
struct SheetPrefixNames {
    std::string first, last;
};
SheetPrefixNames names_in_prefix(std::string_view prefix);

/// The prefix for a sheet, or for a span when `last` is not empty, in quotes where they are needed.
std::string make_sheet_prefix(std::string_view first, std::string_view last);

} // namespace workbook
