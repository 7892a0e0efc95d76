// SPDX-License-Identifier: Apache-2.0
//
// Authentication flows: objects that know a credential and put it on a request. They take what the
// host stored (foundation/oauth_keys.h), without an entry the documented environment variables.
// Thread-safe.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/http/http_message.h"
#include "foundation/oauth_keys.h"

namespace foundation::oauth {

class AuthenticationFlow {
  public:
    virtual ~AuthenticationFlow() = default;

    /// The credential stored for a purpose, empty when there is none.
    virtual std::string key(std::string_view purpose) const = 0;
    /// A GET request for `url` (UTF-8) with the credential for the purpose attached.
    virtual http::HttpRequest make_request(std::string_view purpose,
                                           const std::string& url) const = 0;
};

/// The flow of a kind: "apikey" (query parameter "key") or "accesstoken" (header "Authorization");
/// null for any other.
std::shared_ptr<const AuthenticationFlow> make_flow(std::string_view kind);

/// Every credential that is stored now, for whoever has to keep them out of a text.
std::vector<std::string> stored_keys();

} // namespace foundation::oauth
