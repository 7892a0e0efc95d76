// SPDX-License-Identifier: Apache-2.0
//
// Compound files: what is written is read back, everything that was not changed is kept, and
// tables that lie give an error or the stream, never something else.
#include <filesystem>
#include <map>
#include <string>

#include <gtest/gtest.h>

#include "foundation/files.h"
#include "foundation/output_file.h"
#include "foundation/unicode.h"
#include "workbook/cfb/compound_format.h"
#include "workbook/cfb/compound_writer.h"
#include "workbook/cfb/directory_writer.h"
#include "workbook/cfb/sector_writer.h"
#include "workbook/error.h"
#include "workbook/io/little_endian.h"

namespace workbook {
namespace {

using namespace cfb;
using foundation::files::memory_file;
using foundation::files::memory_output;

std::string pattern(std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<char>(i * 7 + i / 251);
    return bytes;
}

StreamChange stream_of(std::u16string path, std::string bytes) {
    return {std::move(path), [bytes = std::move(bytes)](ByteSink& sink) {
                sink.append(std::string_view(bytes).substr(0, bytes.size() / 3));
                sink.append(std::string_view(bytes).substr(bytes.size() / 3));
            }};
}

std::string written(CompoundFile* source, const CompoundChanges& changes) {
    std::string bytes;
    const auto out = memory_output(bytes);
    write_compound_file(source, changes, *out);
    return bytes;
}

using Streams = std::map<std::u16string, std::string>;

std::u16string path_of(const CompoundFile& file, const CompoundEntry& entry) {
    const CompoundEntry& parent = file.entries()[entry.parent];
    return parent.kind == EntryKind::Root ? entry.name : path_of(file, parent) + u'/' + entry.name;
}

Streams streams_of(CompoundFile& file) {
    Streams streams;
    for (const CompoundEntry& entry : file.entries())
        if (entry.kind == EntryKind::Stream)
            streams[path_of(file, entry)] = file.read_stream(entry);
    return streams;
}

Streams streams_of(const std::string& bytes) {
    CompoundFile file(memory_file(bytes));
    return streams_of(file);
}

TEST(CompoundFile, GivesBackStreamsOfEverySize) {
    for (const std::size_t last :
         {std::size_t{600}, std::size_t{16'600'000}}) { // with a DIFAT of two sectors
        Streams expected;
        CompoundChanges changes;
        for (const std::size_t size :
             {std::size_t{0}, std::size_t{1}, std::size_t{64}, std::size_t{65}, std::size_t{4095},
              std::size_t{4096}, std::size_t{4097}, std::size_t{5120}, last}) {
            const std::u16string path =
                u"Of/" + foundation::unicode::to_utf16(std::to_string(size));
            expected[path] = pattern(size);
            changes.written.push_back(stream_of(path, expected[path]));
        }
        EXPECT_EQ(streams_of(written(nullptr, changes)), expected);
    }
}

TEST(CompoundFile, FindsStreamsInStoragesIgnoringCase) {
    CompoundChanges changes;
    changes.written = {stream_of(u"Workbook", "outer"), stream_of(u"MBD1/Workbook", "inner"),
                       stream_of(u"\u00C4rger/x", "umlaut")};
    CompoundFile file(memory_file(written(nullptr, changes)));
    EXPECT_EQ(file.read_stream(*file.find_stream(u"WORKBOOK")), "outer");
    EXPECT_EQ(file.read_stream(*file.find_stream(u"mbd1/workbook")), "inner");
    EXPECT_EQ(file.read_stream(*file.find_stream(u"\u00E4RGER/X")), "umlaut");
    EXPECT_EQ(file.find_stream(u"MBD1"), nullptr);
    EXPECT_EQ(file.find_stream(u"Book"), nullptr);
    EXPECT_NE(file.find_storage(u"mbd1"), nullptr);
}

/// Checks the tree below a record as MS-CFB 2.6.4 asks for and returns its black height.
int black_height(const std::string& directory, std::uint32_t id, bool parent_is_red,
                 std::vector<std::u16string>& names) {
    if (id == kNoEntry) return 1;
    const char* record = directory.data() + id * kEntryBytes;
    const bool is_red = record[kColourField] == 0;
    EXPECT_FALSE(is_red && parent_is_red);
    const int left = black_height(directory, load_u32(record + kLeftField), is_red, names);
    std::u16string name;
    for (int i = 0; i + 2 < load_u16(record + kNameLengthField); i += 2)
        name += static_cast<char16_t>(load_u16(record + i));
    names.push_back(name);
    EXPECT_EQ(left, black_height(directory, load_u32(record + kRightField), is_red, names));
    return left + (is_red ? 0 : 1);
}

TEST(CompoundDirectory, IsASearchTreeByLengthAndUpperCase) {
    std::vector<CompoundEntry> entries{{u"Root Entry", EntryKind::Root, 0, {}, 0, 0}};
    std::vector<std::u16string> expected{u"b", u"_", u"aB", u"a_", u"\u00E4a", u"\u00C4b", u"ccc"};
    for (const std::size_t i : {3, 5, 0, 6, 2, 4, 1})
        entries.push_back({expected[i], EntryKind::Stream, 0, {}, 0, 0});
    const std::string directory = compound_directory_bytes(entries);
    std::vector<std::u16string> names;
    black_height(directory, load_u32(directory.data() + kChildField), true, names);
    EXPECT_EQ(names, expected);
    for (int more = 0; more < 40; ++more) { // every shape of the last level
        names.clear();
        entries.push_back({std::u16string(5, static_cast<char16_t>(u'a' + more)),
                           EntryKind::Stream,
                           0,
                           {},
                           0,
                           0});
        const std::string larger = compound_directory_bytes(entries);
        black_height(larger, load_u32(larger.data() + kChildField), true, names);
        EXPECT_EQ(names.size(), entries.size() - 1);
    }
}

/// A file with long sectors, which new files do not have.
std::string version_4_file() {
    std::string bytes;
    const auto out = memory_output(bytes);
    SectorWriter writer(*out, 4096);
    std::vector<CompoundEntry> entries{{u"Root Entry", EntryKind::Root, 0, {}, 0, 0},
                                       {u"Macros", EntryKind::Storage, 0, {}, 0, 0},
                                       {u"small", EntryKind::Stream, 1, {}, 0, 0},
                                       {u"Workbook", EntryKind::Stream, 0, {}, 0, 0}};
    entries[1].attributes = {{'i', 'd'}, 7, 1234567890123, 9876543210987};
    entries[2].attributes.state_bits = 5;
    for (const std::size_t i : {2, 3}) {
        writer.begin_stream().append(pattern(i == 2 ? 100 : 10000));
        writer.end_stream(entries[i].first_sector, entries[i].size);
    }
    writer.finish(entries);
    return bytes;
}

TEST(CompoundWriter, KeepsWhatIsNotChanged) {
    CompoundFile source(memory_file(version_4_file()));
    CompoundChanges changes;
    changes.written = {stream_of(u"WORKBOOK", pattern(20000)), stream_of(u"Macros/New", "new"),
                       stream_of(u"Second", "2")};
    CompoundFile once(memory_file(written(&source, changes)));
    EXPECT_EQ(once.sector_bytes(), 4096u);
    EXPECT_EQ(streams_of(once), (Streams{{u"Workbook", pattern(20000)},
                                         {u"Macros/small", pattern(100)},
                                         {u"Macros/New", "new"},
                                         {u"Second", "2"}}));
    EXPECT_EQ(once.find_storage(u"Macros")->attributes, source.find_storage(u"Macros")->attributes);
    EXPECT_EQ(once.find_stream(u"Macros/small")->attributes.state_bits, 5u);

    changes.written.clear();
    changes.dropped = {u"macros", u"Second", u"absent"};
    std::string bytes;
    const auto out = memory_output(bytes);
    const CompoundCounts counts = write_compound_file(&once, changes, *out);
    EXPECT_EQ(streams_of(bytes), (Streams{{u"Workbook", pattern(20000)}}));
    EXPECT_EQ(counts.copied, 1u);
    EXPECT_EQ(counts.dropped, 3u);
}

TEST(CompoundFile, NoticesThatItsFileHasChanged) {
    CompoundChanges changes;
    changes.written = {stream_of(u"Workbook", pattern(5000))};
    const std::string before = written(nullptr, changes);
    changes.written = {stream_of(u"Workbook", pattern(5001))};
    CompoundFile file(memory_file(before));
    file.close_file();
    EXPECT_THROW(file.reopen(memory_file(written(nullptr, changes))), Error);
    EXPECT_FALSE(file.is_open());
    file.reopen(memory_file(before));
    EXPECT_EQ(file.read_stream(*file.find_stream(u"Workbook")), pattern(5000));
}

constexpr std::size_t kSector = 512;

/// A file with two small streams, one of ten sectors (0 to 9) and one of eight (10 to 17), then the
/// small streams (18), their table (19), the directory (20 and 21) and the sector table (22).
class DamagedCompoundFile : public testing::Test {
  protected:
    DamagedCompoundFile() {
        CompoundChanges changes;
        changes.written = {stream_of(u"Workbook", pattern(5120)),
                           stream_of(u"Other", pattern(4096)), stream_of(u"Sub/one", pattern(200)),
                           stream_of(u"Sub/two", pattern(60))};
        bytes = written(nullptr, changes);
        whole = streams_of(bytes);
        EXPECT_EQ(bytes.size(), 24 * kSector);
    }

