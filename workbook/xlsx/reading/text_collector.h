// SPDX-License-Identifier: Apache-2.0
//
// Collects the text of a string item: `si` of the shared strings and `is` of a cell have the same
// content (ECMA-376 part 1, 18.4.8 and 18.3.1.53), plain text or rich text runs, and phonetic runs.
#pragma once

#include <string>

#include "workbook/xml/xml_scanner.h"

namespace workbook {

/// Reads the element of the scanner's last Start to its End and appends its text to `out`: every
/// `t` but those of phonetic runs, one run after the other, escapes resolved. Whether the item is
/// one plain text without any run.
bool append_item_text(XmlScanner& scanner, std::string& out);

/// The same for an element that holds the text itself (`t`, `v`): appends it unchanged.
void append_element_text(XmlScanner& scanner, std::string& out);

} // namespace workbook
