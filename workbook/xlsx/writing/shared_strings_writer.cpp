// SPDX-License-Identifier: Apache-2.0
//
// The old part is copied as text up to the place after its last item; of its XML only the root
// and an extension list, before which new items belong, are looked at.
#include "workbook/xlsx/writing/shared_strings_writer.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "workbook/error.h"
#include "workbook/xlsx/reading/shared_strings.h"
#include "workbook/xml/simple_types.h"
#include "workbook/xml/text_window.h"

namespace workbook {

namespace {

constexpr std::uint32_t kNotThere = std::numeric_limits<std::uint32_t>::max();
constexpr std::size_t kBlockBytes = 64u << 10;

constexpr std::string_view kDeclaration =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
constexpr std::string_view kRoot =
    "<sst xmlns=\"http://schemas.openxmlformats.org/spreadsheetml/2006/main\">";

/// The root's start tag (without '<' and the '>' or "/>" at its end) with the counts set right: how
/// many cells refer to items is not known here, so that one is left out.
std::string root_tag(std::string_view tag, std::uint64_t total) {
    std::string out{"<"};
    std::size_t i = std::min(tag.find_first_of(" \t\r\n"), tag.size());
    out += tag.substr(0, i);
    while (i < tag.size()) {
        const std::size_t quote = tag.find_first_of("\"'", i);
        if (quote == std::string_view::npos) break;
        const std::size_t end = std::min(tag.find(tag[quote], quote + 1), tag.size() - 1) + 1;
        const std::string_view attribute = trim(tag.substr(i, end - i));
        const std::string_view name = trim(attribute.substr(0, attribute.find('=')));
        if (name != "count" && name != "uniqueCount") out.append(" ").append(attribute);
        i = end;
    }
    return out + " uniqueCount=\"" + std::to_string(total) + "\">";
}

/// Walks over the XML of the old part and copies it.
class PartCopy {
  public:
    PartCopy(ByteSource& part, ByteSink& out) : window_(part), out_(out) {}

    /// Everything up to the first item. Then `prefix` is the part's namespace prefix.
    void copy_root(std::uint64_t total) {
        out_.append(kDeclaration);
        for (;;) {
            go_to_tag(false);
            const std::string_view token = whole_token();
            const bool is_declaration = token.starts_with("<?xml") && is_space(token[5]);
            const bool is_root = token[1] != '?' && token[1] != '!';
            if (is_root)
                begin_root(token, total);
            else if (!is_declaration)
                out_.append(token);
            window_.set_cursor(token.data() + token.size());
            if (is_root) return;
        }
    }

    /// All items, up to what follows them.
    void copy_items() {
        if (is_empty_) return;
        const std::string end_tag = "</" + name_;
        const std::string extensions = "<" + prefix_ + "extLst";
        for (;;) {
            go_to_tag(true);
            ensure(std::max(extensions.size(), end_tag.size()) + 1);
            if (starts_tag(end_tag) || starts_tag(extensions)) return;
            const bool is_special = window_.cursor()[1] == '!' || window_.cursor()[1] == '?';
            const std::string_view token =
                is_special ? whole_token() : std::string_view(window_.cursor(), 1);
            out_.append(token);
            window_.set_cursor(token.data() + token.size());
        }
    }

    void copy_rest() {
        if (is_empty_) out_.append("</" + name_ + ">");
        do {
            out_.append(unread());
            window_.set_cursor(window_.end());
        } while (window_.refill());
    }

    const std::string& prefix() const { return prefix_; }

  private:
    std::string_view unread() const {
        return {window_.cursor(), static_cast<std::size_t>(window_.end() - window_.cursor())};
    }

    void ensure(std::size_t bytes) {
        while (unread().size() < bytes && window_.refill()) {
        }
    }

    /// Moves to the next '<', copying what is passed if that is wanted.
    void go_to_tag(bool copies) {
        for (;;) {
            const char* const at = find_byte(window_.cursor(), window_.end(), '<');
            if (copies)
                out_.append({window_.cursor(), static_cast<std::size_t>(at - window_.cursor())});
            window_.set_cursor(at);
            if (at != window_.end()) return;
            if (!window_.refill()) fail("the part ends too early");
        }
    }

    bool starts_tag(std::string_view begin) const {
        const std::string_view text = unread();
        if (!text.starts_with(begin) || text.size() == begin.size()) return false;
        const char next = text[begin.size()];
        return next == '>' || next == '/' || is_space(next);
    }

