// SPDX-License-Identifier: Apache-2.0
//
// The one place that sleeps between requests.
#pragma once

#include "spreadsheet/gsheet/pauses.h"

namespace gsheet {

/// Tells the host's listener and blocks the calling thread for the pause's length, by the library's
/// clock. A pause of no length is not announced.
void take_pause(const Pause& pause);

} // namespace gsheet
