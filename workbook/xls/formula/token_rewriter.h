// SPDX-License-Identifier: Apache-2.0
//
// Changes what the tokens of a BIFF8 formula refer to. Tokens keep their lengths, so positions
// within the formula (jumps, memory tokens) stay right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace workbook::biff {

struct TokenChanges {
    /// The entry of EXTERNSHEET that takes the place of another; nothing for sheets that are gone,
    /// references to which become #REF!. Null: they stay.
    std::function<std::optional<std::uint16_t>(std::uint16_t entry)> extern_sheet;
    /// The one-based number of the defined name that takes the place of another. Null: they stay.
    std::function<std::uint32_t(std::uint32_t name)> name;
    /// The same for a name that a token reaches through an entry of EXTERNSHEET (PtgNameX), as the
    /// token had it. Null: they stay.
    std::function<std::uint32_t(std::uint16_t entry, std::uint32_t name)> extern_name;

    bool any() const { return extern_sheet || name || extern_name; }
};

/// Changes a formula of which the first `token_bytes` are tokens; their number stays, what follows
/// them may become shorter: rectangles that a memory token has of sheets that are gone are removed.
/// A name of another sheet or book (PtgNameX) keeps its entry where that is gone. Returns whether
/// anything changed; a formula that cannot be parsed is left alone.
bool rewrite_tokens(std::string& formula, std::size_t token_bytes, const TokenChanges& changes);

/// The formula that one cell (zero-based) of a shared formula has on its own: offsets become
/// references, which wrap at the edges of the sheet (MS-XLS 2.5.198.110). Nothing when the shared
/// formula cannot be parsed. `shared` is what SHRFMLA holds; the result has as many bytes.
std::optional<std::string> formula_of_cell(std::string_view shared, std::size_t token_bytes,
                                           int row, int column);

} // namespace workbook::biff
