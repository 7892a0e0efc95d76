// SPDX-License-Identifier: Apache-2.0
//
// Code pages of the Macintosh that iconv does not have everywhere.
#pragma once

#include <memory>

#include "foundation/code_page.h"

namespace foundation {

/// Greek (10006), Romanian (10010), Turkish (10081) or Croatian (10082); null for other numbers.
std::unique_ptr<CodePage> make_macintosh_page(unsigned number);

} // namespace foundation
