// SPDX-License-Identifier: Apache-2.0
//
// Saves an XLS book: puts a new workbook stream together from the loaded one and the changes made
// since, and writes it in place of the old one into a copy of the loaded file. Every change stays
// in memory too, so the next save starts from the loaded stream again.
#pragma once

#include <string>
#include <string_view>

#include "foundation/output_file.h"
#include "workbook/library.h"
#include "workbook/xls/xls_contents.h"

namespace workbook {

/// The workbook stream with all changes; not encrypted. Throws `Error`.
std::string changed_workbook_stream(const XlsContents& book);

/// Writes the book to the file at `path`. Throws `Error` or `FileError`.
SaveCounts save_book(XlsContents& book, std::u16string_view path);

/// Writes the book to `out` and commits it. Throws `Error` or `FileError`.
SaveCounts save_book(XlsContents& book, foundation::files::OutputFile& out);

} // namespace workbook
