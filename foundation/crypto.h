// SPDX-License-Identifier: Apache-2.0
//
// Hashes and the stream cipher of old file formats. None of them protects anything today: they are
// here to read files that were made with them and to write such files back as they were. Nettle on
// Linux, the system's own services on Windows. Errors are std::runtime_error with one sentence.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string_view>

namespace foundation::crypto {

/// RFC 1321.
std::array<char, 16> md5(std::string_view bytes);

/// FIPS 180-4.
std::array<char, 20> sha1(std::string_view bytes);

/// The RC4 stream cipher: the same call encrypts and decrypts.
class Rc4 {
  public:
    Rc4();
    ~Rc4();
    Rc4(Rc4&&) noexcept;
    Rc4& operator=(Rc4&&) noexcept;

    /// Starts a key stream; a key has 5 to 16 bytes.
    void set_key(std::string_view key);
    /// Combines the next bytes of the key stream with `bytes`, in place. `set_key` first.
    void apply(char* bytes, std::size_t count);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace foundation::crypto
