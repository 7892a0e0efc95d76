// SPDX-License-Identifier: Apache-2.0
//
// Reads the JSON object that `zxsheet read --to json` prints, without holding its values.
#pragma once

#include "zxsheet/cell_sink.h"
#include "zxsheet/text_input.h"

namespace zxsheet {

/// Hands the cells of {"sheet":...,"range":...,"types":[[...]],"values":[[...]]} to `sink`. All but
/// "values" may be missing and must come before it; other members are passed over. With types a
/// value must be of its type (a date is ISO 8601 text or a serial number, an error becomes text),
/// without them it is what JSON says; null is an empty cell. Throws `Failure` that names line and
/// column for anything else.
void read_json(TextInput& input, CellSink& sink);

} // namespace zxsheet
