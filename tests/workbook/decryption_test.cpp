// SPDX-License-Identifier: Apache-2.0
//
// Encrypted workbook streams. FILEPASS records and encrypted bytes were computed apart from this
// code, from the public descriptions of the schemes.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "foundation/files.h"
#include "workbook/cfb/compound_file.h"
#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/decryption.h"

namespace workbook {
namespace {

std::string from_hex(std::string_view digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
    return bytes;
}

const std::string kVerifiers = "101112131415161718191a1b1c1d1e1f";
const std::string kRc4 = "010001000100" + kVerifiers +
                         "9948c2016001bcd648a29580d7f784eba77c7b29dc7f83a72e245554a81ef0f7";
const std::string kCryptoApi40 =
    "0100020002000400000028000000040000000000000001680000048000000000000001000000000000000000000041"
    "00"
    "6e007900000010000000" +
    kVerifiers + "c6c0ba4116711b7fe33199dac5eff4bb14000000988ff8777547d3e964bd81bd44a9c7429baefa29";
const std::string kCryptoApi128 =
    "0100020002000400000028000000040000000000000001680000048000008000000001000000000000000000000041"
    "00"
    "6e007900000010000000" +
    kVerifiers + "14f56f76817521bd880c6bede13f652c14000000e4d4228c9b333e69a6cce49689adfc8bb5834f60";
const std::string kXor = "000059b30a9a";

constexpr std::size_t kBody = 1014; // of a record that two blocks share
constexpr std::string_view kText = "Some words in a record";

/// Records from byte 1000: BOF, which is clear, and one with a text.
std::string stream_with(std::string_view text) {
    std::string stream(1000, '\0');
    append_u16(stream, 0x809);
    append_u16(stream, 6);
    stream += "clear!";
    stream += std::string(kBody - 4 - stream.size(), '\0');
    append_u16(stream, 0x204);
    append_u16(stream, static_cast<std::uint16_t>(text.size()));
    return stream.append(text);
}

TEST(StreamEncryption, GivesTheBytesOfEachScheme) {
    const struct {
        std::string filepass, encrypted;
    } cases[] = {{kRc4, "049731ec245bdbbada1f9b5059c604f790c872a2b683"},
                 {kCryptoApi40, "9d3436cb4480b285d3ae2e6cb097540279cdf1ee3e72"},
                 {kCryptoApi128, "4432cdb174498e673651f71c811284a5d00adb1f1fa5"},
                 {kXor, "f28339a8838577ac928d014fd36dba64d6c2f8e9c9e7"},
                 {kXor.substr(4), "f28339a8838577ac928d014fd36dba64d6c2f8e9c9e7"}};
    for (const auto& [filepass, encrypted] : cases) {
        StreamEncryption encryption(from_hex(filepass));
        std::string stream = stream_with(from_hex(encrypted));
        const std::string before = stream;
        encryption.decrypt(stream, 1000);
        EXPECT_EQ(stream, stream_with(kText)) << filepass;
        encryption.encrypt(stream, 1000);
        EXPECT_EQ(stream, before) << filepass;
    }
}

TEST(StreamEncryption, LeavesThePlacesOfSheetsClear) {
    StreamEncryption encryption(from_hex(kRc4));
    std::string stream = from_hex("850008000102030405060708");
    encryption.encrypt(stream, 0);
    EXPECT_EQ(stream.substr(0, 8), from_hex("8500080001020304"));
    EXPECT_NE(stream.substr(8), from_hex("05060708"));
}

ErrorKind kind_of(std::string_view filepass, std::u16string_view password = kDefaultPassword) {
    try {
        StreamEncryption encryption(filepass, password);
    } catch (const Error& error) {
        EXPECT_NE(std::string_view(error.what())
                      .find(error.kind() == ErrorKind::Encrypted ? "encrypted" : "FILEPASS"),
                  std::string_view::npos);
        return error.kind();
    }
    ADD_FAILURE() << "accepted";
    return ErrorKind::Missing;
}

TEST(StreamEncryption, RefusesOtherPasswordsAndDamagedRecords) {
    for (const std::string& digits : {kRc4, kCryptoApi40, kCryptoApi128, kXor}) {
        const std::string filepass = from_hex(digits);
        for (const std::u16string_view password :
             {u"velvetSweatshop", u"", u"a much longer password"})
            EXPECT_EQ(kind_of(filepass, password), ErrorKind::Encrypted) << digits;
        for (std::size_t length = 0; length < filepass.size(); ++length) {
            if (length == 4 || length == 5) continue; // the old record, which has no scheme
            EXPECT_EQ(kind_of(filepass.substr(0, length)), ErrorKind::Damaged) << length;
        }
    }
    EXPECT_EQ(kind_of(from_hex("020001000100")), ErrorKind::Encrypted);
    EXPECT_EQ(kind_of(from_hex("010009000900")), ErrorKind::Encrypted);
    std::string other_hash = from_hex(kCryptoApi40);
    other_hash[26] = 1;
    EXPECT_EQ(kind_of(other_hash), ErrorKind::Encrypted);
}

TEST(WorkbookStream, OfRealBooksIsDecryptedAndEncryptedAgain) {
    const std::string folder = ZX_SHARED_DATA "/corpus/dev/";
    if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no corpus";
    const struct {
        const char* file;
        const char16_t* stream;
        std::string_view clear; ///< part of a sheet's name, null when it cannot be opened
    } cases[] = {{"calamine__issue_385__e7b4a9.xls", u"Workbook", "Sheet1"},
                 {"phpspreadsheet__pwtest__f0822c.xls", u"Workbook", "Sheet1"},
                 {"poi__60284__2f96eb.xls", u"Book", "Value T Pads"},
                 {"npoi__97_password__e45be0.xls", u"Workbook", {}},
                 {"test_files__password_2002_40_dhsc__c74513.xls", u"Workbook", {}}};
    for (const auto& [file, name, clear] : cases) {
        CompoundFile book(
            foundation::files::open_for_reading(std::filesystem::path(folder + file).u16string()));
        const std::string before = book.read_stream(*book.find_stream(name));
        std::string stream = before;
        if (clear.empty()) {
            EXPECT_THROW(decrypt_workbook_stream(stream), Error) << file;
            continue;
        }
        auto encryption = decrypt_workbook_stream(stream);
        ASSERT_TRUE(encryption) << file;
        EXPECT_EQ(before.find(clear), std::string::npos) << file;
        EXPECT_NE(stream.find(clear), std::string::npos) << file;
        encrypt_workbook_stream(stream, *encryption);
        EXPECT_EQ(stream, before) << file;
    }
}

} // namespace
} // namespace workbook
