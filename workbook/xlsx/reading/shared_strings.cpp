// SPDX-License-Identifier: Apache-2.0
//
// Plain items are taken off the text window, all others go through the scanner.
#include "workbook/xlsx/reading/shared_strings.h"

#include <string>

#include "workbook/xlsx/reading/escaped_text.h"
#include "workbook/xlsx/reading/text_collector.h"
#include "workbook/xml/plain_tag.h"
#include "workbook/xml/simple_types.h"
#include "workbook/xml/xml_scanner.h"

namespace workbook {

namespace {

// The place after the tags that open an item of one plain text; null when something else is at
// `p`.
const char* open_item(const PlainTag& tag, const char* p) {
    p = tag.open(p, "si>");
    if (p == nullptr) return nullptr;
    const char* const text = tag.open(p, "t>");
    return text != nullptr ? text : tag.open(p, "t xml:space=\"preserve\">");
}

// The place after the tags that close it; Japanese editions put the settings of its phonetic runs
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
// the scanner. The zero bytes after the window end every comparison.
template <class Items>
void take_plain_items(TextWindow& window, const PlainTag& tag, Items& items) {
    CellTextDecoder decoder;
    const char* p = window.cursor();
    while (items.wants_more()) {
        const char* const text = open_item(tag, skip_spaces(p));
        if (text == nullptr) break;
        bool is_plain;
        const char* const end = find_text_end(text, window.end(), is_plain);
        const char* const after = end != nullptr ? close_item(tag, end, window.end()) : nullptr;
        if (after == nullptr) break;
        std::string_view item(text, static_cast<std::size_t>(end - text));
        if (!is_plain) item = decoder.decode(item);
        if (item.data() == nullptr) break;
        items.add(item, true);
        p = after;
    }
    window.set_cursor(p);
}

template <class Items>
void read_items(ByteSource& part, Items& items) {
    XmlScanner scanner(part);
    PlainTag tag("");
    std::string text;
    while (items.wants_more()) {
        if (scanner.depth() == 1) {
            do
                take_plain_items(scanner.window(), tag, items);
            while (items.wants_more() && scanner.window().refill_if_short());
            if (!items.wants_more()) return;
        }
        const XmlScanner::Token token = scanner.next();
        if (token == XmlScanner::Token::Done) return;
        if (token == XmlScanner::Token::Start && scanner.depth() == 1) {
            tag = PlainTag(scanner.prefix());
        } else if (token == XmlScanner::Token::Start && scanner.depth() == 2 &&
                   scanner.name() == "si") {
            text.clear();
            const bool is_plain = append_item_text(scanner, text);
            items.add(text, is_plain);
        }
    }
}

/// Items that are kept.
class PooledItems {
  public:
    PooledItems(StringPool& strings, std::uint64_t wanted) : strings_(strings), wanted_(wanted) {}
    bool wants_more() const { return strings_.size() < wanted_; }
    void add(std::string_view text, bool) { strings_.add(text); }

  private:
    StringPool& strings_;
    std::uint64_t wanted_;
};

/// Items that are shown to a visitor.
class VisitedItems {
  public:
    explicit VisitedItems(const std::function<void(std::string_view, bool)>& visit)
        : visit_(visit) {}
    static bool wants_more() { return true; }
    void add(std::string_view text, bool is_plain) { visit_(text, is_plain); }

  private:
    const std::function<void(std::string_view, bool)>& visit_;
};

} // namespace

void read_shared_strings(ByteSource& part, std::uint64_t wanted, StringPool& strings) {
    PooledItems items(strings, wanted);
    read_items(part, items);
}

void visit_shared_strings(ByteSource& part,
                          const std::function<void(std::string_view, bool)>& visit) {
    VisitedItems items(visit);
    read_items(part, items);
}

} // namespace workbook
