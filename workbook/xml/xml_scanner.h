// SPDX-License-Identifier: Apache-2.0
//
// A pull scanner for large parts (XML 1.0): elements by local name, whatever their
// prefix; comments, processing instructions and a plain DOCTYPE are passed over, CDATA is text.
// Entity declarations are refused. Names of end tags are not compared with those of start tags.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "workbook/xml/text_window.h"

namespace workbook {

class XmlScanner {
  public:
    enum class Token { Start, End, Text, Other, Done };

    struct Attribute {
        std::string_view name; ///< with its prefix
        std::string_view raw;  ///< what is between the quotes
    };

    explicit XmlScanner(ByteSource& part) : window_(part) {}

    /// From now on comments, instructions and DOCTYPE are tokens too, `Other`. For those who copy.
    void report_everything() { reports_everything_ = true; }

    /// The next token. An empty element is a Start and an End. Views handed out before are invalid.
    /// Throws `Error` for text that breaks the syntax, and for a part that ends within an element.
    Token next();

    /// Local name of the element of the last Start or End.
    std::string_view name() const { return name_; }
    /// Namespace prefix of the last Start with its colon, empty without one.
    std::string_view prefix() const { return prefix_; }
    /// Characters of the last Text: references resolved, line ends normalised.
    std::string_view text() const { return text_; }
    /// The value of an attribute of the last Start, by its name without a prefix; a null view when
    /// it is absent. Valid until the next call.
    std::string_view attribute(std::string_view name);

    /// All attributes of the last Start in their order. Valid until the next token.
    const std::vector<Attribute>& attributes() const { return attributes_; }
    /// The last token as the part has it; nothing for the End of an empty element. Valid
    /// until the next token.
    std::string_view raw() const { return raw_; }
    /// Whether the last Start is that of an empty element: "<name/>".
    bool is_empty_element() const { return pending_end_; }

    /// Number of open elements, the one of the last Start included.
    int depth() const { return depth_; }
    /// Skips the rest of the element of the last Start, its End included.
    void skip_element();
    /// The same for an element that holds none of its own name: looks for its end tag only.
    void skip_flat_element();

    /// Moves to the next end tag that begins with `end_tag` ("</name") outside of comments,
    /// instructions and CDATA, without looking at the tags before it. For elements that do not
    /// nest and whose content is not wanted.
    void skip_to(std::string_view end_tag);

    /// For a reader that recognises whole elements itself: the text after the last token, and the
    /// count of open elements to keep right. Not between an empty element's Start and its End.
    TextWindow& window() { return window_; }
    void enter_element() { ++depth_; }
    void leave_element() { --depth_; }

    /// Throws an `Error` for this part that names the byte at which the last token began.
    [[noreturn]] void fail(std::string_view what) const;

  private:
    void ensure(std::size_t bytes);
    const char* find_in_window(std::string_view wanted, std::size_t from);
    void skip_markup(std::size_t open, std::string_view close);
    void skip_doctype();
    Token read_cdata();
    Token read_text();
    Token read_end_tag();
    Token read_start_tag();
    const char* find_tag_end();
    void parse_attributes(std::string_view text);
    void pass_to(const char* end);
    std::string_view decode(std::string_view raw, std::string& scratch);

    TextWindow window_;
    std::string_view name_, prefix_;
    std::string_view text_, raw_;
    std::string text_scratch_, attribute_scratch_;
    std::vector<Attribute> attributes_;
    int depth_ = 0;
    bool pending_end_ = false;
    bool saw_element_ = false;
    bool reports_everything_ = false;
};

} // namespace workbook
