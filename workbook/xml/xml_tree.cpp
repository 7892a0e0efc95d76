// SPDX-License-Identifier: Apache-2.0
//
// Loading and look-up over pugixml.
#include "workbook/xml/xml_tree.h"

#include <charconv>
#include <new>
#include <string>

#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/opc/part_name.h"
#include "workbook/xml/simple_types.h"

namespace workbook {

namespace {

std::string read_whole(ByteSource& part) {
    constexpr std::size_t kFirstBlockBytes = 16u << 10;
    std::string text;
    std::size_t used = 0;
    for (std::size_t block = kFirstBlockBytes;; block = used) {
        text.resize(used + block);
        std::size_t got = 1;
        while (used < text.size() && got > 0) {
            got = part.read(text.data() + used, text.size() - used);
            used += got;
        }
        if (got == 0) break;
        if (used > kMaxTreePartBytes)
            throw Error::limit(part.part_name(),
                               "more than " + std::to_string(kMaxTreePartBytes >> 20) + " MiB");
    }
    text.resize(used);
    return text;
}

pugi::xml_document parse_whole(ByteSource& part, unsigned options) {
    const std::string text = read_whole(part);
    pugi::xml_document tree;
    const pugi::xml_parse_result result = tree.load_buffer(text.data(), text.size(), options);
    if (result.status == pugi::status_out_of_memory) throw std::bad_alloc();
    if (!result)
        throw Error::damaged_at(part.part_name(), static_cast<std::uint64_t>(result.offset),
                                result.description());
    return tree;
}

class StringWriter final : public pugi::xml_writer {
  public:
    explicit StringWriter(std::string& out) : out_(out) {}

    /// A carriage return that survived parsing was a reference; the next parser would make a line
    /// feed of it as it is.
    void write(const void* data, std::size_t size) override {
        std::string_view rest(static_cast<const char*>(data), size);
        for (;;) {
            const std::size_t carriage_return = rest.find('\r');
            out_.append(rest.substr(0, carriage_return));
            if (carriage_return == std::string_view::npos) return;
            out_.append("&#13;");
            rest.remove_prefix(carriage_return + 1);
        }
    }

  private:
    std::string& out_;
};

} // namespace

pugi::xml_document read_tree(ByteSource& part) {
    return parse_whole(part, pugi::parse_default);
}

pugi::xml_document read_editable_tree(ByteSource& part) {
    pugi::xml_document tree = parse_whole(part, pugi::parse_full | pugi::parse_ws_pcdata);
    for (pugi::xml_node node : tree.children())
        if (node.type() == pugi::node_declaration)
            if (pugi::xml_attribute encoding = node.attribute("encoding")) encoding = "UTF-8";
    return tree;
}

std::string tree_text(const pugi::xml_document& tree) {
    std::string text;
    StringWriter writer(text);
    tree.save(writer, "", pugi::format_raw, pugi::encoding_utf8);
    return text;
}

std::string_view local_name(const char* name) {
    const std::string_view whole{name};
    const std::size_t colon = whole.rfind(':');
    return colon == std::string_view::npos ? whole : whole.substr(colon + 1);
}

pugi::xml_node root_element(const pugi::xml_document& tree, std::string_view name) {
    const pugi::xml_node root = tree.document_element();
    return local_name(root.name()) == name ? root : pugi::xml_node{};
}

pugi::xml_node child_element(pugi::xml_node parent, std::string_view name) {
    pugi::xml_node found;
    each_child(parent, name, [&](pugi::xml_node child) {
        if (!found) found = child;
    });
    return found;
}

std::optional<std::string_view> attribute_value(pugi::xml_node element, std::string_view name) {
    for (const pugi::xml_attribute attribute : element.attributes())
        if (local_name(attribute.name()) == name) return attribute.value();
    return {};
}

bool attribute_is_true(pugi::xml_node element, std::string_view name, bool absent) {
    const std::optional<std::string_view> value = attribute_value(element, name);
    return value ? is_true(*value) : absent;
}

std::optional<std::uint32_t> attribute_number(pugi::xml_node element, std::string_view name) {
    const std::optional<std::string_view> value = attribute_value(element, name);
    if (!value) return {};
    std::uint32_t number = 0;
    const char* end = value->data() + value->size();
    const auto [stop, problem] = std::from_chars(value->data(), end, number);
    if (problem != std::errc{} || stop != end) return {};
    return number;
}

pugi::xml_node chosen_alternative(pugi::xml_node alternate_content) {
    pugi::xml_node first_choice;
    for (const pugi::xml_node branch : alternate_content.children()) {
        const std::string_view local = local_name(branch.name());
        if (local == "Fallback") return branch;
        if (local == "Choice" && !first_choice) first_choice = branch;
    }
    return first_choice;
}

} // namespace workbook
