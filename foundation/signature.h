// SPDX-License-Identifier: Apache-2.0
//
// Signatures with a private key, by the platform's library: OpenSSL, on Windows the system's.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace foundation::crypto {

/// A key that cannot be used; `what()` is one sentence that shows nothing of it.
class KeyError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The signature RSASSA-PKCS1-v1_5 with SHA-256 (RFC 8017, section 8.2) of `bytes`. `private_key`
/// is an unencrypted RSA key of 1024 to 16384 bits, PKCS #8 in PEM ("BEGIN PRIVATE KEY"). Throws
/// `KeyError`.
std::string sign_rsa_sha256(std::string_view private_key, std::string_view bytes);

} // namespace foundation::crypto
