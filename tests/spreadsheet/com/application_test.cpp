// SPDX-License-Identifier: Apache-2.0
//
// Instances: starting, choosing, keeping and ending them.
#include <thread>

#include "spreadsheet/com/application_registry.h"
#include "spreadsheet/failure.h"
#include "tests/spreadsheet/com/com_fixture.h"

namespace spreadsheet {
namespace {

class Application : public ComTest {};

TEST_F(Application, StartsHiddenAndServesBooksUntilTheLibraryStops) {
    open();
    open();
    ASSERT_EQ(script.applications.size(), 1u);
    EXPECT_FALSE(script.applications[0]->visible);
    EXPECT_FALSE(script.applications[0]->quit);
    EXPECT_TRUE(script.applications[0]->alerts) << "switched off for good";
    EXPECT_TRUE(file->closed);
}

TEST_F(Application, FailsWith18WhenItDoesNotStart) {
    const auto kind_of_open = [] {
        try {
            open();
        } catch (const Exception& e) {
            EXPECT_EQ(e.id(), error_id::internal);
            EXPECT_FALSE(failure_of(e).cause.empty());
            return failure_of(e).kind;
        }
        return FailureKind::Service;
    };
    script.starts = false;
    EXPECT_EQ(kind_of_open(), FailureKind::NoApplication);
    EXPECT_EQ(thrown_id([] { make(1); }), 18);
    script.starts = true;
    script.refused["Application.Workbooks"] = scripted::kRefused;
    EXPECT_EQ(thrown_id([] { open(); }), 18);
    EXPECT_TRUE(script.applications.back()->quit) << "left running without a book";
}

TEST_F(Application, ServesAFileOnlyWithoutOpenWorkbooks) {
    script.add_file(kRoot + u"other.xlsx", {u"A"});
    const auto first = open();
    const auto second = open(kRoot + u"other.xlsx");
    EXPECT_EQ(script.applications.size(), 2u);
    script.refused["Workbooks.Count"] = RPC_E_CALL_REJECTED; // busy, as with a dialog
    EXPECT_EQ(make(1)->num_sheets(), 1u);
    EXPECT_EQ(script.applications.size(), 2u) << "a new book takes the first instance";
    EXPECT_EQ(script.applications[0]->workbooks.size(), 1u) << "the new book was closed";
}

TEST_F(Application, IsReplacedWhenItHasEnded) {
    open();
    script.applications[0]->dead = true;
    EXPECT_EQ(open()->num_sheets(), 1u);
    ASSERT_EQ(script.applications.size(), 2u);
    EXPECT_EQ(application_registry()->size(), 1u) << "the slot was not used again";
    const auto held = open();
    script.applications[1]->dead = true;
    EXPECT_EQ(make(1)->num_sheets(), 1u);
    EXPECT_EQ(open()->num_sheets(), 1u);
    EXPECT_EQ(script.applications.size(), 3u);
    EXPECT_EQ(application_registry()->size(), 2u) << "the list forgot one that a book holds";
}

TEST_F(Application, StaysWithTheUserWhoSeesIt) {
    {
        const auto book = open();
        script.applications[0]->visible = true;
    }
    EXPECT_FALSE(file->closed);
    release();
    EXPECT_FALSE(script.applications[0]->quit);
    initialize();
}

TEST_F(Application, EndsWithItsBookWhenTheLibraryIsNotStarted) {
    release();
    open();
    EXPECT_TRUE(script.applications.at(0)->quit);
    {
        initialize();
        const auto book = open();
        release();
        EXPECT_FALSE(script.applications.at(1)->quit) << "a book still uses it";
    }
    EXPECT_TRUE(script.applications.at(1)->quit);
    initialize();
}

TEST_F(Application, ReleasesWhatIsRegisteredOnce) {
    excel_application application;
    const auto workbooks = [&] {
        IDispatch* const object = application.workbooks();
        object->AddRef();
        return object;
    };
    const long held = script.held();
    auto first = application.register_ref(workbooks());
    auto second = application.register_ref(first.get());
    EXPECT_EQ(first, second);
    EXPECT_EQ(application.adopt(workbooks()), first);
    EXPECT_EQ(script.held(), held + 1);
    application.release_unused_refs();
    EXPECT_EQ(script.held(), held + 1) << "released while it was used";
    first.reset();
    second.reset();
    application.release_unused_refs();
    EXPECT_EQ(script.held(), held);
    EXPECT_EQ(application.register_ref(nullptr), nullptr);
    EXPECT_EQ(excel_application::get_temp_ref(nullptr), nullptr);
}

#ifndef _WIN32 // there the class would have to be marshalled between threads
TEST_F(Application, NeedsAndLeavesASingleThreadedApartment) {
    std::thread([] {
        excel_application first;
        excel_application second;
        CoUninitialize();
        void* object = nullptr;
        EXPECT_EQ(CoCreateInstance(foundation::automation::kSpreadsheetApplication, nullptr,
                                   CLSCTX_LOCAL_SERVER, IID_IDispatch, &object),
                  CO_E_NOTINITIALIZED);
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        EXPECT_EQ(thrown_id([] { excel_application(); }), 18) << "in another apartment";
    }).join();
}
#endif

} // namespace
} // namespace spreadsheet
