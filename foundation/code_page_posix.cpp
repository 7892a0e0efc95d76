// SPDX-License-Identifier: Apache-2.0
//
// Code pages by iconv, but for those of the Macintosh that glibc does not have.
#include <bit>

#include <iconv.h>

#include "foundation/code_page.h"
#include "foundation/macintosh_pages.h"

namespace foundation {

namespace {

struct NamedPage {
    unsigned number;
    const char* name;
};

// Pages that iconv does not call "CP" and their number.
constexpr NamedPage kNamedPages[] = {
    {1361, "JOHAB"},   {10000, "MACINTOSH"}, {10001, "SHIFT_JIS"},
    {10002, "BIG5"},   {10003, "EUC-KR"},    {10007, "MAC-CYRILLIC"},
    {10008, "EUC-CN"}, {10017, "MAC-UK"},    {10029, "MAC-CENTRALEUROPE"},
    {10079, "MAC-IS"},
};

class IconvPage final : public CodePage {
  public:
    explicit IconvPage(iconv_t conversion) : conversion_(conversion) {}
    ~IconvPage() override { iconv_close(conversion_); }
    IconvPage(const IconvPage&) = delete;
    IconvPage& operator=(const IconvPage&) = delete;

    std::u16string decode(std::string_view bytes) override {
        iconv(conversion_, nullptr, nullptr, nullptr, nullptr);
        // Two code units at most for each byte: no page of this family has longer sequences.
        std::u16string text(2 * bytes.size() + 2, u'\0');
        char* out = reinterpret_cast<char*>(text.data());
        const char* const end = out + text.size() * sizeof(char16_t);
        char* in = const_cast<char*>(bytes.data()); // iconv does not write to it
        std::size_t in_left = bytes.size();
        while (in_left > 0) {
            std::size_t out_left = static_cast<std::size_t>(end - out);
            if (iconv(conversion_, &in, &in_left, &out, &out_left) != static_cast<std::size_t>(-1))
                break;
            if (in_left == 0 || out == end) break;
            const auto byte = static_cast<unsigned char>(*in);
            const char16_t unit = byte < 0xA0 ? byte : 0xFFFD;
            reinterpret_cast<char16_t*>(out)[0] = unit;
            out += sizeof unit;
            ++in;
            --in_left;
        }
        text.resize(static_cast<std::size_t>(reinterpret_cast<char16_t*>(out) - text.data()));
        return text;
    }

  private:
    iconv_t conversion_;
};

std::string iconv_name(unsigned number) {
    for (const NamedPage& page : kNamedPages)
        if (page.number == number) return page.name;
    return "CP" + std::to_string(number);
}

} // namespace

std::unique_ptr<CodePage> open_code_page(unsigned number) {
    if (auto page = make_macintosh_page(number)) return page;
    constexpr const char* kUtf16 =
        std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";
    const iconv_t conversion = iconv_open(kUtf16, iconv_name(number).c_str());
    if (conversion == reinterpret_cast<iconv_t>(-1)) return nullptr;
    return std::make_unique<IconvPage>(conversion);
}

} // namespace foundation
