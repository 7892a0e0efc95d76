// SPDX-License-Identifier: Apache-2.0
//
// The pieces of a workbook file that a save either keeps or changes: the parts of a package, or the
// streams of a compound file and the substreams of its book. Read without the workbook's reader.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace corpus {

/// Contents by name. Positions of other records are left out of a book's records, since they follow
/// from what is between.
struct Parts {
    std::map<std::string, std::string> content;
    std::vector<std::string> order; ///< names as the file lists them
};

/// Reads a package, a compound file or a plain stream of records. Throws what its reader throws.
Parts read_parts(const std::u16string& path);

/// Whether a written number may change a part besides that of its sheet: the workbook part, which
/// is set to compute all formulas, and the calculation chain with what leads to it.
bool may_follow_a_number(std::string_view part);

} // namespace corpus