    void put(std::size_t position, std::uint32_t value) {
        std::string field;
        append_u32(field, value);
        bytes.replace(position, 4, field);
    }
    void link(std::uint32_t sector, std::uint32_t next) { put(23 * kSector + 4 * sector, next); }
    std::size_t record(std::size_t id) const { return 21 * kSector + id * kEntryBytes; }

    /// What is read of a stream; "damaged" for an error of that kind.
    std::string workbook(std::u16string_view path = u"Workbook") const {
        try {
            CompoundFile file(memory_file(bytes));
            const CompoundEntry* entry = file.find_stream(path);
            return entry == nullptr ? "absent" : file.read_stream(*entry);
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), ErrorKind::Damaged) << error.what();
            return "damaged";
        }
    }

    std::string bytes;
    Streams whole;
};

TEST_F(DamagedCompoundFile, DoesNotNeedCountsOfItsHeader) {
    for (const std::size_t field :
         {kDirectorySectorsField, kFatSectorsField, kSmallFatSectorsField, kDifatSectorsField})
        put(field, 0x7FFFFFFF);
    put(kFirstDifatSectorField, 3); // not a DIFAT sector
    EXPECT_EQ(streams_of(bytes), whole);
}

TEST_F(DamagedCompoundFile, MayEndWithinASectorOrAfterMore) {
    bytes += "garbage";
    EXPECT_EQ(streams_of(bytes), whole);
    bytes.resize(24 * kSector - 300); // the unused end of the sector table
    EXPECT_EQ(workbook(), whole[u"Workbook"]);
    bytes.resize(23 * kSector + 4 * 8); // without the links of its last sectors
    EXPECT_EQ(workbook(), "damaged");
    EXPECT_EQ(workbook(u"Other"), "damaged");
    bytes.resize(15 * kSector);
    EXPECT_EQ(workbook(), "damaged");
    bytes.resize(kSector);
    EXPECT_EQ(workbook(), "damaged");
}

