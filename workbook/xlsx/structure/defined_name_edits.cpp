// SPDX-License-Identifier: Apache-2.0
//
// Indexes in `localSheetId` count the sheets in their order (ECMA-376 part 1, 18.2.5).
#include "workbook/xlsx/structure/defined_name_edits.h"

#include <algorithm>

#include "foundation/unicode.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

using foundation::unicode::equal_ignoring_case;
using foundation::unicode::to_generalized_utf8;
using foundation::unicode::to_utf16;

bool is_same(std::string_view written, std::u16string_view name) {
    return equal_ignoring_case(to_utf16(written), name);
}

SheetNameMap replacing(std::u16string_view old_name, std::u16string_view name) {
    return [old_name, name](std::string_view written) {
        return is_same(written, old_name) ? to_generalized_utf8(name) : std::string{written};
    };
}

/// The attribute of that local name, made when there is none.
pugi::xml_attribute attribute_for(pugi::xml_node element, const char* name) {
    for (pugi::xml_attribute attribute : element.attributes())
        if (local_name(attribute.name()) == name) return attribute;
    return element.append_attribute(name);
}

void set_text(pugi::xml_node element, const std::string& text) {
    if (text == element.text().get()) return;
    element.remove_children();
    element.append_child(pugi::node_pcdata).set_value(text.c_str());
}

void set_sheet_index(pugi::xml_node element, const DefinedName& name) {
    if (!name.sheet_index) return;
    const auto index = static_cast<std::uint32_t>(*name.sheet_index);
    if (attribute_number(element, "localSheetId") != index)
        attribute_for(element, "localSheetId") = index;
}

bool has_elements(pugi::xml_node parent) {
    const auto children = parent.children();
    return std::any_of(children.begin(), children.end(),
                       [](pugi::xml_node child) { return child.type() == pugi::node_element; });
}

} // namespace

DefinedNameEdits::DefinedNameEdits(WorkbookPart& workbook) : workbook_(workbook) {
    for (const DefinedName& name : workbook.defined_names) {
        const bool is_astray = name.sheet_index && static_cast<std::size_t>(*name.sheet_index) >=
                                                       workbook.sheets.size();
        origins_.push_back({origins_.size(), false, is_astray});
    }
}

template <class NewIndex>
void DefinedNameEdits::renumber(const NewIndex& new_index) {
    for (std::size_t i = 0; i < origins_.size(); ++i) {
        std::optional<int>& index = workbook_.defined_names[i].sheet_index;
        if (index && !origins_[i].is_astray) index = new_index(*index);
    }
}

void DefinedNameEdits::rename(const SheetNameMap& names, const SheetSpanMap& spans) {
    for (DefinedName& name : workbook_.defined_names)
        if (std::optional<std::string> formula = rename_sheets(name.formula, names, spans))
            name.formula = std::move(*formula);
}

void DefinedNameEdits::sheet_inserted(std::size_t index) {
    const int inserted = static_cast<int>(index);
    renumber([inserted](int old) { return old < inserted ? old : old + 1; });
}

void DefinedNameEdits::sheet_moved(std::size_t from_index, std::size_t to_index) {
    const int from = static_cast<int>(from_index), to = static_cast<int>(to_index);
    renumber([from, to](int old) {
        if (old == from) return to;
        if (from < old && old <= to) return old - 1;
        return to <= old && old < from ? old + 1 : old;
    });
}

void DefinedNameEdits::sheet_renamed(std::u16string_view old_name, std::u16string_view name) {
    rename(replacing(old_name, name), {});
}

void DefinedNameEdits::sheet_removed(std::size_t index, std::u16string_view name,
                                     std::u16string_view left, std::u16string_view right) {
    const int removed = static_cast<int>(index);
    auto& names = workbook_.defined_names;
    std::size_t kept = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (names[i].sheet_index == removed && !origins_[i].is_astray) continue;
        if (kept != i) names[kept] = std::move(names[i]);
        origins_[kept++] = origins_[i];
    }
    names.resize(kept);
    origins_.resize(kept);
    renumber([removed](int old) { return old > removed ? old - 1 : old; });

    const auto position = [this](std::u16string_view sheet) {
        return std::find_if(
            workbook_.sheets.begin(), workbook_.sheets.end(),
            [sheet](const auto& entry) { return equal_ignoring_case(entry->name, sheet); });
    };
    const auto without = [name](std::string_view written) -> std::optional<std::string> {
        if (is_same(written, name)) return {};
        return std::string{written};
    };
    // The end that went gives way to its neighbour on the side of the other end.
    const auto shorter = [&](const SheetPrefixNames& span) -> std::optional<SheetPrefixNames> {
        const bool first_went = is_same(span.first, name);
        if (!first_went && !is_same(span.last, name)) return span;
        const std::string& other = first_went ? span.last : span.first;
        if (is_same(other, name)) return {};
        const auto stays = position(to_utf16(other));
        const bool is_right = stays - workbook_.sheets.begin() >= removed;
        const std::u16string_view next = is_right ? right : left;
        const std::string end = next.empty() ? other : to_generalized_utf8(next);
        if (is_same(other, to_utf16(end))) return SheetPrefixNames{other, {}};
        return first_went ? SheetPrefixNames{end, other} : SheetPrefixNames{other, end};
    };
    rename(without, shorter);
}

void DefinedNameEdits::sheet_copied(std::size_t original, std::size_t copy) {
    const SheetNameMap names =
        replacing(workbook_.sheets[original]->name, workbook_.sheets[copy]->name);
    const SheetSpanMap spans = [](const SheetPrefixNames& span) { return span; };
    const std::size_t count = workbook_.defined_names.size();
    for (std::size_t i = 0; i < count; ++i) {
        DefinedName name = workbook_.defined_names[i];
        if (name.sheet_index != static_cast<int>(original) || origins_[i].is_astray) continue;
        name.sheet_index = static_cast<int>(copy);
        if (auto formula = rename_sheets(name.formula, names, spans)) name.formula = *formula;
        workbook_.defined_names.push_back(std::move(name));
        origins_.push_back({origins_[i].element, true, false});
    }
}

void DefinedNameEdits::write(pugi::xml_node workbook_element) const {
    pugi::xml_node list = child_element(workbook_element, "definedNames");
    std::vector<pugi::xml_node> elements;
    each_child(list, "definedName", [&](pugi::xml_node element) { elements.push_back(element); });
    std::vector<bool> is_kept(elements.size(), false);
    for (std::size_t i = 0; i < origins_.size(); ++i) {
        const Origin& origin = origins_[i];
        const DefinedName& name = workbook_.defined_names[i];
        if (origin.element >= elements.size()) continue;
        // A sheet that came to its index must not take it over.
        if (origin.is_astray) {
            const auto index = attribute_number(elements[origin.element], "localSheetId");
            is_kept[origin.element] = !index || *index >= workbook_.sheets.size();
            continue;
        }
        pugi::xml_node element = elements[origin.element];
        if (origin.is_copy)
            element = list.append_copy(element);
        else
            is_kept[origin.element] = true;
        set_text(element, name.formula);
        set_sheet_index(element, name);
    }
    for (std::size_t i = 0; i < elements.size(); ++i)
        if (!is_kept[i]) elements[i].parent().remove_child(elements[i]);
    if (!elements.empty() && !has_elements(list)) list.parent().remove_child(list);
}

} // namespace workbook
