// SPDX-License-Identifier: Apache-2.0
//
// Finds streams and reads them, extent by extent.
#include "workbook/cfb/compound_file.h"

#include <algorithm>
#include <utility>

#include "foundation/large_block.h"
#include "foundation/unicode.h"
#include "workbook/cfb/compound_format.h"
#include "workbook/error.h"

namespace workbook {

namespace {

using foundation::files::RandomAccessFile;

/// For messages: names of streams may begin with a control character that says who owns them.
std::string shown(const CompoundEntry& entry) {
    std::u16string name = entry.name;
    std::erase_if(name, [](char16_t unit) { return unit < u' '; });
    return "the stream \"" + foundation::unicode::to_utf8(name) + '"';
}

/// Extents are within the file as it was when it was opened.
void read_all(RandomAccessFile& file, std::uint64_t position, char* buffer, std::size_t count) {
    if (file.read_at(position, buffer, count) != count)
        throw Error::file("the file has been cut since it was opened");
}

class ExtentSource final : public ByteSource {
  public:
    ExtentSource(RandomAccessFile& file, std::vector<Extent> extents, std::string name)
        : file_(file), extents_(std::move(extents)), name_(std::move(name)) {}

    std::size_t read(char* buffer, std::size_t capacity) override {
        if (next_ == extents_.size() || capacity == 0) return 0;
        Extent& extent = extents_[next_];
        const auto count =
            static_cast<std::size_t>(std::min<std::uint64_t>(capacity, extent.count));
        read_all(file_, extent.position, buffer, count);
        extent.position += count;
        extent.count -= count;
        if (extent.count == 0) ++next_;
        return count;
    }
    const std::string& part_name() const override { return name_; }

  private:
    RandomAccessFile& file_;
    std::vector<Extent> extents_;
    std::size_t next_ = 0;
    std::string name_;
};

} // namespace

bool CompoundFile::has_signature(std::string_view first_bytes) {
    return first_bytes.starts_with(cfb::kSignature);
}

CompoundFile::CompoundFile(std::unique_ptr<RandomAccessFile> file)
    : file_(std::move(file)),
      tables_(*file_),
      entries_(read_entries(*file_, tables_)),
      container_(tables_.chain_to_end(entries_.front().first_sector)) {}

std::vector<CompoundEntry> CompoundFile::read_entries(RandomAccessFile& file,
                                                      const SectorTables& tables) {
    return parse_compound_directory(tables.read_to_end(file, tables.first_directory_sector()),
                                    tables.is_version_4());
}

const CompoundEntry* CompoundFile::find_stream(std::u16string_view path) const {
    return find(path, EntryKind::Stream);
}

const CompoundEntry* CompoundFile::find_storage(std::u16string_view path) const {
    return path.empty() ? &entries_.front() : find(path, EntryKind::Storage);
}

const CompoundEntry* CompoundFile::find(std::u16string_view path, EntryKind kind) const {
    std::size_t storage = 0;
    for (;;) {
        const std::size_t slash = path.find(u'/');
        const bool is_last = slash == std::u16string_view::npos;
        const std::u16string_view name = path.substr(0, slash);
        const EntryKind wanted = is_last ? kind : EntryKind::Storage;
        const auto entry =
            std::find_if(entries_.begin() + 1, entries_.end(), [&](const CompoundEntry& candidate) {
                return candidate.parent == storage && candidate.kind == wanted &&
                       foundation::unicode::equal_ignoring_case(candidate.name, name);
            });
        if (entry == entries_.end()) return nullptr;
        if (is_last) return &*entry;
        storage = static_cast<std::size_t>(entry - entries_.begin());
        path.remove_prefix(slash + 1);
    }
}

std::vector<Extent> CompoundFile::locate(const CompoundEntry& stream) const {
    return stream.size < tables_.small_stream_limit()
               ? tables_.locate_small(stream.first_sector, stream.size, container_, shown(stream))
               : tables_.locate(stream.first_sector, stream.size, shown(stream));
}

std::string CompoundFile::read_stream(const CompoundEntry& stream) {
    const std::vector<Extent> extents = locate(stream);
    std::string bytes;
    foundation::reserve_to_fill(bytes, static_cast<std::size_t>(stream.size));
    bytes.resize(static_cast<std::size_t>(stream.size));
    char* next = bytes.data();
    for (const Extent& extent : extents) {
        const auto count = static_cast<std::size_t>(extent.count);
        read_all(*file_, extent.position, next, count);
        next += count;
    }
    return bytes;
}

std::unique_ptr<ByteSource> CompoundFile::open_stream(const CompoundEntry& stream) {
    return std::make_unique<ExtentSource>(*file_, locate(stream),
                                          foundation::unicode::to_utf8(stream.name));
}

void CompoundFile::verify_unchanged() {
    if (file_ == nullptr) throw Error::file("the file that was loaded is no longer open");
    bool is_same = false;
    try {
        const SectorTables tables(*file_);
        is_same = tables == tables_ && read_entries(*file_, tables) == entries_;
    } catch (const Error&) {
    }
    if (!is_same) throw Error::file("the file has been changed on disk since it was loaded");
}

void CompoundFile::reopen(std::unique_ptr<RandomAccessFile> file) {
    file_ = std::move(file);
    try {
        verify_unchanged();
    } catch (...) {
        file_.reset();
        throw;
    }
}

} // namespace workbook
