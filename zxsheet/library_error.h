// SPDX-License-Identifier: Apache-2.0
//
// From the library's exceptions to exit codes and sentences.
#pragma once

#include <exception>
#include <functional>

#include "spreadsheet/failure.h"
#include "zxsheet/command.h"
#include "zxsheet/command_error.h"
#include "zxsheet/output_sink.h"

namespace zxsheet {

/// What a failure of the library means for the command whose options these are: `id` says which
/// operation failed, `failure` why.
CommandError command_error(spreadsheet::error_id id, const spreadsheet::Failure& failure,
                           const BookOptions& options);

/// The same for whatever a command throws.
CommandError as_command_error(const std::exception_ptr& failure, const BookOptions& options);

/// Runs `print`, which writes to the sink, and finishes the sink. A failure ends in a
/// `CommandError` that says where the output breaks off.
void print_data(OutputSink& sink, const BookOptions& options, const std::function<void()>& print);

} // namespace zxsheet
