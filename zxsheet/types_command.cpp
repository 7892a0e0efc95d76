// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet types`: what kind of cell stands where.
#include "zxsheet/cell_text.h"
#include "zxsheet/commands.h"
#include "zxsheet/row_writers.h"

namespace zxsheet {

void run_types(const Options& options, OutputSink& out) {
    const Selection selection = open_selection(options);
    if (options.json) return write_json(selection, options, Content::Types, out);
    for_each_row(selection, options, Content::Types,
                 [&out](const std::vector<const CellValue*>& row) {
                     for (std::size_t i = 0; i < row.size(); ++i) {
                         if (i != 0) out.write('\t');
                         out.write(type_name(row[i]->type));
                     }
                     out.write('\n');
                 });
}

} // namespace zxsheet
