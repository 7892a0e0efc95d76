// SPDX-License-Identifier: Apache-2.0
//
// Breadth first; each part's relationships are read once.
#include "workbook/opc/part_reachability.h"

namespace workbook {

std::vector<ReachedPart> reachable_parts(OpcPackage& package, const FollowsRelationship& follows,
                                         const std::vector<std::string>& roots) {
    std::vector<ReachedPart> reached;
    std::unordered_set<std::string> known;
    const auto reach = [&](const std::string& part, const std::string& type) {
        if (!part.empty() && package.has_part(part) && known.insert(part).second)
            reached.push_back({part, type});
    };
    const auto follow = [&](const std::string& source) {
        for (const Relationship& relationship : package.relationships(source))
            if (!relationship.is_external && follows(source, relationship))
                reach(relationship.target, relationship.type);
    };
    follow("");
    for (const std::string& root : roots)
        reach(root, {});
    for (std::size_t i = 0; i < reached.size(); ++i)
        follow(std::string(reached[i].part));
    return reached;
}

std::unordered_set<std::string> names_of(const std::vector<ReachedPart>& parts) {
    std::unordered_set<std::string> names;
    for (const ReachedPart& part : parts)
        names.insert(part.part);
    return names;
}

} // namespace workbook
