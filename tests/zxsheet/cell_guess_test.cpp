// SPDX-License-Identifier: Apache-2.0
//
// What fields of text become.
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <random>

#include <gtest/gtest.h>

#include "zxsheet/cell_guess.h"
#include "zxsheet/cell_text.h"

namespace zxsheet {
namespace {

using spreadsheet::cell_type;

CellValue guessed(const std::string& field) {
    CellValue cell;
    cell.text = field;
    guess_cell(cell);
    return cell;
}

TEST(GuessCell, TakesNumbersThatLoseNothing) {
    const struct {
        const char* field;
        double value;
    } cases[] = {
        {"0", 0.0},
        {"-0", 0.0},
        {"1", 1.0},
        {"-2.5", -2.5},
        {".5", 0.5},
        {"-.5", -0.5},
        {"0.50", 0.5},
        {"1e3", 1000.0},
        {"1E+3", 1000.0},
        {"25e-1", 2.5},
        {"123456789012345", 123456789012345.0},
        {"-999999999999999", -999999999999999.0},
        {"0.000000000000000000123", 1.23e-19},
        // More digits than are always kept, and kept all the same: what programs print.
        {"0.30000000000000004", 0.1 + 0.2},
        {"1.7976931348623157e+308", 1.7976931348623157e308},
        {"3.0000000000000000000", 3.0},
    };
    for (const auto& c : cases) {
        const CellValue cell = guessed(c.field);
        EXPECT_EQ(cell.type, cell_type::number) << c.field;
        EXPECT_EQ(cell.number, c.value) << c.field;
    }
}

// Short numbers are read and written in quicker ways than others.
TEST(GuessCell, AgreesWithTheStandardLibrary) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20'000; ++i) {
        const auto unit = static_cast<std::uint64_t>(std::pow(10, random() % 15 + 1));
        std::string field = std::to_string(random() % unit);
        const std::size_t decimals = random() % 7;
        if (decimals < field.size()) field.insert(field.size() - decimals, ".");
        if (field.ends_with('.')) field += '5';
        if (random() % 2 == 0) field.insert(0, "-");
        const double value = std::strtod(field.c_str(), nullptr);
        EXPECT_EQ(guessed(field).number, value) << field;
        for (const double near : {value, std::nextafter(value, 1e9)}) {
            if (near == std::trunc(near) || std::fabs(near) < 1e-5) continue;
            char shortest[64];
            const auto end =
                std::to_chars(shortest, shortest + sizeof shortest, near, std::chars_format::fixed);
            EXPECT_EQ(number_text(near), std::string(shortest, end.ptr));
        }
    }
}

TEST(GuessCell, LeavesTextAlone) {
    const char* const cases[] = {
        "007",
        "-01",
        "00",
        "00.5",
        "+1",
        "1,5",
        "1,234",
        "1 234",
        "1'000",
        " 1",
        "1 ",
        "0x10",
        "1e",
        "1e+",
        "e3",
        ".",
        "-",
        "--1",
        "1.",
        "1.e3",
        "1.2.3",
        "Infinity",
        "inf",
        "nan",
        "NaN",
        "1e999",
        "1e-999",
        "1f",
        "12%",
        "$5",
        "truely",
        "yes",
        "TRUE ",
        "a",
        "\xC3\xA9",
        "\xD9\xA1",          // a digit of another script
        "1234567890123456",  // a card's number
        "10000000000000000", // sixteen zeros may mean something
        "3.14159265358979323846",
        "0.1234567890123456789",
        "2024-02-30",
        "2023-02-29",
        "2024-13-01",
        "2024-00-10",
        "2024-1-1",
        "24-01-01",
        "01/02/2024",
        "2024-03-01Z",
        "2024-03-01T13:05:00Z",
        "2024-03-01T13:05:00+01:00",
        "2024-03-01T24:00:00",
        "2024-03-01T12:60",
        "2024-03-01T12:00:60",
        "2024-03-01T12",
        "2024-03-01T",
        "2024-03-01  12:00",
        "2024-03-01T12:00:00.",
        "2024-03-01T12:00:00.1234567",
        "2024-03-01t12:00",
        "1900-02-28",
        "1900-02-29",
        "1899-12-31",
        "0000-01-01",
        "12024-01-01",
        "12:30",
    };
    for (const char* const field : cases) {
        const CellValue cell = guessed(field);
        EXPECT_EQ(cell.type, cell_type::text) << field;
        EXPECT_EQ(cell.text, field);
    }
}

TEST(GuessCell, KnowsBooleansAndNothing) {
    const struct {
        const char* field;
        cell_type type;
        double value;
    } cases[] = {
        {"true", cell_type::boolean, 1.0}, {"TRUE", cell_type::boolean, 1.0},
        {"True", cell_type::boolean, 1.0}, {"fAlSe", cell_type::boolean, 0.0},
        {"", cell_type::empty, 0.0},
    };
    for (const auto& c : cases) {
        const CellValue cell = guessed(c.field);
        EXPECT_EQ(cell.type, c.type) << c.field;
        EXPECT_EQ(cell.number, c.value) << c.field;
    }
}

TEST(GuessCell, TakesDatesFromMarch1900On) {
    const struct {
        const char* field;
        double serial;
    } cases[] = {
        {"1900-03-01", 61},
        {"2024-02-29", 45351},
        {"2024-03-01", 45352},
        {"9999-12-31", 2958465},
        {"2024-03-01T00:00:00", 45352},
        {"2024-03-01T12:00", 45352.5},
        {"2024-03-01 13:05:00", 45352 + 47100.0 / 86400},
        {"2024-03-01T12:00:00.25", 45352 + 43200.25 / 86400},
        {"2024-03-01T23:59:59.999999", 45352 + 86399.999999 / 86400},
    };
    for (const auto& c : cases) {
        const CellValue cell = guessed(c.field);
        EXPECT_EQ(cell.type, cell_type::date) << c.field;
        EXPECT_DOUBLE_EQ(cell.number, c.serial) << c.field;
    }
}

// What `read` prints must come back as it was.
TEST(DateSerial, IsTheInverseOfDateText) {
    for (const double serial :
         {-693594.0, -693593.5, -0.25, 0.0, 0.25, 1.0, 59.0, 60.0, 60.5, 61.0, 1462.0, 45352.0,
          45352.0 + 47100.0 / 86400, 45352 + 1.001 / 86400, 2958465.75}) {
        const auto back = date_serial(date_text(serial));
        ASSERT_TRUE(back) << date_text(serial);
        EXPECT_DOUBLE_EQ(*back, serial) << date_text(serial);
    }
}

} // namespace
} // namespace zxsheet
