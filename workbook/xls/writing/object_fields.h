// SPDX-License-Identifier: Apache-2.0
//
// The fields of an OBJ record (MS-XLS 2.4.181): what kind of object it is and what belongs to that
// kind, each with a number and a size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "workbook/io/little_endian.h"

namespace workbook {

enum class ObjectFieldId : std::uint16_t {
    End = 0x00,
    Macro = 0x04,
    PictureOptions = 0x08,
    PictureSource = 0x09, ///< an embedded object, a control, or cells that a picture shows
    ScrollLink = 0x0E,
    List = 0x13,
    CheckLink = 0x14,
    Common = 0x15
};

struct ObjectField {
    static constexpr std::size_t kHeaderBytes = 4;

    ObjectFieldId id;
    std::size_t begin = 0, end = 0; ///< in the record's data, number and size included
};

/// Calls `visit` for each field; a list's size is not stated, it is the last and goes to the end.
/// What breaks the format ends the walk.
template <class Visit>
void for_each_object_field(std::string_view data, const Visit& visit) {
    std::size_t at = 0;
    while (data.size() - at >= ObjectField::kHeaderBytes) {
        const auto id = static_cast<ObjectFieldId>(load_u16(data.data() + at));
        std::size_t end = at + ObjectField::kHeaderBytes + load_u16(data.data() + at + 2);
        if (id == ObjectFieldId::List) end = data.size();
        if (end > data.size()) return;
        visit(ObjectField{id, at, end});
        if (id == ObjectFieldId::End) return;
        at = end;
    }
}

} // namespace workbook
