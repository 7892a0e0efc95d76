// SPDX-License-Identifier: Apache-2.0
#include "foundation/services.h"

#include <algorithm>

namespace foundation::services {

namespace {

struct Entry {
    std::size_t identifier;
    std::type_index interface;
    std::shared_ptr<void> service;
};

struct Registry {
    std::mutex mutex;
    std::vector<Entry> entries; ///< in the order of registration
    std::size_t next_identifier = 1;
};

/// Never destroyed: a host may unregister while the process ends.
Registry& registry() {
    static Registry& instance = *std::make_unique<Registry>().release();
    return instance;
}

} // namespace

void ServiceRegistration::Unregister() {
    Registry& known = registry();
    std::shared_ptr<void> last; // destroyed behind the lock
    const std::scoped_lock lock(known.mutex);
    const auto found =
        std::find_if(known.entries.begin(), known.entries.end(),
                     [this](const Entry& entry) { return entry.identifier == identifier_; });
    if (found == known.entries.end()) return;
    last = std::move(found->service);
    known.entries.erase(found);
}

std::size_t BundleContext::add(std::type_index interface, std::shared_ptr<void> service) {
    if (service == nullptr) throw std::invalid_argument("a service is null");
    Registry& known = registry();
    const std::scoped_lock lock(known.mutex);
    known.entries.push_back({known.next_identifier, interface, std::move(service)});
    return known.next_identifier++;
}

std::vector<std::shared_ptr<void>> BundleContext::find(std::type_index interface,
                                                       const std::string& filter) {
    if (!filter.empty())
        throw std::invalid_argument("the service registry knows no filter but the empty one");
    Registry& known = registry();
    const std::scoped_lock lock(known.mutex);
    std::vector<std::shared_ptr<void>> found;
    for (const Entry& entry : known.entries)
        if (entry.interface == interface) found.push_back(entry.service);
    return found;
}

} // namespace foundation::services
