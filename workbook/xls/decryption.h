// SPDX-License-Identifier: Apache-2.0
//
// Encrypted workbook streams (MS-XLS 2.2.10). Books that are only write-reserved are encrypted with
// a password that every application knows; they open here, and a save writes them back with the
// same scheme and key, so that pivot caches and other streams of the file that have the same key
// stay readable. Any other password is an error.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace workbook {

/// The password of books without one (MS-OFFCRYPTO 2.1, MS-XLS 2.2.10).
inline constexpr std::u16string_view kDefaultPassword = u"VelvetSweatshop";

/// How the records after a FILEPASS record are encrypted: XOR obfuscation, RC4 or RC4 CryptoAPI.
class StreamEncryption {
  public:
    /// `filepass` is the body of the FILEPASS record. Throws `Error`: `Encrypted` when the password
    /// is not that of the record and for schemes that are not known, `Damaged` for a record that is
    /// too short. Texts of 1 to 15 ASCII characters are passwords of all schemes.
    explicit StreamEncryption(std::string_view filepass,
                              std::u16string_view password = kDefaultPassword);
    ~StreamEncryption();
    StreamEncryption(StreamEncryption&&) noexcept;
    StreamEncryption& operator=(StreamEncryption&&) noexcept;

    /// Decrypts the records of a workbook stream from `first_record`, a byte position, to its end,
    /// in place. Records keep their headers and lengths; BOF, INTERFACEHDR and others are clear in
    /// any stream, so is the position within BOUNDSHEET.
    void decrypt(std::string& stream, std::size_t first_record);
    /// The inverse.
    void encrypt(std::string& stream, std::size_t first_record);

  private:
    struct Scheme;
    class Rc4Scheme;
    class XorScheme;

    void transform(std::string& stream, std::size_t first_record, bool encrypts);

    std::unique_ptr<Scheme> scheme_;
};

/// Decrypts a workbook stream (BIFF2 to BIFF8) in place with the default password when one of its
/// first records is FILEPASS, which stays where it is. Returns what `encrypt_workbook_stream` takes
/// for writing the book back; nothing for a stream that is not encrypted. Throws as
/// `StreamEncryption` does.
std::optional<StreamEncryption> decrypt_workbook_stream(std::string& stream);

/// Encrypts a workbook stream that contains the FILEPASS record that `encryption` was made from.
void encrypt_workbook_stream(std::string& stream, StreamEncryption& encryption);

} // namespace workbook
