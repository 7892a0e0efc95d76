// SPDX-License-Identifier: Apache-2.0
//
// Where a sheet has cells that hold something.
#pragma once

#include "automation/libreoffice/open_document.h"

namespace office {

/// The smallest area with all cells that hold a value or a formula; the first cell for a sheet
/// without any. The application's own answer includes what drawings cover.
CellArea used_area(const std::shared_ptr<OpenDocument>& document,
                   const std::shared_ptr<DocumentSheet>& sheet);

} // namespace office
