// SPDX-License-Identifier: Apache-2.0
#include "workbook/xls/writing/shared_strings_writer.h"

#include <algorithm>
#include <vector>

#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/xls/reading/record_strings.h"
#include "workbook/xls/record_ids.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/record_writer.h"

namespace workbook {

namespace {

constexpr std::size_t kCountBytes = 8;        ///< before the first string
constexpr std::size_t kStringHeaderBytes = 3; ///< length and flags
constexpr std::uint32_t kFewestPerBucket = 8; ///< MS-XLS 2.4.107
constexpr std::uint32_t kMostBuckets = 128;
constexpr std::size_t kBucketBytes = 8;

/// Where the first string of a bucket is.
struct Bucket {
    std::size_t string; ///< in the stream
    std::size_t record; ///< the header of the record that the string begins in
};

std::uint32_t strings_per_bucket(std::size_t count) {
    const std::size_t wanted = count / kMostBuckets + 1;
    return std::max(kFewestPerBucket, static_cast<std::uint32_t>(wanted));
}

class TableWriter {
  public:
    TableWriter(std::size_t count, std::string& out)
        : per_bucket_(strings_per_bucket(count)), out_(out), writer_(out) {}

    /// The old records as they are; `count` strings are in them.
    void copy(std::string_view stream, std::size_t table, std::uint32_t count) {
        const std::size_t begin = out_.size();
        RecordStream records(stream, table);
        records.next();
        ContinuedRecord strings(records);
        strings.skip(kCountBytes);
        for (std::uint32_t i = 0; i < count; ++i) {
            if (strings.rest().empty() && !strings.next_segment()) break;
            const auto at = static_cast<std::size_t>(strings.rest().data() - stream.data());
            note_string(begin + at - table, begin + records.record().position - table);
            RecordStrings::skip_unicode(strings);
        }
        std::size_t last = table, end = table;
        RecordStream all(stream, table);
        while (all.next()) {
            last = all.record().position;
            end = last + RecordStream::kHeaderBytes + all.record().size();
            if (all.next_id() != record::kContinue) break;
        }
        out_.append(stream.substr(table, end - table));
        record_begin_ = begin + last - table;
        writer_.reopen(record_begin_);
    }

    void begin_new() {
        record_begin_ = out_.size();
        writer_.begin(record::kSst);
        writer_.u32(0);
        writer_.u32(0);
    }

    void add(std::u16string_view text) {
        const bool is_wide = !is_compressible(text);
        const std::size_t width = is_wide ? 2 : 1;
        // Length, flags and the first character are in one record.
        if (writer_.room() < kStringHeaderBytes + width) continue_record();
        note_string(out_.size(), record_begin_);
        writer_.u16(static_cast<std::uint16_t>(text.size()));
        writer_.u8(is_wide ? kWideCharacters : 0);
        while (!text.empty()) {
            if (writer_.room() < width) {
                continue_record();
                writer_.u8(is_wide ? kWideCharacters : 0);
            }
            const std::size_t here = std::min(text.size(), writer_.room() / width);
            for (const char16_t unit : text.substr(0, here))
                if (is_wide)
                    writer_.u16(unit);
                else
                    writer_.u8(static_cast<std::uint8_t>(unit));
            text.remove_prefix(here);
        }
    }

    void finish() {
        writer_.end();
        writer_.begin(record::kExtSst);
        writer_.u16(static_cast<std::uint16_t>(std::min<std::uint32_t>(per_bucket_, 0xFFFF)));
        for (const Bucket& bucket : buckets_) {
            if (writer_.room() < kBucketBytes) writer_.continue_record();
            writer_.u32(static_cast<std::uint32_t>(bucket.string));
            writer_.u16(static_cast<std::uint16_t>(bucket.string - bucket.record));
            writer_.u16(0);
        }
        writer_.end();
    }

    RecordWriter& writer() { return writer_; }

  private:
    void note_string(std::size_t string, std::size_t record) {
        if (strings_++ % per_bucket_ == 0) buckets_.push_back({string, record});
    }

    void continue_record() {
        record_begin_ = out_.size();
        writer_.continue_record();
    }

    const std::uint32_t per_bucket_;
    std::string& out_;
    RecordWriter writer_;
    std::size_t record_begin_ = 0; ///< the header of the open record
    std::uint64_t strings_ = 0;
    std::vector<Bucket> buckets_;
};

} // namespace

std::uint32_t shared_string_count(std::string_view stream, std::size_t table) {
    RecordStream records(stream, table);
    if (!records.next() || records.record().size() < kCountBytes) return 0;
    return records.record().u32(4);
}

void write_shared_strings(std::string_view old_stream, std::optional<std::size_t> old_table,
                          const StringPool& added, std::uint64_t added_uses, std::string& out) {
    const std::uint32_t old_count = old_table ? shared_string_count(old_stream, *old_table) : 0;
    const std::size_t counts = out.size() + RecordStream::kHeaderBytes;
    const std::uint64_t count = std::uint64_t{old_count} + added.size();
    TableWriter table(static_cast<std::size_t>(count), out);
    std::uint64_t uses = added_uses;
    if (old_table) {
        table.copy(old_stream, *old_table, old_count);
        uses += load_u32(out.data() + counts);
    } else {
        table.begin_new();
    }
    std::u16string text;
    for (std::size_t i = 0; i < added.size(); ++i) {
        foundation::unicode::assign_utf16(text, added[i]);
        table.add(text);
    }
    table.finish();
    table.writer().set_u32(counts,
                           static_cast<std::uint32_t>(std::min<std::uint64_t>(uses, INT32_MAX)));
    table.writer().set_u32(counts + 4, static_cast<std::uint32_t>(count));
}

} // namespace workbook
