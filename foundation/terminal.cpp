// SPDX-License-Identifier: Apache-2.0
#include "foundation/terminal.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace foundation {

bool error_is_terminal() {
    constexpr int kStandardError = 2; // on every platform
#ifdef _WIN32
    return ::_isatty(kStandardError) != 0;
#else
    return ::isatty(kStandardError) != 0;
#endif
}

} // namespace foundation
