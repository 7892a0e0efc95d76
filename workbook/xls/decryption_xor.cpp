// SPDX-License-Identifier: Apache-2.0
//
// The key of a password for XOR obfuscation (MS-OFFCRYPTO 2.3.7.1 and 2.3.7.2) and its use.
#include <bit>

#include "workbook/error.h"
#include "workbook/xls/decryption_schemes.h"

namespace workbook {

namespace {

constexpr std::size_t kMaxPasswordBytes = 15;

constexpr std::array<std::uint16_t, kMaxPasswordBytes> kInitialCode{
    0xE1F0, 0x1D0F, 0xCC9C, 0x84C0, 0x110C, 0x0E10, 0xF1CE, 0x313E,
    0x1872, 0xE139, 0xD40F, 0x84F9, 0x280C, 0xA96A, 0x4EC3};

/// Seven values for each character of the longest password; the last ones are those of the
/// password's last character.
constexpr std::array<std::uint16_t, 7 * kMaxPasswordBytes> kMatrix{
    0xAEFC, 0x4DD9, 0x9BB2, 0x2745, 0x4E8A, 0x9D14, 0x2A09, 0x7B61, 0xF6C2, 0xFDA5, 0xEB6B, 0xC6F7,
    0x9DCF, 0x2BBF, 0x4563, 0x8AC6, 0x05AD, 0x0B5A, 0x16B4, 0x2D68, 0x5AD0, 0x0375, 0x06EA, 0x0DD4,
    0x1BA8, 0x3750, 0x6EA0, 0xDD40, 0xD849, 0xA0B3, 0x5147, 0xA28E, 0x553D, 0xAA7A, 0x44D5, 0x6F45,
    0xDE8A, 0xAD35, 0x4A4B, 0x9496, 0x390D, 0x721A, 0xEB23, 0xC667, 0x9CEF, 0x29FF, 0x53FE, 0xA7FC,
    0x5FD9, 0x47D3, 0x8FA6, 0x0F6D, 0x1EDA, 0x3DB4, 0x7B68, 0xF6D0, 0xB861, 0x60E3, 0xC1C6, 0x93AD,
    0x377B, 0x6EF6, 0xDDEC, 0x45A0, 0x8B40, 0x06A1, 0x0D42, 0x1A84, 0x3508, 0x6A10, 0xAA51, 0x4483,
    0x8906, 0x022D, 0x045A, 0x08B4, 0x1168, 0x76B4, 0xED68, 0xCAF1, 0x85C3, 0x1BA7, 0x374E, 0x3730,
    0x6E60, 0xDCC0, 0xA9A1, 0x4363, 0x86C6, 0x1DAD, 0x3331, 0x6662, 0xCCC4, 0x89A9, 0x0373, 0x06E6,
    0x0DCC, 0x1021, 0x2042, 0x4084, 0x8108, 0x1231, 0x2462, 0x48C4};

/// What follows a password up to 16 bytes.
constexpr std::array<unsigned char, 15> kPadding{0xBB, 0xFF, 0xFF, 0xBA, 0xFF, 0xFF, 0xB9, 0x80,
                                                 0x00, 0xBE, 0x0F, 0x00, 0xBF, 0x0F, 0x00};

std::uint16_t password_verifier(std::string_view password) {
    std::uint32_t verifier = 0;
    const auto add = [&](std::uint32_t byte) {
        verifier = ((verifier >> 14 & 1) | (verifier << 1 & 0x7FFF)) ^ byte;
    };
    for (std::size_t i = password.size(); i-- > 0;)
        add(static_cast<unsigned char>(password[i]));
    add(static_cast<std::uint32_t>(password.size()));
    return static_cast<std::uint16_t>(verifier ^ 0xCE4B);
}

std::uint16_t password_key(std::string_view password) {
    std::uint16_t key = kInitialCode[password.size() - 1];
    std::size_t element = kMatrix.size();
    for (std::size_t i = password.size(); i-- > 0;)
        for (int bit = 6; bit >= 0; --bit) {
            --element;
            if ((password[i] >> bit & 1) != 0) key ^= kMatrix[element];
        }
    return key;
}

} // namespace

StreamEncryption::XorScheme::XorScheme(std::uint16_t key, std::uint16_t verifier,
                                       std::u16string_view password) {
    const std::string narrow(password.begin(), password.end());
    if (narrow.empty() || narrow.size() > kMaxPasswordBytes || password_key(narrow) != key ||
        password_verifier(narrow) != verifier)
        throw Error::encrypted();
    for (std::size_t i = 0; i < pad_.size(); ++i) {
        const auto byte =
            i < narrow.size() ? static_cast<unsigned char>(narrow[i]) : kPadding[i - narrow.size()];
        const auto part = static_cast<unsigned char>(i % 2 == 0 ? key & 0xFF : key >> 8);
        pad_[i] = std::rotr(static_cast<unsigned char>(byte ^ part), 1);
    }
}

void StreamEncryption::XorScheme::apply(const BodyPiece& piece, bool encrypts) {
    // Which byte of the pad is used depends on the record's length too (MS-XLS 2.2.10).
    std::size_t at = piece.begin + piece.body_bytes;
    for (std::size_t i = 0; i < piece.count; ++i, ++at) {
        const auto byte = static_cast<unsigned char>(piece.bytes[i]);
        const unsigned char pad = pad_[at % pad_.size()];
        piece.bytes[i] =
            static_cast<char>(encrypts ? std::rotl(byte, 5) ^ pad
                                       : std::rotr(static_cast<unsigned char>(byte ^ pad), 5));
    }
}

} // namespace workbook
