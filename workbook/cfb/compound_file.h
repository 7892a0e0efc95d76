// SPDX-License-Identifier: Apache-2.0
//
// A compound file (MS-CFB) that is open for reading: a tree of storages and streams in one file.
// Sector tables and directory are checked and held in memory, streams are read when asked for.
// Whatever the file claims, memory is bounded by its size. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/files.h"
#include "workbook/cfb/compound_directory.h"
#include "workbook/cfb/sector_tables.h"
#include "workbook/io/byte_source.h"

namespace workbook {

/// ```
/// CompoundFile file(foundation::files::open_for_reading(path));
/// if (const CompoundEntry* stream = file.find_stream(u"Workbook"))
///     parse(file.read_stream(*stream));
/// ```
class CompoundFile {
  public:
    /// Whether the first bytes of a file are those of a compound file (MS-CFB 2.2); needs 8.
    static bool has_signature(std::string_view first_bytes);

    /// Reads the header, the sector tables and the directory. Throws `Error`: `Damaged` for tables
    /// that cannot be followed, `NotAWorkbook` without the signature.
    explicit CompoundFile(std::unique_ptr<foundation::files::RandomAccessFile> file);

    /// All entries that the root reaches, each after its storage; the first is the root storage.
    const std::vector<CompoundEntry>& entries() const { return entries_; }

    /// The stream at a path from the root, its components joined by '/'
    /// (`u"_VBA_PROJECT_CUR/VBA/dir"`) and compared without regard to case; null when there is
    /// none. Of streams with one name the first in the order of the directory counts.
    const CompoundEntry* find_stream(std::u16string_view path) const;
    /// The storage at a path, likewise; the root for an empty path.
    const CompoundEntry* find_storage(std::u16string_view path) const;

    /// All bytes of a stream. Throws `Error` (`Damaged`) when its sectors form a cycle, end before
    /// its size or are not all in the file: what is returned has `size` bytes.
    std::string read_stream(const CompoundEntry& stream);

    /// The same in blocks, for streams that need not be in memory; must not outlive this.
    std::unique_ptr<ByteSource> open_stream(const CompoundEntry& stream);

    /// 512 or 4096.
    std::uint32_t sector_bytes() const { return tables_.sector_bytes(); }
    std::uint64_t file_size() const { return tables_.file_size(); }

    /// For a file that stays open for long: throws `Error` when its size, tables or directory are
    /// not what they were. The content of streams is not compared.
    void verify_unchanged();
    /// Lets go of the file; what was opened from it must be gone. Entries stay, `reopen` is the
    /// only other call that is left.
    void close_file() { file_.reset(); }
    bool is_open() const { return file_ != nullptr; }
    /// Continues with the same file, opened again. Throws `Error` when it is not what it was.
    void reopen(std::unique_ptr<foundation::files::RandomAccessFile> file);

  private:
    static std::vector<CompoundEntry> read_entries(foundation::files::RandomAccessFile& file,
                                                   const SectorTables& tables);
    const CompoundEntry* find(std::u16string_view path, EntryKind kind) const;
    std::vector<Extent> locate(const CompoundEntry& stream) const;

    std::unique_ptr<foundation::files::RandomAccessFile> file_; ///< null while it is closed
    SectorTables tables_;
    std::vector<CompoundEntry> entries_;
    std::vector<std::uint32_t> container_; ///< sectors of the stream of small streams
};

} // namespace workbook
