// SPDX-License-Identifier: Apache-2.0
#include "workbook/xlsx/text_collector.h"

#include "workbook/xlsx/escaped_text.h"

namespace workbook {

void append_element_text(XmlScanner& scanner, std::string& out) {
    const int depth = scanner.depth();
    for (;;) {
        const XmlScanner::Token token = scanner.next();
        if (token == XmlScanner::Token::Text && scanner.depth() == depth) out += scanner.text();
        if (token == XmlScanner::Token::End && scanner.depth() < depth) return;
    }
}

void append_item_text(XmlScanner& scanner, std::string& out) {
    const int depth = scanner.depth();
    std::string text;
    for (;;) {
        const XmlScanner::Token token = scanner.next();
        if (token == XmlScanner::Token::End && scanner.depth() < depth) return;
        if (token != XmlScanner::Token::Start) continue;
        if (scanner.name() == "rPh" || scanner.name() == "rPr") {
            scanner.skip_flat_element();
        } else if (scanner.name() == "t") {
            text.clear();
            append_element_text(scanner, text);
            append_unescaped(out, text);
        }
    }
}

} // namespace workbook
