// SPDX-License-Identifier: Apache-2.0
//
// Whether a text is a formula in A1 notation as files have it (ECMA-376 part 1, 18.17.2): English
// function names, commas between arguments, points in numbers. Applications refuse files with
// anything else.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace workbook {

/// The most characters, UTF-16 units, that applications take (18.17.1).
inline constexpr std::size_t kMaxFormulaUnits = 8192;

struct FormulaProblem {
    std::size_t position = 0; ///< zero-based, in bytes of the formula
    std::string reason;       ///< part of a sentence: "a closing parenthesis is missing"
};

/// What is wrong with a formula, UTF-8 without the equals sign; nullopt for one that can be
/// written. Names of sheets, functions and cells are not looked up, but functions that applications
/// know by a number must have as many arguments as they take.
std::optional<FormulaProblem> check_formula(std::string_view formula);

} // namespace workbook
