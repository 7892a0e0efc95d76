// SPDX-License-Identifier: Apache-2.0
//
// `zxsheet google`: the host's functions for Google Sheets and Drive from the command line.
#pragma once

#include <functional>
#include <string>

#include <CLI/CLI.hpp>

#include "zxsheet/options.h"
#include "zxsheet/output_sink.h"

namespace zxsheet {

/// The option --google-root, for every command.
void add_google_root(CLI::App& app, Options& options);
/// The group of commands. Parsing one fills `options` and calls `choose`.
void add_google_commands(CLI::App& app, Options& options, const std::function<void()>& choose);

/// Points the library to the root that was given, or to the service's own addresses.
void use_google_root(const Options& options);

/// Runs the command that `options.google` holds.
void run_google(const Options& options, OutputSink& out);

} // namespace zxsheet
