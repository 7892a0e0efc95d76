// SPDX-License-Identifier: Apache-2.0
//
// The emulator of the service as the library reaches it: the platform's client with short
// time-outs, a clock that does not wait, a token.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/http/http_client.h"
#include "foundation/json.h"
#include "spreadsheet/book.h"
#include "spreadsheet/sheet.h"
#include "tests/google_service.h"
#include "tests/gsheet/scripted_service.h"

namespace spreadsheet::test {

using foundation::json::Array;
using foundation::json::Object;
using foundation::json::Value;

/// A fixture with the emulator's sample files; skipped where there is no emulator.
class EmulatedService : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Short time-outs from now on; the next test has long ones again.
    static void lose_patience();
    std::shared_ptr<IBook> open(const char* id) const;
    /// What the emulator holds, as a description.
    Value state(const std::string& id) const;
    Value sheet_state(const std::string& id, std::size_t index) const;
    /// Requests to the service since the last call; the test's own do not count.
    std::vector<std::string> methods() const;

    foundation::test::GoogleService service;
    gsheet::test::VirtualClock clock;
    gsheet::test::Credentials credentials{"test-token", ""};
};

} // namespace spreadsheet::test
