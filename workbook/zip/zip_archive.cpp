// SPDX-License-Identifier: Apache-2.0
//
// Entry lookup and local headers. Sizes come from the directory: local headers may lack them.
#include "workbook/zip/zip_archive.h"

#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/zip/entry_name.h"
#include "workbook/zip/entry_source.h"
#include "workbook/zip/zip_format.h"

namespace workbook {

ZipArchive::ZipArchive(std::unique_ptr<foundation::files::RandomAccessFile> file)
    : file_(std::move(file)), file_size_(file_->size()), entries_(read_zip_directory(*file_)) {
    by_name_.reserve(entries_.size());
    for (std::size_t i = 0; i < entries_.size(); ++i)
        by_name_.emplace(canonical_part_name(entries_[i].name), i);
}

const ZipEntry* ZipArchive::find(std::string_view part_name) const {
    const auto found = by_name_.find(canonical_part_name(part_name));
    return found == by_name_.end() ? nullptr : &entries_[found->second];
}

std::unique_ptr<ByteSource> ZipArchive::open(const ZipEntry& entry) {
    if (entry.is_encrypted) throw Error::encrypted();
    const std::uint64_t position = data_position(entry);
    return std::make_unique<EntrySource>(*file_, entry, position, unpacked_bytes_);
}

PackedBytes ZipArchive::open_packed(const ZipEntry& entry) {
    const std::uint64_t position = data_position(entry);
    return {*file_, position, entry.packed_size};
}

std::uint64_t ZipArchive::data_position(const ZipEntry& entry) {
    if (file_ == nullptr) throw Error::file("the file that was loaded is no longer open");
    char header[zip::kLocalBytes];
    const std::size_t got = file_->read_at(entry.header_position, header, zip::kLocalBytes);
    if (got < zip::kLocalBytes || load_u32(header) != zip::kLocalSignature)
        throw Error::damaged(entry.name, "its header in the ZIP container is missing");
    const std::uint64_t position =
        entry.header_position + zip::kLocalBytes + load_u16(header + 26) + load_u16(header + 28);
    if (position > file_->size() || entry.packed_size > file_->size() - position)
        throw Error::damaged(entry.name, "it ends after the end of the file");
    return position;
}

void ZipArchive::verify_unchanged() {
    if (file_ == nullptr) throw Error::file("the file that was loaded is no longer open");
    const auto require = [](bool same) {
        if (!same) throw Error::file("the file has been changed on disk since it was loaded");
    };
    char behind_end;
    require(file_->size() == file_size_ && file_->read_at(file_size_, &behind_end, 1) == 0);
    std::vector<ZipEntry> entries;
    try {
        entries = read_zip_directory(*file_);
    } catch (const Error&) {
        require(false);
    }
    require(entries == entries_);
    unpacked_bytes_ = 0;
}

void ZipArchive::reopen(std::unique_ptr<foundation::files::RandomAccessFile> file) {
    file_ = std::move(file);
    try {
        verify_unchanged();
    } catch (...) {
        file_.reset();
        throw;
    }
}

} // namespace workbook
