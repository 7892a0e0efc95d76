// SPDX-License-Identifier: Apache-2.0
//
// The `_xHHHH_` escapes of strings in cells: a UTF-16 code unit that XML cannot hold, or an
// underscore that would begin such an escape (ECMA-376 part 1, 22.9.2.19, ST_Xstring).
#pragma once

#include <string>
#include <string_view>

namespace workbook {

/// Appends `text` with its escapes resolved to `out` (generalised UTF-8). Four hexadecimal digits,
/// either case, between "_x" and "_"; two escaped surrogates that form a pair become one character.
void append_unescaped(std::string& out, std::string_view text);

/// Decodes the strings of cells as XML has them. Keeps its buffers between
/// strings.
class CellTextDecoder {
  public:
    /// The text with references, then escapes resolved; a null view when a reference is none. Valid
    /// until the next call.
    std::string_view decode(std::string_view raw);

  private:
    std::string decoded_, unescaped_;
};

} // namespace workbook
