// SPDX-License-Identifier: Apache-2.0
//
// Writes the styles part with the cell formats that were added to a book.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "workbook/cells/cell_formats.h"
#include "workbook/io/byte_source.h"

namespace workbook {

/// The text of `part` with the `formats` from index `known` up to `end` appended to its
/// cellXfs, which is made when it is missing. Throws `Error`.
std::string append_cell_formats(ByteSource& part, const CellFormats& formats, std::size_t known,
                                std::size_t end);

/// A styles part with the one default format of a new book.
std::string_view default_styles_part();

} // namespace workbook
