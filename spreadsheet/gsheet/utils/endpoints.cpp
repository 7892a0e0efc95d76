// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/endpoints.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string_view>

namespace gsheet {

namespace {

struct Current {
    std::mutex mutex;
    Endpoints endpoints;
};

Current& current() {
    static Current& instance = *std::make_unique<Current>().release();
    return instance;
}

/// "http://HOST" of this machine, with or without a port.
bool is_loopback(std::u16string_view address) {
    constexpr std::u16string_view kScheme = u"http://";
    constexpr std::u16string_view kHosts[] = {u"127.0.0.1", u"localhost", u"[::1]"};
    if (!address.starts_with(kScheme)) return false;
    address.remove_prefix(kScheme.size());
    return std::any_of(std::begin(kHosts), std::end(kHosts), [address](std::u16string_view host) {
        if (!address.starts_with(host)) return false;
        const std::u16string_view rest = address.substr(host.size());
        return rest.empty() || (rest[0] == u':' && rest.find_first_not_of(u"0123456789", 1) ==
                                                       std::u16string_view::npos);
    });
}

void check(std::u16string_view address) {
    const bool is_secure = address.starts_with(u"https://") &&
                           address.find_first_of(u"@?# \t\r\n") == std::u16string_view::npos;
    if ((is_secure && !address.ends_with(u'/')) || is_loopback(address)) return;
    throw std::invalid_argument(
        "the address of the service must be https://HOST, or http:// and a host of this machine");
}

} // namespace

void set_endpoints(const Endpoints& endpoints) {
    check(endpoints.sheets);
    check(endpoints.drive);
    check(endpoints.upload);
    Current& now = current();
    const std::scoped_lock lock(now.mutex);
    now.endpoints = endpoints;
}

Endpoints endpoints() {
    Current& now = current();
    const std::scoped_lock lock(now.mutex);
    return now.endpoints;
}

} // namespace gsheet
