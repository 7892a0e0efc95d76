// SPDX-License-Identifier: Apache-2.0
//
// Windows Latin 1 is decoded here, since every platform has to have it; the others come from the
// platform.
#include "workbook/xls/reading/byte_text.h"

#include <algorithm>

#include "foundation/unicode.h"

namespace workbook {

namespace {

constexpr unsigned kAscii = 367;
constexpr unsigned kUtf16 = 1200;
constexpr unsigned kWindowsLatin1 = 1252;
constexpr unsigned kMacRoman = 10000;
// How BIFF2 to BIFF5 say "Macintosh" and "Windows".
constexpr unsigned kOldMacRoman = 0x8000, kOldWindows = 0x8001;

/// Of code page 1252, from 0x80 on. The five unassigned bytes are control characters.
constexpr char16_t kWindowsLatin1From80[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

struct Charset {
    std::uint8_t charset;
    std::uint16_t code_page;
};

/// Character sets of fonts (MS-XLS 2.4.122 Font, bCharSet).
constexpr Charset kCharsets[] = {{77, 10000}, {128, 932},  {129, 949},  {130, 1361}, {134, 936},
                                 {136, 950},  {161, 1253}, {162, 1254}, {163, 1258}, {177, 1255},
                                 {178, 1256}, {186, 1257}, {204, 1251}, {222, 874},  {238, 1250}};

bool is_ascii(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char16_t windows_latin1(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x80 && byte < 0xA0 ? kWindowsLatin1From80[byte - 0x80] : byte;
}

} // namespace

ByteText::ByteText() = default;

void ByteText::set_code_page(unsigned number) {
    is_stated_ = number != kAscii && number != kUtf16;
    if (is_stated_) use(number == kOldMacRoman ? kMacRoman : number);
}

void ByteText::set_font_charset(std::uint8_t charset) {
    if (is_stated_) return;
    for (const Charset& known : kCharsets)
        if (known.charset == charset) use(known.code_page);
}

void ByteText::use(unsigned number) {
    const bool is_own = number == kWindowsLatin1 || number == kOldWindows;
    page_ = is_own ? nullptr : foundation::open_code_page(number);
    constexpr unsigned kDoubleBytePages[] = {932, 936, 949, 950, 1361, 10001, 10002, 10003, 10008};
    has_double_bytes_ =
        page_ != nullptr && std::find(std::begin(kDoubleBytePages), std::end(kDoubleBytePages),
                                      number) != std::end(kDoubleBytePages);
}

void ByteText::append_utf8(std::string_view bytes, std::string& out) const {
    if (is_ascii(bytes)) {
        out.append(bytes);
    } else if (page_ != nullptr) {
        out.append(foundation::unicode::to_generalized_utf8(page_->decode(bytes)));
    } else {
        for (const char c : bytes)
            foundation::unicode::append_code_point(out, windows_latin1(c));
    }
}

} // namespace workbook
