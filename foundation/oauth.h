// SPDX-License-Identifier: Apache-2.0
//
// Authentication flows: objects that know a credential and put it on a request. The host fills the
// table of keys; without an entry the documented environment variables serve. Thread-safe.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "foundation/export.h"
#include "foundation/http/http_message.h"

namespace foundation::oauth {

class ZX_API AuthenticationFlow {
  public:
    virtual ~AuthenticationFlow();

    /// The credential stored for a purpose, empty when there is none.
    virtual std::string key(std::string_view purpose) const = 0;
    /// A GET request for `url` (UTF-8) with the credential for the purpose attached.
    virtual http::HttpRequest make_request(std::string_view purpose, const std::string& url) const = 0;
};

/// The flow of a kind: "apikey" (query parameter "key") or "accesstoken" (header "Authorization");
/// null for any other.
ZX_API std::shared_ptr<const AuthenticationFlow> make_flow(std::string_view kind);

/// Stores the credential that flows of `kind` use for `purpose`; an empty one removes it.
ZX_API void store_key(std::string_view kind, std::string_view purpose, std::string key);

} // namespace foundation::oauth
