// SPDX-License-Identifier: Apache-2.0
//
// What tests ask about a failure: the identifier that was thrown, the lines that were logged.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/log.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/exception.h"

/// The identifier of the `Exception` that `action` throws; -1 when it throws none. An exception must show
/// the fixed message of its identifier.
template <class Action>
int thrown_id(Action action) {
    try {
        action();
    } catch (const spreadsheet::Exception& e) {
        EXPECT_STREQ(e.what(), spreadsheet::error_id_message(e.id()));
        return static_cast<int>(e.id());
    }
    return -1;
}

/// Collects the library's log lines for as long as it lives.
class LogLines {
  public:
    LogLines() { spreadsheet::getLogger().add_sink(sink_); }
    ~LogLines() { spreadsheet::getLogger().remove_sink(sink_); }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    /// The lines since the last call; all must have severity `error`.
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
