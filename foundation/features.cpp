// SPDX-License-Identifier: Apache-2.0
#include "foundation/features.h"

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "foundation/never_destroyed.h"

namespace foundation::features {

namespace {

struct Switches {
    std::mutex mutex;
    std::map<std::string, bool, std::less<>> by_name{{"GOOGLESHEETS", true}};
};

Switches& switches() {
    static NeverDestroyed<Switches> instance;
    return instance.get();
}

} // namespace

bool is_on(std::string_view name) {
    Switches& known = switches();
    const std::scoped_lock lock(known.mutex);
    const auto found = known.by_name.find(name);
    return found != known.by_name.end() && found->second;
}

void set(std::string_view name, bool on) {
    Switches& known = switches();
    const std::scoped_lock lock(known.mutex);
    known.by_name[std::string(name)] = on;
}

} // namespace foundation::features
