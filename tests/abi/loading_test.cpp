// SPDX-License-Identifier: Apache-2.0
//
// A host may load and unload the library as often as it likes. This program is not linked to it.
#include <exception>
#include <fstream>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "foundation/log.h"
#include "foundation/unicode.h"
#include "spreadsheet/book.h"
#include "tests/abi/loaded_library.h"

#ifdef __SANITIZE_ADDRESS__
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:logger_with_sink";
}
#endif

namespace spreadsheet::test {
namespace {

constexpr int kRounds = 100;
const std::string kLibrary = ZX_LIBRARY;

using Logger = foundation::log::basic_diagnostic_logger<char>;
using Sink = std::shared_ptr<foundation::log::Sink>;

std::string logger_function(const std::string& name) {
    return "_ZN10foundation3log23basic_diagnostic_loggerIcE" + name +
           "ERKSt10shared_ptrINS0_4SinkEE";
}

TEST(ProcessState, SeesAnOpenFile) {
    const ProcessState before = process_state();
    {
        const std::ifstream file(ZX_EXAMPLES "/weather.xlsx");
        ASSERT_TRUE(file);
        EXPECT_EQ(process_state().handles, before.handles + 1);
    }
    EXPECT_EQ(process_state(), before);
}

/// The library's logger, with a sink. It is never destroyed, since books may log until the process
/// ends; so each loaded copy leaves its few bytes.
Logger& logger_with_sink(const LoadedLibrary& library, const Sink& sink) {
    // Volatile keeps this function on the stack, where the leak checker finds its name.
    Logger* volatile logger = &library.function<Logger&()>("_ZN11spreadsheet9getLoggerEv")();
    library.function<void(Logger&, const Sink&)>(logger_function("8add_sink"))(*logger, sink);
    return *logger;
}

/// Reads a book through a library that was just loaded, and lets it throw and log.
void use(const LoadedLibrary& library) {
    using namespace foundation;
    using Load = std::shared_ptr<IBook>(const std::u16string&, book::interactive);
    const auto load =
        library.function<Load>("_ZN11spreadsheet19load_book_from_fileERKNSt7__cxx1112basic_string"
                               "IDsSt11char_traitsIDsESaIDsEEENS_4book11interactiveE");
    library.function<void()>("_ZN11spreadsheet10initializeEv")();
    const auto sink = std::make_shared<log::CollectingSink>();
    Logger& logger = logger_with_sink(library, sink);

    EXPECT_EQ(
        load(unicode::to_utf16(ZX_EXAMPLES "/weather.xlsx"), book::interactive::file)->num_sheets(),
        2u);
    EXPECT_THROW(load(u"no such file.xlsx", book::interactive::file), std::exception);
    EXPECT_FALSE(sink->records().empty());

    library.function<void(Logger&, const Sink&)>(logger_function("11remove_sink"))(logger, sink);
    library.function<void()>("_ZN11spreadsheet7releaseEv")();
}

/// The state while the library is loaded and has not been used.
ProcessState load_use_unload() {
    const LoadedLibrary library(kLibrary);
    const ProcessState state = process_state();
    use(library);
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
