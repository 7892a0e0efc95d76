// SPDX-License-Identifier: Apache-2.0
//
// Relative targets (RFC 3986, 5.2, for paths only).
#include "workbook/opc/part_name.h"

#include "foundation/ascii_case.h"

namespace workbook {

namespace {

bool is_slash(char c) {
    return c == '/' || c == '\\';
}

} // namespace

std::string resolve_target(std::string_view source, std::string_view target) {
    const std::string_view path = target.substr(0, target.find('#'));
    if (!path.empty() && is_slash(path.front())) return canonical_part_name(path);
    const std::size_t folder_end = source.find_last_of('/');
    std::string joined{folder_end == std::string_view::npos ? std::string_view{}
                                                            : source.substr(0, folder_end + 1)};
    return canonical_part_name(joined.append(path));
}

std::string relationships_part_name(std::string_view part) {
    const std::size_t slash = part.find_last_of('/');
    const std::size_t name_begin = slash == std::string_view::npos ? 0 : slash + 1;
    std::string name{part.substr(0, name_begin)};
    return name.append("_rels/").append(part.substr(name_begin)).append(".rels");
}

std::string new_part_spelling(std::string_view part) {
    constexpr std::string_view kUsual = "sharedStrings.xml";
    const std::size_t slash = part.rfind('/');
    const std::size_t begin = slash == std::string_view::npos ? 0 : slash + 1;
    std::string spelled(part);
    if (part.substr(begin) == foundation::unicode::ascii_lower(kUsual))
        spelled.replace(begin, spelled.npos, kUsual);
    return spelled;
}

} // namespace workbook
