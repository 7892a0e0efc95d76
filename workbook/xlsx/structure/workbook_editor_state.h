// SPDX-License-Identifier: Apache-2.0
//
// What a `WorkbookEditor` knows between its operations.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "workbook/opc/new_part_names.h"
#include "workbook/xlsx/structure/defined_name_edits.h"
#include "workbook/xlsx/structure/sheet_list.h"
#include "workbook/xlsx/structure/sheet_names.h"
#include "workbook/xlsx/structure/workbook_editor.h"

namespace workbook {

struct WorkbookEditor::State {
    State(OpcPackage& of, WorkbookPart& model);

    /// A part that the workbook leads to and did not before; sheets are not among them.
    struct AddedPart {
        std::string part, relationship_id, type, content_type;
        bool is_needed = true; ///< by what is saved next
    };

    std::unique_ptr<SheetEntry> make_entry(std::u16string_view name) const;
    std::uint32_t new_sheet_id();
    std::string new_relationship_id();
    /// The name for an empty sheet's part.
    std::string new_sheet_part();
    TableNames& table_names();
    std::string need_part(std::string& known, std::string_view file_name, const char* type,
                          const char* content_type);
    /// The whole address of a relationship type of the office document's base.
    std::string type_address(std::string_view type) const;

    /// To be called by every change of the sheets and of columns.
    void sheets_changed() { names_now_ = nullptr; }
    std::shared_ptr<const SheetNames> names_now();
    /// What a sheet's part is read with; null when it is read unchanged.
    std::shared_ptr<const PartEdits> edits_of(const SheetRecord& record);
    std::unique_ptr<ByteSource> open(const SheetRecord& record);

    OpcPackage& package;
    WorkbookPart& workbook;
    std::string part; ///< the workbook's
    bool is_strict = false;
    SheetList sheets;
    DefinedNameEdits names;
    NewPartNames new_parts;
    std::vector<AddedPart> added;
    RenamedColumns columns;
    bool recalculates = false;
    bool drops_calculation_chain = false;
    std::optional<DocumentType> document_type;

  private:
    std::unordered_set<std::string> relationship_ids_;
    std::unordered_set<std::uint32_t> sheet_ids_;
    std::uint32_t last_sheet_id_ = 0;
    std::size_t last_relationship_ = 0;
    std::optional<TableNames> table_names_;
    std::shared_ptr<const SheetNames> names_now_;
};

} // namespace workbook
