// SPDX-License-Identifier: Apache-2.0
//
// Cell formats that were added to a book, as XF records (MS-XLS 2.4.353), and the checksum of all
// formats that newer applications ask for (2.4.354 XFCRC).
#pragma once

#include <cstddef>
#include <string>

#include "workbook/cells/cell_formats.h"
#include "workbook/xls/biff_version.h"

namespace workbook {

/// Appends the record of a format for BIFF5 or BIFF8: default font, alignment, borders and fill.
void append_cell_format(const CellFormat& format, BiffVersion version, std::string& out);

/// Brings the XFCRC record at `position` of `globals` up to date with the XF records in it:
/// applications that find another checksum drop what newer records say about formats.
void update_format_checksum(std::string& globals, std::size_t position);

} // namespace workbook
