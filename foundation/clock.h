// SPDX-License-Identifier: Apache-2.0
//
// Steady time and sleeping behind an interface, so that whatever waits can be tested without
// waiting.
#pragma once

#include <chrono>

namespace foundation {

class Clock {
  public:
    using TimePoint = std::chrono::steady_clock::time_point;

    virtual ~Clock();
    virtual TimePoint now() const = 0;
    /// Blocks the calling thread; returns at once for a time that has passed.
    virtual void sleep_until(TimePoint time) = 0;

    /// `time` later by `delay`, the greatest time point when that would overflow.
    static TimePoint later(TimePoint time, std::chrono::milliseconds delay);
};

/// The clock that the library waits by: the system's steady clock unless it was replaced.
Clock& clock();
/// Replaces the clock of the process, null restores the system's; `replacement` must outlive its
/// use. Not while something waits.
void replace_clock(Clock* replacement);

} // namespace foundation
