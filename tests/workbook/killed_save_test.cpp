// SPDX-License-Identifier: Apache-2.0
//
// A process that is killed in the middle of a save: at every operation on the file, in turn. POSIX
// only; the file operations of Windows are tested with injected failures.
#include <csignal>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/output_file.h"
#include "tests/workbook/scratch_folder.h"
#include "workbook/library.h"

namespace workbook {
namespace {

namespace files = foundation::files;

/// Kills the process at one operation; `after` kills it after that operation instead.
class DeadlyOutput final : public files::OutputFile {
  public:
    DeadlyOutput(std::unique_ptr<files::OutputFile> target, int operations, bool after)
        : target_(std::move(target)), left_(operations), after_(after) {}

    void append(const char* bytes, std::size_t count) override {
        run([&] { target_->append(bytes, count); });
    }
    void overwrite(std::uint64_t position, const char* bytes, std::size_t count) override {
        run([&] { target_->overwrite(position, bytes, count); });
    }
    std::uint64_t size() const override { return target_->size(); }
    void commit() override {
        run([&] { target_->commit(); });
    }

  private:
    template <class Operation>
    void run(Operation operation) {
        const bool is_last = left_-- == 0;
        if (is_last && !after_) ::raise(SIGKILL);
        operation();
        if (is_last) ::raise(SIGKILL);
    }
    std::unique_ptr<files::OutputFile> target_;
    int left_;
    bool after_;
};

std::string bytes_of(const std::u16string& path) {
    std::ifstream file(files::native_path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Saves in a child that dies at operation `operations`; true when it lived to its end.
bool save_in_child(const std::u16string& path, int operations, bool after) {
    const pid_t child = ::fork();
    if (child == 0) {
        const std::unique_ptr<Book> book = xlCreateXMLBookW();
        DeadlyOutput out(files::replace_file(path), operations, after);
        const bool saved = book->load(path) && book->get_sheet(0)->write_num(0, 0, 2.0, nullptr) &&
                           book->save(out, u"");
        ::_exit(saved ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    if (!WIFEXITED(status)) return false;
    EXPECT_EQ(WEXITSTATUS(status), 0);
    return true;
}

TEST(KilledSave, LeavesTheOldFileOrTheNewOne) {
    const test::ScratchFolder folder;
    const std::u16string path = folder.file("b.xlsx");
    const std::unique_ptr<Book> made = xlCreateXMLBookW();
    ASSERT_TRUE(made->insert_sheet(0, u"S", nullptr)->write_num(0, 0, 1.0, nullptr));
    ASSERT_TRUE(made->save(path)) << made->error_message();
    const std::string before = bytes_of(path);
    for (const bool after : {false, true}) {
        int operation = 0;
        for (;; ++operation) {
            ASSERT_LT(operation, 10'000);
            if (save_in_child(path, operation, after)) break;
            if (bytes_of(path) == before) continue;
            const std::unique_ptr<Book> read =
                xlCreateXMLBookW(); // only the last operation may have changed the file, and then
                                    // wholly
            ASSERT_TRUE(read->load(path)) << read->error_message();
            EXPECT_EQ(read->get_sheet(0)->read_num(0, 0), 2.0);
            ASSERT_TRUE(after);
            ASSERT_TRUE(made->save(path));
            ASSERT_EQ(bytes_of(path), before);
        }
        EXPECT_GT(operation, 10);
        const std::unique_ptr<Book> read = xlCreateXMLBookW();
        ASSERT_TRUE(read->load(path)) << read->error_message();
        EXPECT_EQ(read->get_sheet(0)->read_num(0, 0), 2.0);
        ASSERT_TRUE(made->save(path));
        EXPECT_EQ(folder.file_count(), 1u) << "killed saves left files";
    }
}

} // namespace
} // namespace workbook
