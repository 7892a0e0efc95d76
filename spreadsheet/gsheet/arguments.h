// SPDX-License-Identifier: Apache-2.0
//
// What every function of the host has around its work: the feature switch, the number of arguments,
// texts out of host arrays and into them, the host's errors.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/host_array.h"
#include "spreadsheet/gsheet/builtins.h"

namespace gsheet {

/// A call as the host makes it. Everything stays the caller's.
struct HostCall {
    int output_count;
    HostArrayPtr* outputs; ///< may be null when no output was asked for
    int input_count;
    const HostArray** inputs;
};

/// How many inputs a function takes; all give at most one output.
struct InputCounts {
    int least;
    int most;
};

/// Runs `work` behind the checks of switch and counts and hands its result out. What escapes from
/// it leaves as the host's error: `spreadsheet::Exception` as `translateToHostError` has it, any
/// other as Zentra:spreadsheet:book:internalError; only want of memory passes.
void run_builtin(const HostCall& call, InputCounts counts,
                 const std::function<HostArrayPtr()>& work);

/// The text of a string scalar or a character vector (one row, or empty). Throws the host's errors
/// for anything else and for a missing string; null is no text.
std::u16string text_of(const HostArray* array);
/// A text, or each element of a string array or a cell array of texts.
std::vector<std::u16string> texts_of(const HostArray* array);
/// Throws the host's error for anything but one logical.
void check_logical_scalar(const HostArray* array);

/// UTF-8 as a character vector.
HostArrayPtr character_array(std::string_view text);

} // namespace gsheet
