// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/version.h"

namespace spreadsheet {

const char* version() noexcept {
    return ZXSPREADSHEET_VERSION;
}

} // namespace spreadsheet