TEST_F(DamagedCompoundFile, MayEndAfterTheLastByteOfAStream) {
    bytes.append(bytes, 10 * kSector, kSector); // the workbook's last sector moves to the end
    link(8, 23);
    link(23, kEndOfChain);
    put(record(1) + kSizeField, 5120 - 100);
    for (const std::size_t cut : {0, 100, 101}) {
        bytes.resize(25 * kSector - cut);
        EXPECT_EQ(workbook(), cut <= 100 ? whole[u"Workbook"].substr(0, 5020) : "damaged") << cut;
    }
}

TEST_F(DamagedCompoundFile, ReportsChainsThatDoNotHoldTheirStream) {
    const std::string good = bytes;
    const struct {
        std::uint32_t sector, next;
    } cases[] = {{3, 2}, {3, 3}, {0, kEndOfChain}, {8, kFreeSector}, {4, 1000}, {5, 0x80000000}};
    for (const auto& [sector, next] : cases) {
        bytes = good;
        link(sector, next);
        EXPECT_EQ(workbook(), "damaged") << sector;
        EXPECT_EQ(workbook(u"Other"), whole[u"Other"]);
        EXPECT_EQ(workbook(u"Sub/one"), whole[u"Sub/one"]);
    }
    bytes = good;
    put(20 * kSector, 0); // the first small sector leads to itself
    EXPECT_EQ(workbook(u"Sub/one"), "damaged");
    EXPECT_EQ(workbook(u"Sub/two"), whole[u"Sub/two"]);
    bytes = good;
    link(18, 18); // the stream of small streams
    EXPECT_EQ(workbook(u"Sub/one"), whole[u"Sub/one"]);
}