    /// The comment, section, instruction or tag at the cursor.
    std::string_view whole_token() {
        ensure(sizeof "<![CDATA[");
        if (unread().starts_with("<!--")) return token_to("-->", 4);
        if (unread().starts_with("<![CDATA[")) return token_to("]]>", 9);
        if (unread().starts_with("<?")) return token_to("?>", 2);
        return tag_at_cursor();
    }

    std::string_view token_to(std::string_view close, std::size_t from) {
        for (;;) {
            const std::size_t at = unread().find(close, from);
            if (at != std::string_view::npos) return unread().substr(0, at + close.size());
            from = std::max(from, unread().size() - std::min(unread().size(), close.size()));
            if (!window_.refill()) fail("a tag is not closed");
        }
    }

    /// Up to the '>' that is not within quotes.
    std::string_view tag_at_cursor() {
        char quote = 0;
        for (std::size_t i = 1;; ++i) {
            while (i >= unread().size())
                if (!window_.refill()) fail("a tag is not closed");
            const char c = window_.cursor()[i];
            if (quote == 0 && c == '>') return unread().substr(0, i + 1);
            if (quote == 0 && (c == '"' || c == '\''))
                quote = c;
            else if (c == quote)
                quote = 0;
        }
    }

    void begin_root(std::string_view token, std::uint64_t total) {
        std::string_view tag = token.substr(1, token.size() - 2);
        is_empty_ = tag.ends_with('/');
        if (is_empty_) tag.remove_suffix(1);
        name_ = tag.substr(0, tag.find_first_of(" \t\r\n"));
        prefix_ = name_.substr(0, name_.find(':') + 1); // npos + 1 is 0
        out_.append(root_tag(tag, total));
    }

    [[noreturn]] void fail(std::string_view what) const {
        throw Error::damaged_at(window_.part_name(), window_.position(window_.cursor()), what);
    }

    TextWindow window_;
    ByteSink& out_;
    std::string name_, prefix_;
    bool is_empty_ = false;
};

void write_new_items(const StringSet& added, const SharedStringPlan& plan,
                     const std::string& prefix, ByteSink& out) {
    const std::string open = "<" + prefix + "si><" + prefix + "t>";
    const std::string open_preserved = "<" + prefix + "si><" + prefix + "t xml:space=\"preserve\">";
    const std::string close = "</" + prefix + "t></" + prefix + "si>";
    std::string block;
    for (std::size_t i = 0; i < added.size(); ++i) {
        if (plan.index_of[i] < plan.kept) continue;
        block += needs_space_preserved(added[i]) ? open_preserved : open;
        append_escaped_text(block, added[i]);
        block += close;
        if (block.size() >= kBlockBytes) {
            out.append(block);
            block.clear();
        }
    }
    out.append(block);
}

} // namespace

SharedStringPlan plan_shared_strings(ByteSource* part, const StringSet& added) {
    SharedStringPlan plan;
    plan.index_of.assign(added.size(), kNotThere);
    if (part != nullptr)
        visit_shared_strings(*part, [&](std::string_view text, bool is_plain) {
            if (const auto wanted = is_plain ? added.find(text) : std::nullopt)
                if (plan.index_of[*wanted] == kNotThere)
                    plan.index_of[*wanted] = static_cast<std::uint32_t>(plan.kept);
            ++plan.kept;
        });
    if (plan.kept + added.size() >= kNotThere)
        throw Error::limit("the shared strings",
                           "more than " + std::to_string(kNotThere) + " strings");
    plan.total = plan.kept;
    for (std::uint32_t& index : plan.index_of)
        if (index == kNotThere) index = static_cast<std::uint32_t>(plan.total++);
    return plan;
}

void write_shared_strings(ByteSource* part, const StringSet& added, const SharedStringPlan& plan,
                          ByteSink& out) {
    if (part == nullptr) {
        out.append(kDeclaration);
        out.append(root_tag(kRoot.substr(1, kRoot.size() - 2), plan.total));
        write_new_items(added, plan, "", out);
        out.append("</sst>");
        return;
    }
    PartCopy copy(*part, out);
    copy.copy_root(plan.total);
    copy.copy_items();
    write_new_items(added, plan, copy.prefix(), out);
    copy.copy_rest();
}

} // namespace workbook
