// SPDX-License-Identifier: Apache-2.0
//
// Over the system's services: hashes by CNG (bcrypt), RC4 by the older CryptoAPI, since Wine's CNG
// has no stream cipher.
#include <cassert>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>

#include "foundation/crypto.h"
#include "foundation/windows_files.h"

// clang-format off: after windows.h, whose names they use
#include <bcrypt.h>
#include <wincrypt.h>
// clang-format on

namespace foundation::crypto {

namespace {

[[noreturn]] void fail(const char* what, unsigned long code) {
    throw std::runtime_error(std::string("The system's cryptographic services cannot ") + what +
                             " (code " + std::to_string(code) + ").");
}

template <std::size_t N>
std::array<char, N> digest_of(const wchar_t* algorithm, std::string_view bytes) {
    if (bytes.size() > std::numeric_limits<ULONG>::max()) fail("hash so many bytes", 0);
    BCRYPT_ALG_HANDLE provider = nullptr;
    NTSTATUS status = BCryptOpenAlgorithmProvider(&provider, algorithm, nullptr, 0);
    if (status != 0) fail("start a hash", static_cast<unsigned long>(status));
    std::array<char, N> digest;
    std::string copy(bytes); // the function takes no constant bytes
    status = BCryptHash(provider, nullptr, 0, reinterpret_cast<PUCHAR>(copy.data()),
                        static_cast<ULONG>(copy.size()), reinterpret_cast<PUCHAR>(digest.data()),
                        static_cast<ULONG>(digest.size()));
    BCryptCloseAlgorithmProvider(provider, 0);
    if (status != 0) fail("hash", static_cast<unsigned long>(status));
    return digest;
}

} // namespace

std::array<char, 16> md5(std::string_view bytes) {
    return digest_of<16>(BCRYPT_MD5_ALGORITHM, bytes);
}

std::array<char, 20> sha1(std::string_view bytes) {
    return digest_of<20>(BCRYPT_SHA1_ALGORITHM, bytes);
}

struct Rc4::State {
    HCRYPTPROV provider = 0;
    HCRYPTKEY key = 0;

    State() {
        if (!CryptAcquireContextW(&provider, nullptr, nullptr, PROV_RSA_AES, CRYPT_VERIFYCONTEXT))
            fail("be opened", GetLastError());
    }
    ~State() {
        drop_key();
        CryptReleaseContext(provider, 0);
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void drop_key() {
        if (key != 0) CryptDestroyKey(std::exchange(key, 0));
    }
};

Rc4::Rc4() : state_(std::make_unique<State>()) {}
Rc4::~Rc4() = default;
Rc4::Rc4(Rc4&&) noexcept = default;
Rc4& Rc4::operator=(Rc4&&) noexcept = default;

void Rc4::set_key(std::string_view key) {
    constexpr std::size_t kLongestKey = 16;
    struct Blob {
        BLOBHEADER header{PLAINTEXTKEYBLOB, CUR_BLOB_VERSION, 0, CALG_RC4};
        DWORD size = 0;
        BYTE bytes[kLongestKey] = {};
    } blob;
    assert(!key.empty() && key.size() <= kLongestKey);
    // The service adds salt to keys of 5 bytes. The cipher reads its key over and over, so a
    // repeated key is the same key.
    while (blob.size + key.size() <= kLongestKey) {
        std::memcpy(blob.bytes + blob.size, key.data(), key.size());
        blob.size += static_cast<DWORD>(key.size());
    }
    state_->drop_key();
    if (!CryptImportKey(state_->provider, reinterpret_cast<const BYTE*>(&blob), sizeof blob, 0, 0,
                        &state_->key))
        fail("take an RC4 key", GetLastError());
}

void Rc4::apply(char* bytes, std::size_t count) {
    while (count > 0) {
        constexpr std::size_t kBlockBytes = 1u << 20;
        auto block = static_cast<DWORD>(count < kBlockBytes ? count : kBlockBytes);
        if (!CryptEncrypt(state_->key, 0, FALSE, 0, reinterpret_cast<BYTE*>(bytes), &block, block))
            fail("apply RC4", GetLastError());
        bytes += block;
        count -= block;
    }
}

} // namespace foundation::crypto
