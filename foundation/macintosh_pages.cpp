// SPDX-License-Identifier: Apache-2.0
//
// The pages of Latin scripts differ from that of Western Europe in a few characters.
#include "foundation/macintosh_pages.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace foundation {

namespace {

constexpr std::size_t kFirstByte = 0x80; ///< of the tables; what is below is ASCII

// clang-format off
constexpr std::u16string_view kRoman =
    u"ÄÅÇÉÑÖÜáàâäãåçéè"
    u"êëíìîïñóòôöõúùûü"
    u"†°¢£§•¶ß®©™´¨≠ÆØ"
    u"∞±≤≥¥µ∂∑∏π∫ªºΩæø"
    u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ"
    u"–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
    u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ"
    u"\uF8FFÒÚÛÙıˆ˜¯˘˙˚¸˝˛ˇ";

constexpr std::u16string_view kGreek =
    u"Ä¹²É³ÖÜ΅àâä΄¨çéè"
    u"êë£™îï•½‰ôö¦€ùûü"
    u"†ΓΔΘΛΞΠß®©ΣΪ§≠°·"
    u"Α±≤≥¥ΒΕΖΗΙΚΜΦΫΨΩ"
    u"άΝ¬ΟΡ≈Τ«»…\u00A0ΥΧΆΈœ"
    u"–―“”‘’÷ΉΊΌΎέήίόΏ"
    u"ύαβψδεφγηιξκλμνο"
    u"πώρστθωςχυζϊϋΐΰ\u00AD";
// clang-format on
static_assert(kRoman.size() == 0x80 && kGreek.size() == 0x80);

struct Difference {
    unsigned char byte;
    char16_t unit;
};

constexpr Difference kRomanian[] = {{0xAE, 0x0102}, {0xAF, 0x0218}, {0xBE, 0x0103},
                                    {0xBF, 0x0219}, {0xDE, 0x021A}, {0xDF, 0x021B}};
constexpr Difference kTurkish[] = {{0xDA, 0x011E}, {0xDB, 0x011F}, {0xDC, 0x0130},
                                   {0xDD, 0x0131}, {0xDE, 0x015E}, {0xDF, 0x015F}};
constexpr Difference kCroatian[] = {{0xA9, 0x0160}, {0xAE, 0x017D}, {0xB4, 0x2206}, {0xB9, 0x0161},
                                    {0xBE, 0x017E}, {0xC6, 0x0106}, {0xC8, 0x010C}, {0xD0, 0x0110},
                                    {0xD8, 0xF8FF}, {0xD9, 0x00A9}, {0xDE, 0x00C6}, {0xDF, 0x00BB},
                                    {0xE0, 0x2013}, {0xE6, 0x0107}, {0xE8, 0x010D}, {0xF0, 0x0111},
                                    {0xF9, 0x03C0}, {0xFA, 0x00CB}, {0xFD, 0x00CA}, {0xFE, 0x00E6}};

class TablePage final : public CodePage {
  public:
    explicit TablePage(std::u16string_view upper_half) : upper_half_(upper_half) {}
    template <std::size_t kCount>
    explicit TablePage(const Difference (&differences)[kCount]) : upper_half_(kRoman) {
        for (const Difference& difference : differences)
            upper_half_[difference.byte - kFirstByte] = difference.unit;
    }

    std::u16string decode(std::string_view bytes) override {
        std::u16string text;
        text.reserve(bytes.size());
        for (const char c : bytes) {
            const auto byte = static_cast<unsigned char>(c);
            text += byte < kFirstByte ? char16_t{byte} : upper_half_[byte - kFirstByte];
        }
        return text;
    }

  private:
    std::u16string upper_half_;
};

} // namespace

std::unique_ptr<CodePage> make_macintosh_page(unsigned number) {
    switch (number) {
    case 10006:
        return std::make_unique<TablePage>(kGreek);
    case 10010:
        return std::make_unique<TablePage>(kRomanian);
    case 10081:
        return std::make_unique<TablePage>(kTurkish);
    case 10082:
        return std::make_unique<TablePage>(kCroatian);
    default:
        return nullptr;
    }
}

} // namespace foundation
