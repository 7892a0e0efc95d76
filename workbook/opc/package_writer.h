// SPDX-License-Identifier: Apache-2.0
//
// Writes a package that differs from another in some parts: all others are copied as they are in
// the container, without being unpacked.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "foundation/output_file.h"
#include "workbook/io/byte_sink.h"
#include "workbook/opc/opc_package.h"

namespace workbook {

/// A part with content of its own, in place of the source's of that name or new.
struct PartChange {
    std::string part; ///< canonical name; of a new part, see `new_part_spelling`
    std::function<void(ByteSink&)> write; ///< called once
    std::uint64_t expected_bytes = 0;     ///< a guess of its size, see `ZipWriter`
};

struct PackageChanges {
    /// Parts of the source keep their place in the container and their spelling; new ones follow
    /// in this order.
    std::vector<PartChange> written;
    std::unordered_set<std::string> dropped; ///< canonical names
    bool empty() const { return written.empty() && dropped.empty(); }
};

struct PackageCounts {
    std::size_t copied = 0, written = 0, dropped = 0;
};

/// Entries that are not parts (folders, a second entry of one name) are copied too, unless the part
/// is written or dropped. `out` is not committed. Throws `Error`.
PackageCounts write_package(OpcPackage& source, const PackageChanges& changes,
                            foundation::files::OutputFile& out);

} // namespace workbook
