// SPDX-License-Identifier: Apache-2.0
//
// The walk over the records of an encrypted stream.
#include "workbook/xls/decryption.h"

#include <algorithm>
#include <array>
#include <utility>

#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/decryption_schemes.h"

namespace workbook {

namespace {

constexpr std::size_t kRecordHeaderBytes = 4;
constexpr std::uint16_t kFilepass = 0x2F;
constexpr std::uint16_t kBoundsheet = 0x85;
constexpr std::size_t kBoundsheetClearBytes = 4; ///< where the sheet's records begin

/// Records whose bodies are never encrypted: BOF of BIFF2 to BIFF8, FILEPASS, INTERFACEHDR,
/// RRDHEAD, USREXCL, FILELOCK, RRDINFO (MS-XLS 2.2.10).
constexpr std::array<std::uint16_t, 10> kClearRecords{0x09, 0x209, 0x409, 0x809, kFilepass,
                                                      0xE1, 0x138, 0x194, 0x195, 0x196};

/// Before FILEPASS there are BOF and WRITEPROTECT only; some writers put others there.
constexpr int kMaxRecordsBeforeFilepass = 16;

std::size_t clear_bytes(std::uint16_t record, std::size_t body_bytes) {
    if (std::find(kClearRecords.begin(), kClearRecords.end(), record) != kClearRecords.end())
        return body_bytes;
    return record == kBoundsheet ? std::min(kBoundsheetClearBytes, body_bytes) : 0;
}

struct RecordPlace {
    std::uint16_t id = 0;
    std::size_t body = 0, body_bytes = 0;
    std::size_t end() const { return body + body_bytes; }
};

/// The record at a position; one that the end of the stream cuts has the bytes that are left.
std::optional<RecordPlace> record_at(std::string_view stream, std::size_t position) {
    if (position > stream.size() || stream.size() - position < kRecordHeaderBytes) return {};
    const std::size_t body = position + kRecordHeaderBytes;
    return RecordPlace{
        load_u16(stream.data() + position), body,
        std::min<std::size_t>(load_u16(stream.data() + position + 2), stream.size() - body)};
}

std::optional<RecordPlace> find_filepass(std::string_view stream) {
    std::optional<RecordPlace> record = record_at(stream, 0);
    for (int i = 0; record && i < kMaxRecordsBeforeFilepass; ++i) {
        if (record->id == kFilepass) return record;
        record = record_at(stream, record->end());
    }
    return {};
}

} // namespace

StreamEncryption::StreamEncryption(std::string_view filepass, std::u16string_view password) {
    constexpr std::uint16_t kXor = 0;
    constexpr std::uint16_t kRc4 = 1;
    // Before BIFF8 there is one scheme and no number of it.
    const bool is_old = filepass.size() == 4;
    if (filepass.size() < 4) throw Error::damaged("the FILEPASS record", "it is too short");
    const std::uint16_t type = is_old ? kXor : load_u16(filepass.data());
    const std::string_view header = is_old ? filepass : filepass.substr(2);
    if (type == kXor && header.size() >= 4)
        scheme_ = std::make_unique<XorScheme>(load_u16(header.data()), load_u16(header.data() + 2),
                                              password);
    else if (type == kRc4)
        scheme_ = std::make_unique<Rc4Scheme>(header, password);
    else
        throw Error::encrypted();
}

StreamEncryption::~StreamEncryption() = default;
StreamEncryption::StreamEncryption(StreamEncryption&&) noexcept = default;
StreamEncryption& StreamEncryption::operator=(StreamEncryption&&) noexcept = default;

void StreamEncryption::decrypt(std::string& stream, std::size_t first_record) {
    transform(stream, first_record, false);
}

void StreamEncryption::encrypt(std::string& stream, std::size_t first_record) {
    transform(stream, first_record, true);
}

void StreamEncryption::transform(std::string& stream, std::size_t first_record, bool encrypts) {
    for (auto record = record_at(stream, first_record); record;
         record = record_at(stream, record->end())) {
        const std::size_t begin = record->body + clear_bytes(record->id, record->body_bytes);
        if (begin < record->end())
            scheme_->apply({record->body, record->body_bytes, begin, stream.data() + begin,
                            record->end() - begin},
                           encrypts);
    }
}

std::optional<StreamEncryption> decrypt_workbook_stream(std::string& stream) {
    const std::optional<RecordPlace> filepass = find_filepass(stream);
    if (!filepass) return {};
    StreamEncryption encryption(
        std::string_view(stream).substr(filepass->body, filepass->body_bytes));
    encryption.decrypt(stream, filepass->end());
    return encryption;
}

void encrypt_workbook_stream(std::string& stream, StreamEncryption& encryption) {
    if (const std::optional<RecordPlace> filepass = find_filepass(stream))
        encryption.encrypt(stream, filepass->end());
}

} // namespace workbook
