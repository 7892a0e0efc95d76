// SPDX-License-Identifier: Apache-2.0
//
// Successful requests of the last minute, over the whole process: the 60th costs a pause of a
// minute, which keeps within the service's quota. Guarded by a mutex that is not held in the pause.
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <mutex>

#include "foundation/clock.h"

namespace gsheet {

class RateWindow {
  public:
    using TimePoint = foundation::Clock::TimePoint;

    /// Enters a success at the present time and returns how many lie within the window.
    std::size_t record_success();
    /// Drops entries that are at least as old as the window is long and returns how many are left.
    std::size_t purge(TimePoint now);
    /// `record_success`, and the pause when it says that the limit is reached.
    void record_success_and_pause();

  private:
    std::mutex mutex_;
    std::deque<TimePoint> successes_;
};

/// The window that all requests of the process share.
RateWindow& requestRateWindow();

} // namespace gsheet
