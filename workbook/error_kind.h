// SPDX-License-Identifier: Apache-2.0
//
// What kind of failure a book met: data that callers decide by, beside the text for people.
#pragma once

namespace workbook {

enum class ErrorKind {
    None = 0,     ///< nothing has failed yet
    File,         ///< the file cannot be opened, read or written; see `Book::file_problem`
    NotAWorkbook, ///< readable, but not a workbook of this family
    Encrypted,    ///< protected by a password
    Damaged,      ///< a container, part or record that breaks its format
    Limit,        ///< more than the library or the format allows; the text names the limit
    Missing,      ///< a part, sheet or format that does not exist
    Refused,      ///< an operation that would leave a book that no application accepts
    Memory        ///< out of memory
};

} // namespace workbook
