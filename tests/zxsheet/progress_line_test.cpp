// SPDX-License-Identifier: Apache-2.0
//
// The line on the terminal, shown by a thread of its own.
#include <condition_variable>
#include <mutex>
#include <sstream>

#include <gtest/gtest.h>

#include "zxsheet/progress_line.h"
#include "zxsheet/service_notices.h"

namespace zxsheet::test {
namespace {

using namespace std::chrono_literals;

/// Lets a test wait for what another thread writes.
class Screen : public std::stringbuf {
  public:
    std::string wait_for(const std::string& wanted) {
        std::unique_lock lock(mutex_);
        written_.wait(lock, [&] { return text_.find(wanted) != text_.npos; });
        return text_;
    }
    std::string text() {
        const std::lock_guard lock(mutex_);
        return text_;
    }

  protected:
    std::streamsize xsputn(const char* bytes, std::streamsize count) override {
        const std::lock_guard lock(mutex_);
        text_.append(bytes, static_cast<std::size_t>(count));
        written_.notify_all();
        return count;
    }
    int_type overflow(int_type c) override {
        const char byte = traits_type::to_char_type(c);
        xsputn(&byte, 1);
        return c;
    }

  private:
    std::mutex mutex_;
    std::condition_variable written_;
    std::string text_;
};

TEST(ProgressLine, IsErasedAtTheEnd) {
    Screen screen;
    std::ostream terminal(&screen);
    const std::string line = "Reading book.xlsx, 0 s";
    {
        const ProgressLine progress(&terminal, "Reading book.xlsx", 0ms);
        EXPECT_EQ(screen.wait_for(" s"), line);
    }
    EXPECT_TRUE(screen.text().ends_with('\r' + std::string(line.size(), ' ') + '\r'));
}

TEST(ProgressLine, IsCutBetweenCharactersToFitOneLine) {
    Screen screen;
    std::ostream terminal(&screen);
    std::string long_name = "a";
    for (int i = 0; i < 100; ++i)
        long_name += "\xC3\xA9";
    const ProgressLine cut(&terminal, long_name, 0ms);
    EXPECT_EQ(screen.wait_for(" s"), long_name.substr(0, 63) + "..., 0 s");
}

TEST(ProgressLine, ShowsNothingWhenTheWorkIsShortOrNobodyLooks) {
    Screen screen;
    std::ostream terminal(&screen);
    ProgressLine short_work(&terminal, "Reading", 24h);
    short_work.set_text("Writing");
    short_work.finish();
    short_work.finish();
    ProgressLine(nullptr, "Reading", 0ms).finish();
    EXPECT_EQ(screen.text(), "");
}

TEST(PauseText, IsThereForLongPausesOnly) {
    using gsheet::PauseReason;
    const struct {
        gsheet::Pause pause;
        const char *on_terminal, *elsewhere;
    } cases[] = {
        {{2000ms, PauseReason::server_error, 503}, "", ""},
        {{4001ms, PauseReason::too_many_requests, 429},
         "waiting 5 s: the service wants fewer requests (429)",
         ""},
        {{60s, PauseReason::rate_window, 200},
         "waiting 60 s: the service allows 60 requests a minute",
         "waiting 60 s: the service allows 60 requests a minute"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(pause_text(c.pause, true).value_or(""), c.on_terminal);
        EXPECT_EQ(pause_text(c.pause, false).value_or(""), c.elsewhere);
    }
}

} // namespace
} // namespace zxsheet::test
