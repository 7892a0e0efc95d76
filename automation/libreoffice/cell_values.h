// SPDX-License-Identifier: Apache-2.0
//
// Values of cells, as automation has them and as the application has them.
#pragma once

#include "automation/libreoffice/open_document.h"
#include "foundation/automation/owners.h"

namespace office {

/// What cells with a date format hold. Of those, numbers below 1 are times of day and always
/// numbers.
enum class Dates {
    AsDates,  ///< VT_DATE, of the 1900 system
    AsNumbers ///< VT_R8, of the document's
};

/// The value of one cell, or a block. Throws std::bad_alloc and what UNO throws.
foundation::automation::Variant read_values(const DocumentCells& cells, Dates dates);

/// Enters a value or a block of them; formats of cells change where a value could not be read back
/// as what it is. Throws `Refusal` for a value of an unknown type and a block of another shape, and
/// what UNO throws.
void write_values(const DocumentCells& cells, const VARIANT& values);

} // namespace office
