// SPDX-License-Identifier: Apache-2.0
//
// Writes a compound file that differs from another in some streams. All other streams and storages
// keep their bytes, class identifiers, state bits and times; they are copied in blocks, so memory
// holds the small streams and the sector table (4 bytes for each sector) only.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "foundation/output_file.h"
#include "workbook/cfb/compound_file.h"
#include "workbook/io/byte_sink.h"

namespace workbook {

/// A stream with content of its own, in place of the source's of that path or new.
struct StreamChange {
    std::u16string path; ///< as in `CompoundFile::find_stream`; missing storages are made
    std::function<void(ByteSink&)> write; ///< called once
};

struct CompoundChanges {
    std::vector<StreamChange> written;
    /// Paths of streams, and of storages that go with all that is in them. Others are ignored.
    std::vector<std::u16string> dropped;
    /// Of a new file's root: says what kind of document it is.
    std::array<char, 16> class_id{};
};

/// Numbers of streams.
struct CompoundCounts {
    std::size_t copied = 0, written = 0, dropped = 0;
};

/// Writes `source` with changes, in a file of its version (512 or 4096-byte sectors); a new file of
/// version 3 where `source` is null. `out` is empty and is not committed. Throws `Error`: `Damaged`
/// for streams of the source that cannot be read or share their bytes, `Limit` from 2 GiB on,
/// `Refused` for a name of more than 31 units; a `FileError` of either file passes.
CompoundCounts write_compound_file(CompoundFile* source, const CompoundChanges& changes,
                                   foundation::files::OutputFile& out);

} // namespace workbook
