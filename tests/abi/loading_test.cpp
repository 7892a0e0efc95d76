// SPDX-License-Identifier: Apache-2.0
//
// A host may load and unload the library as often as it likes. This program is not linked to it.
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "foundation/unicode.h"
#include "spreadsheet/book.h"
#include "tests/abi/loaded_library.h"

namespace spreadsheet::test {
namespace {

constexpr int kRounds = 100;
const std::string kLibrary = ZX_LIBRARY;

/// Reads a book through a library that was just loaded.
std::size_t sheets_of_a_book(const LoadedLibrary& library) {
    using Load = std::shared_ptr<IBook>(const std::u16string&, book::interactive);
    library.function<void()>("_ZN11spreadsheet10initializeEv")();
    const auto load =
        library.function<Load>("_ZN11spreadsheet19load_book_from_fileERKNSt7__cxx1112basic_string"
                               "IDsSt11char_traitsIDsESaIDsEEENS_4book11interactiveE");
    const auto path = foundation::unicode::to_utf16(ZX_EXAMPLES "/weather.xlsx");
    const std::size_t count = load(path, book::interactive::file)->num_sheets();
    library.function<void()>("_ZN11spreadsheet7releaseEv")();
    return count;
}

/// The state while the library is loaded and has not been used.
ProcessState load_use_unload() {
    const LoadedLibrary library(kLibrary);
    const ProcessState state = process_state();
    EXPECT_EQ(sheets_of_a_book(library), 2u);
    return state;
}

TEST(Loading, StartsNothingAndLeavesNothing) {
    load_use_unload(); // what the system itself keeps after a first time
    ASSERT_FALSE(is_loaded(kLibrary));
    const ProcessState before = process_state();
    for (int round = 0; round < kRounds; ++round) {
        ASSERT_EQ(load_use_unload(), before) << "loaded, round " << round;
        ASSERT_FALSE(is_loaded(kLibrary)) << round;
        ASSERT_EQ(process_state(), before) << "unloaded, round " << round;
    }
}

} // namespace
} // namespace spreadsheet::test
