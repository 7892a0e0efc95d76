// SPDX-License-Identifier: Apache-2.0
//
// What the program says on standard error while it works with a service: pauses, and the library's
// log where it is asked for.
#pragma once

#include <memory>
#include <optional>
#include <ostream>
#include <string>

#include "spreadsheet/gsheet/pauses.h"
#include "spreadsheet/spreadsheet.h"
#include "zxsheet/progress_line.h"

namespace zxsheet {

/// What to say about a pause: on a terminal from 2 seconds on, elsewhere from 10; nullopt for a
/// shorter one.
std::optional<std::string> pause_text(const gsheet::Pause& pause, bool is_terminal);

/// Announces pauses while it lives.
class PauseNotices {
  public:
    PauseNotices(std::ostream& err, bool is_terminal, ProgressLine& progress);
    PauseNotices(const PauseNotices&) = delete;
    PauseNotices& operator=(const PauseNotices&) = delete;
    ~PauseNotices();
};

/// Prints the library's log while it lives, credentials hidden: records of `level` ("error",
/// "info", "debug" or "trace") and of the graver ones. An empty level prints nothing.
class LogPrinting {
  public:
    LogPrinting(const std::string& level, std::ostream& err);
    LogPrinting(const LogPrinting&) = delete;
    LogPrinting& operator=(const LogPrinting&) = delete;
    ~LogPrinting();

  private:
    std::shared_ptr<foundation::log::Sink> sink_;
    std::uint32_t mask_before_ = 0;
};

} // namespace zxsheet