TEST_F(DamagedCompoundFile, ReportsSizesThatTheFileCannotHave) {
    put(record(1) + kSizeField, 0xFFFFFFFF);
    EXPECT_EQ(workbook(), "damaged");
    put(record(1) + kSizeField, 5120);
    put(record(1) + kSizeField + 4, 0xFFFFFFFF); // not part of the size in version 3
    EXPECT_EQ(workbook(), whole[u"Workbook"]);
}

TEST_F(DamagedCompoundFile, FollowsEachEntryOnce) {
    const std::string good = bytes;
    for (const std::size_t field : {kLeftField, kRightField, kChildField})
        for (std::uint32_t id = 0; id < 6; ++id) {
            bytes = good;
            for (std::size_t from = 1; from < 6; ++from)
                put(record(from) + field, id);
            workbook(); // ends
        }
    bytes = good;
    link(20, 20); // the directory's first sector, which has the workbook
    EXPECT_EQ(workbook(), whole[u"Workbook"]);
    bytes = good;
    put(record(0) + kChildField, kNoEntry); // entries without a tree belong to the root
    EXPECT_EQ(workbook(), whole[u"Workbook"]);
    bytes[record(0) + kTypeField] = 2;
    EXPECT_EQ(workbook(), "damaged");
}

TEST_F(DamagedCompoundFile, IsNotCopiedWithSectorsThatStreamsShare) {
    for (std::size_t id : {1, 2}) {
        put(record(id) + kFirstSectorField, 0);
        put(record(id) + kSizeField, 18 * kSector);
    }
    link(9, 10);
    CompoundFile file(memory_file(bytes));
    EXPECT_THROW(written(&file, {}), Error);
}

TEST(CompoundWriter, KeepsEveryStreamOfTheCorpus) {
    const std::filesystem::path folder(ZX_SHARED_DATA "/corpus/dev");
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no corpus";
    int files = 0;
    for (const auto& path : std::filesystem::directory_iterator(folder)) {
        if (path.path().extension() != ".xls") continue;
        Streams before;
        std::string copy;
        try {
            CompoundFile file(foundation::files::open_for_reading(path.path().u16string()));
            before = streams_of(file);
            copy = written(&file, {});
        } catch (const Error&) {
            continue;
        }
        EXPECT_EQ(streams_of(copy), before) << path.path();
        ++files;
    }
    EXPECT_GT(files, 40);
}

} // namespace
} // namespace workbook
