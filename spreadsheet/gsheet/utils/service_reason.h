// SPDX-License-Identifier: Apache-2.0
//
// What the service says in the body of a reply that reports a failure.
#pragma once

#include "foundation/http/http_message.h"
#include "spreadsheet/failure.h"

namespace gsheet {

/// Status, reason and message of a failed reply, as far as its body has them: the error object of
/// the service's interfaces ({"error":{"code","status","message","details"|"errors"}}). A body of
/// any other form leaves them empty. Credentials are replaced.
spreadsheet::ServiceReason reason_of(const foundation::http::HttpResponse& response);

} // namespace gsheet
