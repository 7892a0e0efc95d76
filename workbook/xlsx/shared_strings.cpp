// SPDX-License-Identifier: Apache-2.0
#include "workbook/xlsx/shared_strings.h"

#include <cstring>
#include <string>

#include "workbook/xlsx/text_collector.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

namespace {

bool has(const char* p, std::string_view literal) {
    return std::memcmp(p, literal.data(), literal.size()) == 0;
}

const char* skip_spaces(const char* p) {
    while (*p == ' ' || *p == '\n' || *p == '\r' || *p == '\t')
        ++p;
    return p;
}

// Takes items in their plainest form, <si><t>text</t></si>, off the window for as long as they
// come: nothing to decode, no attribute but xml:space. Everything else, and an item that is not
// whole, is left to the scanner. The zero bytes behind the window end every comparison.
void take_plain_items(TextWindow& window, std::uint64_t wanted, StringPool& strings) {
    constexpr std::string_view kPlain = "<si><t>";
    constexpr std::string_view kSpaced = "<si><t xml:space=\"preserve\">";
    constexpr std::string_view kClose = "</t></si>";
    const char* p = window.cursor();
    while (strings.size() < wanted) {
        const char* text = skip_spaces(p);
        if (has(text, kPlain))
            text += kPlain.size();
        else if (has(text, kSpaced))
            text += kSpaced.size();
        else
            break;
        const char* stop = find_plain_text_end(text, window.end());
        if (stop == nullptr || !has(stop, kClose)) break;
        strings.add({text, static_cast<std::size_t>(stop - text)});
        p = stop + kClose.size();
    }
    window.set_cursor(p);
}

} // namespace

void read_shared_strings(ByteSource& part, std::uint64_t wanted, StringPool& strings) {
    XmlScanner scanner(part);
    std::string text;
    while (strings.size() < wanted) {
        if (scanner.depth() == 1) {
            do
                take_plain_items(scanner.window(), wanted, strings);
            while (strings.size() < wanted && scanner.window().refill_if_short());
            if (strings.size() >= wanted) return;
        }
        const XmlScanner::Token token = scanner.next();
        if (token == XmlScanner::Token::Done) return;
        if (token == XmlScanner::Token::Start && scanner.depth() == 2 && scanner.name() == "si") {
            text.clear();
            append_item_text(scanner, text);
            strings.add(text);
        }
    }
}

} // namespace workbook
