// SPDX-License-Identifier: Apache-2.0
//
// The functions of worksheets that have a number in the binary formats (MS-XLS 2.5.198.17 Ftab):
// their names and how many arguments they take. Functions that came later have a name only and are
// not listed, nor are the commands of macro sheets.
#pragma once

#include <cstdint>
#include <string_view>

namespace workbook {

struct FunctionFacts {
    static constexpr std::uint8_t kMany = 255; ///< as many as an application takes

    std::uint16_t number;
    std::string_view name; ///< in capitals
    std::uint8_t least_arguments;
    std::uint8_t most_arguments;

    bool takes_one_count() const { return least_arguments == most_arguments; }
};

/// Null for a number that is not listed.
const FunctionFacts* function_with_number(std::uint16_t number);
/// Compared without regard to case; null for a name that is not listed.
const FunctionFacts* function_with_name(std::string_view name);

} // namespace workbook
