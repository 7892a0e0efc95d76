// SPDX-License-Identifier: Apache-2.0
#include <cstddef>
#include <limits>
#include <memory>

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include "foundation/signature.h"

namespace foundation::crypto {

namespace {

struct Free {
    void operator()(BIO* bio) const { BIO_free(bio); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

constexpr int kLeastBits = 1024;
constexpr int kMostBits = 16384;

/// Takes the place of a question for a passphrase on the terminal.
int no_passphrase(char*, int, int, void*) {
    return -1;
}

std::unique_ptr<EVP_PKEY, Free> read_key(std::string_view text) {
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw KeyError("The private key is too long.");
    const std::unique_ptr<BIO, Free> bio(
        BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    if (bio == nullptr) throw std::bad_alloc();
    std::unique_ptr<EVP_PKEY, Free> key(
        PEM_read_bio_PrivateKey(bio.get(), nullptr, no_passphrase, nullptr));
    ERR_clear_error(); // other users of the library must not find ours
    const bool is_usable = key != nullptr && EVP_PKEY_base_id(key.get()) == EVP_PKEY_RSA &&
                           EVP_PKEY_bits(key.get()) >= kLeastBits &&
                           EVP_PKEY_bits(key.get()) <= kMostBits;
    if (!is_usable) throw KeyError("The private key is not an unencrypted RSA key in PEM.");
    return key;
}

} // namespace

std::string sign_rsa_sha256(std::string_view private_key, std::string_view bytes) {
    const auto key = read_key(private_key);
    const std::unique_ptr<EVP_MD_CTX, Free> context(EVP_MD_CTX_new());
    if (context == nullptr) throw std::bad_alloc();
    std::string signature(static_cast<std::size_t>(EVP_PKEY_size(key.get())), '\0');
    std::size_t size = signature.size();
    const bool is_signed =
        EVP_DigestSignInit(context.get(), nullptr, EVP_sha256(), nullptr, key.get()) == 1 &&
        EVP_DigestSign(context.get(), reinterpret_cast<unsigned char*>(signature.data()), &size,
                       reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()) == 1;
    ERR_clear_error();
    if (!is_signed) throw KeyError("The private key cannot sign.");
    signature.resize(size);
    return signature;
}

} // namespace foundation::crypto
