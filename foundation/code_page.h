// SPDX-License-Identifier: Apache-2.0
//
// Byte strings of the time before Unicode, in one of the platform's code pages.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace foundation {

/// Decodes byte strings of one code page. One thread at a time.
class CodePage {
  public:
    virtual ~CodePage() = default;

    /// The UTF-16 form of `bytes`. A byte that stands for no character becomes the control
    /// character of its value below 0xA0, U+FFFD otherwise.
    virtual std::u16string decode(std::string_view bytes) = 0;
};

/// The code page `number` in the numbering of Windows (437 and its like, 874 to 1361, the
/// Macintosh's as 10000 and more); null when the platform does not know it.
std::unique_ptr<CodePage> open_code_page(unsigned number);

} // namespace foundation
