// SPDX-License-Identifier: Apache-2.0
//
// The life of the library's logger.
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

#include "foundation/log.h"
#include "spreadsheet/book_factory.h"
#include "spreadsheet/libxl/libxl_book.h"
#include "tests/spreadsheet/fake_library.h"

namespace spreadsheet {
namespace {

// A host may keep a book until its process ends; the book logs while it is destroyed.
fake::FakeWorkbook script_until_exit;
std::shared_ptr<LibXLBook> book_until_exit;

void exit_with_a_book(bool with_sink, bool with_record) {
    script_until_exit.entries = {{u"Data"}};
    book_until_exit = std::make_shared<LibXLBook>(fake::creators(script_until_exit));
    book_until_exit->init_from_file(u"f", book::format::XLSX);
    if (with_sink) getLogger().add_sink(std::make_shared<foundation::log::CollectingSink>());
    if (with_record) getLogger().write(foundation::log::error, "a record");
    std::exit(0);
}

TEST(GetLogger, OutlivesBooksInStaticStorage) {
    EXPECT_EXIT(exit_with_a_book(false, false), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exit_with_a_book(true, false), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(exit_with_a_book(true, true), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace spreadsheet
