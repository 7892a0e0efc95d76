// SPDX-License-Identifier: Apache-2.0
//
// A file of any size of which only what is not zero takes memory: for containers beyond 4 GiB.
#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "foundation/output_file.h"

namespace workbook::test {

class SparseFile {
  public:
    std::uint64_t size() const { return size_; }
    void append_zeros(std::uint64_t count) { size_ += count; }

    void append(const char* bytes, std::size_t count) {
        const bool is_zero =
            count > 0 && bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0;
        if (!is_zero && count > 0) pieces_.emplace(size_, std::string(bytes, count));
        size_ += count;
    }

    void overwrite(std::uint64_t position, const char* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            const auto piece = std::prev(pieces_.upper_bound(position + i));
            piece->second.at(static_cast<std::size_t>(position + i - piece->first)) = bytes[i];
        }
    }

    void read(std::uint64_t position, char* buffer, std::size_t count) const {
        std::memset(buffer, 0, count);
        auto piece = pieces_.upper_bound(position);
        if (piece != pieces_.begin()) --piece;
        for (; piece != pieces_.end() && piece->first < position + count; ++piece) {
            const std::uint64_t begin = std::max(position, piece->first);
            const std::uint64_t end =
                std::min(position + count, piece->first + piece->second.size());
            if (begin < end)
                std::memcpy(buffer + (begin - position),
                            piece->second.data() + (begin - piece->first),
                            static_cast<std::size_t>(end - begin));
        }
    }

  private:
    std::map<std::uint64_t, std::string> pieces_;
    std::uint64_t size_ = 0;
};

/// Writes to a sparse file, which must outlive it.
class SparseOutput final : public foundation::files::OutputFile {
  public:
    explicit SparseOutput(SparseFile& file) : file_(file) {}
    void append(const char* bytes, std::size_t count) override { file_.append(bytes, count); }
    void overwrite(std::uint64_t position, const char* bytes, std::size_t count) override {
        file_.overwrite(position, bytes, count);
    }
    std::uint64_t size() const override { return file_.size(); }
    void commit() override {}

  private:
    SparseFile& file_;
};

/// Reads from a sparse file, which must outlive it.
class SparseInput final : public foundation::files::RandomAccessFile {
  public:
    explicit SparseInput(const SparseFile& file) : file_(file) {}
    std::uint64_t size() const override { return file_.size(); }
    std::size_t read_at(std::uint64_t position, char* buffer, std::size_t count) override {
        if (position >= file_.size()) return 0;
        const auto available =
            static_cast<std::size_t>(std::min<std::uint64_t>(count, file_.size() - position));
        file_.read(position, buffer, available);
        return available;
    }

  private:
    const SparseFile& file_;
};

} // namespace workbook::test
