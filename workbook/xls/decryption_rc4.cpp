// SPDX-License-Identifier: Apache-2.0
//
// Keys of RC4 (MS-OFFCRYPTO 2.3.6.2) and RC4 CryptoAPI (2.3.5.2) and their verifiers.
#include <algorithm>

#include "workbook/error.h"
#include "workbook/io/little_endian.h"
#include "workbook/xls/decryption_schemes.h"

namespace workbook {

namespace {

constexpr std::size_t kSaltBytes = 16;
constexpr std::size_t kVerifierBytes = 16;
constexpr std::size_t kMd5Bytes = 16;
constexpr std::size_t kSha1Bytes = 20;
constexpr std::size_t kLongestKey = 16;

std::string md5(std::string_view bytes) {
    const auto digest = foundation::crypto::md5(bytes);
    return {digest.begin(), digest.end()};
}

std::string sha1(std::string_view bytes) {
    const auto digest = foundation::crypto::sha1(bytes);
    return {digest.begin(), digest.end()};
}

std::string utf16_bytes(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text)
        append_u16(bytes, unit);
    return bytes;
}

/// Takes bytes from the front of a record that may be too short.
class Fields {
  public:
    explicit Fields(std::string_view bytes) : left_(bytes) {}

    std::string_view bytes(std::size_t count) {
        if (count > left_.size()) throw Error::damaged("the FILEPASS record", "it is too short");
        const std::string_view taken = left_.substr(0, count);
        left_.remove_prefix(count);
        return taken;
    }
    std::uint16_t u16() { return load_u16(bytes(2).data()); }
    std::uint32_t u32() { return load_u32(bytes(4).data()); }

  private:
    std::string_view left_;
};

} // namespace

StreamEncryption::Rc4Scheme::Rc4Scheme(std::string_view header, std::u16string_view password) {
    Fields version(header);
    const std::uint16_t major = version.u16();
    const std::uint16_t minor = version.u16();
    header.remove_prefix(4);
    if (major == 1 && minor == 1)
        read_standard(header, utf16_bytes(password));
    else if (major >= 2 && major <= 4 && minor == 2)
        read_crypto_api(header, utf16_bytes(password));
    else
        throw Error::encrypted();
    start_block(0);
}

void StreamEncryption::Rc4Scheme::read_standard(std::string_view header,
                                                const std::string& password) {
    constexpr std::size_t kShortHash = 5;
    Fields fields(header);
    const std::string salt{fields.bytes(kSaltBytes)};
    std::string salted;
    for (int i = 0; i < 16; ++i)
        salted += md5(password).substr(0, kShortHash) + salt;
    key_base_ = md5(salted).substr(0, kShortHash);
    key_bytes_ = kMd5Bytes;
    std::string verifier{fields.bytes(kVerifierBytes)};
    if (!is_right_password(std::move(verifier), std::string{fields.bytes(kMd5Bytes)}))
        throw Error::encrypted();
}

void StreamEncryption::Rc4Scheme::read_crypto_api(std::string_view header,
                                                  const std::string& password) {
    constexpr std::uint32_t kRc4 = 0x6801;
    constexpr std::uint32_t kSha1 = 0x8004;
    constexpr std::uint32_t kDefaultKeyBits = 40;
    is_crypto_api_ = true;
    Fields fields(header);
    fields.u32(); // flags, repeated in the header
    Fields algorithm(fields.bytes(fields.u32()));
    algorithm.bytes(8); // flags, a size that is 0
    const std::uint32_t cipher = algorithm.u32();
    const std::uint32_t hash = algorithm.u32();
    const std::uint32_t stated_bits = algorithm.u32();
    const std::uint32_t key_bits = stated_bits == 0 ? kDefaultKeyBits : stated_bits;
    if ((cipher != kRc4 && cipher != 0) || (hash != kSha1 && hash != 0) ||
        key_bits < kDefaultKeyBits || key_bits > 8 * kLongestKey || key_bits % 8 != 0)
        throw Error::encrypted();
    key_bytes_ = key_bits / 8;
    if (fields.u32() != kSaltBytes) throw Error::damaged("the FILEPASS record", "its salt's size");
    key_base_ = sha1(std::string{fields.bytes(kSaltBytes)} + password);
    std::string verifier{fields.bytes(kVerifierBytes)};
    fields.u32(); // the size of the hash
    if (!is_right_password(std::move(verifier), std::string{fields.bytes(kSha1Bytes)}))
        throw Error::encrypted();
}

std::string StreamEncryption::Rc4Scheme::key_of(std::uint32_t block) const {
    std::string bytes = key_base_;
    append_u32(bytes, block);
    if (!is_crypto_api_) return md5(bytes);
    std::string key = sha1(bytes).substr(0, key_bytes_);
    // The shortest key is one of 128 bits of which most are zeros.
    constexpr std::size_t kShortKey = 5;
    if (key.size() == kShortKey) key.resize(kLongestKey);
    return key;
}

void StreamEncryption::Rc4Scheme::start_block(std::uint32_t block) {
    block_ = block;
    cipher_.set_key(key_of(block));
    key_stream_.fill('\0');
    cipher_.apply(key_stream_.data(), key_stream_.size());
}

bool StreamEncryption::Rc4Scheme::is_right_password(std::string verifier, std::string hash) {
    cipher_.set_key(key_of(0));
    cipher_.apply(verifier.data(), verifier.size());
    cipher_.apply(hash.data(), hash.size());
    return hash == (is_crypto_api_ ? sha1(verifier) : md5(verifier));
}

void StreamEncryption::Rc4Scheme::apply(const BodyPiece& piece, bool) {
    std::size_t position = piece.begin;
    char* bytes = piece.bytes;
    for (std::size_t left = piece.count; left > 0;) {
        if (const auto block = static_cast<std::uint32_t>(position / kBlockBytes); block != block_)
            start_block(block);
        const std::size_t at = position % kBlockBytes;
        const std::size_t count = std::min(left, kBlockBytes - at);
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] = static_cast<char>(bytes[i] ^ key_stream_[at + i]);
        position += count;
        bytes += count;
        left -= count;
    }
}

} // namespace workbook
