// SPDX-License-Identifier: Apache-2.0
//
// Saves a book: gathers what differs from the package that it was read from, writes the new package
// beside the target and lets it take the target's place.
#pragma once

#include <string_view>

#include "foundation/output_file.h"
#include "workbook/library.h"
#include "workbook/xlsx/book_contents.h"

namespace workbook {

/// Throws `Error` or `FileError`; the target and `book` are then as they were. After a save over
/// the file that the book was read from, the book goes on with the new file.
SaveCounts save_book(BookContents& book, std::u16string_view path);

/// The same into `out`, which is committed; `extension` chooses the document type.
SaveCounts save_book(BookContents& book, foundation::files::OutputFile& out,
                     std::u16string_view extension);

} // namespace workbook
