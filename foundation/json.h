// SPDX-License-Identifier: Apache-2.0
//
// JSON values and their text (RFC 8259) under the platform's names. Only sources include this
// header: it brings Boost.JSON.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "foundation/boost_json.h"

namespace foundation::json {

using Value = boost::json::value;
using Array = boost::json::array;
/// Keys in the order of their insertion.
using Object = boost::json::object;

/// A text that is not one JSON value; `what()` is the parser's description.
class ParseError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Parses a whole text; characters behind the value are an error ("Parse incomplete"). Values
/// nest at most 512 deep.
Value parse(std::string_view text);

/// The text of a value without white space; numbers in shortest round-trip form, NaN and infinities
/// as null.
std::string to_text(const Value& value);

} // namespace foundation::json
