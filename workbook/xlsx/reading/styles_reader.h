// SPDX-License-Identifier: Apache-2.0
//
// Reads the cell formats of a book from its styles part (ECMA-376 part 1, 18.8.39).
#pragma once

#include "workbook/cells/cell_formats.h"
#include "workbook/io/byte_source.h"

namespace workbook {

/// Throws `Error`.
CellFormats read_styles(ByteSource& part);

} // namespace workbook
