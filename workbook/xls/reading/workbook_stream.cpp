// SPDX-License-Identifier: Apache-2.0
//
// Which stream is the book, and whether it is encrypted.
#include "workbook/xls/reading/workbook_stream.h"

#include <functional>
#include <utility>

#include "workbook/detect/file_kind.h"
#include "workbook/error.h"
#include "workbook/xls/xls_limits.h"

namespace workbook {

namespace {

using foundation::files::RandomAccessFile;

void require_stream_size(std::uint64_t size) {
    if (size > kMaxXlsStreamBytes)
        throw Error::limit("the workbook stream",
                           "more than " + std::to_string(kMaxXlsStreamBytes) + " bytes");
}

[[noreturn]] void refuse_other_content(const CompoundFile& container) {
    for (const char16_t* name : {u"EncryptedPackage", u"EncryptionInfo"})
        if (container.find_stream(name) != nullptr) throw Error::encrypted();
    throw Error::not_a_workbook("it is a compound file without a workbook");
}

WorkbookStream read_from_container(std::unique_ptr<RandomAccessFile> file) {
    WorkbookStream result;
    result.container = std::make_unique<CompoundFile>(std::move(file));
    for (const char16_t* name : {u"Workbook", u"Book"}) {
        const CompoundEntry* entry = result.container->find_stream(name);
        if (entry == nullptr) continue;
        require_stream_size(entry->size);
        result.name = entry->name;
        result.bytes = result.container->read_stream(*entry);
        return result;
    }
    refuse_other_content(*result.container);
}

WorkbookStream read_whole_file(RandomAccessFile& file) {
    require_stream_size(file.size());
    WorkbookStream result;
    result.bytes.resize(static_cast<std::size_t>(file.size()));
    result.bytes.resize(file.read_at(0, result.bytes.data(), result.bytes.size()));
    return result;
}

WorkbookStream read_encrypted_or_not(std::unique_ptr<RandomAccessFile> file) {
    const FileKind kind = detect_file_kind(*file);
    if (kind == FileKind::CompoundFile) return read_from_container(std::move(file));
    if (kind == FileKind::RecordStream) return read_whole_file(*file);
    refuse_file_kind(kind);
}

bool is_same(const WorkbookStream& stream, std::string in_file) {
    if (stream.saved_hash) return hash_of_stream(in_file) == *stream.saved_hash;
    if (stream.encryption) decrypt_workbook_stream(in_file);
    return in_file == stream.bytes;
}

std::string stream_in(CompoundFile& container, std::u16string_view name) {
    const CompoundEntry* entry = container.find_stream(name);
    return entry == nullptr ? std::string() : container.read_stream(*entry);
}

} // namespace

WorkbookStream read_workbook_stream(std::unique_ptr<RandomAccessFile> file) {
    WorkbookStream result = read_encrypted_or_not(std::move(file));
    result.encryption = decrypt_workbook_stream(result.bytes);
    return result;
}

std::size_t hash_of_stream(std::string_view bytes) {
    return std::hash<std::string_view>{}(bytes);
}

void verify_same_stream(const WorkbookStream& stream, std::unique_ptr<RandomAccessFile> file) {
    bool is_still_same = false;
    try {
        is_still_same =
            is_same(stream, file != nullptr ? read_whole_file(*file).bytes
                                            : stream_in(*stream.container, stream.name));
    } catch (const Error&) {
    }
    if (!is_still_same) throw Error::file("the file has been changed on disk since it was loaded");
}

} // namespace workbook
