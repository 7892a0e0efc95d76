// SPDX-License-Identifier: Apache-2.0
#include "spreadsheet/gsheet/utils/endpoints.h"

#include <algorithm>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <string_view>

#include "foundation/never_destroyed.h"

namespace gsheet {

namespace {

struct Current {
    std::mutex mutex;
    Endpoints endpoints;
};

Current& current() {
    static foundation::NeverDestroyed<Current> instance;
    return instance.get();
}

/// Takes a scheme off an address.
bool consume(std::u16string_view& address, std::u16string_view scheme) {
    if (!address.starts_with(scheme)) return false;
    address.remove_prefix(scheme.size());
    return true;
}

/// HOST or HOST:PORT, and nothing that begins a path, a query or a user's name.
bool is_host(std::u16string_view address) {
    return !address.empty() && std::all_of(address.begin(), address.end(), [](char16_t unit) {
        return (unit >= u'0' && unit <= u'9') || (unit >= u'a' && unit <= u'z') ||
               (unit >= u'A' && unit <= u'Z') ||
               std::u16string_view(u"-.:[]").find(unit) != std::u16string_view::npos;
    });
}

/// A name of this machine, with or without a port.
bool is_loopback(std::u16string_view address) {
    constexpr std::u16string_view kHosts[] = {u"127.0.0.1", u"localhost", u"[::1]"};
    return std::any_of(std::begin(kHosts), std::end(kHosts), [address](std::u16string_view host) {
        if (!address.starts_with(host)) return false;
        const std::u16string_view port = address.substr(host.size());
        return port.empty() || (port[0] == u':' && port.find_first_not_of(u"0123456789", 1) ==
                                                       std::u16string_view::npos);
    });
}

bool is_safe_root(std::u16string_view address) {
    if (consume(address, u"https://")) return is_host(address);
    return consume(address, u"http://") && is_loopback(address);
}

void check(std::u16string_view address) {
    if (is_safe_root(address)) return;
    throw std::invalid_argument(
        "the address of the service must be https://HOST, or http:// and a host of this machine");
}

} // namespace

void set_endpoints(const Endpoints& endpoints) {
    check(endpoints.sheets);
    check(endpoints.drive);
    check(endpoints.upload);
    check(endpoints.token);
    Current& now = current();
    const std::scoped_lock lock(now.mutex);
    now.endpoints = endpoints;
}

bool is_safe_address(std::u16string_view address) {
    const std::size_t scheme = address.find(u"://");
    if (scheme == std::u16string_view::npos) return false;
    return is_safe_root(address.substr(0, address.find(u'/', scheme + 3)));
}

Endpoints endpoints() {
    Current& now = current();
    const std::scoped_lock lock(now.mutex);
    return now.endpoints;
}

} // namespace gsheet
