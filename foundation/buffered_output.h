// SPDX-License-Identifier: Apache-2.0
//
// The part of an output file that is the same on every platform: many small pieces are collected
// and reach the system in large ones.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "foundation/output_file.h"

namespace foundation::files {

class BufferedOutput : public OutputFile {
  public:
    void append(const char* bytes, std::size_t count) final;
    void overwrite(std::uint64_t position, const char* bytes, std::size_t count) final;
    std::uint64_t size() const final { return flushed_ + buffered_; }
    void commit() final;

  protected:
    /// Writes all bytes at a position of the file; throws `FileError`.
    virtual void write_at(std::uint64_t position, const char* bytes, std::size_t count) = 0;
    /// Brings what was written to the disk and steps into the target's place; throws `FileError`.
    virtual void publish() = 0;
    /// The failure of a target that somebody else has changed since.
    [[noreturn]] static void throw_changed_target();

  private:
    static constexpr std::size_t kBufferBytes = 1u << 20;

    void flush();

    std::unique_ptr<char[]> buffer_{new char[kBufferBytes]};
    std::size_t buffered_ = 0;
    std::uint64_t flushed_ = 0; ///< bytes that were handed to `write_at`
};

} // namespace foundation::files
