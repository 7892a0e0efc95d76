// SPDX-License-Identifier: Apache-2.0
//
// Finds the workbook of a package and recognises packages of other kinds by their content.
#pragma once

#include <string>

#include "workbook/opc/opc_package.h"

namespace workbook {

/// Name of the workbook part: by relationship, else by content type, else by its usual name. Throws
/// `Error` that names what the package holds instead.
std::string locate_workbook(OpcPackage& package);

} // namespace workbook
