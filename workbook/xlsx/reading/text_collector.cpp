// SPDX-License-Identifier: Apache-2.0
//
// Phonetic runs and run properties are skipped, the text of all else is joined.
#include "workbook/xlsx/reading/text_collector.h"

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xlsx/reading/escaped_text.h"

namespace workbook {

namespace {

void check_length(XmlScanner& scanner, const std::string& text) {
    if (text.size() > kMaxTokenBytes)
        throw Error::limit(scanner.window().part_name(), "it has a text longer than " +
                                                             std::to_string(kMaxTokenBytes >> 20) +
                                                             " MiB");
}

} // namespace

void append_element_text(XmlScanner& scanner, std::string& out) {
    const int depth = scanner.depth();
    for (;;) {
        const XmlScanner::Token token = scanner.next();
        if (token == XmlScanner::Token::Text && scanner.depth() == depth) out += scanner.text();
        check_length(scanner, out);
        if (token == XmlScanner::Token::End && scanner.depth() < depth) return;
    }
}

bool append_item_text(XmlScanner& scanner, std::string& out) {
    const int depth = scanner.depth();
    bool is_plain = true;
    std::string text;
    for (;;) {
        const XmlScanner::Token token = scanner.next();
        if (token == XmlScanner::Token::End && scanner.depth() < depth) return is_plain;
        if (token != XmlScanner::Token::Start) continue;
        is_plain &= scanner.name() != "r" && scanner.name() != "rPh";
        if (scanner.name() == "rPh" || scanner.name() == "rPr") {
            scanner.skip_flat_element();
        } else if (scanner.name() == "t") {
            text.clear();
            append_element_text(scanner, text);
            append_unescaped(out, text);
            check_length(scanner, out);
        }
    }
}

} // namespace workbook
