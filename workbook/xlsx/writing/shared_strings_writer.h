// SPDX-License-Identifier: Apache-2.0
//
// Writes the shared strings part (ECMA-376 part 1, 18.4.9) with the strings that were written to
// cells: the items that the part has are copied unchanged, new ones follow.
#pragma once

#include <cstdint>
#include <vector>

#include "workbook/cells/string_set.h"
#include "workbook/io/byte_sink.h"
#include "workbook/io/byte_source.h"

namespace workbook {

/// Where each added string will be in the part.
struct SharedStringPlan {
    std::vector<std::uint32_t> index_of; ///< by index into the added strings
    std::uint64_t kept = 0;              ///< items that the part has
    std::uint64_t total = 0;             ///< items that it will have
    bool changes_part() const { return total != kept; }
};

/// A string that the part has already, as plain text, is not added again. `part` is null for
/// a book without such a part. Throws `Error`.
SharedStringPlan plan_shared_strings(ByteSource* part, const StringSet& added);

/// `part` is the same part from its beginning, or null. Throws `Error`.
void write_shared_strings(ByteSource* part, const StringSet& added, const SharedStringPlan& plan,
                          ByteSink& out);

/// Appends `text` as XML character data: '&', '<' and '>' as references; carriage returns, what XML
/// cannot hold (control characters, lone surrogates, U+FFFE) and underscores that would begin an
/// escape as `_xHHHH_` (ECMA-376 part 1, 22.9.2.19).
void append_escaped_text(std::string& out, std::string_view text);

/// Whether an element of this text needs xml:space="preserve".
bool needs_space_preserved(std::string_view text);

} // namespace workbook
