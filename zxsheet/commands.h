// SPDX-License-Identifier: Apache-2.0
//
// One function per command; each throws `Failure` or what the library throws.
#pragma once

#include "zxsheet/options.h"
#include "zxsheet/output_sink.h"

namespace zxsheet {

void run_info(const Options& options, OutputSink& out);
void run_sheets(const Options& options, OutputSink& out);
void run_types(const Options& options, OutputSink& out);
void run_read(const Options& options, OutputSink& out);

} // namespace zxsheet
