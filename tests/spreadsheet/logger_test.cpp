// SPDX-License-Identifier: Apache-2.0
//
// The life of the library's logger.
#include <cstdlib>
#include <memory>

#include <gtest/gtest.h>

#include "spreadsheet/libxl/libxl_book.h"
#include "tests/spreadsheet/fake_library.h"
#include "tests/spreadsheet/log_lines.h"

namespace spreadsheet {
namespace {

// A host may keep a book until its process ends; the book logs while it is destroyed.
fake::FakeWorkbook script_until_exit;
std::shared_ptr<LibXLBook> book_until_exit;

TEST(GetLogger, OutlivesBooksInStaticStorage) {
    const auto exit_with_a_book = [] {
        script_until_exit.entries = {{u"Data"}};
        book_until_exit = std::make_shared<LibXLBook>(fake::creators(script_until_exit));
        book_until_exit->init_from_file(u"f", book::format::XLSX);
        getLogger().add_sink(std::make_shared<foundation::log::CollectingSink>());
        std::exit(0);
    };
    EXPECT_EXIT(exit_with_a_book(), testing::ExitedWithCode(0), "");
}

} // namespace
} // namespace spreadsheet
