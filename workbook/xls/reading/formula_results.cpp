// SPDX-License-Identifier: Apache-2.0
//
// Results are numbers unless their last two bytes are 0xFFFF, which no number has.
#include "workbook/xls/reading/formula_results.h"

#include <cstring>

#include "workbook/io/little_endian.h"

namespace workbook {

FormulaResult parse_formula_result(const char* bytes) {
    FormulaResult result;
    if (load_u16(bytes + 6) != 0xFFFF) {
        const std::uint64_t bits = load_u64(bytes);
        std::memcpy(&result.number, &bits, sizeof bits);
        return result;
    }
    result.code = static_cast<std::uint8_t>(bytes[2]);
    switch (bytes[0]) {
    case 1:
        result.kind = ResultKind::Boolean;
        break;
    case 2:
        result.kind = ResultKind::Error;
        break;
    case 3:
        result.kind = ResultKind::EmptyString;
        break;
    default:
        result.kind = ResultKind::String;
    }
    return result;
}

std::string_view error_text(std::uint8_t code) {
    switch (code) {
    case 0x00:
        return "#NULL!";
    case 0x07:
        return "#DIV/0!";
    case 0x0F:
        return "#VALUE!";
    case 0x17:
        return "#REF!";
    case 0x1D:
        return "#NAME?";
    case 0x24:
        return "#NUM!";
    case 0x2A:
        return "#N/A";
    case 0x2B:
        return "#GETTING_DATA";
    default:
        return "#ERROR!";
    }
}

} // namespace workbook
