// SPDX-License-Identifier: Apache-2.0
//
// What a saved package has, and what a save notices. What every engine's save does is in
// contract_test.cpp.
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "foundation/files.h"
#include "foundation/output_file.h"
#include "tests/workbook/scratch_folder.h"
#include "tests/workbook/xls_stream.h"
#include "workbook/library.h"
#include "workbook/opc/opc_package.h"

namespace workbook {
namespace {

namespace files = foundation::files;
using test::ScratchFolder;

TEST(SavedBook, ClaimsToBeWhatItsNameSays) {
    const ScratchFolder folder;
    for (const char* name : {"a.xlsx", "a.xlsm", "a.xltx", "a.XLTM"}) {
        const std::unique_ptr<Book> book = xlCreateXMLBookW();
        EXPECT_FALSE(book->save(folder.file(name))) << "a book without a sheet";
        ASSERT_NE(book->insert_sheet(0, u"S", nullptr), nullptr);
        ASSERT_TRUE(book->save(folder.file(name))) << book->error_message();
        const std::unique_ptr<Book> saved = xlCreateXMLBookW();
        EXPECT_TRUE(saved->load(folder.file(name))) << saved->error_message();
        EXPECT_EQ(saved->sheet_count(), 1);
    }
}

TEST(SavedBook, HasNoPartThatOnlyAnEarlierSaveNeeded) {
    const ScratchFolder folder;
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    ASSERT_NE(book->insert_sheet(0, u"Stays", nullptr), nullptr);
    Sheet* goes = book->insert_sheet(1, u"Goes", nullptr);
    ASSERT_TRUE(goes->write_str(0, 0, u"shared", nullptr));
    ASSERT_TRUE(book->save(folder.file("full.xlsx")));
    ASSERT_TRUE(book->delete_sheet(1));
    ASSERT_TRUE(book->save(folder.file("again.xlsx")));
    OpcPackage package(files::open_for_reading(folder.file("again.xlsx")));
    for (const Relationship& relationship : package.relationships("xl/workbook.xml"))
        EXPECT_TRUE(package.has_part(relationship.target)) << relationship.target;
    EXPECT_EQ(package.content_types().find_part(
                  [](std::string_view type) { return type.find("sharedstrings") != type.npos; }),
              "");
}

TEST(SavedBook, HasTheFormatsOfASheetAddedToNames) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xlsx");
    std::unique_ptr<Book> book = xlCreateXMLBookW();
    Sheet* sheet = book->insert_sheet(0, u"One", nullptr);
    for (const int identifier : {14, 9}) {
        Format* format = book->add_format();
        format->set_num_format(identifier);
        ASSERT_TRUE(sheet->write_num(0, 0, 1.0, format));
    }
    ASSERT_TRUE(book->save(path));
    ASSERT_TRUE(book->load_info(path));
    EXPECT_EQ(book->format_size(), 3);
    Sheet* added = book->insert_sheet(1, u"Two", nullptr);
    ASSERT_NE(added, nullptr) << book->error_message();
    Format* date = book->add_format();
    date->set_num_format(22);
    ASSERT_TRUE(added->write_num(0, 0, 45'000.0, date));
    ASSERT_TRUE(book->save(path)) << book->error_message();
    ASSERT_TRUE(book->load(path));
    EXPECT_EQ(book->get_sheet(0)->cell_format(0, 0)->num_format(), 9);
    EXPECT_EQ(book->get_sheet(1)->cell_format(0, 0)->num_format(), 22);
    EXPECT_EQ(book->get_sheet(1)->read_num(0, 0), 45'000.0);
}

TEST(FailedSave, NoticesThatTheFileWasChangedSinceItWasLoaded) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xlsx");
    const std::unique_ptr<Book> book = xlCreateXMLBookW();
    Sheet* sheet = book->insert_sheet(0, u"One", nullptr);
    ASSERT_TRUE(sheet->write_num(0, 0, 1.0, nullptr));
    ASSERT_TRUE(book->save(path));
    const std::unique_ptr<Book> loaded = xlCreateXMLBookW();
    ASSERT_TRUE(loaded->load(path));
    { // in place, as a careless copy does; the loaded book would copy parts from wrong places
        std::fstream file(files::native_path(path),
                          std::ios::in | std::ios::out | std::ios::binary);
        file << std::string(2000, 'x');
    }
    std::filesystem::resize_file(files::native_path(path), 2000);
    EXPECT_FALSE(loaded->save(folder.file("c.xlsx")));
    EXPECT_NE(std::string(loaded->error_message()).find("changed"), std::string::npos)
        << loaded->error_message();
    EXPECT_EQ(folder.file_count(), 1u);
}

TEST(FailedSave, NoticesThatACellOfAnXlsFileWasChanged) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xls");
    const auto put = [&](const std::string& bytes) {
        std::ofstream(files::native_path(path), std::ios::binary) << bytes;
    };
    const auto biff2 = [](double value) {
        return test::Stream()
            .record(0x0009, test::Bytes().u16(2).u16(0x10))
            .record(0x0003, test::Bytes().u16(0).u16(0).u8(0).u16(0).f64(value))
            .eof()
            .str();
    };
    const auto biff8 = [](double value) {
        const std::unique_ptr<Book> book = xlCreateBookW();
        book->insert_sheet(0, u"One", nullptr)->write_num(0, 0, value, nullptr);
        std::string bytes;
        EXPECT_TRUE(book->save(*files::memory_output(bytes), u""));
        return bytes;
    };
    for (const auto& made :
         {std::function<std::string(double)>(biff2), std::function<std::string(double)>(biff8)}) {
        put(made(1.1));
        const std::unique_ptr<Book> book = xlCreateBookW();
        ASSERT_TRUE(book->load(path));
        put(made(2.2));
        ASSERT_TRUE(book->get_sheet(0)->write_num(0, 1, 5.0, nullptr));
        EXPECT_FALSE(book->save(path));
        EXPECT_NE(std::string(book->error_message()).find("changed"), std::string::npos);
        put(made(1.1));
        ASSERT_TRUE(book->save(path)) << book->error_message();
        ASSERT_TRUE(book->save(path)) << book->error_message();
        put(made(1.1)); // what was loaded, not what was saved
        EXPECT_FALSE(book->save(path));
    }
}

TEST(SavedBook, HasChangesThatWereTakenBackAfterASave) {
    const ScratchFolder folder;
    const std::u16string path = folder.file("b.xls");
    const std::unique_ptr<Book> book = xlCreateBookW();
    book->insert_sheet(0, u"One", nullptr);
    ASSERT_TRUE(book->save(path));
    ASSERT_TRUE(book->load(path));
    for (const char16_t* name : {u"Two", u"One"}) {
        ASSERT_TRUE(book->get_sheet(0)->set_name(name));
        ASSERT_TRUE(book->save(path)) << book->error_message();
        const std::unique_ptr<Book> saved = xlCreateBookW();
        ASSERT_TRUE(saved->load(path));
        EXPECT_EQ(saved->get_sheet_name(0), name);
    }
}

} // namespace
} // namespace workbook
