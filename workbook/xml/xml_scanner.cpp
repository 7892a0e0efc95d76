// SPDX-License-Identifier: Apache-2.0
//
// Finds the ends of tags in the window; the text of a token is decoded when asked for.
#include "workbook/xml/xml_scanner.h"

#include <algorithm>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/xml/character_data.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

// Enough text to recognise every kind of tag.
constexpr std::size_t kLongestOpening = 16;

std::string_view local_name(std::string_view name) {
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

} // namespace

void XmlScanner::fail(std::string_view what) const {
    throw Error::damaged_at(window_.part_name(), window_.position(window_.cursor()), what);
}

// Makes sure that so many bytes are in the window, unless the part ends before.
void XmlScanner::ensure(std::size_t bytes) {
    while (static_cast<std::size_t>(window_.end() - window_.cursor()) < bytes && window_.refill()) {
    }
}

// Finds `wanted` at or after cursor + from, fetching text as needed; null when the part ends
// before.
const char* XmlScanner::find_in_window(std::string_view wanted, std::size_t from) {
    for (;;) {
        const std::string_view unread(window_.cursor(),
                                      static_cast<std::size_t>(window_.end() - window_.cursor()));
        const std::size_t at = unread.find(wanted, from);
        if (at != std::string_view::npos) return unread.data() + at;
        from = std::max(from, unread.size() - std::min(unread.size(), wanted.size() - 1));
        if (!window_.refill()) return nullptr;
    }
}

XmlScanner::Token XmlScanner::next() {
    if (pending_end_) {
        pending_end_ = false;
        --depth_;
        raw_ = {};
        return Token::End;
    }
    for (;;) {
        ensure(kLongestOpening);
        const char* p = window_.cursor();
        if (p == window_.end()) {
            if (depth_ != 0) fail("the part ends within an element");
            if (!saw_element_) fail("the part has no element");
            return Token::Done;
        }
        const std::string_view unread(p, static_cast<std::size_t>(window_.end() - p));
        if (*p != '<') return read_text();
        if (unread.starts_with("</")) return read_end_tag();
        if (unread.starts_with("<!--"))
            skip_markup(4, "-->");
        else if (unread.starts_with("<![CDATA["))
            return read_cdata();
        else if (unread.starts_with("<?"))
            skip_markup(2, "?>");
        else if (unread.starts_with("<!"))
            skip_doctype();
        else
            return read_start_tag();
        if (reports_everything_) return Token::Other;
    }
}

// Ends the token at the cursor.
void XmlScanner::pass_to(const char* end) {
    raw_ = {window_.cursor(), static_cast<std::size_t>(end - window_.cursor())};
    window_.set_cursor(end);
}

void XmlScanner::skip_markup(std::size_t open, std::string_view close) {
    const char* at = find_in_window(close, open);
    if (at == nullptr) fail("a tag is not closed");
    pass_to(at + close.size());
}

void XmlScanner::skip_doctype() {
    const char* at = find_in_window(">", 2);
    if (at == nullptr) fail("a tag is not closed");
    if (std::find(window_.cursor(), at, '[') != at)
        fail("it declares entities of its own, which no workbook needs; it is not read");
    pass_to(at + 1);
}

XmlScanner::Token XmlScanner::read_cdata() {
    const char* at = find_in_window("]]>", 9);
    if (at == nullptr) fail("a CDATA section is not closed");
    const char* begin = window_.cursor() + 9;
    text_ = {begin, static_cast<std::size_t>(at - begin)};
    pass_to(at + 3);
    return Token::Text;
}

XmlScanner::Token XmlScanner::read_text() {
    const char* at = find_in_window("<", 0);
    if (at == nullptr) at = window_.end();
    const std::string_view raw(window_.cursor(), static_cast<std::size_t>(at - window_.cursor()));
    text_ = decode(raw, text_scratch_);
    pass_to(at);
    return Token::Text;
}

XmlScanner::Token XmlScanner::read_end_tag() {
    const char* at = find_in_window(">", 2);
    if (at == nullptr) fail("an end tag is not closed");
    const char* end = at;
    while (is_space(end[-1]))
        --end;
    const char* begin = window_.cursor() + 2;
    if (depth_ == 0) fail("an end tag has no start tag");
    name_ = local_name({begin, static_cast<std::size_t>(std::max(end, begin) - begin)});
    pass_to(at + 1);
    --depth_;
    return Token::End;
}

