// SPDX-License-Identifier: Apache-2.0
//
// Apartments, the classes of this process, and the run-time module. Not on Windows.
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/automation/scripted_application.h"

namespace foundation::automation {
namespace {

using ::testing::HasSubstr;

HRESULT create(ComPtr<IDispatch>& object) {
    return CoCreateInstance(kSpreadsheetApplication, nullptr, CLSCTX_LOCAL_SERVER, IID_IDispatch,
                            object.out());
}

TEST(Apartments, CountInitialisationsOfEachThread) {
    std::thread([] {
        ComPtr<IDispatch> object;
        EXPECT_EQ(create(object), CO_E_NOTINITIALIZED);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
        CoUninitialize();
        EXPECT_NE(create(object), CO_E_NOTINITIALIZED);
        CoUninitialize();
        EXPECT_EQ(create(object), CO_E_NOTINITIALIZED);
        CoUninitialize(); // one too many does nothing
        EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    }).join();
}

TEST(ClassTable, FindsRegisteredClassesUntilTheyAreRevoked) {
    CLSID class_id{};
    EXPECT_EQ(CLSIDFromProgID(u"excel.application", &class_id), S_OK);
    EXPECT_EQ(class_id, kSpreadsheetApplication);
    EXPECT_EQ(CLSIDFromProgID(u"Other.Application", &class_id), CO_E_CLASSSTRING);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    set_module_path("/nonexistent/module.so");
    ComPtr<IDispatch> object;
    {
        scripted::Script script;
        {
            const scripted::Registration registration(script);
            EXPECT_EQ(create(object), S_OK);
            EXPECT_EQ(script.held(), 1);
            object = {};
            EXPECT_EQ(script.held(), 0);
        }
        EXPECT_EQ(create(object), REGDB_E_CLASSNOTREG);
        EXPECT_FALSE(object);
    }
    set_module_path("");
    CoUninitialize();
}

TEST(RunTimeModule, IsAskedForClassesAndForReasons) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ComPtr<IDispatch> object;
    set_module_path("/nonexistent/module.so");
    HRESULT result = create(object);
    EXPECT_EQ(result, REGDB_E_CLASSNOTREG);
    EXPECT_THAT(start_problem(result), HasSubstr("libreoffice-calc"));
    set_module_path(ZX_TEST_MODULE);
    EXPECT_EQ(create(object), S_OK) << "the first object that the module makes";
    result = create(object);
    EXPECT_EQ(result, E_FAIL);
    EXPECT_EQ(start_problem(result), "The module makes one object only.");
    set_module_path("");
    CoUninitialize();
}

} // namespace
} // namespace foundation::automation
