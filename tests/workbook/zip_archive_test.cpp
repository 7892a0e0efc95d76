// SPDX-License-Identifier: Apache-2.0
//
// Containers in every dress that writers use, and containers that are broken.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "tests/workbook/zip_builder.h"
#include "workbook/error.h"
#include "workbook/opc/opc_package.h"
#include "workbook/zip/zip_archive.h"

namespace workbook {
namespace {

using test::build_zip;
using test::ZipItem;
using test::ZipShape;
using ::testing::HasSubstr;

std::string read_part(const std::string& bytes, std::string_view name) {
    ZipArchive archive(foundation::files::memory_file(bytes));
    const ZipEntry* entry = archive.find(name);
    if (entry == nullptr) return "absent";
    return test::read_all(*archive.open(*entry));
}

std::string many_lines() {
    std::string text;
    for (int i = 0; i < 20'000; ++i)
        text += "line " + std::to_string(i * 7919 % 10007) + "\n";
    return text;
}

TEST(ZipArchive, ReadsEveryShapeOfContainer) {
    const std::string text = many_lines();
    std::string shifted = "#!/bin/sh\nexec something\n";
    struct Case {
        const char* what;
        ZipItem item;
        ZipShape shape;
    } const cases[] = {
        {"deflated", {.name = "xl/a.xml", .content = text}, {}},
        {"stored", {.name = "xl/a.xml", .content = text, .stored = true}, {}},
        {"data descriptor", {.name = "xl/a.xml", .content = text, .descriptor = true}, {}},
        {"Zip64 entry", {.name = "xl/a.xml", .content = text, .zip64 = true}, {}},
        {"Zip64 directory", {.name = "xl/a.xml", .content = text}, {.zip64 = true}},
        {"all of Zip64", {.name = "xl/a.xml", .content = text, .zip64 = true}, {.zip64 = true}},
        {"comment", {.name = "xl/a.xml", .content = text}, {.comment = "a PK comment"}},
        {"longest comment",
         {.name = "xl/a.xml", .content = text},
         {.comment = std::string(65535, 'P')}},
        {"bytes in front", {.name = "xl/a.xml", .content = text}, {.prefix = shifted}},
        {"bytes in front, Zip64",
         {.name = "xl/a.xml", .content = text},
         {.prefix = shifted, .zip64 = true}},
        {"bytes behind",
         {.name = "xl/a.xml", .content = text},
         {.suffix = std::string(3000, '\0')}},
        {"backslashes", {.name = "xl\\a.xml", .content = text}, {}},
        {"absolute name", {.name = "/xl/a.xml", .content = text}, {}},
        {"capitals", {.name = "XL/A.XML", .content = text}, {}},
        {"percent-escape", {.name = "xl/%61.xml", .content = text}, {}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(
            read_part(build_zip({{.name = "first", .content = "1"}, c.item}, c.shape), "xl/a.xml"),
            text)
            << c.what;
}

TEST(ZipArchive, TakesTheFirstOfEqualNames) {
    const std::string bytes = build_zip(
        {{.name = "xl/a.xml", .content = "one"}, {.name = "XL\\a.xml", .content = "two"}});
    EXPECT_EQ(read_part(bytes, "/xl/a.xml"), "one");
    EXPECT_EQ(read_part(bytes, "xl/b.xml"), "absent");
}

TEST(ZipArchive, IgnoresAnEndSignatureWithinTheComment) {
    const std::string comment = std::string("PK\5\6", 4) + std::string(40, '\1');
    const std::string bytes = build_zip({{.name = "a", .content = "text"}}, {.comment = comment});
    EXPECT_EQ(read_part(bytes, "a"), "text");
}

TEST(ZipArchive, NamesWhatIsBroken) {
    const std::string text = many_lines();
    const std::string whole = build_zip({{.name = "a", .content = text}});
    std::string no_local_header = whole;
    no_local_header[0] = 'Q';
    std::string broken_data = whole;
    for (std::size_t i = 100; i < 400; ++i)
        broken_data[i] = static_cast<char>(0xFF);
    struct Case {
        const char* what;
        std::string bytes;
        const char* message;
    } const cases[] = {
        {"truncated", whole.substr(0, whole.size() / 2), "truncated"},
        {"end record cut", whole.substr(0, whole.size() - 4), "truncated"},
        {"too few entries", build_zip({{.name = "a", .content = "1"}}, {.stated_entries = 2}),
         "entry 2 of 2"},
        {"too many entries",
         build_zip({{.name = "a", .content = "1"}}, {.zip64 = true, .stated_entries = 1 << 30}),
         "larger than allowed"},
        {"no local header", no_local_header, "header"},
        {"broken data", broken_data, "a is damaged"},
        {"wrong CRC-32", build_zip({{.name = "a", .content = text, .wrong_crc = true}}), "CRC-32"},
        {"wrong CRC-32 of stored data",
         build_zip({{.name = "a", .content = text, .stored = true, .wrong_crc = true}}), "CRC-32"},
        {"larger than stated", build_zip({{.name = "a", .content = text, .stated_size = 10}}),
         "more than the 10 bytes"},
        {"smaller than stated", build_zip({{.name = "a", .content = "12", .stated_size = 1000}}),
         "unpacks to 2 bytes"},
        {"packed data cut", build_zip({{.name = "a", .content = text, .stated_packed_size = 50}}),
         "end too early"},
        {"packed beyond the file",
         build_zip({{.name = "a", .content = text, .stated_packed_size = 0x7fffffff}}),
         "after the end of the file"},
        {"huge stated size",
         build_zip(
             {{.name = "a", .content = text, .zip64 = true, .stated_size = std::int64_t{1} << 60}}),
         "larger than allowed"},
        {"encrypted entry", build_zip({{.name = "a", .content = text, .flags = 1}}), "encrypted"},
        {"unknown method", build_zip({{.name = "a", .content = text, .method = 14}}), "method 14"},
    };
    for (const Case& c : cases) {
        try {
            read_part(c.bytes, "a");
            ADD_FAILURE() << c.what << " was read";
        } catch (const Error& error) {
            EXPECT_THAT(error.what(), HasSubstr(c.message)) << c.what;
        }
    }
}

TEST(ZipArchive, RefusesToUnpackABomb) {
    const std::string zeros(40u << 20, '\0');
    try {
        read_part(build_zip({{.name = "a", .content = zeros}}), "a");
        FAIL() << "a bomb was unpacked";
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::Limit) << error.what();
    }
}

TEST(ZipArchive, RefusesToUnpackTheSameBytesAgainAndAgain) {
    ZipArchive archive(foundation::files::memory_file(
        build_zip({{.name = "a", .content = std::string(512u << 10, '\0')}})));
    const auto read_again = [&] { return test::read_all(*archive.open(archive.entries()[0])); };
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(read_again().size(), 512u << 10);
    EXPECT_THROW(read_again(), Error);
}

TEST(ZipArchive, CutAnywhereEndsInAnError) {
    const std::string whole =
        build_zip({{.name = "a", .content = "some text"}, {.name = "b", .content = "more"}});
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_THROW(read_part(whole.substr(0, length), "a"), Error) << length;
}

TEST(OpcPackage, NamesFilesThatAreNoContainers) {
    std::string compound("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    compound.resize(100);
    struct Case {
        std::string bytes;
        const char* message;
    } const cases[] = {
        {"", "empty"},
        {"a,b,c\n1,2,3\n", "text file"},
        {compound, "compound file"},
        {std::string("\x7f\x45\x4c\x46\1\2\3\0\0", 9), "no directory"},
        {"PK", "truncated"},
    };
    for (const Case& c : cases) {
        try {
            OpcPackage package(foundation::files::memory_file(c.bytes));
            ADD_FAILURE() << c.message;
        } catch (const Error& error) {
            EXPECT_THAT(error.what(), HasSubstr(c.message));
        }
    }
}

} // namespace
} // namespace workbook
