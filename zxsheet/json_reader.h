// SPDX-License-Identifier: Apache-2.0
//
// Reads the JSON that `zxsheet read` prints, and other arrays and objects, without holding the
// values.
#pragma once

#include "zxsheet/cell_sink.h"
#include "zxsheet/text_input.h"

namespace zxsheet {

enum class JsonLayout {
    Document, ///< one value: an object with "values", an array of arrays or of objects
    Lines     ///< any number of arrays or objects, one after the other
};

/// Hands the cells of {"sheet":...,"range":...,"types":[[...]],"values":[[...]]} to `sink`. All but
/// "values" may be missing and must come before it; other members are passed over. With types a
/// value must be of its type (a date is ISO 8601 text or a serial number, an error becomes text),
/// without them it is what JSON says; null is an empty cell.
///
/// Arrays of values are rows. Objects are rows as well, after one of their names (`expect_header`):
/// those of the first object, which others may lack but not add to. With `guess_dates` text that is
/// an ISO 8601 date becomes one in them. Throws `CommandError` that names line and column for
/// anything else.
void read_json(TextInput& input, CellSink& sink, JsonLayout layout = JsonLayout::Document,
               bool guess_dates = false);

} // namespace zxsheet
