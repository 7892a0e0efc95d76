// SPDX-License-Identifier: Apache-2.0
//
// The bytes of a compound file's directory (MS-CFB 2.6), with a search tree for each storage.
#pragma once

#include <string>
#include <vector>

#include "workbook/cfb/compound_directory.h"

namespace workbook {

/// The records of `entries`, of which the first is the root and each follows its storage; no
/// padding. Red-black trees whose leaves have at most two depths, ordered as MS-CFB 2.6.4 asks for.
std::string compound_directory_bytes(const std::vector<CompoundEntry>& entries);

/// A record that is not in use.
std::string unused_compound_entry();

} // namespace workbook
