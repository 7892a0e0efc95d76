// SPDX-License-Identifier: Apache-2.0
//
// Packages that differ from another in some parts; the file that a package was read from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "tests/workbook/zip_builder.h"
#include "workbook/error.h"
#include "workbook/opc/package_writer.h"

namespace workbook {
namespace {

using foundation::files::memory_file;
using test::build_zip;
using test::ZipItem;
using ::testing::ElementsAre;

constexpr const char* kTypes = "<Types/>";

PartChange change(const std::string& part, const std::string& text) {
    return {part, [text](ByteSink& out) { out.append(text); }};
}

std::vector<std::string> listing(const std::string& bytes) {
    ZipArchive archive(memory_file(bytes));
    std::vector<std::string> lines;
    for (const ZipEntry& entry : archive.entries())
        lines.push_back(entry.name + ": " + test::read_all(*archive.open(entry)));
    return lines;
}

TEST(WritePackage, KeepsOrderAndSpellingOfThePartsItReplaces) {
    OpcPackage source(memory_file(build_zip({
        {.name = "[Content_Types].xml", .content = kTypes},
        {.name = "XL\\Workbook.xml", .content = "old"},
        {.name = "xl/", .content = "", .stored = true},
        {.name = "xl/twice.xml", .content = "one"},
        {.name = "xl/Twice.xml", .content = "two"},
        {.name = "/xl/gone.xml", .content = "gone"},
        {.name = "xl/GONE.xml", .content = "gone too"},
        {.name = "xl/kept.xml", .content = "kept"},
        {.name = "xl/Kept.xml", .content = "kept too"},
    })));
    PackageChanges changes;
    changes.written = {change("xl/new2.xml", "n2"), change("xl/twice.xml", "both"),
                       change("xl/workbook.xml", "new"), change("xl/new1.xml", "n1")};
    changes.dropped = {"xl/gone.xml", "xl/none.xml"};
    std::string bytes;
    const PackageCounts counts =
        write_package(source, changes, *foundation::files::memory_output(bytes));
    EXPECT_THAT(listing(bytes),
                ElementsAre("[Content_Types].xml: <Types/>", "XL\\Workbook.xml: new",
                            "xl/: ", "xl/twice.xml: both", "xl/kept.xml: kept",
                            "xl/Kept.xml: kept too", "xl/new2.xml: n2", "xl/new1.xml: n1"));
    EXPECT_EQ(counts.copied, 4u);
    EXPECT_EQ(counts.written, 4u);
    EXPECT_EQ(counts.dropped, 2u);
}

TEST(WritePackage, RefusesEntriesThatShareTheirBytes) {
    // Two entries of one name and place: the directory's second header is made to point at the
    // first one's data.
    std::string bytes =
        build_zip({{.name = "a", .content = std::string(5000, 'x'), .stored = true},
                   {.name = "b", .content = std::string(5000, 'x'), .stored = true}});
    const std::size_t second = bytes.rfind("PK\x01\x02");
    bytes.replace(second + 42, 4, std::string(4, '\0'));
    const std::size_t local = bytes.find("PK\x03\x04", 1);
    const std::size_t directory = bytes.find("PK\x01\x02");
    const std::size_t removed = directory - local;
    bytes.erase(local, removed);
    std::string& end = bytes;
    const std::size_t end_record = end.rfind("PK\x05\x06");
    const std::size_t position = directory - removed;
    for (int i = 0; i < 4; ++i)
        end[end_record + 16 + static_cast<std::size_t>(i)] =
            static_cast<char>(position >> (8 * i) & 0xFF);
    OpcPackage source(memory_file(bytes));
    std::string copy;
    EXPECT_THROW(write_package(source, {}, *foundation::files::memory_output(copy)), Error);
}

/// A file whose bytes change behind the reader's back; `bytes` must outlive it.
class ChangingFile final : public foundation::files::RandomAccessFile {
  public:
    explicit ChangingFile(const std::string& bytes) : bytes_(bytes), size_(bytes.size()) {}
    std::uint64_t size() const override { return size_; }
    std::size_t read_at(std::uint64_t position, char* buffer, std::size_t count) override {
        if (position >= bytes_.size()) return 0;
        return bytes_.copy(buffer, count, static_cast<std::size_t>(position));
    }

  private:
    const std::string& bytes_;
    std::uint64_t size_;
};

TEST(OpcPackage, NoticesThatItsFileHasChanged) {
    const std::vector<ZipItem> items = {{.name = "[Content_Types].xml", .content = kTypes},
                                        {.name = "a", .content = "one"}};
    const std::string before = build_zip(items);
    const struct {
        const char* what;
        std::string bytes;
        bool same;
    } cases[] = {
        {"the same", before, true},
        {"longer", before + "x", false},
        {"cut", before.substr(0, before.size() - 30), false},
        {"empty", "", false},
        {"another part", build_zip({items[0], {.name = "a", .content = "two"}}), false},
        {"no container", std::string(before.size(), 'x'), false},
    };
    for (const auto& c : cases) {
        std::string bytes = before;
        OpcPackage package(std::make_unique<ChangingFile>(bytes));
        bytes = c.bytes;
        const auto verify = [&] { package.verify_unchanged(); };
        const auto reopen = [&] {
            package.close_file();
            package.reopen(memory_file(c.bytes));
        };
        if (c.same) {
            EXPECT_NO_THROW(verify()) << c.what;
            EXPECT_NO_THROW(reopen()) << c.what;
            EXPECT_EQ(test::read_all(*package.open_part("a")), "one");
        } else {
            EXPECT_THROW(verify(), Error) << c.what;
            EXPECT_THROW(reopen(), Error) << c.what;
            EXPECT_THROW(package.open_part("a"), Error) << "there is no file any more";
        }
    }
}

} // namespace
} // namespace workbook
