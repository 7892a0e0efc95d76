// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet read`: the cells of a range.
#include <filesystem>

#include "zxsheet/commands.h"
#include "zxsheet/failure.h"
#include "zxsheet/row_writers.h"

namespace zxsheet {
namespace {

/// Writing over the book that is being read would destroy it.
void refuse_own_book(const Options& options) {
    std::error_code ignored;
    if (!options.output.empty() &&
        std::filesystem::equivalent(native_path(options.book), native_path(options.output),
                                    ignored))
        throw Failure(ExitCode::Usage,
                      options.output + ": The output would replace the book itself.");
}

} // namespace

void run_read(const Options& options, OutputSink& out) {
    refuse_own_book(options);
    const Selection selection = open_selection(options);
    switch (options.to) {
    case DataFormat::Csv:
        return write_separated(selection, options, ',', out);
    case DataFormat::Tsv:
        return write_separated(selection, options, '\t', out);
    case DataFormat::Json:
        return write_json(selection, options, Content::Values, out);
    case DataFormat::JsonLines:
        return write_json_lines(selection, options, out);
    case DataFormat::Table:
        return write_table(selection, options, out);
    }
}

} // namespace zxsheet
