// SPDX-License-Identifier: Apache-2.0
//
// The trace record of an operation: `const Trace trace(kUnit, __PRETTY_FUNCTION__, __LINE__);` as
// its first line.
#pragma once

#include "foundation/log.h"
#include "spreadsheet/book_factory.h"

namespace gsheet {

class Trace {
  public:
    Trace(const char* unit, const char* function, int line)
        : record_(spreadsheet::getLogger(), unit, function, line) {}

  private:
    foundation::log::ScopedTrace record_;
};

} // namespace gsheet
