// SPDX-License-Identifier: Apache-2.0
//
// What a person can do about a refusal, from the service's own reason.
#pragma once

#include <string>

#include "foundation/http/http_message.h"
#include "spreadsheet/failure.h"

namespace gsheet {

/// What was refused, and to whom.
struct RefusedRequest {
    foundation::http::HttpMethod method = foundation::http::HttpMethod::Get;
    bool is_drive = false;
    bool has_token = false; ///< otherwise a key, or nothing
    bool has_key = false;
    std::string account{}; ///< the e-mail address of the credential; empty when it is not known
    std::string source{};  ///< where the credential is from, such as "ZX_ACCESS_TOKEN"
};

/// One or two sentences: what is wrong and what to do; empty when the reason says no more than its
/// message.
std::string advice_for(const spreadsheet::ServiceReason& reason, const RefusedRequest& request);

/// The narrowest scope that allows the request.
std::string needed_scope(const RefusedRequest& request);

} // namespace gsheet
