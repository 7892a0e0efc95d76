// SPDX-License-Identifier: Apache-2.0
//
// Tells from a file's first bytes whether it can be a ZIP container, and what else it is.
#pragma once

#include "foundation/files.h"

namespace workbook {

/// Returns for a file that may be a ZIP container. Throws `Error` that names what the file is
/// else: empty, an encrypted workbook, an XLS workbook, text.
void require_zip_container(foundation::files::RandomAccessFile& file);

} // namespace workbook
