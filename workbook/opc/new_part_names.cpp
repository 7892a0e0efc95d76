// SPDX-License-Identifier: Apache-2.0
//
// Numbers at the end of a name are counted up to one that is free.
#include "workbook/opc/new_part_names.h"

#include <algorithm>

#include "workbook/error.h"
#include "workbook/opc/internal_link.h"
#include "workbook/opc/part_name.h"

namespace workbook {

namespace {

/// Part names may nest folders as they like; one that holds an escape of an escape would not come
/// back as it was written.
void check_writable(std::string_view name) {
    const auto is_odd = [](char c) { return c == '%' || static_cast<unsigned char>(c) < 0x20; };
    if (std::any_of(name.begin(), name.end(), is_odd))
        throw Error::refused("no part can be added beside \"" + std::string{name} +
                             "\": its name has characters that names of parts cannot have");
}

} // namespace

std::string NewPartNames::fresh(std::string_view model) {
    check_writable(model);
    const std::size_t slash = model.rfind('/');
    const std::size_t name_begin = slash == std::string_view::npos ? 0 : slash + 1;
    std::size_t dot = model.rfind('.');
    if (dot == std::string_view::npos || dot < name_begin) dot = model.size();
    std::size_t stem_end = dot;
    while (stem_end > name_begin && model[stem_end - 1] >= '0' && model[stem_end - 1] <= '9')
        --stem_end;
    const std::string stem(model.substr(0, stem_end));
    const std::string_view ending = model.substr(dot);
    std::uint64_t& last = last_[std::string(stem).append("*").append(ending)];
    std::string name;
    do {
        name = stem + std::to_string(++last);
        name += ending;
    } while (package_->has_part(name));
    return name;
}

std::string absolute_target(std::string_view part) {
    return "/" + percent_escaped(new_part_spelling(part), "/-_.~!$&'()*+,;=:@");
}

} // namespace workbook
