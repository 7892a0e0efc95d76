// SPDX-License-Identifier: Apache-2.0
//
// The service registry: implementations by the interface that they serve. With CppMicroServices in
// the build (ZX_WITH_CPPMICROSERVICES) it is that framework's, otherwise the small registry below,
// which has the same shape. Thread-safe.
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeindex>
#include <utility>
#include <vector>

#ifdef ZX_WITH_CPPMICROSERVICES
#include <cppmicroservices/BundleContext.h>
#include <cppmicroservices/ServiceReference.h>
#include <cppmicroservices/ServiceRegistration.h>
#endif

namespace foundation::services {

#ifdef ZX_WITH_CPPMICROSERVICES

using cppmicroservices::BundleContext;
using cppmicroservices::ServiceReference;
using cppmicroservices::ServiceRegistration;

/// Makes the library look services up in the host's framework instead of its own; an invalid
/// context goes back to its own. To be called before `initialize` and again, with an invalid
/// context, before the host's framework stops.
void use_bundle_context(BundleContext context);

#else

namespace registry {

std::size_t add(std::type_index type, std::shared_ptr<void> service);
void remove(std::size_t identifier);
std::vector<std::size_t> find(std::type_index type, const std::string& filter);
/// Null where the service has been unregistered.
std::shared_ptr<void> get(std::size_t identifier);

} // namespace registry

/// One registered service of interface `Interface`; false once it has been unregistered.
template <class Interface>
class ServiceReference {
  public:
    ServiceReference() = default;
    explicit operator bool() const { return registry::get(identifier_) != nullptr; }

  private:
    friend class BundleContext;
    explicit ServiceReference(std::size_t identifier) : identifier_(identifier) {}
    std::size_t identifier_ = 0;
};

/// Ends a service's registration; the service itself lives as long as somebody holds it. A
/// default-constructed registration is false.
template <class Interface>
class ServiceRegistration {
  public:
    ServiceRegistration() = default;
    explicit operator bool() const noexcept { return identifier_ != 0; }
    /// Throws std::logic_error at a second call, and for a default-constructed registration.
    void Unregister() { registry::remove(identifier_); }

  private:
    friend class BundleContext;
    explicit ServiceRegistration(std::size_t identifier) : identifier_(identifier) {}
    std::size_t identifier_ = 0;
};

/// The process's registry.
class BundleContext {
  public:
    /// The registration keeps `service` alive until it is unregistered. Throws
    /// std::invalid_argument for null.
    template <class Interface>
    ServiceRegistration<Interface> RegisterService(const std::shared_ptr<Interface>& service) {
        return ServiceRegistration<Interface>(registry::add(typeid(Interface), service));
    }

    /// All services of an interface, the first registered first. Only the empty filter is known;
    /// any other throws std::invalid_argument.
    template <class Interface>
    std::vector<ServiceReference<Interface>>
    GetServiceReferences(const std::string& filter = std::string()) const {
        std::vector<ServiceReference<Interface>> references;
        for (const std::size_t identifier : registry::find(typeid(Interface), filter))
            references.push_back(ServiceReference<Interface>(identifier));
        return references;
    }

    /// Throws std::invalid_argument where the service has been unregistered.
    template <class Interface>
    std::shared_ptr<Interface> GetService(const ServiceReference<Interface>& reference) const {
        auto service = std::static_pointer_cast<Interface>(registry::get(reference.identifier_));
        if (service == nullptr) throw std::invalid_argument("the service is not registered");
        return service;
    }
};

#endif

/// The context that the library looks services up in.
BundleContext bundle_context();

/// The first registered service of an interface, null when there is none.
template <class Interface>
std::shared_ptr<Interface> find_service(BundleContext context) {
    const auto references = context.GetServiceReferences<Interface>("");
    if (references.empty()) return nullptr;
    try {
        return context.GetService(references.front());
    } catch (const std::invalid_argument&) {
        return nullptr; // unregistered by another thread since
    }
}

} // namespace foundation::services
