// SPDX-License-Identifier: Apache-2.0
//
// An output file that works for a number of operations and then fails as a full disk does.
#pragma once

#include <memory>
#include <utility>

#include "foundation/output_file.h"

namespace foundation::files::test {

class FailingOutput final : public OutputFile {
  public:
    /// Appends, overwrites and the commit count; `good_operations` of them succeed.
    FailingOutput(std::unique_ptr<OutputFile> file, int good_operations)
        : file_(std::move(file)), left_(good_operations) {}

    void append(const char* bytes, std::size_t count) override {
        spend();
        file_->append(bytes, count);
    }
    void overwrite(std::uint64_t position, const char* bytes, std::size_t count) override {
        spend();
        file_->overwrite(position, bytes, count);
    }
    std::uint64_t size() const override { return file_->size(); }
    void commit() override {
        spend();
        file_->commit();
    }

  private:
    void spend() {
        if (left_-- <= 0) throw FileError(FileProblem::DiskFull, "The disk is full.");
    }

    std::unique_ptr<OutputFile> file_;
    int left_;
};

} // namespace foundation::files::test
