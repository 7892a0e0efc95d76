// SPDX-License-Identifier: Apache-2.0
//
// What files and paths have in common on every platform: files in memory and the parts of a path.
#include "foundation/files.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "foundation/unicode.h"

namespace foundation::files {
namespace {

class MemoryFile : public RandomAccessFile {
  public:
    explicit MemoryFile(std::string bytes) : bytes_(std::move(bytes)) {}

    std::uint64_t size() const override { return bytes_.size(); }

    std::size_t read_at(std::uint64_t position, char* buffer, std::size_t count) override {
        if (position >= bytes_.size()) return 0;
        const auto begin = static_cast<std::size_t>(position);
        const std::size_t available = std::min(count, bytes_.size() - begin);
        std::memcpy(buffer, bytes_.data() + begin, available);
        return available;
    }

  private:
    std::string bytes_;
};

#ifdef _WIN32
constexpr std::u16string_view kSeparators = u"/\\:"; // "C:name" lies in the drive's current folder
#else
constexpr std::u16string_view kSeparators = u"/";
#endif

std::u16string_view last_component(std::u16string_view path) {
    const std::size_t separator = path.find_last_of(kSeparators);
    return separator == std::u16string_view::npos ? path : path.substr(separator + 1);
}

} // namespace

std::unique_ptr<RandomAccessFile> memory_file(std::string bytes) {
    return std::make_unique<MemoryFile>(std::move(bytes));
}

std::filesystem::path native_path(std::u16string_view path) {
#ifdef _WIN32
    return std::filesystem::path(std::wstring(path.begin(), path.end()));
#else
    // Not the library's own conversion, which throws on a lone surrogate.
    return std::filesystem::path(unicode::to_generalized_utf8(path));
#endif
}

std::u16string file_name(std::u16string_view path) {
    return std::u16string(last_component(path));
}

std::u16string extension(std::u16string_view path) {
    const std::u16string_view name = last_component(path);
    const std::size_t dot = name.rfind(u'.');
    return dot == std::u16string_view::npos ? std::u16string()
                                            : std::u16string(name.substr(dot + 1));
}

} // namespace foundation::files
