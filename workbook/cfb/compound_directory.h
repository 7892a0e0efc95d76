// SPDX-License-Identifier: Apache-2.0
//
// The directory of a compound file (MS-CFB 2.6): a flat array of entries whose links form a tree.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace workbook {

enum class EntryKind { Root, Storage, Stream };

/// What an entry says beyond its name and content; kept by whoever copies it.
struct EntryAttributes {
    std::array<char, 16> class_id{};
    std::uint32_t state_bits = 0;
    std::uint64_t created = 0;  ///< FILETIME, 0 when not stated
    std::uint64_t modified = 0; ///< likewise
    bool operator==(const EntryAttributes&) const = default;
};

struct CompoundEntry {
    std::u16string name; ///< at most 31 units, as the file has it
    EntryKind kind = EntryKind::Stream;
    std::size_t parent = 0; ///< index of its storage; the root has its own
    EntryAttributes attributes;
    std::uint64_t size = 0; ///< bytes of a stream; of the root, of the stream of small streams
    std::uint32_t first_sector = 0;
    bool operator==(const CompoundEntry&) const = default;
};

/// Makes entries of the directory's bytes: those that the root's tree reaches, in the order of the
/// directory except that each follows its storage. Links that lead nowhere or back are ignored;
/// when the root reaches nothing at all, every entry counts as its child. `has_wide_sizes` is
/// true where sizes have 64 bits (version 4). Throws `Error` when there is no root.
std::vector<CompoundEntry> parse_compound_directory(std::string_view bytes, bool has_wide_sizes);

} // namespace workbook
