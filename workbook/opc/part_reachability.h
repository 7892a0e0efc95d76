// SPDX-License-Identifier: Apache-2.0
//
// Which parts of a package relationships lead to. Circles, parts that are missing and relationships
// to oneself do no harm.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "workbook/opc/opc_package.h"

namespace workbook {

struct ReachedPart {
    std::string part;
    std::string type; ///< of the first relationship that leads there, last segment
};

/// Whether a relationship of `source` counts.
using FollowsRelationship =
    std::function<bool(std::string_view source, const Relationship& relationship)>;

/// The parts that the package's relationships lead to, and those that `roots` lead to, themselves
/// included; each once, in the order in which they were met. Throws `Error`.
std::vector<ReachedPart> reachable_parts(OpcPackage& package, const FollowsRelationship& follows,
                                         const std::vector<std::string>& roots = {});

/// The same names for look-ups.
std::unordered_set<std::string> names_of(const std::vector<ReachedPart>& parts);

} // namespace workbook
