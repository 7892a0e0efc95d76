// SPDX-License-Identifier: Apache-2.0
//
// The tokens of a BIFF8 formula (MS-XLS 2.2.2 and 2.5.198). A formula is a string of tokens,
// whose length its record states, and after it what some tokens keep outside of them: array
// constants and the rectangles of memory tokens.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace workbook::biff {

/// Numbers of tokens that mean something here; those from 0x20 on without their class.
enum class TokenId : std::uint8_t {
    SharedFormula = 0x01, ///< PtgExp: the formula is in SHRFMLA or ARRAY
    Table = 0x02,
    String = 0x17,
    Extended = 0x18,
    Attribute = 0x19,
    Error = 0x1C,
    Array = 0x20,
    Name = 0x23,
    Reference = 0x24,
    Area = 0x25,
    MemoryArea = 0x26,
    MemoryError = 0x27,
    MemoryNoMemory = 0x28,
    MemoryFunction = 0x29,
    ReferenceError = 0x2A,
    AreaError = 0x2B,
    RelativeReference = 0x2C, ///< PtgRefN: offsets from the cell that has the formula
    RelativeArea = 0x2D,
    ExternalName = 0x39,
    Reference3d = 0x3A,
    Area3d = 0x3B,
    ReferenceError3d = 0x3C,
    AreaError3d = 0x3D
};

struct FormulaToken {
    std::uint8_t code = 0; ///< the first byte: number and class
    std::size_t body = 0;  ///< position of what follows it
    std::size_t body_bytes = 0;
    std::size_t extra = 0; ///< position of what it keeps after all tokens
    std::size_t extra_bytes = 0;

    TokenId id() const { return static_cast<TokenId>(code < 0x20 ? code : (code & 0x1F) | 0x20); }
    std::size_t end() const { return body + body_bytes; }
};

/// Splits a formula of which the first `token_bytes` are tokens. Returns nothing when it breaks the
/// format: an unknown token, or one that does not fit. Bytes after the last token's extra data are
/// allowed.
std::optional<std::vector<FormulaToken>> parse_tokens(std::string_view formula,
                                                      std::size_t token_bytes);

} // namespace workbook::biff
