// SPDX-License-Identifier: Apache-2.0
//
// Walks the trees of the directory without trusting a link.
#include "workbook/cfb/compound_directory.h"

#include <algorithm>

#include "workbook/cfb/compound_format.h"
#include "workbook/error.h"
#include "workbook/io/little_endian.h"

namespace workbook {

namespace {

using namespace cfb;

class DirectoryTree {
  public:
    DirectoryTree(std::string_view bytes, bool has_wide_sizes)
        : bytes_(bytes), has_wide_sizes_(has_wide_sizes), seen_(bytes.size() / kEntryBytes) {}

    std::vector<CompoundEntry> entries() {
        if (seen_.empty() || type(0) != kRootEntry)
            throw Error::damaged("the compound file", "its directory does not begin with a root");
        seen_[0] = true;
        add(0, 0);
        add_children(0);
        if (result_.size() == 1) add_all();
        for (std::size_t i = 1; i < result_.size(); ++i)
            if (result_[i].kind == EntryKind::Storage) add_children(i);
        return std::move(result_);
    }

  private:
    const char* record(std::size_t id) const { return bytes_.data() + id * kEntryBytes; }
    unsigned char type(std::size_t id) const {
        return static_cast<unsigned char>(record(id)[kTypeField]);
    }
    bool is_usable(std::size_t id) const {
        return type(id) == kStorageEntry || type(id) == kStreamEntry;
    }

    /// Adds what the tree below the storage `result_[storage]` links, in the directory's order.
    void add_children(std::size_t storage) {
        std::vector<std::uint32_t> found;
        std::vector<std::uint32_t> open{load_u32(record(ids_[storage]) + kChildField)};
        while (!open.empty()) {
            const std::uint32_t id = open.back();
            open.pop_back();
            if (id >= seen_.size() || seen_[id]) continue;
            seen_[id] = true;
            if (is_usable(id)) found.push_back(id);
            open.push_back(load_u32(record(id) + kLeftField));
            open.push_back(load_u32(record(id) + kRightField));
        }
        std::sort(found.begin(), found.end());
        for (const std::uint32_t id : found)
            add(id, storage);
    }

    void add_all() {
        for (std::size_t id = 1; id < seen_.size(); ++id)
            if (is_usable(id)) {
                seen_[id] = true;
                add(id, 0);
            }
    }

    void add(std::size_t id, std::size_t parent) {
        const char* bytes = record(id);
        CompoundEntry entry;
        for (std::size_t i = 0; i + 2 < kNameBytes && load_u16(bytes + i) != 0; i += 2)
            entry.name += static_cast<char16_t>(load_u16(bytes + i));
        entry.kind = type(id) == kRootEntry      ? EntryKind::Root
                     : type(id) == kStorageEntry ? EntryKind::Storage
                                                 : EntryKind::Stream;
        entry.parent = parent;
        std::copy_n(bytes + kClassIdField, entry.attributes.class_id.size(),
                    entry.attributes.class_id.begin());
        entry.attributes.state_bits = load_u32(bytes + kStateBitsField);
        entry.attributes.created = load_u64(bytes + kCreatedField);
        entry.attributes.modified = load_u64(bytes + kModifiedField);
        // The upper half is not reliable in files with short sectors (MS-CFB 2.6.1).
        entry.size = has_wide_sizes_ ? load_u64(bytes + kSizeField) : load_u32(bytes + kSizeField);
        entry.first_sector = load_u32(bytes + kFirstSectorField);
        result_.push_back(std::move(entry));
        ids_.push_back(id);
    }

    std::string_view bytes_;
    bool has_wide_sizes_;
    std::vector<bool> seen_;
    std::vector<CompoundEntry> result_;
    std::vector<std::size_t> ids_; ///< of each of `result_`, its place in the directory
};

} // namespace

std::vector<CompoundEntry> parse_compound_directory(std::string_view bytes, bool has_wide_sizes) {
    return DirectoryTree(bytes, has_wide_sizes).entries();
}

} // namespace workbook
