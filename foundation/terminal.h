// SPDX-License-Identifier: Apache-2.0
//
// Whether somebody may be looking at what a program says.
#pragma once

#include "foundation/export.h"

namespace foundation {

/// Whether standard error goes to a terminal.
ZX_API bool error_is_terminal();

} // namespace foundation
