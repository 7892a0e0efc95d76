// SPDX-License-Identifier: Apache-2.0
//
// What a new BIFF8 book begins as: globals without sheets, and substreams for sheets without cells.
// They exist in memory only; everything else that a new book gets is a change to them.
#pragma once

#include <string>

namespace workbook {

/// A stream that consists of globals.
std::string blank_globals();

/// The substream of an empty worksheet. The sheet that a new book shows first is selected.
std::string blank_sheet(bool is_selected);

} // namespace workbook
