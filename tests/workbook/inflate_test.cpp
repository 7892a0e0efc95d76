// SPDX-License-Identifier: Apache-2.0
//
// Both inflate engines on the same data, whole and broken.
#include <random>

#include <gtest/gtest.h>

#include "tests/workbook/memory_source.h"
#include "tests/workbook/zip_builder.h"
#include "workbook/error.h"
#include "workbook/zip/entry_source.h"
#include "workbook/zip/inflate.h"

namespace workbook {
namespace {

constexpr InflateEngine kEngines[] = {InflateEngine::Isal, InflateEngine::Zlib};

/// Text with matches near and far, several windows long.
std::string varied_text() {
    std::mt19937 random(7);
    std::string text;
    while (text.size() < 700'000) {
        if (text.size() > 40'000 && random() % 3 == 0)
            text += text.substr(text.size() - 1 - random() % 32'000, random() % 300);
        text += std::to_string(random());
    }
    return text;
}

struct Unpacked {
    std::string text;
    Unpacker::State state;
};

Unpacked unpack(InflateEngine engine, const std::string& packed, std::size_t capacity) {
    const auto file = foundation::files::memory_file(packed);
    PackedBytes bytes(*file, 0, packed.size());
    const auto unpacker = make_unpacker(kMethodDeflated, engine);
    Unpacked result{{}, Unpacker::State::More};
    std::string buffer(capacity, '\0');
    while (result.state == Unpacker::State::More) {
        const Unpacker::Step step = unpacker->unpack(bytes, buffer.data(), buffer.size());
        result.text.append(buffer, 0, step.produced);
        result.state = step.state;
    }
    return result;
}

TEST(Unpacker, GivesTheSameTextInPiecesOfAnySize) {
    const std::string text = varied_text();
    const std::string packed = test::deflate_text(text);
    for (const InflateEngine engine : kEngines)
        for (const std::size_t capacity : {1000u, 65536u, 1u << 20}) {
            const Unpacked result = unpack(engine, packed, capacity);
            EXPECT_EQ(result.state, Unpacker::State::Finished);
            EXPECT_TRUE(result.text == text) << capacity;
        }
}

TEST(Unpacker, UnpacksNothingFromEmptyData) {
    for (const InflateEngine engine : kEngines) {
        EXPECT_EQ(unpack(engine, test::deflate_text(""), 100).state, Unpacker::State::Finished);
        EXPECT_EQ(unpack(engine, "", 100).state, Unpacker::State::Broken);
    }
}

TEST(Unpacker, EndsOnDataThatAreCutOrChanged) {
    const std::string packed = test::deflate_text(varied_text().substr(0, 5000));
    for (const InflateEngine engine : kEngines) {
        for (std::size_t length = 0; length < packed.size(); length += 7)
            EXPECT_EQ(unpack(engine, packed.substr(0, length), 512).state, Unpacker::State::Broken)
                << length;
        for (std::size_t at = 0; at < packed.size(); at += 3) {
            std::string changed = packed;
            changed[at] = static_cast<char>(~changed[at]);
            EXPECT_NE(unpack(engine, changed, 512).state, Unpacker::State::More) << at;
        }
    }
}

TEST(UpdateCrc32, EnginesAgreeOnTextInPieces) {
    const std::string text = varied_text();
    for (const InflateEngine engine : kEngines) {
        EXPECT_EQ(update_crc32(engine, 0, "123456789", 9), 0xCBF43926u);
        const std::uint32_t half = update_crc32(engine, 0, text.data(), 1001);
        EXPECT_EQ(update_crc32(engine, half, text.data() + 1001, text.size() - 1001),
                  update_crc32(InflateEngine::Zlib, 0, text.data(), text.size()));
    }
}

} // namespace
} // namespace workbook
