// SPDX-License-Identifier: Apache-2.0
//
// The back-ends of this build in one list: how each makes a book, starts and stops. Not for
// installation.
#pragma once

#include <memory>

#include "spreadsheet/book.h"
#include "spreadsheet/book_format.h"

namespace spreadsheet {

/// An empty book of the back-end that serves `mode`; null when none does, which is logged for a
/// mode of the interface.
std::shared_ptr<IBook> make_book(book::interactive mode);

/// Starts every back-end in the order of the list. When one cannot start, those before it are
/// stopped again and its exception passes.
void start_back_ends();
/// Stops every back-end in reverse order.
void stop_back_ends();

} // namespace spreadsheet
