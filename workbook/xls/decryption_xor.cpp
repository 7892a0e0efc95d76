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

/// The first of the seven values of each row of the matrix in MS-OFFCRYPTO 2.3.7.2; each of the
/// others follows from the one before. The last row is for the last character of a password.
constexpr std::array<std::uint16_t, kMaxPasswordBytes> kMatrixRows{
    0xAEFC, 0x7B61, 0x4563, 0x0375, 0xD849, 0x6F45, 0xEB23, 0x47D3,
    0xB861, 0x45A0, 0xAA51, 0x76B4, 0x3730, 0x3331, 0x1021};

constexpr std::uint16_t next_in_row(std::uint16_t value) {
    const int doubled = value << 1;
    return static_cast<std::uint16_t>((doubled & 0x10000) != 0 ? doubled ^ 0x1021 : doubled);
}

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
    for (std::size_t i = 0; i < password.size(); ++i) {
        std::uint16_t value = kMatrixRows[kMaxPasswordBytes - password.size() + i];
        for (int bit = 0; bit < 7; ++bit) {
            if ((password[i] >> bit & 1) != 0) key ^= value;
            value = next_in_row(value);
        }
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
