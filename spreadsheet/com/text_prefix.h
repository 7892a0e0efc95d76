// SPDX-License-Identifier: Apache-2.0
//
// Which text an application would turn into something else when it is entered into a cell.
#pragma once

#include <string_view>

namespace spreadsheet::com {

/// Whether text needs an apostrophe before it to stay text: what begins like a formula, an error or
/// with an apostrophe, the words for the booleans, and what may be a number, a date or an amount in
/// the user's language. In doubt true: the apostrophe is not part of the cell's text.
bool needs_apostrophe(std::u16string_view text);

} // namespace spreadsheet::com
