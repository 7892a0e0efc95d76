// SPDX-License-Identifier: Apache-2.0
//
// Strings within records: of bytes up to BIFF5, of Unicode in BIFF8 (MS-XLS 2.5.293 and 2.5.294),
// where a string may go on in CONTINUE records with another width of its characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "workbook/xls/biff_version.h"
#include "workbook/xls/reading/byte_text.h"
#include "workbook/xls/reading/continued_record.h"

namespace workbook {

/// How many bytes hold a string's length.
enum class LengthField { OneByte, TwoBytes };

/// Of the flags of a string, and of the byte that a CONTINUE record within its characters begins
/// with: characters have two bytes (MS-XLS 2.5.293 XLUnicodeRichExtendedString).
inline constexpr std::uint8_t kWideCharacters = 0x01;

/// Reads the strings of one book. Results are in generalised UTF-8, valid until the next read.
/// A string that is longer than what is left of its record ends with it.
class RecordStrings {
  public:
    /// `byte_text` must outlive this; BIFF8 does not use it.
    RecordStrings(BiffVersion version, ByteText& byte_text)
        : version_(version), byte_text_(byte_text) {}

    /// Length, string and, in BIFF8, what is attached to it (formatting runs, phonetic data).
    const std::string& read(ContinuedRecord& record, LengthField length_field);
    /// A string of `length` characters; its length is in another field.
    const std::string& read_characters(ContinuedRecord& record, std::size_t length);

    /// The same for a BIFF8 string with its length in two bytes, in a book of any version.
    const std::string& read_unicode(ContinuedRecord& record, std::size_t length);
    /// Passes over such a string, which the next byte begins, without decoding it.
    static void skip_unicode(ContinuedRecord& record);

  private:
    void append_bytes(ContinuedRecord& record, std::size_t length);

    const BiffVersion version_;
    ByteText& byte_text_;
    std::string text_;
};

} // namespace workbook
