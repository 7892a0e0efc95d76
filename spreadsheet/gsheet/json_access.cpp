// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/json_access.h"

#include "foundation/unicode.h"

namespace gsheet {

const Object* object_in(const Object& parent, std::string_view key) {
    const auto* const value = parent.if_contains(key);
    return value != nullptr ? value->if_object() : nullptr;
}

const Array* array_in(const Object& parent, std::string_view key) {
    const auto* const value = parent.if_contains(key);
    return value != nullptr ? value->if_array() : nullptr;
}

const Object* first_object_in(const Object& parent, std::string_view key) {
    const Array* const elements = array_in(parent, key);
    return elements != nullptr && !elements->empty() ? elements->front().if_object() : nullptr;
}

std::optional<std::int64_t> integer_in(const Object& parent, std::string_view key) {
    const auto* const value = parent.if_contains(key);
    if (value == nullptr || !value->is_int64()) return std::nullopt;
    return value->get_int64();
}

std::u16string text_in(const Object& parent, std::string_view key) {
    const auto* const value = parent.if_contains(key);
    if (value == nullptr || !value->is_string()) return {};
    const auto& text = value->get_string();
    return foundation::unicode::to_utf16({text.data(), text.size()});
}

bool flag_in(const Object& parent, std::string_view key) {
    const auto* const value = parent.if_contains(key);
    return value != nullptr && value->is_bool() && value->get_bool();
}

foundation::json::Value json_text(const std::u16string& text) {
    return foundation::json::Value(foundation::unicode::to_utf8(text));
}

} // namespace gsheet
