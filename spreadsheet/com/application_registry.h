// SPDX-License-Identifier: Apache-2.0
//
// The process's list of application instances, which exists while the library is started.
#pragma once

#include <memory>
#include <vector>

#include "spreadsheet/com/excel_application.h"

namespace spreadsheet {

/// Slots of instances; an empty one is used again before the list grows.
using ApplicationSlots = std::vector<std::shared_ptr<excel_application>>;

/// The list; null while the library is not started. Not locked: instances are acquired on one
/// thread at a time.
ApplicationSlots* application_registry();

/// Makes the list and initialises automation for the calling thread; for `initialize`.
void start_applications();

/// Destroys the list: applications that no book uses end. For `release`.
void stop_applications();

} // namespace spreadsheet
