// SPDX-License-Identifier: Apache-2.0
//
// Strings to the byte strings of BIFF2 to BIFF5, in the book's code page.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "workbook/xls/reading/byte_text.h"

namespace workbook {

class ByteEncoder {
  public:
    /// `page` says what bytes mean; it must outlive this.
    explicit ByteEncoder(const ByteText& page) : page_(page) {}

    /// The bytes of a text in generalised UTF-8. Throws `Error` for a text with a character that
    /// the page does not have, and for one that is too long for a cell.
    std::string encode(std::string_view text);

  private:
    void read_page();

    const ByteText& page_;
    std::unordered_map<std::string, std::string> bytes_of_; ///< by character, beyond ASCII
};

} // namespace workbook
