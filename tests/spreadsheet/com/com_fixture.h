// SPDX-License-Identifier: Apache-2.0
//
// What the tests of interactive mode share: the library started over a scripted application, a
// clock that nobody waits for, and what has to hold at the end of each test.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/clock.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/sheet.h"
#include "tests/automation/scripted_application.h"
#include "tests/spreadsheet/thrown_id.h"

namespace spreadsheet {

using scripted::Script;
using scripted::Variant;

class VirtualClock : public foundation::Clock {
  public:
    TimePoint now() const override { return now_; }
    void sleep_until(TimePoint time) override {
        slept += std::chrono::duration_cast<std::chrono::milliseconds>(time - now_);
        now_ = time;
    }
    std::chrono::milliseconds slept{0};

  private:
    TimePoint now_{};
};

#ifdef _WIN32
inline const std::u16string kRoot = u"C:\\";
#else
inline const std::u16string kRoot = u"/";
#endif

class ComTest : public ::testing::Test {
  protected:
    ComTest() {
        foundation::replace_clock(&clock);
        initialize();
    }
    ~ComTest() override { foundation::replace_clock(nullptr); }

    void TearDown() override {
        release();
        EXPECT_EQ(script.held(), 0) << "references were leaked";
        EXPECT_THAT(script.violations, ::testing::IsEmpty());
        for (const auto& application : script.applications)
            EXPECT_TRUE(application->quit || application->visible || application->dead);
    }

    Script script;
    VirtualClock clock;
    scripted::Registration registration{script};
    /// A book with one sheet, "Data", which `model` gives.
    std::shared_ptr<scripted::WorkbookModel> file = script.add_file(path(), {u"Data"});
    scripted::SheetModel& model() { return *file->sheets[0]; }
    static std::u16string path() { return kRoot + u"book.xlsx"; }
    static std::shared_ptr<IBook> open(const std::u16string& name = path()) {
        return load_book_from_file(name, book::format::XLSX, book::interactive::application);
    }
    static std::shared_ptr<IBook> make(std::size_t sheets,
                                       book::format format = book::format::XLSX) {
        return create_new_book(sheets, format, book::interactive::application, u"");
    }
    static std::vector<std::u16string> names_of(const IBook& book) {
        std::vector<std::u16string> names;
        for (std::size_t index = 0; index < book.num_sheets(); ++index)
            names.push_back(book.sheet(index)->name());
        return names;
    }
};

} // namespace spreadsheet
