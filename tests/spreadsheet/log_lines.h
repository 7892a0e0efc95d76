// SPDX-License-Identifier: Apache-2.0
//
// The library's log lines, for tests that expect them exactly.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/log.h"
#include "spreadsheet/book_factory.h"

namespace spreadsheet {

/// Collects what the library logs for as long as it lives.
class LogLines {
  public:
    LogLines() { getLogger().add_sink(sink_); }
    ~LogLines() { getLogger().remove_sink(sink_); }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    /// The lines since the last call; all must be failures on the library's channel.
    std::vector<std::string> take() {
        std::vector<std::string> lines;
        for (const foundation::log::Record& record : sink_->records()) {
            EXPECT_EQ(record.severity, 0x200u);
            EXPECT_EQ(record.channel, "zentra::io::spreadsheet");
            lines.push_back(record.text);
        }
        sink_->clear();
        return lines;
    }

  private:
    std::shared_ptr<foundation::log::CollectingSink> sink_ =
        std::make_shared<foundation::log::CollectingSink>();
};

} // namespace spreadsheet
