// SPDX-License-Identifier: Apache-2.0
#include "workbook/cfb/directory_writer.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>

#include "foundation/case_folding.h"
#include "workbook/cfb/compound_format.h"
#include "workbook/io/little_endian.h"

namespace workbook {

namespace {

using namespace cfb;

struct TreeLinks {
    std::uint32_t left = kNoEntry, right = kNoEntry, child = kNoEntry;
    bool is_red = false;
};

/// Shorter names come first, those of one length by their upper-case units.
bool comes_before(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) return a.size() < b.size();
    return std::lexicographical_compare(
        a.begin(), a.end(), b.begin(), b.end(), [](char16_t first, char16_t second) {
            return foundation::unicode::upper_case(first) < foundation::unicode::upper_case(second);
        });
}

class TreeBuilder {
  public:
    explicit TreeBuilder(const std::vector<CompoundEntry>& entries)
        : entries_(entries), links_(entries.size()) {}

    std::vector<TreeLinks> links() {
        std::vector<std::vector<std::uint32_t>> children(entries_.size());
        for (std::size_t i = 1; i < entries_.size(); ++i)
            children[entries_[i].parent].push_back(static_cast<std::uint32_t>(i));
        for (std::size_t storage = 0; storage < children.size(); ++storage) {
            sorted_ = std::move(children[storage]);
            std::stable_sort(sorted_.begin(), sorted_.end(), [&](std::uint32_t a, std::uint32_t b) {
                return comes_before(entries_[a].name, entries_[b].name);
            });
            full_levels_ = static_cast<int>(std::bit_width(sorted_.size() + 1)) - 1;
            links_[storage].child = subtree(0, sorted_.size(), 0);
        }
        return std::move(links_);
    }

  private:
    /// Links the middle of `sorted_[begin, end)` with both halves. Every level above the last is
    /// full, so that red nodes on a last level that is not full make all black heights equal.
    std::uint32_t subtree(std::size_t begin, std::size_t end, int level) {
        if (begin == end) return kNoEntry;
        const std::size_t middle = begin + (end - begin) / 2;
        TreeLinks& node = links_[sorted_[middle]];
        node.is_red = level == full_levels_;
        node.left = subtree(begin, middle, level + 1);
        node.right = subtree(middle + 1, end, level + 1);
        return sorted_[middle];
    }

    const std::vector<CompoundEntry>& entries_;
    std::vector<TreeLinks> links_;
    std::vector<std::uint32_t> sorted_;
    int full_levels_ = 0;
};

EntryType type_of(EntryKind kind) {
    switch (kind) {
    case EntryKind::Root:
        return kRootEntry;
    case EntryKind::Storage:
        return kStorageEntry;
    case EntryKind::Stream:
        break;
    }
    return kStreamEntry;
}

void append_record(std::string& out, const CompoundEntry& entry, const TreeLinks& links) {
    constexpr char kBlack = 1;
    const std::size_t begin = out.size();
    for (const char16_t unit : entry.name)
        append_u16(out, unit);
    out.resize(begin + kNameLengthField);
    append_u16(out, static_cast<std::uint16_t>(2 * (entry.name.size() + 1)));
    out += static_cast<char>(type_of(entry.kind));
    out += links.is_red ? '\0' : kBlack;
    for (const std::uint32_t link : {links.left, links.right, links.child})
        append_u32(out, link);
    out.append(entry.attributes.class_id.data(), entry.attributes.class_id.size());
    append_u32(out, entry.attributes.state_bits);
    append_u64(out, entry.attributes.created);
    append_u64(out, entry.attributes.modified);
    append_u32(out, entry.first_sector);
    append_u64(out, entry.size);
}

} // namespace

std::string compound_directory_bytes(const std::vector<CompoundEntry>& entries) {
    const std::vector<TreeLinks> links = TreeBuilder(entries).links();
    std::string bytes;
    bytes.reserve(entries.size() * kEntryBytes);
    for (std::size_t i = 0; i < entries.size(); ++i)
        append_record(bytes, entries[i], links[i]);
    return bytes;
}

std::string unused_compound_entry() {
    std::string record(kLeftField, '\0');
    for (int i = 0; i < 3; ++i)
        append_u32(record, kNoEntry);
    record.resize(kEntryBytes);
    return record;
}

} // namespace workbook
