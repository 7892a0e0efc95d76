// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet types`: the types of the cells of a range.
#include "zxsheet/cell_text.h"
#include "zxsheet/command_table.h"
#include "zxsheet/output_format.h"

namespace zxsheet {
namespace {

struct TypesOptions : BookOptions {
    std::string sheet;
    std::string range;
    bool all_cells = false;
    bool json = false;
};

void run_types(const TypesOptions& options, OutputSink& out) {
    const Bounds bounds = options.all_cells ? Bounds::Used : Bounds::Filled;
    const Selection selection =
        open_selection({options.book, options.sheet, options.range, bounds});
    if (options.json) return json_format({}, Content::Types)->write(selection, out);
    for_each_row(selection, {}, Content::Types, [&out](const std::vector<const CellValue*>& row) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (i != 0) out.write('\t');
            out.write(type_name(row[i]->type));
        }
        out.write('\n');
    });
}

} // namespace

Command types_command() {
    const auto options = std::make_shared<TypesOptions>();
    return reading_command("types", "Types of the cells of a range", options,
                           {sheet_option(options->sheet),
                            range_option(options->range, kReadRangeHelp),
                            all_cells_flag(options->all_cells), json_flag(options->json)},
                           run_types);
}

} // namespace zxsheet
