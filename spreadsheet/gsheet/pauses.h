// SPDX-License-Identifier: Apache-2.0
//
// Pauses of the library between requests to Google, and requests that are sent again, for hosts
// that say what happens.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "foundation/export.h"

namespace gsheet {

/// Why the library waits.
enum class PauseReason : std::uint8_t {
    rate_window = 0,       ///< its own limit: 60 successful requests a minute
    too_many_requests = 1, ///< the service asked for fewer (429)
    server_error = 2,      ///< the service failed (5xx); the request is sent again
    time_out = 3           ///< the service did not answer; the request is sent again
};

struct Pause {
    std::chrono::milliseconds length{0};
    PauseReason reason = PauseReason::server_error;
    int http_status = 0; ///< of the reply before the pause; 0 without one
};

/// Called before each pause, on the thread that pauses. Must not send requests.
using PauseListener = std::function<void(const Pause& pause)>;

/// Replaces the listener; an empty one removes it. Thread-safe.
///
///     gsheet::set_pause_listener([](const gsheet::Pause& pause) {
///         std::cerr << "waiting " << pause.length.count() / 1000 << " s\n";
///     });
ZX_API void set_pause_listener(PauseListener listener);

/// Whether the request that this thread sent last was attempted more than once: an earlier attempt
/// may have taken effect although the service reported a failure. What the library can undo of that
/// it undoes; a spreadsheet or a file that was made twice stays.
ZX_API bool last_request_was_repeated();

} // namespace gsheet
