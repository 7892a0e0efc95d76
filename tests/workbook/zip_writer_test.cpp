// SPDX-License-Identifier: Apache-2.0
//
// Containers that are written, read back by our own reader and tested by another program.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/failing_output.h"
#include "tests/workbook/memory_source.h"
#include "tests/workbook/sparse_file.h"
#include "tests/workbook/zip_builder.h"
#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/zip/zip_writer.h"

namespace workbook {
namespace {

using foundation::files::memory_file;
using foundation::files::memory_output;
using test::build_zip;

struct Content {
    std::string name, text;
    std::uint64_t expected_bytes = 0;
};

std::string written(const std::vector<Content>& entries) {
    std::string bytes;
    const auto out = memory_output(bytes);
    ZipWriter zip(*out);
    for (const Content& entry : entries) {
        zip.begin_entry(entry.name, entry.expected_bytes).append(entry.text);
        zip.end_entry();
    }
    zip.finish();
    return bytes;
}

std::string rows(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "row " + std::to_string(i * 7919 % 10007) + "\n";
    return text;
}

const std::vector<Content>& contents() {
    static const std::vector<Content> all = {
        {"[Content_Types].xml", "<Types/>"},
        {"empty", ""},
        {"xl/worksheets/sheet1.xml", rows(200'000)},
        {"xl/b\xC3\xBC\x63her.xml", "<x/>"},
        {"xl/expected_to_be_large.xml", rows(1000), std::uint64_t{5} << 30},
    };
    return all;
}

TEST(ZipWriter, WritesWhatTheReaderReads) {
    ZipArchive archive(memory_file(written(contents())));
    ASSERT_EQ(archive.entries().size(), contents().size());
    for (std::size_t i = 0; i < contents().size(); ++i) {
        const ZipEntry& entry = archive.entries()[i];
        EXPECT_EQ(entry.name, contents()[i].name);
        EXPECT_TRUE(test::read_all(*archive.open(entry)) == contents()[i].text) << entry.name;
        EXPECT_EQ(entry.flags, i == 3 ? 1 << 11 : 0);
    }
    EXPECT_EQ(written(contents()), written(contents())) << "equal content makes equal files";
}

/// Runs `unzip -t`; nothing when there is no such program.
std::optional<bool> unzip_accepts([[maybe_unused]] const std::string& bytes) {
#ifdef _WIN32
    return std::nullopt;
#else
    if (std::system("unzip -v > /dev/null 2>&1") != 0) return std::nullopt;
    const std::string path = testing::TempDir() + "zx_unzip_test.zip";
    std::ofstream(path, std::ios::binary) << bytes;
    const int result = std::system(("unzip -tqq '" + path + "' > /dev/null 2>&1").c_str());
    std::filesystem::remove(path);
    return result == 0;
#endif
}

TEST(ZipWriter, SatisfiesAnotherProgram) {
    std::string broken = written(contents());
    const std::optional<bool> of_broken = unzip_accepts(broken.replace(60, 4, "????"));
    if (!of_broken) GTEST_SKIP() << "unzip is not installed";
    EXPECT_FALSE(*of_broken);
    EXPECT_TRUE(*unzip_accepts(written(contents())));
    std::vector<Content> many(70'000);
    for (std::size_t i = 0; i < many.size(); ++i)
        many[i] = {"folder/" + std::to_string(i), "x"};
    EXPECT_TRUE(*unzip_accepts(written(many)));
}

TEST(ZipWriter, CountsMoreEntriesThanTheEndRecordCan) {
    for (const std::size_t count : {65'534u, 65'535u, 70'000u}) {
        std::vector<Content> many(count);
        for (std::size_t i = 0; i < many.size(); ++i)
            many[i] = {"n" + std::to_string(i), ""};
        ZipArchive archive(memory_file(written(many)));
        EXPECT_EQ(archive.entries().size(), count);
        EXPECT_NE(archive.find("n" + std::to_string(count - 1)), nullptr);
    }
}

TEST(ZipWriter, CopiesEntriesAsTheyLie) {
    const std::string text = rows(3000);
    const std::string source_bytes = build_zip({
        {.name = "deflated.xml", .content = text},
        {.name = "stored.bin", .content = text, .stored = true},
        {.name = "descriptor.xml", .content = text, .descriptor = true},
        {.name = "zip64.xml", .content = text, .zip64 = true},
        {.name = "folder/", .content = "", .stored = true},
        {.name = "XL\\Odd Name.xml", .content = text},
        {.name = "n\xC3\xA4me.xml", .content = text, .flags = 1 << 11},
        {.name = "unknown.lzma", .content = "not really", .stored = true, .method = 14},
        {.name = "same.xml", .content = "one"},
        {.name = "same.xml", .content = "two"},
    });
    ZipArchive source(memory_file(source_bytes));
    std::string bytes;
    const auto out = memory_output(bytes);
    ZipWriter zip(*out);
    zip.begin_entry("first.xml").append("new");
    zip.end_entry();
    for (const ZipEntry& entry : source.entries())
        zip.copy_entry(source, entry);
    zip.finish();

    ZipArchive copy(memory_file(bytes));
    ASSERT_EQ(copy.entries().size(), source.entries().size() + 1);
    for (std::size_t i = 0; i < source.entries().size(); ++i) {
        const ZipEntry& before = source.entries()[i];
        const ZipEntry& after = copy.entries()[i + 1];
        SCOPED_TRACE(before.name);
        EXPECT_EQ(after.name, before.name);
        EXPECT_EQ(after.method, before.method);
        EXPECT_EQ(after.crc32, before.crc32);
        EXPECT_EQ(after.size, before.size);
        EXPECT_EQ(after.time, before.time);
        EXPECT_EQ(after.date, before.date);
        EXPECT_EQ(after.attributes, before.attributes);
        EXPECT_EQ(after.made_by, before.made_by);
        EXPECT_EQ(after.flags, before.flags & ~(1 << 3));
        const auto packed_of = [](ZipArchive& archive, const ZipEntry& entry) {
            std::string packed;
            PackedBytes source_of = archive.open_packed(entry);
            for (auto block = source_of.next(); block.count > 0; block = source_of.next())
                packed.append(block.bytes, block.count);
            return packed;
        };
        EXPECT_TRUE(packed_of(copy, after) == packed_of(source, before));
    }
}

TEST(ZipWriter, TellsThatTheSourceIsDamaged) {
    const std::string good = build_zip({{.name = "a", .content = rows(1000)}});
    const struct {
        const char* what;
        std::string bytes;
    } cases[] = {
        {"more packed bytes than the file has",
         build_zip({{.name = "a", .content = "x", .stated_packed_size = 1'000'000}})},
        {"no local header", std::string(good).replace(0, 4, "????")},
    };
    for (const auto& c : cases) {
        ZipArchive source(memory_file(c.bytes));
        std::string bytes;
        const auto out = memory_output(bytes);
        ZipWriter zip(*out);
        EXPECT_THROW(zip.copy_entry(source, source.entries()[0]), Error) << c.what;
    }
}

TEST(ZipWriter, PassesOnEveryFailureOfTheFile) {
    ZipArchive source(memory_file(build_zip({{.name = "b", .content = rows(1000)}})));
    const auto write = [&](int good_operations) {
        std::string bytes;
        foundation::files::test::FailingOutput out(memory_output(bytes), good_operations);
        ZipWriter zip(out);
        zip.begin_entry("a").append(rows(50'000));
        zip.end_entry();
        zip.copy_entry(source, source.entries()[0]);
        zip.finish();
    };
    int operations = 0;
    for (bool failed = true; failed; ++operations) {
        failed = false;
        try {
            write(operations);
        } catch (const Error& error) {
            failed = true;
            EXPECT_EQ(error.kind(), ErrorKind::File);
            EXPECT_STREQ(error.what(), "The disk is full.");
        }
        ASSERT_LT(operations, 100);
    }
    EXPECT_GE(operations, 8);
}

constexpr std::uint64_t k4GiB = std::uint64_t{4} << 30;

TEST(ZipWriter, CopiesEntriesBeyond4GiB) {
    const std::uint64_t zeros = k4GiB + 12'345;
    test::SparseFile huge;
    test::SparseOutput huge_out(huge);
    std::string header; // a local header whose sizes stand in the directory only
    append_u32(header, 0x04034b50);
    header.append(26, '\0');
    huge_out.append(header.data(), header.size());
    huge.append_zeros(zeros);
    ZipEntry entry;
    entry.name = "huge.bin";
    entry.size = entry.packed_size = zeros;
    entry.version_needed = 45;

    // The reader wants a directory; the entry that is copied is the one above.
    const std::uint64_t behind = huge.size();
    const std::string small = build_zip({{.name = "small", .content = "text"}});
    huge_out.append(small.data(), small.size());
    ZipArchive source(std::make_unique<test::SparseInput>(huge));
    ASSERT_EQ(source.entries().at(0).header_position, behind);

    test::SparseFile result;
    test::SparseOutput out(result);
    ZipWriter zip(out);
    zip.copy_entry(source, entry);
    zip.copy_entry(source, source.entries()[0]);
    zip.begin_entry("new").append("behind 4 GiB");
    zip.end_entry();
    zip.finish();

    ZipArchive copy(std::make_unique<test::SparseInput>(result));
    ASSERT_EQ(copy.entries().size(), 3u);
    EXPECT_EQ(copy.entries()[0].size, zeros);
    EXPECT_EQ(copy.entries()[0].packed_size, zeros);
    EXPECT_GT(copy.entries()[1].header_position, k4GiB);
    EXPECT_EQ(test::read_all(*copy.open(copy.entries()[1])), "text");
    EXPECT_EQ(test::read_all(*copy.open(copy.entries()[2])), "behind 4 GiB");
    // The local header has the field too: some programs read nothing else.
    char local[64];
    result.read(0, local, sizeof local);
    EXPECT_EQ(load_u16(local + 4), 45);
    EXPECT_EQ(load_u32(local + 18), 0xFFFFFFFF);
    EXPECT_EQ(load_u16(local + 38), 1);
    EXPECT_EQ(load_u64(local + 42), zeros);
}

TEST(ZipWriter, PacksMoreThan4GiBOnlyWhereItWasExpected) {
    const std::string block(64 << 20, '\0');
    for (const std::uint64_t expected : {std::uint64_t{0}, k4GiB}) {
        std::string bytes;
        const auto out = memory_output(bytes);
        ZipWriter zip(*out);
        ByteSink& sink = zip.begin_entry("large.xml", expected);
        const auto fill = [&] {
            for (std::uint64_t done = 0; done <= k4GiB; done += block.size())
                sink.append(block);
        };
        if (expected == 0) {
            EXPECT_THROW(fill(), Error);
            continue;
        }
        fill();
        zip.end_entry();
        zip.finish();
        ZipArchive archive(memory_file(bytes));
        EXPECT_EQ(archive.entries().at(0).size, k4GiB + block.size());
    }
}

} // namespace
} // namespace workbook
