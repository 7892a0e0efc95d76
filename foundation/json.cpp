// SPDX-License-Identifier: Apache-2.0
#include "foundation/json.h"

#include <cmath>
#include <system_error>

namespace foundation::json {

namespace {

constexpr std::size_t kMaxDepth = 512;

void drop_non_finite(Value& value) {
    if (value.is_double()) {
        if (!std::isfinite(value.get_double())) value = nullptr;
    } else if (value.is_array()) {
        for (Value& element : value.get_array())
            drop_non_finite(element);
    } else if (value.is_object()) {
        for (auto& member : value.get_object())
            drop_non_finite(member.value());
    }
}

bool is_finite(const Value& value) {
    const auto all = [](const auto& range, auto element) {
        for (const auto& item : range)
            if (!is_finite(element(item))) return false;
        return true;
    };
    if (value.is_double()) return std::isfinite(value.get_double());
    if (value.is_array())
        return all(value.get_array(), [](const Value& item) -> const Value& { return item; });
    if (value.is_object())
        return all(value.get_object(),
                   [](const auto& item) -> const Value& { return item.value(); });
    return true;
}

} // namespace

Value parse(std::string_view text) {
    boost::json::parse_options options;
    options.max_depth = kMaxDepth;
    boost::json::stream_parser parser({}, options);
    boost::json::error_code failure;
    const std::size_t taken = parser.write_some(text.data(), text.size(), failure);
    if (failure) throw ParseError(failure.message());
    if (taken != text.size()) throw ParseError("Parse incomplete");
    parser.finish(failure);
    if (failure) throw ParseError(failure.message());
    return parser.release();
}

std::string to_text(const Value& value) {
    if (is_finite(value)) return boost::json::serialize(value);
    Value copy = value;
    drop_non_finite(copy);
    return boost::json::serialize(copy);
}

} // namespace foundation::json
