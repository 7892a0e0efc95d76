// SPDX-License-Identifier: Apache-2.0
//
// The service registry: implementations by the interface that they serve. With CppMicroServices in
// the build it is that framework's, otherwise the small registry below, which has the same shape.
// Thread-safe.
#pragma once

#include <any>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <typeindex>
#include <vector>

#include "foundation/export.h"

namespace foundation::services {

/// One registered service of interface `Interface`.
template <class Interface>
class ServiceReference {
  public:
    explicit operator bool() const noexcept { return !service_.expired(); }

  private:
    friend class BundleContext;
    explicit ServiceReference(std::weak_ptr<Interface> service) : service_(std::move(service)) {}
    std::weak_ptr<Interface> service_;
};

/// Ends a service's registration; the service itself lives as long as somebody holds it.
class ZX_API ServiceRegistration {
  public:
    void Unregister();

  private:
    friend class BundleContext;
    explicit ServiceRegistration(std::size_t identifier) : identifier_(identifier) {}
    std::size_t identifier_;
};

class ZX_API BundleContext {
  public:
    /// The registration keeps `service` alive until it is unregistered.
    template <class Interface>
    ServiceRegistration RegisterService(const std::shared_ptr<Interface>& service) {
        return ServiceRegistration(add(typeid(Interface), service));
    }

    /// All services of an interface, the first registered first. Only the empty filter is known;
    /// any other throws std::invalid_argument.
    template <class Interface>
    std::vector<ServiceReference<Interface>>
    GetServiceReferences(const std::string& filter = std::string()) const {
        std::vector<ServiceReference<Interface>> references;
        for (const std::shared_ptr<void>& service : find(typeid(Interface), filter))
            references.push_back(
                ServiceReference<Interface>(std::static_pointer_cast<Interface>(service)));
        return references;
    }

    /// Null when the service has been unregistered and dropped.
    template <class Interface>
    std::shared_ptr<Interface> GetService(const ServiceReference<Interface>& reference) const {
        return reference.service_.lock();
    }

  private:
    static std::size_t add(std::type_index interface, std::shared_ptr<void> service);
    static std::vector<std::shared_ptr<void>> find(std::type_index interface,
                                                   const std::string& filter);
};

/// The first registered service of an interface, null when there is none. `Context` is the
/// registry's context: the one above or the framework's.
template <class Interface, class Context>
std::shared_ptr<Interface> find_service(Context context) {
    const auto references = context.template GetServiceReferences<Interface>("");
    if (references.empty()) return nullptr;
    return context.GetService(references.front());
}

} // namespace foundation::services
