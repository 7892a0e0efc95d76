// SPDX-License-Identifier: Apache-2.0
//
// Sheets, properties and names of the workbook part. Unknown attributes and elements pass.
#include "workbook/xlsx/reading/workbook_part.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "foundation/ascii_case.h"
#include "foundation/unicode.h"
#include "workbook/error.h"
#include "workbook/limits.h"
#include "workbook/opc/part_name.h"
#include "workbook/xlsx/reading/workbook_locator.h"
#include "workbook/xml/xml_tree.h"

namespace workbook {

namespace {

/// Sheets by the last segment of their relationship type or, equal but for the ending, content
/// type.
struct KindName {
    std::string_view relationship; ///< in lower case
    std::string_view content_type; ///< ending of the type in lower case
    SheetKind kind;
};

constexpr KindName kKindNames[] = {
    {"worksheet", "spreadsheetml.worksheet+xml", SheetKind::Worksheet},
    {"dialogsheet", "spreadsheetml.dialogsheet+xml", SheetKind::Worksheet},
    {"xlmacrosheet", "ms-excel.macrosheet+xml", SheetKind::Worksheet},
    {"xlintlmacrosheet", "ms-excel.intlmacrosheet+xml", SheetKind::Worksheet},
    {"chartsheet", "spreadsheetml.chartsheet+xml", SheetKind::Chart},
};

SheetKind kind_of(std::string_view relationship_type, std::string_view content_type) {
    const std::string relationship = foundation::unicode::ascii_lower(relationship_type);
    for (const KindName& name : kKindNames)
        if (relationship == name.relationship) return name.kind;
    for (const KindName& name : kKindNames)
        if (content_type.ends_with(name.content_type)) return name.kind;
    return SheetKind::Unknown;
}

SheetState state_of(std::string_view text) {
    const std::string state = foundation::unicode::ascii_lower(text);
    if (state == "hidden") return SheetState::Hidden;
    return state == "veryhidden" ? SheetState::VeryHidden : SheetState::Visible;
}

class Reader {
  public:
    Reader(OpcPackage& package, std::string part_name)
        : package_(package),
          name_(std::move(part_name)),
          relationships_(package.relationships(name_)) {
        for (const Relationship& relationship : relationships_)
            by_id_.emplace(relationship.id, &relationship);
    }

    WorkbookPart read() {
        const pugi::xml_document tree = read_tree(*package_.open_part(name_));
        const pugi::xml_node root = root_element(tree, "workbook");
        if (!root) throw Error::damaged(name_, "its root element is not a workbook");
        const pugi::xml_node properties = child_element(root, "workbookPr");
        book_.date_1904 = attribute_is_true(properties, "date1904", false);
        book_.is_date_compatible = attribute_is_true(properties, "dateCompatibility", true);
        each_child(child_element(root, "sheets"), "sheet",
                   [&](pugi::xml_node element) { add_sheet(element); });
        each_child(child_element(root, "definedNames"), "definedName",
                   [&](pugi::xml_node element) { add_name(element); });
        book_.shared_strings_part = related_part("sharedStrings");
        book_.styles_part = related_part("styles");
        return std::move(book_);
    }

  private:
    void add_sheet(pugi::xml_node element) {
        if (book_.sheets.size() == kMaxSheets)
            throw Error::limit(name_, "more than " + std::to_string(kMaxSheets) + " sheets");
        auto entry = std::make_unique<SheetEntry>();
        SheetEntry& sheet = *entry;
        sheet.name = foundation::unicode::to_utf16(attribute_value(element, "name").value_or(""));
        sheet.state = state_of(attribute_value(element, "state").value_or(""));
        const Relationship* target = find(attribute_value(element, "id").value_or(""));
        if (target != nullptr && target->target == name_)
            throw Error::damaged(name_, "sheet " + std::to_string(book_.sheets.size() + 1) +
                                            " refers back to the workbook itself");
        if (target == nullptr)
            add_missing(sheet, SheetKind::Worksheet, "relationship");
        else if (!target->is_external && !package_.has_part(target->target))
            add_missing(sheet, kind_of(target->type, {}), "part");
        else if (!target->is_external)
            find_part(sheet, *target);
        book_.sheets.push_back(std::move(entry));
    }

    void find_part(SheetEntry& sheet, const Relationship& target) {
        sheet.kind = kind_of(target.type, package_.content_types().of(target.target));
        if (sheet.kind != SheetKind::Unknown) sheet.part = target.target;
        if (!sheet.part.empty() && !sheet_parts_.insert(target.target).second)
            throw Error::damaged(name_, "sheet " + std::to_string(book_.sheets.size() + 1) +
                                            " has its cells in a part of another sheet");
    }

    /// Macro books of old lost their module sheets in ways of both kinds.
    void add_missing(SheetEntry& sheet, SheetKind kind, std::string_view what) {
        sheet.kind = kind;
        if (kind == SheetKind::Worksheet)
            book_.warnings.push_back("sheet \"" + foundation::unicode::to_utf8(sheet.name) +
                                     "\" is read as an empty sheet: its " + std::string(what) +
                                     " is missing in the file");
    }

    void add_name(pugi::xml_node element) {
        if (book_.defined_names.size() == kMaxDefinedNames)
            throw Error::limit(name_,
                               "more than " + std::to_string(kMaxDefinedNames) + " defined names");
        DefinedName name;
        name.name = foundation::unicode::to_utf16(attribute_value(element, "name").value_or(""));
        name.formula = element.text().get();
        name.is_hidden = attribute_is_true(element, "hidden", false);
        if (const auto index = attribute_number(element, "localSheetId"))
            name.sheet_index = static_cast<int>(std::min<std::uint32_t>(*index, kMaxSheets));
        book_.defined_names.push_back(std::move(name));
    }

    const Relationship* find(std::string_view id) const {
        const auto found = by_id_.find(id);
        return found == by_id_.end() ? nullptr : found->second;
    }

    std::string related_part(std::string_view type) const {
        for (const Relationship& relationship : relationships_)
            if (relationship.type == type && !relationship.is_external &&
                package_.has_part(relationship.target))
                return relationship.target;
        return {};
    }

    OpcPackage& package_;
    std::string name_;
    std::vector<Relationship> relationships_;
    std::unordered_map<std::string_view, const Relationship*> by_id_;
    std::unordered_set<std::string_view> sheet_parts_;
    WorkbookPart book_;
};

} // namespace

DateBase date_base(const WorkbookPart& workbook) {
    if (workbook.date_1904) return DateBase::From1904;
    return workbook.is_date_compatible ? DateBase::From1900 : DateBase::From1899;
}

WorkbookPart read_workbook_part(OpcPackage& package) {
    return Reader(package, locate_workbook(package)).read();
}

} // namespace workbook
