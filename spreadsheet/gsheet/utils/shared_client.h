// SPDX-License-Identifier: Apache-2.0
//
// The one HTTP client of the process, which all requests to the service share: its connections, its
// retries, its rate window.
#pragma once

#include <memory>

#include "foundation/http/http_client.h"

namespace gsheet {

/// The first client that is registered (foundation/services.h), configured at the first call with
/// the retry strategy and time-outs of three minutes. Null while none is registered; the next call
/// then looks again. Concurrent first callers wait for the first one.
std::shared_ptr<foundation::http::HttpClient> sharedHttpClient();

/// Registers the platform's own client unless the host has registered one. Opens nothing.
void start_service();
/// Takes the platform's client out of the registry and closes the kept connections.
void stop_service();

} // namespace gsheet
