// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "foundation/http/http_message.h"

namespace foundation::http {

/// The usual phrase of a status (RFC 9110, section 15), for servers that send none; empty for one
/// that is not known.
const char* usual_reason(HttpResponseCode status);

} // namespace foundation::http
