// SPDX-License-Identifier: Apache-2.0
//
// A folder of its own for a test, gone when the test ends.
#pragma once

#include <filesystem>
#include <iterator>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace workbook::test {

class ScratchFolder {
  public:
    ScratchFolder() {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        path_ = std::filesystem::path(testing::TempDir()) /
                (std::string("zx_") + test->test_suite_name() + "_" + test->name() + "_" +
                 std::to_string(std::random_device{}())); // another checkout may test as well
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::u16string file(const std::string& name) const { return (path_ / name).u16string(); }
    std::size_t file_count() const {
        const auto entries = std::filesystem::directory_iterator(path_);
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

  private:
    std::filesystem::path path_;
};

} // namespace workbook::test
