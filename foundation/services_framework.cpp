// SPDX-License-Identifier: Apache-2.0
//
// The registry in builds with CppMicroServices: the host's framework, or one of the library's own.
#include <mutex>

#include <cppmicroservices/Framework.h>
#include <cppmicroservices/FrameworkFactory.h>

#include "foundation/never_destroyed.h"
#include "foundation/services.h"

namespace foundation::services {

namespace {

struct Contexts {
    std::mutex mutex;
    BundleContext host;
    BundleContext own;
};

Contexts& contexts() {
    static NeverDestroyed<Contexts> instance;
    return instance.get();
}

BundleContext start_own_framework() {
    cppmicroservices::Framework framework = cppmicroservices::FrameworkFactory().NewFramework();
    framework.Start();
    return framework.GetBundleContext();
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
    if (!known.own) known.own = start_own_framework();
    return known.own;
}

} // namespace foundation::services
