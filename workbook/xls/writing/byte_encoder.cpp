// SPDX-License-Identifier: Apache-2.0
//
// The page is learned from its decoder, so that both agree on every platform.
#include "workbook/xls/writing/byte_encoder.h"

#include "workbook/error.h"

namespace workbook {

namespace {

constexpr int kFirstBeyondAscii = 0x80, kFirstTrail = 0x40, kBytes = 256;
constexpr std::size_t kMostBytes = 255; ///< of a cell's text before BIFF8

/// Bytes of the first character of a UTF-8 text.
std::size_t character_bytes(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    const std::size_t bytes = first < 0x80 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    return bytes < text.size() ? bytes : text.size();
}

} // namespace

void ByteEncoder::read_page() {
    const std::string_view replacement = "\xEF\xBF\xBD";
    const auto learn = [&](const std::string& bytes) {
        std::string text;
        page_.append_utf8(bytes, text);
        if (text.empty() || text.size() != character_bytes(text) || text == replacement) return;
        bytes_of_.try_emplace(std::move(text), bytes);
    };
    for (int lead = kFirstBeyondAscii; lead < kBytes; ++lead)
        learn(std::string(1, static_cast<char>(lead)));
    if (!page_.has_double_bytes()) return;
    for (int lead = kFirstBeyondAscii + 1; lead < kBytes; ++lead)
        for (int trail = kFirstTrail; trail < kBytes; ++trail)
            learn({static_cast<char>(lead), static_cast<char>(trail)});
}

std::string ByteEncoder::encode(std::string_view text) {
    std::string bytes;
    for (std::string_view rest = text; !rest.empty();) {
        const std::string_view character = rest.substr(0, character_bytes(rest));
        rest.remove_prefix(character.size());
        if (character.size() == 1) {
            bytes += character;
            continue;
        }
        if (bytes_of_.empty()) read_page();
        const auto found = bytes_of_.find(std::string(character));
        if (found == bytes_of_.end())
            throw Error::refused("the workbook is older than Unicode and cannot hold the text \"" +
                                 std::string(text) + "\"; save it as XLSX");
        bytes += found->second;
    }
    if (bytes.size() > kMostBytes)
        throw Error::limit("a cell", "a text of more than 255 characters in a workbook as old as "
                                     "BIFF5; save it as XLSX");
    return bytes;
}

} // namespace workbook
