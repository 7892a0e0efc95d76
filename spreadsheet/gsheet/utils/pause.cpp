// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/pause.h"

#include <mutex>
#include <utility>

#include "foundation/clock.h"
#include "foundation/never_destroyed.h"

namespace gsheet {

namespace {

struct Current {
    std::mutex mutex;
    PauseListener listener;
};

Current& current() {
    static foundation::NeverDestroyed<Current> instance;
    return instance.get();
}

} // namespace

void set_pause_listener(PauseListener listener) {
    Current& now = current();
    const std::scoped_lock lock(now.mutex);
    now.listener = std::move(listener);
}

void take_pause(const Pause& pause) {
    PauseListener listener;
    {
        Current& now = current();
        const std::scoped_lock lock(now.mutex);
        listener = now.listener;
    }
    if (listener && pause.length.count() > 0) listener(pause);
    foundation::Clock& clock = foundation::clock();
    clock.sleep_until(foundation::Clock::later(clock.now(), pause.length));
}

} // namespace gsheet
