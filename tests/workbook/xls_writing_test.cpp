// SPDX-License-Identifier: Apache-2.0
//
// Records that a save writes, in hexadecimal digits, for records and changes given the same way.
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/output_file.h"
#include "foundation/unicode.h"
#include "tests/workbook/xls_image.h"
#include "tests/workbook/xls_stream.h"
#include "workbook/cells/string_set.h"
#include "workbook/library.h"
#include "workbook/xls/record_stream.h"
#include "workbook/xls/writing/cell_record_writer.h"
#include "workbook/xls/writing/format_records_writer.h"
#include "workbook/xls/writing/formula_records.h"
#include "workbook/xls/writing/globals_rewriter.h"
#include "workbook/xls/writing/shared_strings_writer.h"
#include "workbook/xls/writing/sheet_copy.h"
#include "workbook/xls/writing/sheet_references.h"

namespace workbook::test {
namespace {

namespace files = foundation::files;

std::string bytes_of(std::string_view digits) {
    std::string bytes, pair;
    for (const char c : digits) {
        if (c == ' ') continue;
        pair += c;
        if (pair.size() < 2) continue;
        bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
        pair.clear();
    }
    return bytes;
}

std::string digits_of(std::string_view bytes) {
    std::string digits;
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        digits += {"0123456789abcdef"[value >> 4], "0123456789abcdef"[value & 15]};
    }
    return digits;
}

/// Records "NUMBER data" with a comma between them.
Stream records_of(std::string_view text) {
    Stream stream;
    while (!text.empty()) {
        const std::string_view one = text.substr(0, text.find(','));
        const std::string bytes = bytes_of(one);
        stream.record(load_u16(bytes.data()), std::string_view(bytes).substr(2));
        text.remove_prefix(std::min(text.size(), one.size() + 1));
    }
    return stream;
}

std::string text_of(std::string_view stream, std::size_t position, const std::set<unsigned>& ids) {
    std::string text;
    RecordStream records(stream, position);
    while (records.next()) {
        const Record& record = records.record();
        if (!ids.contains(record.id)) continue;
        if (!text.empty()) text += ", ";
        std::string number;
        append_u16(number, record.id);
        text += digits_of(number) + " " + digits_of(record.data);
    }
    return text;
}

std::string saved(Book& book) {
    std::string bytes;
    EXPECT_TRUE(book.save(*files::memory_output(bytes), u"xls")) << book.error_message();
    return bytes;
}

/// Formats 0 to 15.
Stream formats() {
    Stream stream;
    for (int i = 0; i < 16; ++i)
        stream.record(0xE0, std::string(20, '\0'));
    return stream;
}

const std::set<unsigned> kCells{0x06,   0xBD,   0xBE,   0xFD,   0x0201, 0x0203, 0x0204,
                                0x0205, 0x0207, 0x0221, 0x0236, 0x027E, 0x04BC};

constexpr const char* kResult = "0000000000000840 0000 00000000 "; // 3
constexpr const char* kText = "000000000000ffff 0000 00000000 ";

TEST(SaveXls, WritesWhatStaysBesideChangedCells) {
    const std::string result = kResult, text = kText;
    // Cells A1 and A2 share A1's formula; B1:B2 show one array, as C1:C2 show a data table.
    const std::string array_tokens = "25 0000 0100 03c0 03c0";
    const auto member = [&](const char* place, const char* leads_to, const std::string& value) {
        return std::string("0600 ") + place + " 0000 " + value + "0500 " + leads_to;
    };
    const std::string shared = member("0000 0000", "01 0000 0000", result) +
                               ",bc04 0000 0100 00 00 00 02 0500 4c 0100 00c0," +
                               member("0100 0000", "01 0000 0000", text) + ",0702 0100 00 61";
    const std::string array = member("0000 0100", "01 0000 0100", result) +
                              ",2102 0000 0100 01 01 0000 00000000 0900 " + array_tokens + "," +
                              member("0100 0100", "01 0000 0100", text) + ",0702 0100 00 61";
    std::string volatile_array = array;
    volatile_array.replace(volatile_array.find("0900 25"), 7, "0d00 19010000 25");
    const std::string table = member("0000 0200", "02 0000 0200", result) +
                              ",3602 0000 0100 02 02 0000 000000000000 0000," +
                              member("0100 0200", "02 0000 0200", text) + ",0702 0100 00 61";
    const struct {
        std::string before;
        int row, column; ///< that a small number is written to
        std::string after;
    } cases[] = {
        // The formula goes on without its first cell: A2's own is A3.
        {shared, 0, 0,
         "7e02 0000 0000 0f00 16000000, 0600 0100 0000 0000 " + text +
             "0500 44 0200 00c0, 0702 0100 00 61"},
        {shared, 1, 0, // the other cell is not needed
         member("0000 0000", "01 0000 0000", result) +
             ", bc04 0000 0100 00 00 00 02 0500 4c 0100 00c0, 7e02 0100 0000 0f00 16000000"},
        // The second item: INDEX(D1:D2, 1 + 1 * (ROWS(D1:D2) > 1), 1).
        {array, 0, 1,
         "7e02 0000 0100 0f00 16000000, " + member("0100 0100", "01 0100 0100", text) +
             ", 2102 0100 0100 01 01 0000 00000000 2900 " + array_tokens + " 1e0100 1e0100 " +
             array_tokens + " 61 4c00 1e0100 0d 15 05 03 1e0100 62 03 1d00, 0702 0100 00 61"},
        {array, 1, 1,
         member("0000 0100", "01 0000 0100", result) +
             ", 2102 0000 0000 01 01 0000 00000000 1300 " + array_tokens +
             " 1e0100 1e0100 62 03 1d00, 7e02 0100 0100 0f00 16000000"},
        {volatile_array, 1, 1, // said once
         member("0000 0100", "01 0000 0100", result) +
             ", 2102 0000 0000 01 01 0000 00000000 1700 19010000" + array_tokens +
             " 1e0100 1e0100 62 03 1d00, 7e02 0100 0100 0f00 16000000"},
        {volatile_array, 0, 1,
         "7e02 0000 0100 0f00 16000000, " + member("0100 0100", "01 0100 0100", text) +
             ", 2102 0100 0100 01 01 0000 00000000 2d00 19010000" + array_tokens +
             " 1e0100 1e0100 " + array_tokens +
             " 61 4c00 1e0100 0d 15 05 03 1e0100 62 03 1d00, 0702 0100 00 61"},
        {table, 0, 2, "7e02 0000 0200 0f00 16000000, 0402 0100 0200 0000 0100 00 61"},
        {table, 1, 2, "0302 0000 0200 0000 0000000000000840, 7e02 0100 0200 0f00 16000000"},
        // Records of several cells.
        {"bd00 0000 0000 0100 06000000 0200 0a000000 0300 0e000000 0200", 0, 1,
         "7e02 0000 0000 0100 06000000, 7e02 0000 0100 0f00 16000000, "
         "7e02 0000 0200 0300 0e000000"},
        {"be00 0000 0000 0100 0200 0100", 0, 0,
         "7e02 0000 0000 0f00 16000000, 0102 0000 0100 0200"},
        {"be00 0000 0000 0100 0200 0300 0200,0302 0000 0100 0000 0000000000000840", 0, 1,
         "0102 0000 0000 0100, 7e02 0000 0100 0f00 16000000, 0102 0000 0200 0300"},
    };
    for (const auto& [before, row, column, after] : cases) {
        SCOPED_TRACE(before);
        const auto book = xlCreateBookW();
        const Stream globals = formats().append(records_of("c101 c1010000 00000001"));
        ASSERT_TRUE(book->load(book8(globals, records_of(before)).file())) << book->error_message();
        ASSERT_TRUE(book->get_sheet(0)->write_num(row, column, 5, nullptr));
        std::string expected;
        for (const char c : after)
            if (c != ' ') expected += c;
        const std::string stream = saved(*book);
        std::string found;
        for (const char c : text_of(stream, 0, kCells))
            if (c != ' ') found += c;
        EXPECT_EQ(found, expected);
        EXPECT_EQ(text_of(stream, 0, {0x01C1}), "c101 c101000000000000"); // to be computed again
    }
}

TEST(SaveXls, WritesByteStringsOrRefuses) {
    Stream stream;
    stream.record(0x0009, Bytes().u16(2).u16(0x10)); // BIFF2
    stream.record(0x42, Bytes().u16(1252)).record(0x04, cell(0, 0).u8(0).u8(1).text("a")).eof();
    const auto book = xlCreateBookW();
    ASSERT_TRUE(book->load(stream.file()));
    Sheet& sheet = *book->get_sheet(0);
    ASSERT_TRUE(sheet.write_str(0, 0, u"é€", nullptr));
    EXPECT_NE(saved(*book).find("\x02\xE9\x80"), std::string::npos);
    for (const std::u16string& text : {std::u16string(u"漢"), std::u16string(256, u'x')}) {
        ASSERT_TRUE(sheet.write_str(0, 0, text, nullptr));
        std::string bytes;
        EXPECT_FALSE(book->save(*files::memory_output(bytes), u"xls"));
        EXPECT_NE(std::string(book->error_message()).find("save it as XLSX"), std::string::npos);
        EXPECT_EQ(bytes, "");
    }
}

TEST(RkNumber, KeepsTwentyBitsOfTheFraction) {
    EXPECT_EQ(rk_number(1 + 0x1p-18), 0x3FF00004u);
    EXPECT_FALSE(rk_number(1 + 0x1p-19));
    EXPECT_FALSE(rk_number(1 + 0x1p-20));
}

TEST(SaveXls, RefusesMoreFormatsThanApplicationsOpen) {
    const auto book = xlCreateBookW();
    Sheet* const sheet = book->insert_sheet(0, u"Data", nullptr);
    const auto use = [&] {
        Format* const format = book->add_format();
        return format != nullptr && sheet->write_num(0, 0, 1, format);
    };
    std::string bytes;
    while (book->format_size() < 4050)
        ASSERT_TRUE(use());
    EXPECT_TRUE(book->save(*files::memory_output(bytes), u"xls")) << book->error_message();
    ASSERT_TRUE(use());
    EXPECT_FALSE(book->save(*files::memory_output(bytes), u"xls"));
}

TEST(UpdateFormatChecksum, AgreesWithApplications) {
    const std::filesystem::path path(ZX_SHARED_DATA "/corpus/dev/libxls__types__fe531b.xls");
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "no collection";
    std::ifstream in(path, std::ios::binary);
    const std::string stream = stream_of({std::istreambuf_iterator<char>(in), {}});
    RecordStream records(stream, 0);
    while (records.next() && records.record().id != 0x087C) {
    }
    ASSERT_EQ(records.record().id, 0x087C);
    std::string updated = stream;
    updated[records.record().position + 4 + 16] ^= 1;
    update_format_checksum(updated, records.record().position);
    EXPECT_EQ(updated, stream);
}

/// The strings of a table whose pieces are joined by a reader of its own, and where each begins.
std::map<std::size_t, std::u16string> strings_in(std::string_view stream) {
    std::map<std::size_t, std::u16string> strings;
    RecordStream records(stream, 0);
    records.next();
    std::size_t at = records.record().position + 12, end = 4 + records.record().size();
    const auto byte = [&] { return static_cast<unsigned char>(stream[at++]); };
    for (std::uint32_t left = load_u32(&stream[8]); left > 0; --left) {
        if (at == end) {
            records.next();
            at += 4;
            end = at + records.record().size();
        }
        std::u16string& text = strings[at];
        unsigned units = byte();
        units |= static_cast<unsigned>(byte()) << 8;
        for (bool is_wide = byte() != 0; units > 0; --units) {
            if (at == end) {
                records.next();
                at += 4;
                end = at + records.record().size();
                is_wide = byte() != 0;
            }
            const unsigned low = byte();
            text += static_cast<char16_t>(is_wide ? low | byte() << 8 : low);
        }
        EXPECT_LE(at, end);
    }
    return strings;
}

TEST(WriteSharedStrings, CutsThemAtRecordsAndSaysWhereTheyAre) {
    const auto text = [](unsigned i) {
        return std::u16string((i * 37) % 300, i % 3 == 0 ? u'\u6F22' : u'a') +
               foundation::unicode::to_utf16(std::to_string(i));
    };
    std::string old;
    for (const unsigned first : {0u, 1000u}) { // a new table, then one with more strings
        StringSet added;
        std::string out;
        for (unsigned i = first; i < first + 1000; ++i)
            added.add(foundation::unicode::to_utf8(text(i)));
        write_shared_strings(old, first == 0 ? std::nullopt : std::optional<std::size_t>(0),
                             added.pool(), 3, out);
        EXPECT_EQ(load_u32(&out[4]), first == 0 ? 3u : 6u); // uses
        const auto strings = strings_in(out);
        ASSERT_EQ(strings.size(), first + 1000);
        std::vector<std::size_t> places;
        for (const auto& [place, found] : strings) {
            EXPECT_EQ(found, text(static_cast<unsigned>(places.size())));
            places.push_back(place);
        }
        std::map<std::size_t, std::size_t> begins; ///< of records
        RecordStream records(out, 0);
        while (records.next() && records.record().id != 0xFF)
            begins[records.record().position] = records.record().size();
        ASSERT_EQ(records.record().id, 0xFF);
        const std::size_t each = records.record().u16(0);
        EXPECT_EQ((records.record().size() - 2) / 8, (strings.size() + each - 1) / each);
        for (std::size_t at = 2, i = 0; at < records.record().size(); at += 8, i += each) {
            const std::size_t place = records.record().u32(at);
            EXPECT_EQ(place, places[i]);
            EXPECT_EQ(place - records.record().u16(at + 4),
                      std::prev(begins.upper_bound(place))->first);
        }
        old = out;
    }
}

TEST(SheetReferences, ContinueALongTableOfLinks) {
    Stream globals;
    globals.bof8(0x05).record(0x01AE, Bytes().u16(3).u16(0x0401));
    Bytes first, second;
    first.u16(3000);
    for (unsigned i = 0; i < 3000; ++i)
        (i < 1370 ? first : second).u16(0).u16(i == 1999 ? 3 : i % 3).u16(i % 4 == 3 ? 3 : i % 3);
    globals.record(0x17, first).record(0x3C, second).eof();
    const std::vector<PlannedSheet> sheets = {{u"c", SheetState::Visible, 2, {}},
                                              {u"a", SheetState::Visible, 0, {}},
                                              {u"copy", SheetState::Visible, {}, 0},
                                              {u"new", SheetState::Visible, {}, {}}};
    SheetReferences references(globals.str(), sheets, 3);
    std::string out;
    RecordStream records(globals.str(), 0);
    while (records.next()) {
        references.before(records.record(), out);
        const std::size_t at = out.size();
        out += globals.str().substr(records.record().position, 4 + records.record().size());
        references.adjust(records.record(), at, out);
    }
    EXPECT_EQ(text_of(out, 0, {0x01AE}), "ae01 04000104");
    std::string links;
    RecordStream written(out, 0);
    while (written.next())
        if (written.record().id == 0x17 || written.record().id == 0x3C) {
            EXPECT_EQ(links.empty(), written.record().id == 0x17);
            EXPECT_EQ((written.record().size() - (links.empty() ? 2 : 0)) % 6, 0u);
            links += written.record().data;
        }
    ASSERT_EQ(load_u16(links.data()), 3001);
    const auto link = [&](std::size_t i) { return digits_of(links.substr(2 + 6 * i, 6)); };
    EXPECT_EQ(link(0), "000001000100");
    EXPECT_EQ(link(1), "0000ffffffff");
    EXPECT_EQ(link(2), "000000000000");
    EXPECT_EQ(link(1999), "0000ffffffff"); // of a sheet that never was
    EXPECT_EQ(link(3000), "000002000200");
    EXPECT_EQ(references.changes_for_copy(2).extern_sheet(1998), 3000); // 1998 is of sheet 0
    EXPECT_EQ(references.changes_for_copy(2).extern_sheet(1999), 1999);
}

TEST(SheetNameChanges, FollowRenamedSheets) {
    SheetNameChanges changes;
    changes.set(u"Old", u"It's");
    changes.set(u"my sheet", u"Summary2");
    changes.set(u"A1", u"B12");
    const std::pair<const char16_t*, const char16_t*> places[] = {
        {u"old!A1", u"'It''s'!A1"},
        {u"'My sheet'!B2:C3", u"Summary2!B2:C3"},
        {u"'A1'!A1", u"'B12'!A1"},
        {u"Other!A1", u""},
        {u"Old", u""},
        {u"'Old!A1", u""},
    };
    for (const auto& [before, after] : places)
        EXPECT_EQ(renamed_place(before, changes), after);
    const auto changed = [&](std::uint16_t id, const std::string& digits) {
        std::string data = bytes_of(digits);
        const bool is_changed = changes.apply(id, data);
        EXPECT_EQ(is_changed, data != bytes_of(digits));
        return digits_of(data);
    };
    changes.set(u"A", u"\u6F22");
    const std::string source = "000009000003";
    EXPECT_EQ(changed(0x51, source + "0400 00 024f6c64 00"), source + "0500"
                                                                      "00"
                                                                      "0249742773"
                                                                      "00");
    EXPECT_EQ(changed(0x51, source + "0200 00 0241 00"), source + "0200"
                                                                  "01"
                                                                  "0200226f"
                                                                  "0000");
    EXPECT_EQ(changed(0x51, source + "0200 00 0141"), source + "0200000141"); // another book
    EXPECT_EQ(changed(0x52, "0100 00 4e 0200 01 02004100 0000"), "0100004e0200010200226f0000");
    changed(0x51, source + "ff00 00 02"); // cut
    // A display text and a frame before the place; a moniker in front means another document.
    const std::string head(48, '0');
    const std::string strings = "02000000 7800 0000 02000000 7900 0000 03000000 4100 2100 0000";
    EXPECT_EQ(changed(0x01B8, head + "02000000 98000000" + strings).substr(64 + 16),
              "02000000"
              "79000000"
              "05000000"
              "2700226f270021000000");
    const std::string elsewhere = head + "02000000 99000000" + strings;
    EXPECT_EQ(changed(0x01B8, elsewhere), digits_of(bytes_of(elsewhere)));
}

TEST(RewriteFormulas, FindsThemInEveryRecord) {
    biff::TokenChanges changes;
    changes.extern_sheet = [](std::uint16_t) { return std::optional<std::uint16_t>(3); };
    const std::string reference = "5a 0000 05000200",
                      object = "0e00 0700 00000000" + reference + "00";
    const std::pair<std::uint16_t, std::string> records[] = {
        {0x06, "0000 0000 0000 0000000000000840 0000 00000000 0700" + reference},
        {0x04BC, "0000 0100 00 00 00 02 0700" + reference},
        {0x0221, "0000 0100 00 00 0000 00000000 0700" + reference},
        {0x1051, "01 02 0000 0000 0700" + reference},
        {0x01B1, "01 01 0700 0700 ffffffff" + reference + reference},
        {0x087A,
         std::string(24, '0') + "01 01 0700 0000 00000000 0000" + reference + "0700" + reference},
        {0x087A, std::string(24, '0') + "01 01 0000 0700 02000000 ffff" + reference + "0000"},
        {0x01BE, "00000000 0100 00 61 0100 01 6100 0100 00 00 0100 00 00 0700 0000" + reference +
                     "0700 0000" + reference + "0000"},
        {0x01B6, "1202 0000 000000000000 0000 0000 0000" + object},
        {0x5D, "1500 1200 0b00 0100" + std::string(28, '0') + "0400" + object + "1400" + object +
                   "1300 ee1f" + object + "0000"},
    };
    for (const auto& [id, digits] : records) {
        std::string data = bytes_of(digits), expected = digits_of(data);
        for (std::size_t at = expected.find("5a0000"); at != expected.npos;
             at = expected.find("5a0000", at))
            expected.replace(at, 6, "5a0300");
        rewrite_formulas(id, data, changes);
        EXPECT_EQ(digits_of(data), expected);
        for (std::size_t size = 0; size < data.size(); ++size) { // cut ones stay in bounds
            std::string cut = data.substr(0, size);
            rewrite_formulas(id, cut, changes);
            EXPECT_EQ(cut.size(), size);
        }
    }
}

TEST(CopiedSheet, LeavesOutWhatABookHasOnce) {
    const Stream sheet =
        records_of("0908 0006100000000000000000000000000000000000, ba01 0000, ed00 00, 6608 00,"
                   "aa01 00, 1d00 01, ab01 00, 7108 00, 7208 00, 7e08 00, 1d00 02, 3e02 b606,"
                   "5d00 1500 1200 08000100 1160000000000000000000000000 0800 0200 1301 0900 0400 "
                   "00000000 00000000,"
                   "0a00 ");
    DrawingGroup none{std::string()};
    const std::string copy = copied_sheet(sheet.str(), 0, {}, {}, none);
    EXPECT_EQ(
        text_of(copy, 4,
                {0xBA, 0x1BA, 0xED, 0x866, 0x1AA, 0x1D, 0x1AB, 0x871, 0x872, 0x87E, 0x23E, 0x5D}),
        "1d00 02, 3e02 b600, 5d00 "
        "1500120008000100116000000000000000000000000008000200010100000000");
}

} // namespace
} // namespace workbook::test
