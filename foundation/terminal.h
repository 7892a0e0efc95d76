// SPDX-License-Identifier: Apache-2.0
//
// Whether somebody may be looking at what a program says.
#pragma once

#include <cstddef>

#include "foundation/export.h"

namespace foundation {

/// Whether standard error goes to a terminal.
ZX_API bool error_is_terminal();

/// Columns of the terminal that standard output goes to; 0 when it goes elsewhere.
ZX_API std::size_t output_terminal_width();

} // namespace foundation
