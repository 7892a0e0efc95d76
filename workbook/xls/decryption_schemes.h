// SPDX-License-Identifier: Apache-2.0
//
// The three schemes of encrypted workbook streams. Only decryption*.cpp includes this.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/crypto.h"
#include "workbook/xls/decryption.h"

namespace workbook {

/// Bytes of one record's body, which begins at `body` of the stream and has `body_bytes`.
struct BodyPiece {
    std::size_t body = 0, body_bytes = 0;
    std::size_t begin = 0; ///< of the piece, in the stream
    char* bytes = nullptr;
    std::size_t count = 0;
};

struct StreamEncryption::Scheme {
    virtual ~Scheme() = default;
    virtual void apply(const BodyPiece& piece, bool encrypts) = 0;
};

/// RC4 with a key for each 1024 bytes of the stream (MS-OFFCRYPTO 2.3.6 and 2.3.5).
class StreamEncryption::Rc4Scheme final : public Scheme {
  public:
    /// `header` is what follows the scheme in FILEPASS. Throws `Error`.
    Rc4Scheme(std::string_view header, std::u16string_view password);
    void apply(const BodyPiece& piece, bool encrypts) override;

  private:
    static constexpr std::size_t kBlockBytes = 1024;

    void read_standard(std::string_view header, const std::string& password);
    void read_crypto_api(std::string_view header, const std::string& password);
    std::string key_of(std::uint32_t block) const;
    void start_block(std::uint32_t block);
    /// Decrypts both fields as one text and compares the hash of the first with the second.
    bool is_right_password(std::string verifier, std::string hash);

    bool is_crypto_api_ = false;
    std::string key_base_; ///< to be hashed with the number of a block
    std::size_t key_bytes_ = 0;
    foundation::crypto::Rc4 cipher_;
    std::uint32_t block_ = 0;
    std::array<char, kBlockBytes> key_stream_{};
};

/// XOR obfuscation, method 1 (MS-OFFCRYPTO 2.3.7.1 to 2.3.7.3).
class StreamEncryption::XorScheme final : public Scheme {
  public:
    /// `key` and `verifier` are those of FILEPASS. Throws `Error` when the password's differ.
    XorScheme(std::uint16_t key, std::uint16_t verifier, std::u16string_view password);
    void apply(const BodyPiece& piece, bool encrypts) override;

  private:
    std::array<unsigned char, 16> pad_{};
};

} // namespace workbook
