// SPDX-License-Identifier: Apache-2.0
//
// How the program fails: an exit code and one sentence.
#pragma once

#include <stdexcept>
#include <string>

#include "spreadsheet/exception.h"
#include "zxsheet/options.h"

namespace zxsheet {

enum class ExitCode {
    Done = 0,
    Failed = 1, ///< for a reason not listed here
    Usage = 2,
    NotReadable = 3, ///< no such file or spreadsheet, or it may not be read
    NotAWorkbook = 4,
    NotFound = 5, ///< no such sheet, range or name
    NotWritten = 6,
    Service = 7, ///< service, credential or network
    NoApplication = 8
};

class Failure : public std::runtime_error {
  public:
    Failure(ExitCode code, const std::string& sentence)
        : std::runtime_error(sentence), code_(code) {}
    ExitCode code() const noexcept { return code_; }

  private:
    ExitCode code_;
};

/// A cause from the library's log as a sentence: in capitals at its beginning.
std::string as_sentence(std::string text);

/// The failure that the library's exception stands for. `cause` is what the library logged about
/// the operation that failed, empty when it logged nothing.
Failure describe(const spreadsheet::Exception& error, const Options& options,
                 const std::string& cause);

} // namespace zxsheet
