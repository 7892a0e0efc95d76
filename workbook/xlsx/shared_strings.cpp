// SPDX-License-Identifier: Apache-2.0
#include "workbook/xlsx/shared_strings.h"

#include <string>

#include "workbook/xlsx/escaped_text.h"
#include "workbook/xlsx/text_collector.h"
#include "workbook/xml/plain_tag.h"
#include "workbook/xml/simple_types.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

namespace {

// The place behind the tags that open an item of one plain text; null when something else stands at
// `p`.
const char* open_item(const PlainTag& tag, const char* p) {
    p = tag.open(p, "si>");
    if (p == nullptr) return nullptr;
    const char* const text = tag.open(p, "t>");
    return text != nullptr ? text : tag.open(p, "t xml:space=\"preserve\">");
}

// The place behind the tags that close it; Japanese editions put the settings of its phonetic runs
// in front of the last one.
const char* close_item(const PlainTag& tag, const char* p, const char* end) {
    p = tag.close(p, "t>");
    if (p == nullptr) return nullptr;
    if (const char* const settings = tag.open(p, "phoneticPr ")) {
        p = find_byte(settings, end, '>');
        if (p == end || p[-1] != '/') return nullptr;
        ++p;
    }
    return tag.close(p, "si>");
}

// Takes items in their plainest form, <si><t>text</t></si>, off the window for as long as they
// come, with no attribute but xml:space. Everything else, and an item that is not whole, is left to
// the scanner. The zero bytes behind the window end every comparison.
void take_plain_items(TextWindow& window, const PlainTag& tag, std::uint64_t wanted,
                      StringPool& strings) {
    CellTextDecoder decoder;
    const char* p = window.cursor();
    while (strings.size() < wanted) {
        const char* const text = open_item(tag, skip_spaces(p));
        if (text == nullptr) break;
        bool as_it_stands;
        const char* const end = find_text_end(text, window.end(), as_it_stands);
        const char* const behind = end != nullptr ? close_item(tag, end, window.end()) : nullptr;
        if (behind == nullptr) break;
        std::string_view item(text, static_cast<std::size_t>(end - text));
        if (!as_it_stands) item = decoder.decode(item);
        if (item.data() == nullptr) break;
        strings.add(item);
        p = behind;
    }
    window.set_cursor(p);
}

} // namespace

void read_shared_strings(ByteSource& part, std::uint64_t wanted, StringPool& strings) {
    XmlScanner scanner(part);
    PlainTag tag("");
    std::string text;
    while (strings.size() < wanted) {
        if (scanner.depth() == 1) {
            do
                take_plain_items(scanner.window(), tag, wanted, strings);
            while (strings.size() < wanted && scanner.window().refill_if_short());
            if (strings.size() >= wanted) return;
        }
        const XmlScanner::Token token = scanner.next();
        if (token == XmlScanner::Token::Done) return;
        if (token == XmlScanner::Token::Start && scanner.depth() == 1) {
            tag = PlainTag(scanner.prefix());
        } else if (token == XmlScanner::Token::Start && scanner.depth() == 2 &&
                   scanner.name() == "si") {
            text.clear();
            append_item_text(scanner, text);
            strings.add(text);
        }
    }
}

} // namespace workbook
