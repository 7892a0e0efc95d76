// SPDX-License-Identifier: Apache-2.0
//
// Start tags as the part's text has them, for code that copies XML and changes some of it.
#pragma once

#include <string>
#include <string_view>

namespace workbook {

/// Local name of the element of a start or end tag ("<x:c r=\"A1\">").
std::string_view raw_tag_name(std::string_view tag);

/// Walks over the attributes of a start tag; anything else is skipped.
class RawAttributes {
  public:
    explicit RawAttributes(std::string_view tag);

    /// False at the last attribute's end.
    bool next();

    std::string_view local_name() const { return local_name_; }
    /// As written between the quotes.
    std::string_view raw_value() const { return raw_value_; }
    /// The whole attribute with the white space before it.
    std::string_view whole() const { return whole_; }

  private:
    std::string_view rest_;
    std::string_view local_name_, raw_value_, whole_;
};

/// `text` as the content of an element or, with `in_attribute`, between double quotes.
std::string escaped_xml(std::string_view text, bool in_attribute);

} // namespace workbook
