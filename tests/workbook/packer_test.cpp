// SPDX-License-Identifier: Apache-2.0
//
// What is packed unpacks to the same, by either engine.
#include <cstdint>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "tests/workbook/string_sink.h"
#include "workbook/zip/packer.h"

namespace workbook {
namespace {

using test::StringSink;

std::string unpacked(const std::string& packed, InflateEngine engine) {
    const auto file = foundation::files::memory_file(packed);
    PackedBytes bytes(*file, 0, packed.size());
    const auto unpacker = make_unpacker(kMethodDeflated, engine);
    std::string text, block(1 << 20, '\0');
    for (;;) {
        const Unpacker::Step step = unpacker->unpack(bytes, block.data(), block.size());
        text.append(block, 0, step.produced);
        if (step.state != Unpacker::State::More)
            return step.state == Unpacker::State::Finished ? text : "broken";
    }
}

std::string random_bytes(std::size_t count) {
    std::mt19937 random(3);
    std::string bytes(count, '\0');
    for (char& c : bytes)
        c = static_cast<char>(random());
    return bytes;
}

std::string rows(int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += "<c r=\"A" + std::to_string(i) + "\"><v>" + std::to_string(i * 7919 % 100003) +
                "</v></c>";
    return text;
}

TEST(Packer, RoundTripsThroughBothEngines) {
    const std::string texts[] = {
        "", "x", std::string(1 << 22, 'a'), rows(100'000), random_bytes(3 << 20), rows(100) + '\0',
    };
    for (const InflateEngine engine : {InflateEngine::Isal, InflateEngine::Zlib}) {
        const auto packer = make_packer(engine); // used for all: it begins anew after each
        for (const std::string& text : texts)
            for (const std::size_t step :
                 {std::size_t{1} << 30, std::size_t{64} << 10, std::size_t{4099}, std::size_t{1}}) {
                if (text.size() / step > 200'000) continue;
                StringSink out;
                for (std::size_t at = 0; at < text.size(); at += step)
                    packer->pack(text.data() + at, std::min(step, text.size() - at), out);
                packer->finish(out);
                for (const InflateEngine other : {InflateEngine::Isal, InflateEngine::Zlib})
                    EXPECT_TRUE(unpacked(out.text, other) == text)
                        << text.size() << " bytes in steps of " << step;
                EXPECT_LT(out.text.size(), text.size() + text.size() / 500 + 64);
            }
    }
}

#ifdef _WIN32
// By the platform's rules these registers belong to the caller.
TEST(Packer, KeepsVectorRegistersOfItsCaller) {
    const std::string text = rows(2000);
    std::uint64_t before[4] = {1, 2, 3, 4}, after[4] = {};
    const auto packer = make_packer(InflateEngine::Isal);
    StringSink out;
    __asm__ volatile("movups (%0), %%xmm8\n\tmovups 16(%0), %%xmm14" ::"r"(before)
                     : "memory", "xmm8", "xmm14");
    packer->pack(text.data(), text.size(), out);
    packer->finish(out);
    __asm__ volatile("movups %%xmm8, (%0)\n\tmovups %%xmm14, 16(%0)" ::"r"(after) : "memory");
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(after[i], before[i]);
}
#endif

} // namespace
} // namespace workbook
