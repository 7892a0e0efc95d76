// SPDX-License-Identifier: Apache-2.0
//
// The order of a worksheet's elements (ECMA-376 part 1, 18.3.1.99 and A.2, CT_Worksheet; with the
// elements that dialog and macro sheets have besides).
#pragma once

#include <string_view>

namespace workbook {

/// Greater for an element that comes further down; negative for an unknown name.
int worksheet_element_place(std::string_view local_name);

} // namespace workbook
