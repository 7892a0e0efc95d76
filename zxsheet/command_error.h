// SPDX-License-Identifier: Apache-2.0
//
// How a command fails: an exit code and one sentence.
#pragma once

#include <stdexcept>
#include <string>

namespace zxsheet {

enum class ExitCode {
    Done = 0,
    Failed = 1, ///< for a reason not listed here, limits and lack of memory among them
    Usage = 2,
    NotReadable = 3, ///< no such file or spreadsheet, or it may not be read
    NotAWorkbook = 4,
    NotFound = 5, ///< no such sheet, range or name
    NotWritten = 6,
    Service = 7, ///< service, credential or network
    NoApplication = 8
};

class CommandError : public std::runtime_error {
  public:
    CommandError(ExitCode code, const std::string& sentence)
        : std::runtime_error(sentence), code_(code) {}
    ExitCode code() const noexcept { return code_; }

  private:
    ExitCode code_;
};

} // namespace zxsheet
