// SPDX-License-Identifier: Apache-2.0
//
// BIFF8 tokens to the text that applications show, in A1 notation with English names (ECMA-376 part
// 1, 18.17). Blanks and line breaks between tokens are left out.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "workbook/xls/formula/formula_context.h"

namespace workbook::biff {

/// The text, UTF-8 without the equals sign, of a formula of which the first `token_bytes` are
/// tokens. Nullopt for a formula that has something of which no text is known: a command of a macro
/// sheet, a reference by a label, a link to another program; also for one that is longer than
/// applications take. Offsets of shared formulas must have become references.
std::optional<std::string> formula_text(std::string_view formula, std::size_t token_bytes,
                                        const FormulaContext& context);

} // namespace workbook::biff
