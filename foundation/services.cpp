// SPDX-License-Identifier: Apache-2.0
//
// The library's own registry, in builds without CppMicroServices.
#include "foundation/services.h"

#include <algorithm>
#include <mutex>

#include "foundation/never_destroyed.h"

namespace foundation::services {

namespace {

struct Entry {
    std::size_t identifier;
    std::type_index type;
    std::shared_ptr<void> service;
};

struct Registry {
    std::mutex mutex;
    std::vector<Entry> entries; ///< in the order of registration
    std::size_t next_identifier = 1;
};

Registry& known_services() {
    static NeverDestroyed<Registry> instance;
    return instance.get();
}

std::vector<Entry>::iterator find_entry(Registry& known, std::size_t identifier) {
    return std::find_if(
        known.entries.begin(), known.entries.end(),
        [identifier](const Entry& entry) { return entry.identifier == identifier; });
}

} // namespace

std::size_t registry::add(std::type_index type, std::shared_ptr<void> service) {
    if (service == nullptr) throw std::invalid_argument("a service is null");
    Registry& known = known_services();
    const std::scoped_lock lock(known.mutex);
    known.entries.push_back({known.next_identifier, type, std::move(service)});
    return known.next_identifier++;
}

void registry::remove(std::size_t identifier) {
    Registry& known = known_services();
    std::shared_ptr<void> last; // destroyed after the lock is released
    const std::scoped_lock lock(known.mutex);
    const auto found = find_entry(known, identifier);
    if (found == known.entries.end()) throw std::logic_error("the service is not registered");
    last = std::move(found->service);
    known.entries.erase(found);
    if (known.entries.empty()) known.entries.shrink_to_fit(); // the library may be unloaded next
}

std::vector<std::size_t> registry::find(std::type_index type, const std::string& filter) {
    if (!filter.empty())
        throw std::invalid_argument("the service registry supports only the empty filter");
    Registry& known = known_services();
    const std::scoped_lock lock(known.mutex);
    std::vector<std::size_t> found;
    for (const Entry& entry : known.entries)
        if (entry.type == type) found.push_back(entry.identifier);
    return found;
}

std::shared_ptr<void> registry::get(std::size_t identifier) {
    Registry& known = known_services();
    const std::scoped_lock lock(known.mutex);
    const auto found = find_entry(known, identifier);
    return found == known.entries.end() ? nullptr : found->service;
}

BundleContext bundle_context() {
    return {};
}

} // namespace foundation::services
