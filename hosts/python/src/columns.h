// SPDX-License-Identifier: Apache-2.0
//
// Columns of tables as NumPy arrays and back.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include "spreadsheet/table.h"

namespace zxpython {

/// A dict of what the column has. Arrays share the column's memory, which lives as long as one of
/// them does: `name`, `type`, `null_count`, `validity`, and by type `numbers`, `booleans`,
/// `microseconds`, `codes` with `offsets` and `bytes`, `kinds`.
pybind11::dict to_python(spreadsheet::Column column);

/// The column of such a dict, whose `bytes` and `offsets` may be missing. Copies.
spreadsheet::Column from_python(const pybind11::dict& parts);

} // namespace zxpython
