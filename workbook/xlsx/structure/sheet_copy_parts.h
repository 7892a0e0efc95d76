// SPDX-License-Identifier: Apache-2.0
//
// The parts of a copied sheet as they are written.
#pragma once

#include <memory>

#include "workbook/opc/opc_package.h"
#include "workbook/opc/package_writer.h"
#include "workbook/xlsx/structure/reference_rewriter.h"
#include "workbook/xlsx/structure/sheet_copy.h"
#include "workbook/xlsx/structure/table_columns.h"

namespace workbook {

/// Copies all of `source` to `out`.
void copy_bytes(ByteSource& source, ByteSink& out);

/// Enters all parts of a copy but the sheet's own, and the relationships of all. `package` and
/// `plan` must live until `changes` is written. Throws `Error`.
void deliver_copied_parts(OpcPackage& package, const SheetCopyPlan& plan,
                          const RenamedColumns& columns,
                          const std::shared_ptr<const PartEdits>& edits, PackageChanges& changes);

} // namespace workbook
