// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/rate_window.h"

#include "foundation/log.h"
#include "foundation/never_destroyed.h"
#include "spreadsheet/gsheet/utils/pause.h"
#include "spreadsheet/gsheet/utils/service_log.h"

namespace gsheet {

namespace {

/// The service's quota: so many requests in so long a time.
constexpr std::size_t kMaxSuccesses = 60;
constexpr std::chrono::milliseconds kWindow{60'000};

} // namespace

std::size_t RateWindow::record_success() {
    const TimePoint now = foundation::clock().now();
    {
        const std::scoped_lock lock(mutex_);
        successes_.push_back(now);
    }
    return purge(now);
}

std::size_t RateWindow::purge(TimePoint now) {
    const std::scoped_lock lock(mutex_);
    const auto age = [now](TimePoint time) {
        return std::chrono::duration_cast<std::chrono::milliseconds>(now - time);
    };
    while (!successes_.empty() && age(successes_.front()) >= kWindow)
        successes_.pop_front();
    return successes_.size();
}

void RateWindow::record_success_and_pause() {
    if (record_success() < kMaxSuccesses) return;
    log_line(foundation::log::error,
             "Too many request from single client, backoff until 60 seconds from last request");
    take_pause({kWindow, PauseReason::rate_window, 200});
    purge(foundation::clock().now());
}

RateWindow& requestRateWindow() {
    static foundation::NeverDestroyed<RateWindow> window;
    return window.get();
}

} // namespace gsheet
