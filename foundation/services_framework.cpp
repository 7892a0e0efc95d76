// SPDX-License-Identifier: Apache-2.0
//
// The registry in builds with CppMicroServices: the host's framework, or one of the library's own.
#include <mutex>
#include <optional>
#include <utility>

#include <cppmicroservices/Framework.h>
#include <cppmicroservices/FrameworkFactory.h>

#include "foundation/never_destroyed.h"
#include "foundation/services.h"

namespace foundation::services {

namespace {

struct Contexts {
    std::mutex mutex;
    BundleContext host;
    /// Contexts are valid only while the framework object lives, so it is kept. Never stopped: the
    /// library cannot know when the last user of a context has gone.
    std::optional<cppmicroservices::Framework> own;
};

Contexts& contexts() {
    static NeverDestroyed<Contexts> instance;
    return instance.get();
}

} // namespace

void use_bundle_context(BundleContext context) {
    Contexts& known = contexts();
    const std::scoped_lock lock(known.mutex);
    known.host = std::move(context);
}

BundleContext bundle_context() {
    Contexts& known = contexts();
    const std::scoped_lock lock(known.mutex);
    if (known.host) return known.host;
    if (!known.own) {
        auto framework = cppmicroservices::FrameworkFactory().NewFramework();
        framework.Start();
        known.own = std::move(framework);
    }
    return known.own->GetBundleContext();
}

} // namespace foundation::services
