// SPDX-License-Identifier: Apache-2.0
//
// The small pieces that cells are made of: the store, dates, escapes, numbers, shared strings.
#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "workbook/cells/cell_store.h"
#include "workbook/xlsx/reading/decimal_number.h"
#include "workbook/xlsx/reading/escaped_text.h"
#include "workbook/xlsx/reading/iso_date.h"
#include "workbook/xlsx/reading/shared_strings.h"
#include "workbook/xlsx/xlsx_limits.h"

namespace workbook::test {
namespace {

void put(CellStore& store, int row, std::initializer_list<int> columns, bool blank = false) {
    store.begin_row(row);
    for (int column : columns) {
        StoredCell& cell = *store.next_cell();
        cell.value.number = row * 100 + column;
        cell.column = static_cast<std::uint32_t>(column);
        cell.format = 0;
        cell.kind = static_cast<std::uint32_t>(blank ? StoredKind::Blank : StoredKind::Number);
        store.keep_cell();
    }
    store.end_row();
}

TEST(CellStore, FindsCellsAmongGaps) {
    CellStore store(kMaxColumns);
    put(store, 2, {0, 1, 2, 5, 9});
    put(store, 3, {4});
    put(store, 700'000, {16'383});
    store.finish();
    for (int column : {0, 1, 2, 5, 9}) {
        const StoredCell* cell = store.find(2, column);
        ASSERT_NE(cell, nullptr) << column;
        EXPECT_EQ(cell->value.number, 200 + column);
    }
    EXPECT_NE(store.find(700'000, 16'383), nullptr);
    for (auto [row, column] : {std::pair{2, 3},
                               {2, 10},
                               {2, -1},
                               {-1, 0},
                               {1, 0},
                               {3, 3},
                               {3, 5},
                               {4, 4},
                               {700'000, 0},
                               {700'001, 16'383}})
        EXPECT_EQ(store.find(row, column), nullptr) << row << ' ' << column;
}

TEST(CellStore, KeepsBoundsOfAllAndOfFilledCells) {
    CellStore store(kMaxColumns);
    EXPECT_EQ(store.bounds().end_row, 0);
    put(store, 1, {7, 8}, true);
    put(store, 4, {3, 5});
    put(store, 9, {0}, true);
    store.finish();
    EXPECT_EQ(store.bounds().first_row, 1);
    EXPECT_EQ(store.bounds().end_row, 10);
    EXPECT_EQ(store.bounds().first_column, 0);
    EXPECT_EQ(store.bounds().end_column, 9);
    EXPECT_EQ(store.filled_bounds().first_row, 4);
    EXPECT_EQ(store.filled_bounds().end_row, 5);
    EXPECT_EQ(store.filled_bounds().first_column, 3);
    EXPECT_EQ(store.filled_bounds().end_column, 6);
}

TEST(CellStore, HoldsMoreRowsThanOneChunk) {
    CellStore store(kMaxColumns);
    for (int row = 0; row < 100'000; ++row)
        put(store, row, {0, 1, 2});
    store.finish();
    EXPECT_EQ(store.size(), 300'000u);
    for (int row : {0, 20'000, 99'999})
        EXPECT_EQ(store.find(row, 2)->value.number, row * 100 + 2);
}

TEST(ParseIsoDate, GivesSerialNumbersOfEachBase) {
    const struct {
        const char* text;
        DateBase base;
        double expected; // below -9000: not a date
    } cases[] = {
        {"2021-01-01", DateBase::From1900, 44197},
        {"2021-01-01", DateBase::From1904, 42735},
        {"1900-01-01", DateBase::From1900, 1},
        {"1900-02-28", DateBase::From1900, 59},
        {"1900-03-01", DateBase::From1900, 61},
        {"1904-01-01", DateBase::From1904, 0},
        {"1899-12-30", DateBase::From1900, -1},
        {"1899-12-30", DateBase::From1899, 0},
        {"1900-02-28", DateBase::From1899, 60},
        {"2024-03-01T13:05:00", DateBase::From1900, 45352 + 785 / 1440.0},
        {"2024-03-01T00:00:00.25Z", DateBase::From1900, 45352 + 0.25 / 86400},
        {"2024-03-01T06:00:00+02:00", DateBase::From1900, 45352.25},
        {"10:10:10", DateBase::From1900, 36610 / 86400.0},
        {"2021-02-29", DateBase::From1900, -9999},
        {"2021-13-01", DateBase::From1900, -9999},
        {"2021-01-01T25:00:00", DateBase::From1900, -9999},
        {"20210101", DateBase::From1900, -9999},
        {"2021-01-01x", DateBase::From1900, -9999},
        {"", DateBase::From1900, -9999},
        {"12:", DateBase::From1900, -9999},
    };
    for (const auto& c : cases) {
        const auto serial = parse_iso_date(c.text, c.base);
        if (c.expected < -9000)
            EXPECT_FALSE(serial.has_value()) << c.text;
        else
            EXPECT_NEAR(serial.value_or(-1), c.expected, 1e-9) << c.text;
    }
}

TEST(AppendUnescaped, ResolvesCodeUnits) {
    const std::pair<const char*, std::string> cases[] = {
        {"a_x000D_b", "a\rb"},
        {"_x005F_x000D_", "_x000D_"},
        {"_x0041__x0042_", "AB"},
        {"_xD83D__xDE00_", "\xF0\x9F\x98\x80"},
        {"_xD83D_", "\xED\xA0\xBD"},
        {"_xD83D_x", "\xED\xA0\xBDx"},
        {"_x00g1_ _x41_ _X0041_ _", "_x00g1_ _x41_ _X0041_ _"},
        {"_x000", "_x000"},
        {"_x0000_", std::string(1, '\0')},
    };
    for (const auto& [text, expected] : cases) {
        std::string out;
        append_unescaped(out, text);
        EXPECT_EQ(out, expected) << text;
    }
}

TEST(ParsePlainNumber, AgreesWithTheStandardLibrary) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 20'000; ++i) {
        char text[64];
        const double number = static_cast<double>(random() >> 11) * std::pow(10.0, i % 40 - 25);
        std::snprintf(text, sizeof text,
                      i % 3 == 0   ? "%.17g<"
                      : i % 3 == 1 ? "-%.6f<"
                                   : "%.15g<",
                      number);
        std::string padded(text);
        const std::size_t length = padded.size();
        padded.resize(length + 64);
        double parsed = -1;
        const char* stop = parse_plain_number(padded.data(), padded.data() + length, parsed);
        ASSERT_EQ(stop, padded.data() + length - 1) << text;
        ASSERT_EQ(parsed, std::strtod(text, nullptr)) << text;
    }
    for (std::string text : {"<", "-<", "x1<", "1x<", "inf<", "nan<", "-inf<", "1e999<", "1"}) {
        const std::size_t length = text.size();
        text.resize(length + 64);
        double parsed = 0;
        EXPECT_EQ(parse_plain_number(text.data(), text.data() + length, parsed), nullptr) << text;
    }
}

TEST(ReadSharedStrings, ReadsEveryFormOfItem) {
    const std::string xml =
        "<?xml version=\"1.0\"?>\n<sst count=\"1\" uniqueCount=\"99999999\">\n<si><t>plain</t></si>"
        "<si><t xml:space=\"preserve\"> a &amp; b </t></si><si/><si><t/></si>"
        "<si><r><t>ri</t></r><r><rPr/><t>ch</t></r><rPh sb=\"0\" "
        "eb=\"1\"><t>NO</t></rPh><phoneticPr/></si>"
        "<x:si xmlns:x=\"y\"><x:t>pre_x0009_fix</x:t></x:si>\n <si><t>line\r\nend</t></si>"
        "<si><t><![CDATA[<cdata>]]></t></si>"
        "<si><t>kana</t><phoneticPr fontId=\"1\"/></si><si><t>end</t></si></sst>";
    for (std::size_t piece : {1u << 20, 1u, 13u}) {
        MemorySource source(xml, piece);
        StringPool strings;
        read_shared_strings(source, ~std::uint64_t{0}, strings);
        const std::string expected[] = {"plain",    " a & b ",   "",        "",     "rich",
                                        "pre\tfix", "line\nend", "<cdata>", "kana", "end"};
        ASSERT_EQ(strings.size(), std::size(expected));
        for (std::size_t i = 0; i < strings.size(); ++i)
            EXPECT_EQ(strings[i], expected[i]) << i;
    }
}

TEST(ReadSharedStrings, StopsAtTheLastWantedItem) {
    std::string xml = "<sst>";
    for (int i = 0; i < 100'000; ++i)
        xml += "<si><t>text number " + std::to_string(i) + "</t></si>";
    MemorySource source(xml + "</sst>", 4096);
    StringPool strings;
    read_shared_strings(source, 100, strings);
    EXPECT_EQ(strings.size(), 100u);
    EXPECT_EQ(strings[99], "text number 99");
    EXPECT_LT(source.position(), 20'000u);
}

} // namespace
} // namespace workbook::test
