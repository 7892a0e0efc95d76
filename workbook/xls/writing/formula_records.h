// SPDX-License-Identifier: Apache-2.0
//
// Where the records of a BIFF8 sheet hold formulas: cells, shared and array formulas, conditional
// formats, validation, series of charts, text boxes and controls.
#pragma once

#include <cstdint>
#include <string>

#include "workbook/xls/formula/token_rewriter.h"

namespace workbook {

/// Changes the formulas in the data of record `id`, which keeps its size where `changes` loses no
/// sheet. Formulas that cannot be parsed, and records that break the format, are left alone.
void rewrite_formulas(std::uint16_t id, std::string& data, const biff::TokenChanges& changes);

} // namespace workbook
