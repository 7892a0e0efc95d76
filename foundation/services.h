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

/// Looks services up in the host's framework instead of the library's own; an invalid context goes
/// back to that. Before the first request.
void use_bundle_context(BundleContext context);

#else

class BundleContext;

/// One registered service of interface `Interface`.
template <class Interface>
class ServiceReference {
  public:
    ServiceReference() = default;
    explicit operator bool() const noexcept { return !service_.expired(); }

  private:
    friend class BundleContext;
    explicit ServiceReference(std::weak_ptr<Interface> service) : service_(std::move(service)) {}
    std::weak_ptr<Interface> service_;
};

namespace registry {

std::size_t add(std::type_index type, std::shared_ptr<void> service);
void remove(std::size_t identifier);
std::vector<std::shared_ptr<void>> find(std::type_index type, const std::string& filter);

} // namespace registry

/// Ends a service's registration; the service itself lives as long as somebody holds it. One that
/// was made by no registration is false.
template <class Interface>
class ServiceRegistration {
  public:
    ServiceRegistration() = default;
    explicit operator bool() const noexcept { return identifier_ != 0; }
    /// A second call does nothing.
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
        for (const std::shared_ptr<void>& service : registry::find(typeid(Interface), filter))
            references.push_back(
                ServiceReference<Interface>(std::static_pointer_cast<Interface>(service)));
        return references;
    }

    /// Null when the service has been unregistered and dropped.
    template <class Interface>
    std::shared_ptr<Interface> GetService(const ServiceReference<Interface>& reference) const {
        return reference.service_.lock();
    }
};

#endif

/// The context that the library looks services up in.
BundleContext bundle_context();

/// The first registered service of an interface, null when there is none. `Context` is the
/// registry's context: the one above or the framework's.
template <class Interface, class Context>
std::shared_ptr<Interface> find_service(Context context) {
    const auto references = context.template GetServiceReferences<Interface>("");
    if (references.empty()) return nullptr;
    return context.GetService(references.front());
}

} // namespace foundation::services
