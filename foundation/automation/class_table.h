// SPDX-License-Identifier: Apache-2.0
//
// Where class objects come from when none is registered in the process. Not used on Windows.
#pragma once

#include "foundation/automation/automation.h"
#include "foundation/automation/owners.h"

namespace foundation::automation {

/// The class object that the run-time module has for a class; loads the module first. On failure
/// `factory` is null and the reason is noted. Thread-safe.
HRESULT module_class_object(REFCLSID class_id, ComPtr<IClassFactory>& factory);

/// Notes why an object could not be made by the class object of the module.
void note_module_problem();

} // namespace foundation::automation
