// SPDX-License-Identifier: Apache-2.0
//
// How wide characters are in a proportional font, in hundredths of a digit's width.
#include <algorithm>
#include <array>
#include <string_view>

#include "workbook/cells/text_widths.h"

namespace workbook {

namespace {

struct WidthClass {
    int width;
    std::string_view characters;
};

// The usual proportions of fonts without serifs.
constexpr WidthClass kAsciiClasses[] = {
    {45, " 'ijl"},        {52, ".,:;I"},  {62, "!()-[]`f{}J"}, {68, "rt"},
    {78, "\"/\\sz"},      {88, "cvxkyL"}, {94, "aegFSZTYE?|"}, {100, "0123456789#$*+<=>^_~"},
    {104, "bdhnopquKXP"}, {112, "ABCVR"}, {128, "DGHNOQU"},    {140, "&%w"},
    {172, "mMW@"},
};
constexpr int kOtherLetter = 105;

constexpr std::array<unsigned char, 128> ascii_widths() {
    std::array<unsigned char, 128> widths{};
    for (const WidthClass& one : kAsciiClasses)
        for (const char c : one.characters)
            widths[static_cast<unsigned char>(c)] = static_cast<unsigned char>(one.width);
    return widths;
}
constexpr std::array<unsigned char, 128> kAsciiWidths = ascii_widths();

struct Span {
    char32_t first, last;
    int width;
};

// Ascending: combining and invisible characters, East Asian wide ones (UAX 11) and emoji.
constexpr Span kSpans[] = {
    {0x0300, 0x036F, 0},     {0x0483, 0x0489, 0},     {0x0591, 0x05BD, 0},
    {0x064B, 0x065F, 0},     {0x1100, 0x115F, 200},   {0x1AB0, 0x1AFF, 0},
    {0x1DC0, 0x1DFF, 0},     {0x200B, 0x200F, 0},     {0x202A, 0x202E, 0},
    {0x2060, 0x2064, 0},     {0x20D0, 0x20FF, 0},     {0x231A, 0x231B, 200},
    {0x23E9, 0x23F3, 200},   {0x2614, 0x2615, 200},   {0x2648, 0x2653, 200},
    {0x26AA, 0x26AB, 200},   {0x26BD, 0x26BE, 200},   {0x2705, 0x2705, 200},
    {0x274C, 0x274E, 200},   {0x2753, 0x2757, 200},   {0x2795, 0x2797, 200},
    {0x2B1B, 0x2B1C, 200},   {0x2B50, 0x2B55, 200},   {0x2E80, 0x303E, 200},
    {0x3041, 0x3247, 200},   {0x3250, 0x4DBF, 200},   {0x4E00, 0xA4CF, 200},
    {0xA960, 0xA97F, 200},   {0xAC00, 0xD7A3, 200},   {0xF900, 0xFAFF, 200},
    {0xFE00, 0xFE0F, 0},     {0xFE10, 0xFE19, 200},   {0xFE20, 0xFE2F, 0},
    {0xFE30, 0xFE6F, 200},   {0xFEFF, 0xFEFF, 0},     {0xFF01, 0xFF60, 200},
    {0xFFE0, 0xFFE6, 200},   {0x16FE0, 0x18CFF, 200}, {0x1AFF0, 0x1B2FF, 200},
    {0x1F004, 0x1F004, 200}, {0x1F18E, 0x1F19A, 200}, {0x1F1E6, 0x1F1FF, 100},
    {0x1F200, 0x1F3FA, 200}, {0x1F3FB, 0x1F3FF, 0},   {0x1F400, 0x1F64F, 200},
    {0x1F680, 0x1F6FF, 200}, {0x1F7E0, 0x1F7EB, 200}, {0x1F900, 0x1F9FF, 200},
    {0x1FA70, 0x1FAFF, 200}, {0x20000, 0x3FFFD, 200}, {0xE0000, 0xE01EF, 0},
};

} // namespace

int character_width(char32_t character) {
    if (character < kAsciiWidths.size()) return kAsciiWidths[character];
    const Span* const span =
        std::lower_bound(std::begin(kSpans), std::end(kSpans), character,
                         [](const Span& one, char32_t wanted) { return one.last < wanted; });
    return span != std::end(kSpans) && span->first <= character ? span->width : kOtherLetter;
}

} // namespace workbook
