// SPDX-License-Identifier: Apache-2.0
//
// Byte strings of BIFF2 to BIFF5 books to UTF-8, by the book's code page.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/code_page.h"

namespace workbook {

class ByteText {
  public:
    /// Windows Latin 1, until something else is known.
    ByteText();

    /// The number in a CODEPAGE record (MS-XLS 2.4.52). Numbers that the platform does not know
    /// count as Windows Latin 1.
    void set_code_page(unsigned number);
    /// The character set of the book's first font, which says more than a code page that is missing
    /// or ASCII.
    void set_font_charset(std::uint8_t charset);

    /// Appends the generalised UTF-8 form of `bytes`.
    void append_utf8(std::string_view bytes, std::string& out) const;
    /// Whether two bytes may be one character.
    bool has_double_bytes() const { return has_double_bytes_; }

  private:
    void use(unsigned number);

    bool is_stated_ = false;
    bool has_double_bytes_ = false;
    std::unique_ptr<foundation::CodePage> page_; ///< null for Windows Latin 1
};

} // namespace workbook
