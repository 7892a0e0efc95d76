// SPDX-License-Identifier: Apache-2.0
//
// Members of the service's replies. What is absent or has another type than expected is null, empty
// or false: the service leaves out what has its default.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/json.h"

namespace gsheet {

using foundation::json::Array;
using foundation::json::Object;

const Object* object_in(const Object& parent, std::string_view key);
const Array* array_in(const Object& parent, std::string_view key);
/// The first element of an array member, when it is an object.
const Object* first_object_in(const Object& parent, std::string_view key);
std::optional<std::int64_t> integer_in(const Object& parent, std::string_view key);
std::u16string text_in(const Object& parent, std::string_view key);
bool flag_in(const Object& parent, std::string_view key);

/// A text as a JSON value.
foundation::json::Value json_text(const std::u16string& text);

} // namespace gsheet
