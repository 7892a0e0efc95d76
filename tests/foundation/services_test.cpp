// SPDX-License-Identifier: Apache-2.0
//
// The service registry, and the look-up over a registry of the framework's shape.
#include <map>
#include <stdexcept>

#include <gtest/gtest.h>

#include "foundation/services.h"

namespace foundation::services {
namespace {

struct Greeter {
    int number;
};
struct Stranger {};

std::shared_ptr<Greeter> greeter(int number) {
    return std::make_shared<Greeter>(Greeter{number});
}

// What the framework's context has: copies are cheap, references are templates of their own, and
// a service may have gone before it is fetched.
template <class Interface>
struct FrameworkReference {
    int position;
};

class FrameworkContext {
  public:
    template <class Interface>
    std::vector<FrameworkReference<Interface>>
    GetServiceReferences(const std::string& filter = std::string()) {
        EXPECT_EQ(filter, "");
        std::vector<FrameworkReference<Interface>> references;
        for (const auto& [position, service] : services)
            references.push_back({position});
        return references;
    }
    template <class Interface>
    std::shared_ptr<Interface> GetService(const FrameworkReference<Interface>& reference) {
        return services.at(reference.position);
    }

    std::map<int, std::shared_ptr<Greeter>> services;
};

TEST(FindService, TakesTheFirstReferenceOfAFrameworksContext) {
    FrameworkContext context;
    EXPECT_EQ(find_service<Greeter>(context), nullptr);
    context.services = {{3, greeter(30)}, {5, greeter(50)}};
    EXPECT_EQ(find_service<Greeter>(context)->number, 30);
    context.services[3] = nullptr;
    EXPECT_EQ(find_service<Greeter>(context), nullptr);
}

TEST(FindService, TakesTheFirstThatIsRegistered) {
    BundleContext context = bundle_context();
    EXPECT_EQ(find_service<Greeter>(context), nullptr);
    auto first = context.RegisterService<Greeter>(greeter(1));
    auto second = context.RegisterService<Greeter>(greeter(2));
    EXPECT_EQ(find_service<Greeter>(context)->number, 1);
    EXPECT_EQ(find_service<Stranger>(context), nullptr);
    first.Unregister();
    first.Unregister();
    EXPECT_EQ(find_service<Greeter>(context)->number, 2);
    second.Unregister();
    EXPECT_EQ(find_service<Greeter>(context), nullptr);
}

#ifndef ZX_WITH_CPPMICROSERVICES

TEST(BundleContext, KnowsTheEmptyFilterOnly) {
    const BundleContext context = bundle_context();
    EXPECT_TRUE(context.GetServiceReferences<Greeter>().empty());
    EXPECT_THROW(context.GetServiceReferences<Greeter>("(vendor=x)"), std::invalid_argument);
}

TEST(BundleContext, RegistersNoNull) {
    EXPECT_THROW(bundle_context().RegisterService<Greeter>(nullptr), std::invalid_argument);
}

TEST(BundleContext, GivesNullForAServiceThatHasGone) {
    BundleContext context = bundle_context();
    auto registration = context.RegisterService<Greeter>(greeter(1));
    const auto reference = context.GetServiceReferences<Greeter>().at(0);
    auto held = context.GetService(reference);
    registration.Unregister();
    EXPECT_EQ(context.GetService(reference), held) << "somebody holds it";
    held.reset();
    EXPECT_EQ(context.GetService(reference), nullptr);
    EXPECT_FALSE(reference);
}

TEST(ServiceRegistration, OfNothingEndsNothing) {
    auto registration = bundle_context().RegisterService<Greeter>(greeter(1));
    ServiceRegistration<Greeter> none;
    EXPECT_FALSE(none);
    none.Unregister();
    EXPECT_NE(find_service<Greeter>(bundle_context()), nullptr);
    registration.Unregister();
}

#endif

} // namespace
} // namespace foundation::services
