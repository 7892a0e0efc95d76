// SPDX-License-Identifier: Apache-2.0
//
// How wide characters are in a proportional font.
#pragma once

namespace workbook {

/// In hundredths of a digit's width; 0 for control and combining characters.
int character_width(char32_t character);

} // namespace workbook
