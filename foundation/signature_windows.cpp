// SPDX-License-Identifier: Apache-2.0
//
// Over CryptoAPI, which takes a key as a structure of little-endian numbers: they are read from the
// key's DER (RFC 5208, section 5; RFC 8017, appendix A.1.2).
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "foundation/signature.h"
#include "foundation/windows_files.h"

// clang-format off: after windows.h, whose names it uses
#include <wincrypt.h>
// clang-format on

namespace foundation::crypto {

namespace {

constexpr std::size_t kLeastBytes = 1024 / 8;
constexpr std::size_t kMostBytes = 16384 / 8;

[[noreturn]] void fail() {
    throw KeyError("The private key is not an unencrypted RSA key in PEM.");
}

/// Elements of DER one after the other; every length is held against what is left.
class DerReader {
  public:
    explicit DerReader(std::string_view bytes) : bytes_(bytes) {}

    /// The contents of the next element, which must have that tag.
    std::string_view next(unsigned char tag) {
        if (bytes_.size() < 2 || static_cast<unsigned char>(bytes_[0]) != tag) fail();
        std::size_t size = static_cast<unsigned char>(bytes_[1]);
        std::size_t begin = 2;
        if (size >= 0x80) {
            const std::size_t count = size & 0x7F;
            if (count == 0 || count > 3 || bytes_.size() < begin + count) fail();
            for (size = 0; begin < 2 + count; ++begin)
                size = size << 8 | static_cast<unsigned char>(bytes_[begin]);
        }
        if (bytes_.size() - begin < size) fail();
        const std::string_view contents = bytes_.substr(begin, size);
        bytes_.remove_prefix(begin + size);
        return contents;
    }

    /// The bytes of a positive integer, the first of them not 0.
    std::string_view number() {
        std::string_view digits = next(0x02);
        while (digits.size() > 1 && digits.front() == '\0')
            digits.remove_prefix(1);
        return digits;
    }

  private:
    std::string_view bytes_;
};

std::string from_pem(std::string_view text) {
    const std::string copy(text);
    DWORD size = 0;
    if (!CryptStringToBinaryA(copy.c_str(), 0, CRYPT_STRING_BASE64HEADER, nullptr, &size, nullptr,
                              nullptr))
        fail();
    std::string bytes(size, '\0');
    if (!CryptStringToBinaryA(copy.c_str(), 0, CRYPT_STRING_BASE64HEADER,
                              reinterpret_cast<BYTE*>(bytes.data()), &size, nullptr, nullptr))
        fail();
    bytes.resize(size);
    return bytes;
}

/// A number in little-endian order, `width` bytes wide.
void append(std::string& blob, std::string_view number, std::size_t width) {
    if (number.size() > width) fail();
    blob.append(number.rbegin(), number.rend());
    blob.append(width - number.size(), '\0');
}

/// PRIVATEKEYBLOB of the key in PKCS #8.
std::string key_blob(std::string_view pkcs8) {
    constexpr std::string_view kRsa("\x2A\x86\x48\x86\xF7\x0D\x01\x01\x01", 9);
    DerReader info(DerReader(pkcs8).next(0x30));
    info.number(); // version
    if (DerReader(info.next(0x30)).next(0x06) != kRsa) fail();
    DerReader key(DerReader(info.next(0x04)).next(0x30));
    key.number(); // version
    const std::string_view modulus = key.number();
    const std::string_view exponent = key.number();
    const std::string_view private_exponent = key.number();
    const std::size_t width = modulus.size();
    if (width < kLeastBytes || width > kMostBytes || width % 2 != 0 || exponent.size() > 4) fail();
    RSAPUBKEY head{};
    head.magic = 0x32415352; // "RSA2"
    head.bitlen = static_cast<DWORD>(width * 8);
    for (const char byte : exponent)
        head.pubexp = head.pubexp << 8 | static_cast<unsigned char>(byte);
    const BLOBHEADER type{PRIVATEKEYBLOB, CUR_BLOB_VERSION, 0, CALG_RSA_KEYX};
    std::string blob(reinterpret_cast<const char*>(&type), sizeof type);
    blob.append(reinterpret_cast<const char*>(&head), sizeof head);
    append(blob, modulus, width);
    // Two primes, two exponents, a coefficient.
    for (int i = 0; i < 5; ++i)
        append(blob, key.number(), width / 2);
    append(blob, private_exponent, width);
    return blob;
}

struct Signing {
    HCRYPTPROV provider = 0;
    HCRYPTKEY key = 0;
    HCRYPTHASH hash = 0;

    Signing() = default;
    Signing(const Signing&) = delete;
    Signing& operator=(const Signing&) = delete;
    ~Signing() {
        if (hash != 0) CryptDestroyHash(hash);
        if (key != 0) CryptDestroyKey(key);
        if (provider != 0) CryptReleaseContext(provider, 0);
    }
};

} // namespace

std::string sign_rsa_sha256(std::string_view private_key, std::string_view bytes) {
    const std::string blob = key_blob(from_pem(private_key));
    Signing with;
    DWORD size = 0;
    std::string signature;
    const bool is_signed =
        CryptAcquireContextW(&with.provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT) &&
        CryptImportKey(with.provider, reinterpret_cast<const BYTE*>(blob.data()),
                       static_cast<DWORD>(blob.size()), 0, 0, &with.key) &&
        CryptCreateHash(with.provider, CALG_SHA_256, 0, 0, &with.hash) &&
        CryptHashData(with.hash, reinterpret_cast<const BYTE*>(bytes.data()),
                      static_cast<DWORD>(bytes.size()), 0) &&
        CryptSignHashW(with.hash, AT_KEYEXCHANGE, nullptr, 0, nullptr, &size);
    if (is_signed) {
        signature.resize(size);
        if (!CryptSignHashW(with.hash, AT_KEYEXCHANGE, nullptr, 0,
                            reinterpret_cast<BYTE*>(signature.data()), &size))
            throw KeyError("The private key cannot sign.");
        signature.resize(size);
        std::reverse(signature.begin(), signature.end());
        return signature;
    }
    throw KeyError("The private key cannot sign.");
}

} // namespace foundation::crypto
