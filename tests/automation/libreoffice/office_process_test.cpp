// SPDX-License-Identifier: Apache-2.0
//
// The processes of LibreOffice: how many there are, how they end, what they leave.
#include <algorithm>
#include <chrono>
#include <cstdlib>

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include "foundation/child_process.h"
#include "foundation/environment.h"
#include "tests/automation/libreoffice/office_fixture.h"
#include "tests/automation/libreoffice/workbook_files.h"

namespace spreadsheet {
namespace {

using std::chrono::steady_clock;
using testing::ElementsAre;
using testing::SizeIs;

/// A variable that has another value in a scope.
class ScopedVariable {
  public:
    ScopedVariable(const char* name, const std::u16string& value) : name_(name) {
        foundation::set_environment_variable(name, value);
    }
    ~ScopedVariable() { foundation::set_environment_variable(name_, u""); }

  private:
    const char* const name_;
};

TEST_F(OfficeTest, OpensASecondFileInAnotherProcess) {
    const auto first = open(one_sheet_book("<row r='1'><c r='A1'><v>1</v></c></row>"), "a.xlsx");
    {
        const auto second =
            open(one_sheet_book("<row r='1'><c r='A1'><v>2</v></c></row>"), "b.xlsx");
        EXPECT_THAT(office_processes(), SizeIs(testing::Ge(2u)));
        EXPECT_THAT(cells_of(*second->sheet(0), {0, 0, 0, 0}), ElementsAre("number 2"));
    }
    EXPECT_THAT(cells_of(*first->sheet(0), {0, 0, 0, 0}), ElementsAre("number 1"));
}

TEST_F(OfficeTest, ReportsAnApplicationThatDies) {
    const auto book = make(1);
    for (const int process : office_processes())
        kill(process, SIGKILL);
    const Failure failure = failure_of_thrown([&] {
        enter(*book->sheet(0), {0, 0, 0, 0}, {"number 1"});
    });
    EXPECT_EQ(failure.kind, FailureKind::NoApplication) << failure.cause;
    EXPECT_EQ(thrown_id([&] { save_book(book, folder.file("b.xlsx")); }), 4);
    // The next books get another process, though the system may still be ending the ones before.
    const auto next = open(one_sheet_book("<row r='1'><c r='A1'><v>3</v></c></row>"));
    EXPECT_THAT(cells_of(*next->sheet(0), {0, 0, 0, 0}), ElementsAre("number 3"));
    for (const int process : office_processes())
        kill(process, SIGKILL);
    EXPECT_EQ(make(2)->num_sheets(), 2u);
}

TEST_F(OfficeTest, EndsAnApplicationThatDoesNotAnswer) {
    release(); // the next application has the variable's limit
    initialize();
    const ScopedVariable limit("ZX_APPLICATION_TIMEOUT", u"1");
    const auto book = make(1);
    for (const int process : office_processes())
        kill(process, SIGSTOP);
    const auto begin = steady_clock::now();
    EXPECT_EQ(failure_of_thrown([&] { book->sheet(0)->used_range(); }).kind,
              FailureKind::NoApplication);
    EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(10));
}

/// What another process of this program runs in the test below.
TEST_F(OfficeTest, DISABLED_HoldsABookUntilItIsKilled) {
    const auto book = make(1);
    std::ofstream(std::getenv("ZX_TEST_READY")) << "ready";
    for (;;)
        pause();
}

TEST_F(OfficeTest, LeavesNothingBehind) {
    release();
    const std::filesystem::path temporary = folder.path() / u8"für %20 now";
    std::filesystem::create_directory(temporary);
    const auto is_left = [&] {
        const std::filesystem::directory_iterator entries(temporary);
        return std::any_of(begin(entries), end(entries), [](const auto& entry) {
            return entry.path().filename().string().starts_with("zxspreadsheet-");
        });
    };
    const auto wait_until = [](auto condition) {
        const auto end = steady_clock::now() + std::chrono::seconds(60);
        while (!condition() && steady_clock::now() < end)
            poll(nullptr, 0, 20);
        return condition();
    };
    {
        const ScopedVariable variable("TMPDIR", temporary.u16string());
        initialize();
        make(1);
        EXPECT_TRUE(is_left());
        release();
        EXPECT_FALSE(is_left());
    }
    const std::filesystem::path ready = folder.path() / "ready";
    foundation::ChildOptions options;
    options.command = {"/proc/self/exe", "--gtest_filter=*HoldsABook*",
                       "--gtest_also_run_disabled_tests"};
    options.environment = {{"TMPDIR", temporary.string()}, {"ZX_TEST_READY", ready.string()}};
    const foundation::ChildProcess child(options);
    ASSERT_TRUE(wait_until([&] { return std::filesystem::exists(ready); }));
    const auto offices = office_processes(child.id());
    ASSERT_THAT(offices, SizeIs(1));
    const auto sockets = office_sockets(offices.front());
    EXPECT_THAT(sockets, SizeIs(testing::Ge(2u)));
    child.kill();
    // The shell that removes the files has to notice first.
    EXPECT_TRUE(wait_until([&] { return !is_left(); }));
    for (const int office : offices)
        EXPECT_TRUE(wait_until([&] { return kill(office, 0) != 0; }));
    for (const std::string& socket : sockets)
        EXPECT_TRUE(wait_until([&] { return !std::filesystem::exists(socket); })) << socket;
    initialize();
}

TEST_F(OfficeTest, SaysWhatToInstallWhereThereIsNoOffice) {
    release();
    initialize();
    const auto cause = [&] { return failure_of_thrown([&] { make(1); }).cause; };
    {
        const ScopedVariable program("ZX_SOFFICE", u"/no/such/soffice");
        EXPECT_EQ(thrown_id([&] { make(1); }), 18);
        EXPECT_THAT(cause(), testing::HasSubstr("install the package libreoffice-calc"));
    }
    const ScopedVariable program("ZX_SOFFICE", u"/bin/false");
    EXPECT_THAT(cause(), testing::HasSubstr("ended while it started"));
}

} // namespace
} // namespace spreadsheet
