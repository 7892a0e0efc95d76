// SPDX-License-Identifier: Apache-2.0
//
// The cached result of a formula: eight bytes that are a number or say what else it is (MS-XLS
// 2.5.133 FormulaValue), and the strings of error codes (2.5.10 BErr).
#pragma once

#include <cstdint>
#include <string_view>

namespace workbook {

enum class ResultKind {
    Number,
    String,      ///< in the STRING record that follows
    EmptyString, ///< no STRING record follows
    Boolean,
    Error
};

struct FormulaResult {
    ResultKind kind = ResultKind::Number;
    double number = 0.0;
    std::uint8_t code = 0; ///< of an error; 0 or 1 of a boolean
};

/// `bytes` points to eight bytes.
FormulaResult parse_formula_result(const char* bytes);

/// "#DIV/0!" and the like; "#ERROR!" for a code that no version defines.
std::string_view error_text(std::uint8_t code);

} // namespace workbook