// The '>' that ends the tag at the cursor; one within quotes does not count.
const char* XmlScanner::find_tag_end() {
    char quote = 0;
    for (std::size_t from = 1;;) {
        const char* at = find_in_window(">", from);
        if (at == nullptr) fail("a tag is not closed");
        // Only what is new: a long tag may hold millions of quoted '>'.
        for (const char* p = window_.cursor() + from; p < at; ++p) {
            if (quote != 0)
                quote = *p == quote ? '\0' : quote;
            else if (*p == '"' || *p == '\'')
                quote = *p;
        }
        if (quote == 0) return at;
        from = static_cast<std::size_t>(at - window_.cursor()) + 1;
    }
}

XmlScanner::Token XmlScanner::read_start_tag() {
    const char* at = find_tag_end();
    const char* begin = window_.cursor() + 1;
    const bool empty = at > begin && at[-1] == '/';
    const char* end = empty ? at - 1 : at;
    const char* p = begin;
    while (p < end && !is_space(*p))
        ++p;
    if (p == begin) fail("a tag has no name");
    name_ = local_name({begin, static_cast<std::size_t>(p - begin)});
    prefix_ = {begin, static_cast<std::size_t>(name_.data() - begin)};
    parse_attributes({p, static_cast<std::size_t>(end - p)});
    if (++depth_ > kMaxElementDepth)
        throw Error::limit(window_.part_name(), "its elements are nested deeper than " +
                                                    std::to_string(kMaxElementDepth) + " levels");
    saw_element_ = true;
    pending_end_ = empty;
    pass_to(at + 1);
    return Token::Start;
}

void XmlScanner::parse_attributes(std::string_view text) {
    attributes_.clear();
    std::size_t i = 0;
    const auto skip_spaces = [&] {
        while (i < text.size() && is_space(text[i]))
            ++i;
    };
    for (skip_spaces(); i < text.size(); skip_spaces()) {
        const std::size_t name_begin = i;
        while (i < text.size() && text[i] != '=' && !is_space(text[i]))
            ++i;
        const std::string_view name = text.substr(name_begin, i - name_begin);
        skip_spaces();
        if (i == text.size() || text[i] != '=') fail("an attribute has no value");
        ++i;
        skip_spaces();
        if (i == text.size() || (text[i] != '"' && text[i] != '\''))
            fail("an attribute's value is not in quotes");
        const std::size_t close = text.find(text[i], i + 1);
        if (close == std::string_view::npos) fail("an attribute's value is not closed");
        if (attributes_.size() == kMaxAttributes)
            throw Error::limit(window_.part_name(), "an element has more than " +
                                                        std::to_string(kMaxAttributes) +
                                                        " attributes");
        attributes_.push_back({name, text.substr(i + 1, close - i - 1)});
        i = close + 1;
    }
}

std::string_view XmlScanner::attribute(std::string_view name) {
    for (const Attribute& a : attributes_)
        if (a.name == name) {
            const std::string_view value = decode(a.raw, attribute_scratch_);
            return value.data() != nullptr ? value : std::string_view("");
        }
    return {};
}

void XmlScanner::skip_element() {
    const int outside = depth_ - 1;
    while (depth_ > outside)
        next();
}

void XmlScanner::skip_flat_element() {
    if (!pending_end_) skip_to("</" + std::string(prefix_) + std::string(name_));
    skip_element();
}

void XmlScanner::skip_to(std::string_view end_tag) {
    for (;;) {
        const char* p = find_byte(window_.cursor(), window_.end(), '<');
        window_.set_cursor(p);
        const std::size_t needed = std::max(kLongestOpening, end_tag.size() + 1);
        if (static_cast<std::size_t>(window_.end() - p) < needed && window_.refill()) continue;
        const std::string_view unread(p, static_cast<std::size_t>(window_.end() - p));
        if (unread.empty()) fail("the part ends within an element");
        if (unread.starts_with(end_tag) && unread.size() > end_tag.size() &&
            (unread[end_tag.size()] == '>' || is_space(unread[end_tag.size()])))
            return;
        if (unread.starts_with("<!--"))
            skip_markup(4, "-->");
        else if (unread.starts_with("<![CDATA["))
            skip_markup(9, "]]>");
        else if (unread.starts_with("<?"))
            skip_markup(2, "?>");
        else
            window_.set_cursor(p + 1);
    }
}

std::string_view XmlScanner::decode(std::string_view raw, std::string& scratch) {
    if (raw.find_first_of("&\r") == std::string_view::npos) return raw;
    scratch.clear();
    if (!append_decoded(scratch, raw)) fail("it has a reference to no character or known entity");
    return scratch;
}

} // namespace workbook
