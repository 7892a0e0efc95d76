// SPDX-License-Identifier: Apache-2.0
//
// The output formats of the `read` command.
#pragma once

#include "zxsheet/cell_grid.h"
#include "zxsheet/cell_text.h"
#include "zxsheet/output_sink.h"

namespace zxsheet {

/// How cells are printed.
struct PrintStyle {
    DateStyle dates = DateStyle::Iso;
    MergedRules merged;
};

/// What the help says of the range of a command that prints cells.
inline constexpr const char* kReadRangeHelp =
    "A1:D20, B3, A:C, 2:10 or a defined name (default: the used range)";

/// One line a row, fields between `separator`, quoted where they need it (RFC 4180).
void write_separated(const Selection& selection, const PrintStyle& style, char separator,
                     OutputSink& out);

/// One JSON array a row and line.
void write_json_lines(const Selection& selection, const PrintStyle& style, OutputSink& out);

/// One JSON object with the sheet's name, the range, the types and, if wanted, the values.
void write_json(const Selection& selection, const PrintStyle& style, Content content,
                OutputSink& out);

/// Aligned columns under their letters, rows after their numbers, for people.
void write_table(const Selection& selection, const PrintStyle& style, OutputSink& out);

} // namespace zxsheet
