// SPDX-License-Identifier: Apache-2.0
#include "foundation/oauth.h"

#include <map>
#include <mutex>
#include <utility>

#include "foundation/environment.h"
#include "foundation/never_destroyed.h"
#include "foundation/unicode.h"

namespace foundation::oauth {

namespace {

constexpr std::string_view kApiKey = "apikey";
constexpr std::string_view kAccessToken = "accesstoken";

struct Keys {
    std::mutex mutex;
    std::map<std::pair<std::string, std::string>, std::string> by_kind_and_purpose;
};

Keys& keys() {
    static NeverDestroyed<Keys> instance;
    return instance.get();
}

std::string stored_key(std::string_view kind, std::string_view purpose) {
    Keys& known = keys();
    const std::scoped_lock lock(known.mutex);
    const auto found = known.by_kind_and_purpose.find({std::string(kind), std::string(purpose)});
    return found == known.by_kind_and_purpose.end() ? std::string() : found->second;
}

class Flow final : public AuthenticationFlow {
  public:
    explicit Flow(bool is_api_key) : is_api_key_(is_api_key) {}

    std::string key(std::string_view purpose) const override {
        std::string stored = stored_key(is_api_key_ ? kApiKey : kAccessToken, purpose);
        if (!stored.empty()) return stored;
        return unicode::to_utf8(
            environment_variable(is_api_key_ ? "ZX_API_KEY" : "ZX_ACCESS_TOKEN"));
    }

    http::HttpRequest make_request(std::string_view purpose,
                                   const std::string& url) const override {
        http::HttpRequest request(http::HttpMethod::Get, url, {{"Accept", "application/json"}});
        if (is_api_key_)
            request.setQueryParameters({{"key", key(purpose)}});
        else
            request.setHeader("Authorization", "Bearer " + key(purpose));
        return request;
    }

  private:
    bool is_api_key_;
};

} // namespace

std::shared_ptr<const AuthenticationFlow> make_flow(std::string_view kind) {
    if (kind != kApiKey && kind != kAccessToken) return nullptr;
    return std::make_shared<const Flow>(kind == kApiKey);
}

void store_key(std::string_view kind, std::string_view purpose, std::string key) {
    Keys& known = keys();
    const std::scoped_lock lock(known.mutex);
    std::pair<std::string, std::string> place{kind, purpose};
    if (key.empty())
        known.by_kind_and_purpose.erase(place);
    else
        known.by_kind_and_purpose[std::move(place)] = std::move(key);
}

std::vector<std::string> stored_keys() {
    Keys& known = keys();
    const std::scoped_lock lock(known.mutex);
    std::vector<std::string> values;
    for (const auto& [place, key] : known.by_kind_and_purpose)
        values.push_back(key);
    return values;
}

} // namespace foundation::oauth
