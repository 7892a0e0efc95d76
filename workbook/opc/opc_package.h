// SPDX-License-Identifier: Apache-2.0
//
// An Open Packaging package (ECMA-376 part 2): parts by name, their relationships and content
// types. Sources that it hands out must not outlive it.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/files.h"
#include "workbook/io/byte_source.h"
#include "workbook/opc/content_types.h"
#include "workbook/opc/relationships.h"
#include "workbook/zip/zip_archive.h"

namespace workbook {

class OpcPackage {
  public:
    /// Reads the container's directory and the content types. Throws `Error`; a file that is not a
    /// ZIP container is named for what it seems to be.
    explicit OpcPackage(std::unique_ptr<foundation::files::RandomAccessFile> file);

    bool has_part(std::string_view name) const { return archive_.find(name) != nullptr; }

    /// Throws `Error`, also for a part that does not exist.
    std::unique_ptr<ByteSource> open_part(std::string_view name);

    const ContentTypes& content_types() const { return content_types_; }

    /// See the functions of `ZipArchive` of these names.
    void verify_unchanged() { archive_.verify_unchanged(); }
    void close_file() { archive_.close_file(); }
    bool is_open() const { return archive_.is_open(); }
    void reopen(std::unique_ptr<foundation::files::RandomAccessFile> file) {
        archive_.reopen(std::move(file));
    }

    /// The container, for copying packed parts.
    ZipArchive& archive() { return archive_; }

    /// The relationships of a part, of the package for ""; none when it has no relationships part.
    std::vector<Relationship> relationships(std::string_view part_name);

  private:
    ZipArchive archive_;
    ContentTypes content_types_;
};

} // namespace workbook
