// SPDX-License-Identifier: Apache-2.0
//
// The service registry; the same facts hold for the library's own one and for the framework's.
#include <chrono>
#include <memory>
#include <stdexcept>

#include <gtest/gtest.h>

#include "foundation/services.h"

#ifdef ZX_WITH_CPPMICROSERVICES
#include <cppmicroservices/Framework.h>
#include <cppmicroservices/FrameworkEvent.h>
#include <cppmicroservices/FrameworkFactory.h>
#endif

namespace foundation::services {
namespace {

struct Greeter {
    int number;
};
struct Stranger {};

std::shared_ptr<Greeter> greeter(int number) {
    return std::make_shared<Greeter>(Greeter{number});
}

TEST(ServiceRegistry, FindsTheFirstThatIsRegistered) {
    BundleContext context = bundle_context();
    EXPECT_EQ(find_service<Greeter>(context), nullptr);
    auto first = context.RegisterService<Greeter>(greeter(1));
    auto second = context.RegisterService<Greeter>(greeter(2));
    EXPECT_EQ(find_service<Greeter>(bundle_context())->number, 1);
    EXPECT_EQ(find_service<Stranger>(context), nullptr);
    EXPECT_THROW(context.GetServiceReferences<Greeter>("(no filter"), std::invalid_argument);
    first.Unregister();
    EXPECT_EQ(find_service<Greeter>(context)->number, 2);
    second.Unregister();
    EXPECT_EQ(find_service<Greeter>(context), nullptr);
    EXPECT_THROW(context.RegisterService<Greeter>(std::shared_ptr<Greeter>()),
                 std::invalid_argument);
}

TEST(ServiceRegistry, EndsARegistrationOnce) {
    BundleContext context = bundle_context();
    auto service = greeter(1);
    const std::weak_ptr<Greeter> watched = service;
    auto registration = context.RegisterService<Greeter>(service);
    service.reset();
    const auto reference = context.GetServiceReferences<Greeter>().at(0);
    auto held = context.GetService(reference);
    EXPECT_TRUE(registration);
    registration.Unregister();
    EXPECT_EQ(held->number, 1) << "a holder keeps it alive";
    EXPECT_FALSE(reference);
    EXPECT_THROW(context.GetService(reference), std::invalid_argument);
    EXPECT_THROW(registration.Unregister(), std::logic_error);
    EXPECT_THROW(ServiceRegistration<Greeter>().Unregister(), std::logic_error);
    EXPECT_FALSE(ServiceRegistration<Greeter>());
    held.reset();
    EXPECT_TRUE(watched.expired());
}

#ifdef ZX_WITH_CPPMICROSERVICES

TEST(BundleContext, IsTheHostsWhenItHandsOneOver) {
    auto framework = cppmicroservices::FrameworkFactory().NewFramework();
    framework.Start();
    auto registration = framework.GetBundleContext().RegisterService<Greeter>(greeter(7));
    EXPECT_EQ(find_service<Greeter>(bundle_context()), nullptr);
    use_bundle_context(framework.GetBundleContext());
    EXPECT_EQ(find_service<Greeter>(bundle_context())->number, 7);
    use_bundle_context({});
    EXPECT_EQ(find_service<Greeter>(bundle_context()), nullptr);
    registration.Unregister();
    framework.Stop();
    framework.WaitForStop(std::chrono::milliseconds::zero());
}

#endif

} // namespace
} // namespace foundation::services
