// SPDX-License-Identifier: Apache-2.0
//
// The output formats of the `read` command.
#pragma once

#include "zxsheet/cell_grid.h"
#include "zxsheet/output_sink.h"

namespace zxsheet {

/// One line a row, fields between `separator`, quoted where they need it (RFC 4180).
void write_separated(const Selection& selection, const Options& options, char separator,
                     OutputSink& out);

/// One JSON array a row and line.
void write_json_lines(const Selection& selection, const Options& options, OutputSink& out);

/// One JSON object with the sheet's name, the range, the types and, if wanted, the values.
void write_json(const Selection& selection, const Options& options, Content content,
                OutputSink& out);

/// Aligned columns under their letters, rows behind their numbers, for people.
void write_table(const Selection& selection, const Options& options, OutputSink& out);

} // namespace zxsheet
