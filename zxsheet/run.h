// SPDX-License-Identifier: Apache-2.0
//
// The program without its entry point.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <vector>

namespace zxsheet {

/// What of the streams is a terminal.
struct Terminal {
    bool is_err = false;
    std::size_t out_width = 0; ///< characters of a line; 0 when `out` is none
};

/// Runs the program with UTF-8 arguments (the program's name not included) and returns its exit
/// code. Data comes from `in` and goes to `out`, one sentence per failure or change to `err`, and
/// if that is a terminal a line while work takes long. The line has a thread of its own: `err` must
/// not be tied to `out`.
int run(const std::vector<std::string>& arguments, std::istream& in, std::ostream& out,
        std::ostream& err, const Terminal& terminal = {});

} // namespace zxsheet
