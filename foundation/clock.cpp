// SPDX-License-Identifier: Apache-2.0
#include "foundation/clock.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include "foundation/never_destroyed.h"

namespace foundation {

namespace {

class SystemClock final : public Clock {
  public:
    TimePoint now() const override { return std::chrono::steady_clock::now(); }
    void sleep_until(TimePoint time) override { std::this_thread::sleep_until(time); }
};

std::atomic<Clock*> replacement_clock{nullptr};

} // namespace

Clock::~Clock() = default;

Clock::TimePoint Clock::later(TimePoint time, std::chrono::milliseconds delay) {
    using std::chrono::milliseconds;
    const auto room = TimePoint::max() - std::max(time, TimePoint());
    if (delay > std::chrono::duration_cast<milliseconds>(room)) return TimePoint::max();
    return time + delay;
}

Clock& clock() {
    // Never destroyed: threads of the host may wait while the process ends.
    static NeverDestroyed<SystemClock> system;
    Clock* const replacement = replacement_clock.load();
    return replacement != nullptr ? *replacement : system.get();
}

void replace_clock(Clock* replacement) {
    replacement_clock.store(replacement);
}

} // namespace foundation
