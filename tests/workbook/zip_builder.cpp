// SPDX-License-Identifier: Apache-2.0
//
// ZIP records as APPNOTE 4.3 lays them out.
#include "tests/workbook/zip_builder.h"

#include <stdexcept>

#include <zlib.h>

namespace workbook::test {

namespace {

void put(std::string& out, std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>(i < 8 ? value >> (8 * i) & 0xFF : 0);
}

constexpr std::uint64_t kFull32 = 0xFFFFFFFF;

/// What an item's headers say.
struct Facts {
    std::uint64_t position, packed_size, size;
    std::uint32_t crc;
    std::uint16_t method, flags;
};

std::uint64_t stated(std::int64_t wanted, std::size_t actual) {
    return wanted >= 0 ? static_cast<std::uint64_t>(wanted) : actual;
}

void put_common(std::string& out, const ZipItem& item, const Facts& facts, bool hide) {
    put(out, item.zip64 ? 45 : 20, 2);
    put(out, facts.flags, 2);
    put(out, facts.method, 2);
    put(out, 0x00210000, 4); // 1 January 1980
    put(out, hide ? 0 : facts.crc, 4);
    put(out, item.zip64 ? kFull32 : hide ? 0 : facts.packed_size, 4);
    put(out, item.zip64 ? kFull32 : hide ? 0 : facts.size, 4);
    put(out, item.name.size(), 2);
}

std::string extra_field(const ZipItem& item, const Facts& facts, bool with_position) {
    std::string extra;
    if (!item.zip64) return extra;
    put(extra, 1, 2);
    put(extra, with_position ? 24 : 16, 2);
    put(extra, facts.size, 8);
    put(extra, facts.packed_size, 8);
    if (with_position) put(extra, facts.position, 8);
    return extra;
}

void put_item(std::string& out, const ZipItem& item, const Facts& facts, const std::string& data) {
    put(out, 0x04034b50, 4);
    put_common(out, item, facts, item.descriptor);
    const std::string extra = extra_field(item, facts, false);
    put(out, extra.size(), 2);
    out += item.name + extra + data;
    if (!item.descriptor) return;
    put(out, 0x08074b50, 4);
    put(out, facts.crc, 4);
    put(out, facts.packed_size, 4);
    put(out, facts.size, 4);
}

void put_header(std::string& out, const ZipItem& item, const Facts& facts) {
    put(out, 0x02014b50, 4);
    put(out, 45, 2);
    put_common(out, item, facts, false);
    const std::string extra = extra_field(item, facts, true);
    put(out, extra.size(), 2);
    put(out, 0, 2 + 2 + 2); // comment, disk, internal attributes
    put(out, 0, 4);         // external attributes
    put(out, item.zip64 ? kFull32 : facts.position, 4);
    out += item.name + extra;
}

void put_end64(std::string& out, std::uint64_t entries, std::uint64_t position,
               std::uint64_t size) {
    const std::uint64_t record = position + size;
    put(out, 0x06064b50, 4);
    put(out, 44, 8);
    put(out, 45, 2);
    put(out, 45, 2);
    put(out, 0, 8);
    put(out, entries, 8);
    put(out, entries, 8);
    put(out, size, 8);
    put(out, position, 8);
    put(out, 0x07064b50, 4);
    put(out, 0, 4);
    put(out, record, 8);
    put(out, 1, 4);
}

} // namespace

std::string deflate_text(std::string_view text) {
    z_stream stream{};
    if (deflateInit2(&stream, 9, Z_DEFLATED, -MAX_WBITS, 9, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::runtime_error("deflateInit2");
    std::string packed(deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
    stream.avail_in = static_cast<uInt>(text.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());
    stream.avail_out = static_cast<uInt>(packed.size());
    deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

std::string build_zip(const std::vector<ZipItem>& items, const ZipShape& shape) {
    std::string body, directory;
    for (const ZipItem& item : items) {
        const std::string data = item.stored ? item.content : deflate_text(item.content);
        Facts facts{};
        facts.position = body.size();
        facts.packed_size = stated(item.stated_packed_size, data.size());
        facts.size = stated(item.stated_size, item.content.size());
        facts.crc = static_cast<std::uint32_t>(
            crc32_z(0, reinterpret_cast<const Bytef*>(item.content.data()), item.content.size()));
        facts.crc ^= item.wrong_crc ? 1u : 0u;
        facts.method = static_cast<std::uint16_t>(item.method >= 0 ? item.method
                                                  : item.stored    ? 0
                                                                   : 8);
        facts.flags = static_cast<std::uint16_t>(item.flags | (item.descriptor ? 8 : 0));
        put_item(body, item, facts, data);
        put_header(directory, item, facts);
    }
    const std::uint64_t entries = stated(shape.stated_entries, items.size());
    std::string out = shape.prefix + body + directory;
    if (shape.zip64) put_end64(out, entries, body.size(), directory.size());
    put(out, 0x06054b50, 4);
    put(out, 0, 4);
    put(out, shape.zip64 ? 0xFFFF : entries, 2);
    put(out, shape.zip64 ? 0xFFFF : entries, 2);
    put(out, shape.zip64 ? kFull32 : directory.size(), 4);
    put(out, shape.zip64 ? kFull32 : body.size(), 4);
    put(out, shape.comment.size(), 2);
    return out + shape.comment + shape.suffix;
}

} // namespace workbook::test
