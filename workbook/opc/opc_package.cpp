// SPDX-License-Identifier: Apache-2.0
//
// Opening a package and finding parts in it.
#include "workbook/opc/opc_package.h"

#include "workbook/detect/file_kind.h"
#include "workbook/error.h"
#include "workbook/opc/part_name.h"

namespace workbook {

namespace {

constexpr std::string_view kContentTypesPart = "[content_types].xml";

std::unique_ptr<foundation::files::RandomAccessFile>
checked(std::unique_ptr<foundation::files::RandomAccessFile> file) {
    const FileKind kind = detect_file_kind(*file);
    // Other bytes may precede a container; the search for its directory decides.
    if (kind != FileKind::ZipContainer && kind != FileKind::Other) refuse_file_kind(kind);
    return file;
}

} // namespace

OpcPackage::OpcPackage(std::unique_ptr<foundation::files::RandomAccessFile> file)
    : archive_(checked(std::move(file))) {
    if (has_part(kContentTypesPart)) content_types_ = ContentTypes(*open_part(kContentTypesPart));
}

std::unique_ptr<ByteSource> OpcPackage::open_part(std::string_view name) {
    const ZipEntry* entry = archive_.find(name);
    if (entry == nullptr)
        throw Error::missing("the package has no part \"" + std::string{name} + "\"");
    return archive_.open(*entry);
}

std::vector<Relationship> OpcPackage::relationships(std::string_view part_name) {
    const std::string name = relationships_part_name(part_name);
    if (!has_part(name)) return {};
    return read_relationships(*open_part(name), part_name);
}

} // namespace workbook
