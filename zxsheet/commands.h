// SPDX-License-Identifier: Apache-2.0
//
// One function per command; each throws `Failure` or what the library throws.
#pragma once

#include <istream>
#include <string>

#include "zxsheet/library_log.h"
#include "zxsheet/options.h"
#include "zxsheet/output_sink.h"
#include "zxsheet/progress_line.h"

namespace zxsheet {

void run_info(const Options& options, OutputSink& out);
void run_sheets(const Options& options, OutputSink& out);
void run_types(const Options& options, OutputSink& out);
void run_read(const Options& options, OutputSink& out);

/// What a command that changes a book works with besides its options.
struct ChangeTools {
    std::istream& in;
    ProgressLine& progress;
    LibraryLog& log;
};

// Commands that change a book return the sentence that tells what they did. The book is saved as
// their last step: when they throw, the file is as it was.

std::string run_new(const Options& options, ChangeTools& tools);
std::string run_write(const Options& options, ChangeTools& tools);
std::string run_clear(const Options& options, ChangeTools& tools);
std::string run_unmerge(const Options& options, ChangeTools& tools);
std::string run_autofit(const Options& options, ChangeTools& tools);
std::string run_sheet_add(const Options& options, ChangeTools& tools);
std::string run_sheet_remove(const Options& options, ChangeTools& tools);
std::string run_sheet_rename(const Options& options, ChangeTools& tools);
std::string run_sheet_move(const Options& options, ChangeTools& tools);
std::string run_sheet_hide(const Options& options, ChangeTools& tools);
std::string run_sheet_show(const Options& options, ChangeTools& tools);
std::string run_sheet_protect(const Options& options, ChangeTools& tools);
std::string run_sheet_unprotect(const Options& options, ChangeTools& tools);

} // namespace zxsheet
