// SPDX-License-Identifier: Apache-2.0
//
// The write buffer and files in memory.
#include "foundation/output_file.h"

#include <algorithm>
#include <cassert>
#include <cstring>

#include "foundation/buffered_output.h"

namespace foundation::files {
namespace {

class MemoryOutput final : public OutputFile {
  public:
    explicit MemoryOutput(std::string& bytes) : bytes_(bytes) { bytes_.clear(); }

    void append(const char* bytes, std::size_t count) override { bytes_.append(bytes, count); }

    void overwrite(std::uint64_t position, const char* bytes, std::size_t count) override {
        assert(position + count <= bytes_.size());
        bytes_.replace(static_cast<std::size_t>(position), count, bytes, count);
    }

    std::uint64_t size() const override { return bytes_.size(); }
    void commit() override {}

  private:
    std::string& bytes_;
};

} // namespace

void BufferedOutput::throw_changed_target() {
    throw FileError(FileProblem::InUse,
                    "Another program has written the file meanwhile; it was left as it is.");
}

void BufferedOutput::append(const char* bytes, std::size_t count) {
    if (count > kBufferBytes - buffered_) flush();
    if (count > kBufferBytes) {
        write_at(flushed_, bytes, count);
        flushed_ += count;
        return;
    }
    if (count > 0) std::memcpy(buffer_.get() + buffered_, bytes, count);
    buffered_ += count;
}

void BufferedOutput::overwrite(std::uint64_t position, const char* bytes, std::size_t count) {
    assert(position + count <= size());
    if (position < flushed_) {
        const auto old =
            static_cast<std::size_t>(std::min<std::uint64_t>(count, flushed_ - position));
        write_at(position, bytes, old);
        position += old;
        bytes += old;
        count -= old;
    }
    if (count > 0) std::memcpy(buffer_.get() + (position - flushed_), bytes, count);
}

void BufferedOutput::commit() {
    flush();
    publish();
}

void BufferedOutput::flush() {
    if (buffered_ == 0) return;
    write_at(flushed_, buffer_.get(), buffered_);
    flushed_ += buffered_;
    buffered_ = 0;
}

std::unique_ptr<OutputFile> memory_output(std::string& bytes) {
    return std::make_unique<MemoryOutput>(bytes);
}

} // namespace foundation::files
