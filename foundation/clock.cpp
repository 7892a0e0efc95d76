// SPDX-License-Identifier: Apache-2.0
#include "foundation/clock.h"

#include <atomic>
#include <memory>
#include <thread>

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
    if (delay > std::chrono::duration_cast<std::chrono::milliseconds>(TimePoint::max() - time))
        return TimePoint::max();
    return time + delay;
}

Clock& clock() {
    // Never destroyed: threads of the host may wait while the process ends.
    static SystemClock& system = *std::make_unique<SystemClock>().release();
    Clock* const replacement = replacement_clock.load();
    return replacement != nullptr ? *replacement : system;
}

void replace_clock(Clock* replacement) {
    replacement_clock.store(replacement);
}

} // namespace foundation
